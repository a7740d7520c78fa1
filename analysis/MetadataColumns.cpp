#include "MetadataColumns.h"

#include "CellFormat.h"
#include "FileMetadata.h"
#include "UcsName.h"

#include <QCoreApplication>

#include <algorithm>
#include <cmath>

namespace {

const char* const kHeaders[] = {
    QT_TRANSLATE_NOOP("krokTableModel", "Description"),
    QT_TRANSLATE_NOOP("krokTableModel", "Title/Name"),
    QT_TRANSLATE_NOOP("krokTableModel", "Artist/Originator"),
    QT_TRANSLATE_NOOP("krokTableModel", "Comment"),
    QT_TRANSLATE_NOOP("krokTableModel", "Date"),
    QT_TRANSLATE_NOOP("krokTableModel", "Tempo/Key"),
    QT_TRANSLATE_NOOP("krokTableModel", "CatID"),
    QT_TRANSLATE_NOOP("krokTableModel", "Category"),
    QT_TRANSLATE_NOOP("krokTableModel", "FX Name"),
    QT_TRANSLATE_NOOP("krokTableModel", "Creator"),
    QT_TRANSLATE_NOOP("krokTableModel", "Source"),
};

QString Tr(const char* text)
{
    return QCoreApplication::translate("krokTableModel", text);
}

QString textOf(const FileMetadata* m, MetadataKey key)
{
    if (!m)
        return {};
    const std::string_view text = m->text(key);
    return QString::fromUtf8(text.data(), static_cast<int>(text.size()));
}

// The plain fields of each text column, in the order the cell prefers them.
struct Field
{
    MetadataKey key;
    const char* label;
};

const Field kDescriptionFields[] = {
    {MetadataKey::Description, QT_TRANSLATE_NOOP("krokTableModel", "Description")},
    {MetadataKey::UserDescription, QT_TRANSLATE_NOOP("krokTableModel", "iXML description")},
};
const Field kTitleFields[] = {
    {MetadataKey::Title, QT_TRANSLATE_NOOP("krokTableModel", "Title")},
    {MetadataKey::Album, QT_TRANSLATE_NOOP("krokTableModel", "Album")},
    {MetadataKey::Project, QT_TRANSLATE_NOOP("krokTableModel", "Project")},
    {MetadataKey::Scene, QT_TRANSLATE_NOOP("krokTableModel", "Scene")},
    {MetadataKey::Take, QT_TRANSLATE_NOOP("krokTableModel", "Take")},
    {MetadataKey::Tape, QT_TRANSLATE_NOOP("krokTableModel", "Tape")},
};
const Field kArtistFields[] = {
    {MetadataKey::Artist, QT_TRANSLATE_NOOP("krokTableModel", "Artist")},
    {MetadataKey::Originator, QT_TRANSLATE_NOOP("krokTableModel", "Originator")},
    {MetadataKey::OriginatorReference, QT_TRANSLATE_NOOP("krokTableModel", "Originator reference")},
    {MetadataKey::Copyright, QT_TRANSLATE_NOOP("krokTableModel", "Copyright")},
};
const Field kCommentFields[] = {
    {MetadataKey::Comment, QT_TRANSLATE_NOOP("krokTableModel", "Comment")},
    {MetadataKey::Note, QT_TRANSLATE_NOOP("krokTableModel", "Note")},
    {MetadataKey::UserText, QT_TRANSLATE_NOOP("krokTableModel", "iXML user fields")},
    {MetadataKey::Keywords, QT_TRANSLATE_NOOP("krokTableModel", "Keywords")},
    {MetadataKey::UserKeywords, QT_TRANSLATE_NOOP("krokTableModel", "Keywords")},
    {MetadataKey::Genre, QT_TRANSLATE_NOOP("krokTableModel", "Genre")},
    {MetadataKey::Software, QT_TRANSLATE_NOOP("krokTableModel", "Software")},
    {MetadataKey::CueLabels, QT_TRANSLATE_NOOP("krokTableModel", "Cue labels")},
    {MetadataKey::CueNotes, QT_TRANSLATE_NOOP("krokTableModel", "Cue notes")},
};

template<std::size_t N>
void addFields(QVector<MetadataItem>& items, const FileMetadata* m, const Field (&fields)[N])
{
    for (const Field& field : fields)
        items.append({Tr(field.label), textOf(m, field.key)});
}

void addDate(QVector<MetadataItem>& items, const FileMetadata* m, std::int32_t samplingRate)
{
    items.append(
        {QCoreApplication::translate("krokTableModel", "Date"), textOf(m, MetadataKey::Date)});
    const QString origination = QString(textOf(m, MetadataKey::OriginationDate) + QLatin1Char(' ') +
                                        textOf(m, MetadataKey::OriginationTime))
                                    .trimmed();
    items.append({QCoreApplication::translate("krokTableModel", "Origination date"), origination});
    if (m && m->hasTimeReference) {
        const std::string_view rate = m->text(MetadataKey::TimecodeRate);
        const std::string_view flag = m->text(MetadataKey::TimecodeFlag);
        // A position, not a date: the cell would read "00:00:00:00" for most files.
        items.append({QCoreApplication::translate("krokTableModel", "Time reference"),
                      FormatTimecode(m->timeReference, samplingRate, rate, flag), false});
    }
}

void addTempo(QVector<MetadataItem>& items, const FileMetadata* m)
{
    if (!m)
        return;
    if (m->hasAcid) {
        const AcidInfo& acid = m->acid;
        if (acid.tempo > 0.0f)
            items.append(
                {QCoreApplication::translate("krokTableModel", "Tempo"), FormatTempo(acid.tempo)});
        if (acid.hasRootNote())
            items.append({QCoreApplication::translate("krokTableModel", "Root note"),
                          QCoreApplication::translate("krokTableModel", "%1 (MIDI %2)")
                              .arg(MidiNoteName(acid.rootNote))
                              .arg(acid.rootNote)});
        if (acid.beats > 0)
            items.append({QCoreApplication::translate("krokTableModel", "Beats"),
                          QString::number(acid.beats)});
        if (acid.meterNumerator > 0 && acid.meterDenominator > 0)
            items.append(
                {QCoreApplication::translate("krokTableModel", "Meter"),
                 QStringLiteral("%1/%2").arg(acid.meterNumerator).arg(acid.meterDenominator)});
        items.append({QCoreApplication::translate("krokTableModel", "Type"),
                      acid.isOneShot() ? QCoreApplication::translate("krokTableModel", "One-shot")
                                       : QCoreApplication::translate("krokTableModel", "Loop")});
    }
    bool ok = false;
    const double bpm = textOf(m, MetadataKey::Bpm).toDouble(&ok);
    if (ok && bpm > 0.0)
        items.append({QCoreApplication::translate("krokTableModel", "Tempo"), FormatTempo(bpm)});
    items.append(
        {QCoreApplication::translate("krokTableModel", "Key"), textOf(m, MetadataKey::MusicalKey)});
}

// The UCS column's value from the name, else from the iXML USER field.
void addUcs(QVector<MetadataItem>& items, int column, const FileMetadata* m, const UcsName& ucs)
{
    switch (column) {
    case ColumnCatId:
        items.append({QCoreApplication::translate("krokTableModel", "CatID"),
                      ucs.isValid() ? ucs.catId : textOf(m, MetadataKey::UserCatId)});
        items.append(
            {QCoreApplication::translate("krokTableModel", "User category"), ucs.userCategory});
        break;
    case ColumnCategory: {
        // The list names the category of the name's CatID; iXML names its own
        // CatID's, which may be another one.
        if (!ucs.category.isEmpty()) {
            items.append({QCoreApplication::translate("krokTableModel", "Category"), ucs.category});
            items.append(
                {QCoreApplication::translate("krokTableModel", "SubCategory"), ucs.subCategory});
        } else if (!ucs.isValid() || ucs.catId == textOf(m, MetadataKey::UserCatId)) {
            items.append({QCoreApplication::translate("krokTableModel", "Category"),
                          textOf(m, MetadataKey::UserCategory)});
            items.append({QCoreApplication::translate("krokTableModel", "SubCategory"),
                          textOf(m, MetadataKey::UserSubCategory)});
        }
        break;
    }
    case ColumnFxName:
        items.append({QCoreApplication::translate("krokTableModel", "FX Name"),
                      ucs.isValid() ? ucs.fxName : textOf(m, MetadataKey::UserFxName)});
        break;
    case ColumnCreator:
        items.append({QCoreApplication::translate("krokTableModel", "Creator"),
                      ucs.isValid() ? ucs.creatorId : textOf(m, MetadataKey::UserCreator)});
        break;
    case ColumnSource:
        items.append({QCoreApplication::translate("krokTableModel", "Source"),
                      ucs.isValid() ? ucs.sourceId : textOf(m, MetadataKey::UserSource)});
        items.append({QCoreApplication::translate("krokTableModel", "User data"), ucs.userData});
        break;
    default:
        break;
    }
}

QString oneLine(QString text)
{
    text.replace(QLatin1Char('\n'), QLatin1Char(' '));
    return text;
}

bool asciiOnly(const QString& text)
{
    for (const QChar c : text) {
        if (c.unicode() >= 0x80)
            return false;
    }
    return true;
}

char asciiLower(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

// `needle` is lower-case ASCII; UTF-8 holds ASCII only as itself, so a byte
// search is exact.
bool containsAscii(std::string_view haystack, const QByteArray& needle)
{
    const auto n = static_cast<std::size_t>(needle.size());
    if (n > haystack.size())
        return false;
    for (std::size_t i = 0; i + n <= haystack.size(); ++i) {
        std::size_t k = 0;
        while (k < n && asciiLower(haystack[i + k]) == needle[static_cast<int>(k)])
            ++k;
        if (k == n)
            return true;
    }
    return false;
}

} // namespace

QStringList MetadataColumnHeaderLabels()
{
    QStringList labels;
    for (const char* header : kHeaders)
        labels << Tr(header);
    return labels;
}

bool IsMetadataColumn(int column)
{
    return column >= kFirstMetadataColumn && column < TableColumnCount;
}

bool IsUcsColumn(int column)
{
    return column >= ColumnCatId && column <= ColumnSource;
}

QVector<MetadataItem> MetadataItems(int column, const FileMetadata* m, std::int32_t samplingRate,
                                    const UcsName& ucs)
{
    QVector<MetadataItem> items;
    switch (column) {
    case ColumnDescription:
        addFields(items, m, kDescriptionFields);
        break;
    case ColumnTitle:
        addFields(items, m, kTitleFields);
        break;
    case ColumnArtist:
        addFields(items, m, kArtistFields);
        break;
    case ColumnComment:
        addFields(items, m, kCommentFields);
        break;
    case ColumnDate:
        addDate(items, m, samplingRate);
        break;
    case ColumnTempoKey:
        addTempo(items, m);
        break;
    default:
        addUcs(items, column, m, ucs);
        break;
    }
    QVector<MetadataItem> present;
    for (const MetadataItem& item : qAsConst(items)) {
        bool repeated = false;
        for (const MetadataItem& kept : qAsConst(present))
            repeated = repeated || kept.text == item.text;
        if (!item.text.isEmpty() && !repeated)
            present.append(item);
    }
    return present;
}

QVariant MetadataCellValue(int column, const FileMetadata* m, std::int32_t samplingRate,
                           const UcsName& ucs, bool forSorting)
{
    const QVector<MetadataItem> items = MetadataItems(column, m, samplingRate, ucs);
    if (items.isEmpty())
        return {};
    if (column == ColumnTempoKey) {
        double tempo = 0.0;
        QString key;
        if (m && m->hasAcid) {
            tempo = m->acid.tempo;
            if (m->acid.hasRootNote())
                key = MidiNoteName(m->acid.rootNote);
        }
        if (tempo <= 0.0)
            tempo = textOf(m, MetadataKey::Bpm).toDouble();
        if (key.isEmpty())
            key = textOf(m, MetadataKey::MusicalKey);
        if (forSorting)
            return tempo;
        QStringList parts;
        if (tempo > 0.0)
            parts << FormatTempo(tempo);
        if (!key.isEmpty())
            parts << key;
        if (parts.isEmpty())
            parts << items.first().text; // a one-shot or loop without tempo or key
        return oneLine(parts.join(QStringLiteral(", ")));
    }
    if (column == ColumnCategory && items.size() > 1 &&
        items.at(0).label == QCoreApplication::translate("krokTableModel", "Category")) {
        // "DOORS-WOOD", as the UCS names the pair.
        const QString pair = items.at(0).text + QLatin1Char('-') + items.at(1).text;
        return forSorting ? QVariant(pair.toCaseFolded()) : QVariant(pair);
    }
    const auto shown = std::find_if(items.cbegin(), items.cend(),
                                    [](const MetadataItem& item) { return item.inCell; });
    if (shown == items.cend())
        return {};
    const QString text = oneLine(shown->text);
    return forSorting ? QVariant(text.toCaseFolded()) : QVariant(text);
}

QString MetadataToolTip(int column, const FileMetadata* m, std::int32_t samplingRate,
                        const UcsName& ucs)
{
    const QVector<MetadataItem> items = MetadataItems(column, m, samplingRate, ucs);
    if (items.size() == 1 && column != ColumnTempoKey && items.first().inCell)
        return items.first().text;
    QStringList lines;
    for (const MetadataItem& item : items)
        lines << QCoreApplication::translate("krokTableModel", "%1: %2").arg(item.label, item.text);
    return lines.join(QLatin1Char('\n'));
}

bool MetadataContains(const FileMetadata* metadata, const UcsName& ucs, const QString& needle)
{
    if (needle.isEmpty())
        return true;
    for (const QString* text : {&ucs.category, &ucs.subCategory, &ucs.userCategory}) {
        if (text->contains(needle, Qt::CaseInsensitive))
            return true;
    }
    if (!metadata)
        return false;
    if (asciiOnly(needle)) {
        const QByteArray lower = needle.toLatin1().toLower();
        for (std::size_t i = 0; i < metadata->size(); ++i) {
            if (containsAscii(metadata->entry(i).text, lower))
                return true;
        }
        return false;
    }
    for (std::size_t i = 0; i < metadata->size(); ++i) {
        const std::string_view text = metadata->entry(i).text;
        if (QString::fromUtf8(text.data(), static_cast<int>(text.size()))
                .contains(needle, Qt::CaseInsensitive))
            return true;
    }
    return false;
}

QString FormatTimecode(std::uint64_t samples, std::int32_t samplingRate, std::string_view rate,
                       std::string_view flag)
{
    if (samplingRate <= 0)
        return {};
    // "30000/1001", "25/1" or a plain "25".
    const QString rateText = QString::fromUtf8(rate.data(), static_cast<int>(rate.size()));
    const int slash = rateText.indexOf(QLatin1Char('/'));
    bool okNum = false, okDen = true;
    std::int64_t num = rateText.left(slash).trimmed().toLongLong(&okNum);
    std::int64_t den = slash < 0 ? 1 : rateText.mid(slash + 1).trimmed().toLongLong(&okDen);
    const bool haveRate = okNum && okDen && num > 0 && den > 0 && num / den >= 1 &&
                          num / den <= 240 && num <= 1000000 && den <= 100000;
    if (!haveRate) {
        const std::uint64_t ms = static_cast<std::uint64_t>(
            (static_cast<unsigned __int128>(samples) * 1000u) / std::uint64_t(samplingRate));
        return QStringLiteral("%1:%2:%3.%4")
            .arg(ms / 3600000u, 2, 10, QLatin1Char('0'))
            .arg(ms / 60000u % 60u, 2, 10, QLatin1Char('0'))
            .arg(ms / 1000u % 60u, 2, 10, QLatin1Char('0'))
            .arg(ms % 1000u, 3, 10, QLatin1Char('0'));
    }
    // Frames elapsed at the true rate, then labelled at the nominal one.
    std::uint64_t frames = static_cast<std::uint64_t>(
        (static_cast<unsigned __int128>(samples) * std::uint64_t(num)) /
        (static_cast<unsigned __int128>(den) * std::uint64_t(samplingRate)));
    const auto nominal = static_cast<std::uint64_t>(std::llround(double(num) / double(den)));
    const bool dropFrame = flag == "DF" && (nominal == 30 || nominal == 60) && den != 1;
    if (dropFrame) {
        // Two (four at 60) labels are skipped each minute except every tenth.
        const std::uint64_t drop = nominal / 15;
        const std::uint64_t perMinute = nominal * 60 - drop;
        const std::uint64_t perTenMinutes = perMinute * 10 + drop;
        const std::uint64_t tens = frames / perTenMinutes;
        const std::uint64_t rest = frames % perTenMinutes;
        frames += drop * 9 * tens + (rest > drop ? drop * ((rest - drop) / perMinute) : 0);
    }
    const std::uint64_t perHour = nominal * 3600;
    return QStringLiteral("%1:%2:%3%4%5")
        .arg(frames / perHour, 2, 10, QLatin1Char('0'))
        .arg(frames / (nominal * 60) % 60, 2, 10, QLatin1Char('0'))
        .arg(frames / nominal % 60, 2, 10, QLatin1Char('0'))
        .arg(dropFrame ? QLatin1Char(';') : QLatin1Char(':'))
        .arg(frames % nominal, 2, 10, QLatin1Char('0'));
}

QString MidiNoteName(int note)
{
    static const char* const kNames[12] = {"C",  "C#", "D",  "D#", "E",  "F",
                                           "F#", "G",  "G#", "A",  "A#", "B"};
    if (note < 0 || note > 127)
        return {};
    return QLatin1String(kNames[note % 12]) + QString::number(note / 12 - 1);
}

QString FormatTempo(double bpm)
{
    QString number = QString::number(bpm, 'f', 2);
    while (number.endsWith(QLatin1Char('0')))
        number.chop(1);
    if (number.endsWith(QLatin1Char('.')))
        number.chop(1);
    return QCoreApplication::translate("krokTableModel", "%1 BPM").arg(number);
}

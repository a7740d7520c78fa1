#include "UcsCatalog.h"

#include "MetadataText.h"

#include <QCoreApplication>
#include <QFile>
#include <QStringList>
#include <QTextCodec>
#include <QVector>

namespace {

// The official list is a few hundred kilobytes; anything past this is not one.
constexpr qint64 kMaxFileBytes = 32 << 20;
// The header row may follow a title row or two.
constexpr int kHeaderSearchRows = 20;

QString decode(const QByteArray& bytes)
{
    QTextCodec* utf8 = QTextCodec::codecForName("UTF-8");
    QTextCodec* codec = QTextCodec::codecForUtfText(bytes, nullptr);
    if (codec && codec != utf8)
        return codec->toUnicode(bytes); // UTF-16 or UTF-32 behind a byte-order mark
    const auto* data = reinterpret_cast<const unsigned char*>(bytes.constData());
    const auto size = static_cast<std::size_t>(bytes.size());
    if (IsValidUtf8(data, size)) {
        QString decoded = QString::fromUtf8(bytes);
        if (decoded.startsWith(QChar(0xFEFF)))
            decoded.remove(0, 1);
        return decoded;
    }
    const std::string western = WesternToUtf8(data, size);
    return QString::fromUtf8(western.data(), static_cast<int>(western.size()));
}

// The separator of the first line: whichever of tab, semicolon and comma
// occurs most often outside quotes.
QChar separatorOf(const QString& content)
{
    int tabs = 0, semicolons = 0, commas = 0;
    bool quoted = false;
    for (const QChar c : content) {
        if (c == QLatin1Char('"'))
            quoted = !quoted;
        else if (!quoted && (c == QLatin1Char('\n') || c == QLatin1Char('\r')))
            break;
        else if (!quoted && c == QLatin1Char('\t'))
            ++tabs;
        else if (!quoted && c == QLatin1Char(';'))
            ++semicolons;
        else if (!quoted && c == QLatin1Char(','))
            ++commas;
    }
    if (tabs >= semicolons && tabs >= commas && tabs > 0)
        return QLatin1Char('\t');
    return semicolons > commas ? QLatin1Char(';') : QLatin1Char(',');
}

// RFC 4180 rows: quoted cells may hold separators, doubled quotes and line breaks.
QVector<QStringList> rowsOf(const QString& content, QChar separator)
{
    QVector<QStringList> rows;
    QStringList row;
    QString cell;
    bool quoted = false;
    const int n = content.size();
    for (int i = 0; i < n; ++i) {
        const QChar c = content.at(i);
        if (quoted) {
            if (c != QLatin1Char('"'))
                cell += c;
            else if (i + 1 < n && content.at(i + 1) == QLatin1Char('"'))
                cell += content.at(++i);
            else
                quoted = false;
        } else if (c == QLatin1Char('"')) {
            quoted = true;
        } else if (c == separator) {
            row << cell.trimmed();
            cell.clear();
        } else if (c == QLatin1Char('\n') || c == QLatin1Char('\r')) {
            if (c == QLatin1Char('\r') && i + 1 < n && content.at(i + 1) == QLatin1Char('\n'))
                ++i;
            row << cell.trimmed();
            rows << row;
            row.clear();
            cell.clear();
        } else {
            cell += c;
        }
    }
    if (!cell.isEmpty() || !row.isEmpty()) {
        row << cell.trimmed();
        rows << row;
    }
    return rows;
}

// "Cat ID", "cat_id" and "CatID" name the same column.
QString columnKey(const QString& header)
{
    QString key;
    for (const QChar c : header) {
        if (c.isLetterOrNumber())
            key += c.toLower();
    }
    return key;
}

} // namespace

std::shared_ptr<const UcsCatalog> UcsCatalog::load(const QString& path, QString* error)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        if (error)
            *error =
                QCoreApplication::translate("UcsCatalog", "The CatID list cannot be opened: %1")
                    .arg(path);
        return nullptr;
    }
    if (file.size() > kMaxFileBytes) {
        if (error)
            *error = QCoreApplication::translate("UcsCatalog", "The CatID list is too large: %1")
                         .arg(path);
        return nullptr;
    }
    return parse(file.readAll(), error);
}

std::shared_ptr<const UcsCatalog> UcsCatalog::parse(const QByteArray& bytes, QString* error)
{
    const QString content = decode(bytes);
    const QVector<QStringList> rows = rowsOf(content, separatorOf(content));

    int headerRow = -1;
    int catIdColumn = -1, categoryColumn = -1, subCategoryColumn = -1;
    for (int r = 0; r < rows.size() && r < kHeaderSearchRows && headerRow < 0; ++r) {
        const QStringList& cells = rows.at(r);
        for (int c = 0; c < cells.size(); ++c) {
            const QString key = columnKey(cells.at(c));
            if (key == QLatin1String("catid") && catIdColumn < 0)
                catIdColumn = c;
            else if (key == QLatin1String("category") && categoryColumn < 0)
                categoryColumn = c;
            else if (key == QLatin1String("subcategory") && subCategoryColumn < 0)
                subCategoryColumn = c;
        }
        if (catIdColumn >= 0)
            headerRow = r;
        else
            categoryColumn = subCategoryColumn = -1;
    }
    if (headerRow < 0) {
        if (error)
            *error =
                QCoreApplication::translate("UcsCatalog", "The CatID list has no CatID column.");
        return nullptr;
    }

    auto catalog = std::make_shared<UcsCatalog>();
    const auto cellOf = [](const QStringList& cells, int column) {
        return column >= 0 && column < cells.size() ? cells.at(column) : QString();
    };
    for (int r = headerRow + 1; r < rows.size(); ++r) {
        const QStringList& cells = rows.at(r);
        Entry entry{cellOf(cells, catIdColumn), cellOf(cells, categoryColumn),
                    cellOf(cells, subCategoryColumn)};
        if (entry.catId.isEmpty() || entry.catId.contains(QLatin1Char('_')))
            continue;
        const QString key = entry.catId.toCaseFolded();
        if (!catalog->entries.contains(key))
            catalog->entries.insert(key, std::move(entry));
    }
    if (catalog->entries.isEmpty()) {
        if (error)
            *error = QCoreApplication::translate("UcsCatalog", "The CatID list holds no CatID.");
        return nullptr;
    }
    return catalog;
}

const UcsCatalog::Entry* UcsCatalog::find(const QString& catId) const
{
    const auto it = entries.constFind(catId.toCaseFolded());
    return it == entries.constEnd() ? nullptr : &it.value();
}

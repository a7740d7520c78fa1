// The 'iXML' payload parser (declared in WaveMetadataChunks.h): the one
// parser that needs an XML reader, kept apart from the byte-level ones.

#include "FileMetadata.h"
#include "MetadataText.h"
#include "WaveMetadataChunks.h"

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QXmlStreamReader>

#include <cstdint>
#include <cstring>

namespace wavemeta {

namespace {

// Elements deeper than this are skipped without being named.
constexpr int kTrackedDepth = 4;

struct UserField
{
    const char* name;
    MetadataKey key;
};

constexpr UserField kUserFields[] = {
    {"DESCRIPTION", MetadataKey::UserDescription}, {"CATEGORY", MetadataKey::UserCategory},
    {"SUBCATEGORY", MetadataKey::UserSubCategory}, {"CATID", MetadataKey::UserCatId},
    {"FXNAME", MetadataKey::UserFxName},           {"DESIGNER", MetadataKey::UserCreator},
    {"LIBRARY", MetadataKey::UserSource},          {"KEYWORDS", MetadataKey::UserKeywords},
};

struct TopField
{
    const char* name;
    MetadataKey key;
};

constexpr TopField kTopFields[] = {
    {"PROJECT", MetadataKey::Project}, {"SCENE", MetadataKey::Scene}, {"TAKE", MetadataKey::Take},
    {"TAPE", MetadataKey::Tape},       {"NOTE", MetadataKey::Note},
};

std::string cleaned(const QString& text)
{
    const QByteArray utf8 = text.toUtf8();
    return DecodeMetadataText(utf8.constData(), static_cast<std::size_t>(utf8.size()));
}

// The document as text: UTF-8 when it is valid UTF-8, else the Western 8-bit
// reading; UTF-16 (with its byte-order mark) is left to the XML reader.
void feed(QXmlStreamReader& xml, const unsigned char* data, std::size_t size)
{
    if (size >= 2 &&
        ((data[0] == 0xFF && data[1] == 0xFE) || (data[0] == 0xFE && data[1] == 0xFF))) {
        xml.addData(QByteArray(reinterpret_cast<const char*>(data), static_cast<int>(size)));
        return;
    }
    if (const void* nul = std::memchr(data, 0, size))
        size = static_cast<std::size_t>(static_cast<const unsigned char*>(nul) - data);
    if (IsValidUtf8(data, size)) {
        xml.addData(QString::fromUtf8(reinterpret_cast<const char*>(data), static_cast<int>(size)));
    } else {
        const std::string text = WesternToUtf8(data, size);
        xml.addData(QString::fromUtf8(text.data(), static_cast<int>(text.size())));
    }
}

} // namespace

void ParseIxmlChunk(const unsigned char* data, std::size_t size, FileMetadata& out)
{
    if (!data || size == 0 || size > static_cast<std::size_t>(INT32_MAX / 2))
        return;
    QXmlStreamReader xml;
    feed(xml, data, size);

    // Names of the open elements down to kTrackedDepth, upper-cased; their text.
    QStringList path;
    QString text;
    int depth = 0;
    while (!xml.atEnd()) {
        const QXmlStreamReader::TokenType token = xml.readNext();
        if (token == QXmlStreamReader::StartElement) {
            ++depth;
            if (depth <= kTrackedDepth)
                path.append(xml.name().toString().toUpper());
            text.clear();
        } else if (token == QXmlStreamReader::Characters) {
            if (text.size() < static_cast<int>(kMaxMetadataTextBytes))
                text += xml.text();
        } else if (token == QXmlStreamReader::EndElement) {
            // path[0] is the root (BWFXML); fields sit one or two levels below.
            if (depth <= kTrackedDepth) {
                const QString name = path.last();
                if (depth == 2) {
                    for (const TopField& field : kTopFields) {
                        if (name == QLatin1String(field.name))
                            out.setText(field.key, cleaned(text));
                    }
                    // Free text directly inside USER; its fields were taken one by one.
                    if (name == QLatin1String("USER"))
                        out.setTextIfEmpty(MetadataKey::UserText, cleaned(text));
                } else if (depth == 3 && path.at(1) == QLatin1String("SPEED")) {
                    if (name == QLatin1String("TIMECODE_RATE"))
                        out.setText(MetadataKey::TimecodeRate, cleaned(text));
                    else if (name == QLatin1String("TIMECODE_FLAG"))
                        out.setText(MetadataKey::TimecodeFlag, cleaned(text));
                } else if (depth == 3 && path.at(1) == QLatin1String("USER")) {
                    const std::string value = cleaned(text);
                    bool known = false;
                    for (const UserField& field : kUserFields) {
                        if (name == QLatin1String(field.name)) {
                            out.setText(field.key, value);
                            known = true;
                        }
                    }
                    if (!known && !value.empty())
                        out.appendLine(MetadataKey::UserText, name.toStdString() + ": " + value);
                }
                path.removeLast();
            }
            --depth;
            text.clear();
        }
    }
}

} // namespace wavemeta

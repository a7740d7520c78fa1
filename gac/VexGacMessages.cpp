#include "VexGacMessages.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLocale>
#include <QString>

#include <cmath>

namespace Vexmw {

namespace {
const QString kHeader = QStringLiteral("VexGacMessageHeader");
const QString kBody = QStringLiteral("VexGacMessageBody");
} // namespace

// QJsonObject sorts its keys; the server's documents list members in a fixed
// order, so messages are written by hand.
class JsonWriter final
{
public:
    void beginObject() { open('{'); }
    void endObject() { close('}'); }
    void beginArray() { open('['); }
    void endArray() { close(']'); }

    void key(const char* name)
    {
        separate();
        appendString(name);
        m_out += ':';
        m_afterKey = true;
    }
    void value(const std::string& s)
    {
        separate();
        appendString(s);
    }
    void value(int v)
    {
        separate();
        m_out += QByteArray::number(v);
    }
    void value(double v)
    {
        separate();
        if (!std::isfinite(v)) {
            m_out += "null"; // JSON has no infinities
            return;
        }
        m_out += QString::number(v, 'g', QLocale::FloatingPointShortest).toLatin1();
    }

    template<typename T>
    void member(const char* name, const T& v)
    {
        key(name);
        value(v);
    }

    QByteArray take() { return std::move(m_out); }

private:
    void open(char c)
    {
        separate();
        m_out += c;
        m_first = true;
    }
    void close(char c)
    {
        m_out += c;
        m_first = false;
    }
    void separate()
    {
        if (m_afterKey) {
            m_afterKey = false;
            return;
        }
        if (!m_first && !m_out.isEmpty())
            m_out += ',';
        m_first = false;
    }
    void appendString(const std::string& s)
    {
        m_out += '"';
        for (const char ch : s) {
            const auto c = static_cast<unsigned char>(ch);
            switch (c) {
            case '"':
                m_out += "\\\"";
                break;
            case '\\':
                m_out += "\\\\";
                break;
            case '\b':
                m_out += "\\b";
                break;
            case '\f':
                m_out += "\\f";
                break;
            case '\n':
                m_out += "\\n";
                break;
            case '\r':
                m_out += "\\r";
                break;
            case '\t':
                m_out += "\\t";
                break;
            default:
                if (c < 0x20) {
                    static const char hex[] = "0123456789abcdef";
                    m_out += "\\u00";
                    m_out += hex[c >> 4];
                    m_out += hex[c & 15];
                } else {
                    m_out += ch;
                }
            }
        }
        m_out += '"';
    }

    QByteArray m_out;
    bool m_first = true;
    bool m_afterKey = false;
};

namespace {

std::string readString(const QJsonObject& o, const QString& name)
{
    return o.value(name).toString().toStdString();
}

void writeAsset(JsonWriter& w, const AssetData& a)
{
    w.beginObject();
    w.member("filePath", a.filePath);
    w.member("additionalMetaDataFilePath", a.additionalMetaDataFilePath);
    w.key("MetaData");
    w.beginObject();
    w.member("projectPath", a.metaData.projectPath);
    w.member("repositoryUrl", a.metaData.repositoryUrl);
    w.member("startTime", a.metaData.startTime);
    w.member("length", a.metaData.length);
    w.endObject();
    w.endObject();
}

AssetData readAsset(const QJsonObject& o)
{
    AssetData a;
    a.filePath = readString(o, QStringLiteral("filePath"));
    a.additionalMetaDataFilePath = readString(o, QStringLiteral("additionalMetaDataFilePath"));
    const QJsonObject m = o.value(QStringLiteral("MetaData")).toObject();
    a.metaData.projectPath = readString(m, QStringLiteral("projectPath"));
    a.metaData.repositoryUrl = readString(m, QStringLiteral("repositoryUrl"));
    a.metaData.startTime = m.value(QStringLiteral("startTime")).toDouble();
    a.metaData.length = m.value(QStringLiteral("length")).toDouble();
    return a;
}

void writeAssetArray(JsonWriter& w, const std::vector<AssetData>& assets)
{
    w.beginArray();
    for (const AssetData& a : assets)
        writeAsset(w, a);
    w.endArray();
}

std::vector<AssetData> readAssetArray(const QJsonValue& v)
{
    std::vector<AssetData> out;
    const QJsonArray array = v.toArray();
    out.reserve(static_cast<size_t>(array.size()));
    for (const QJsonValue& item : array)
        out.push_back(readAsset(item.toObject()));
    return out;
}

template<typename Field>
void writeEventNumbers(JsonWriter& w, const char* name, const TrackData& t, Field field)
{
    w.key(name);
    w.beginArray();
    for (const TrackEvent& e : t.events)
        w.value(e.*field);
    w.endArray();
}

void writeSegment(JsonWriter& w, const SegmentData& s)
{
    w.beginObject();
    w.key("tracks");
    w.beginArray();
    for (const TrackData& t : s.tracks) {
        w.beginObject();
        w.key("eventData");
        w.beginArray();
        for (const TrackEvent& e : t.events)
            writeAsset(w, e.asset);
        w.endArray();
        writeEventNumbers(w, "eventStartPositions", t, &TrackEvent::startPosition);
        writeEventNumbers(w, "eventLength", t, &TrackEvent::length);
        writeEventNumbers(w, "eventDataOffset", t, &TrackEvent::dataOffset);
        w.member("numberOfEvents", static_cast<int>(t.events.size()));
        w.member("name", t.name);
        w.endObject();
    }
    w.endArray();
    w.member("numberOfTracks", static_cast<int>(s.tracks.size()));
    w.key("markers");
    w.beginArray();
    for (const MarkerData& m : s.markers) {
        w.beginObject();
        w.member("id", m.id);
        w.member("startPosition", m.startPosition);
        w.member("endPosition", m.endPosition);
        w.endObject();
    }
    w.endArray();
    w.member("numberOfMarkers", static_cast<int>(s.markers.size()));
    w.member("tempo", s.tempo);
    w.member("timeSignatureNumerator", s.timeSignatureNumerator);
    w.member("timeSignatureDenominator", s.timeSignatureDenominator);
    w.endObject();
}

// The events are those of "eventData"; the count members are not trusted over
// the arrays, and a missing position reads as 0.
TrackData readTrack(const QJsonObject& o)
{
    TrackData t;
    const QJsonArray assets = o.value(QStringLiteral("eventData")).toArray();
    const QJsonArray starts = o.value(QStringLiteral("eventStartPositions")).toArray();
    const QJsonArray lengths = o.value(QStringLiteral("eventLength")).toArray();
    const QJsonArray offsets = o.value(QStringLiteral("eventDataOffset")).toArray();
    t.events.reserve(static_cast<size_t>(assets.size()));
    for (int i = 0; i < assets.size(); ++i) {
        TrackEvent e;
        e.asset = readAsset(assets.at(i).toObject());
        e.startPosition = starts.at(i).toDouble();
        e.length = lengths.at(i).toDouble();
        e.dataOffset = offsets.at(i).toDouble();
        t.events.push_back(std::move(e));
    }
    t.name = readString(o, QStringLiteral("name"));
    return t;
}

SegmentData readSegment(const QJsonObject& o)
{
    SegmentData s;
    for (const QJsonValue& v : o.value(QStringLiteral("tracks")).toArray())
        s.tracks.push_back(readTrack(v.toObject()));
    for (const QJsonValue& v : o.value(QStringLiteral("markers")).toArray()) {
        const QJsonObject m = v.toObject();
        MarkerData marker;
        marker.id = m.value(QStringLiteral("id")).toInt();
        marker.startPosition = m.value(QStringLiteral("startPosition")).toDouble();
        marker.endPosition = m.value(QStringLiteral("endPosition")).toDouble();
        s.markers.push_back(marker);
    }
    s.tempo = o.value(QStringLiteral("tempo")).toDouble(s.tempo);
    s.timeSignatureNumerator =
        o.value(QStringLiteral("timeSignatureNumerator")).toInt(s.timeSignatureNumerator);
    s.timeSignatureDenominator =
        o.value(QStringLiteral("timeSignatureDenominator")).toInt(s.timeSignatureDenominator);
    return s;
}

} // namespace

bool AssetMetaData::operator==(const AssetMetaData& o) const
{
    return projectPath == o.projectPath && repositoryUrl == o.repositoryUrl &&
           startTime == o.startTime && length == o.length;
}

bool AssetData::operator==(const AssetData& o) const
{
    return filePath == o.filePath && additionalMetaDataFilePath == o.additionalMetaDataFilePath &&
           metaData == o.metaData;
}

bool TrackEvent::operator==(const TrackEvent& o) const
{
    return asset == o.asset && startPosition == o.startPosition && length == o.length &&
           dataOffset == o.dataOffset;
}

bool TrackData::operator==(const TrackData& o) const
{
    return events == o.events && name == o.name;
}

bool MarkerData::operator==(const MarkerData& o) const
{
    return id == o.id && startPosition == o.startPosition && endPosition == o.endPosition;
}

bool SegmentData::operator==(const SegmentData& o) const
{
    return tracks == o.tracks && markers == o.markers && tempo == o.tempo &&
           timeSignatureNumerator == o.timeSignatureNumerator &&
           timeSignatureDenominator == o.timeSignatureDenominator;
}

QByteArray VexGacMessageBase::toJson() const
{
    JsonWriter w;
    w.beginObject();
    w.key("VexGacMessageHeader");
    w.beginObject();
    w.member("Type", static_cast<int>(m_type));
    w.member("Version", kVersion);
    w.endObject();
    w.key("VexGacMessageBody");
    w.beginObject();
    writeBody(w);
    w.endObject();
    w.endObject();
    return w.take();
}

std::unique_ptr<VexGacMessageBase> VexGacMessageBase::fromJson(const QByteArray& json)
{
    QJsonParseError error{};
    const QJsonDocument doc = QJsonDocument::fromJson(json, &error);
    if (error.error != QJsonParseError::NoError || !doc.isObject())
        return nullptr;
    const QJsonObject root = doc.object();
    const QJsonObject header = root.value(kHeader).toObject();
    const QJsonValue type = header.value(QStringLiteral("Type"));
    if (!type.isDouble() || header.value(QStringLiteral("Version")).toInt() != kVersion)
        return nullptr;

    std::unique_ptr<VexGacMessageBase> message;
    const int t = type.toInt();
    switch (t) {
    case AssetExported:
        message = std::make_unique<AssetExportedMessage>();
        break;
    case AssetTransferred:
        message = std::make_unique<AssetTransferredMessage>();
        break;
    case SegmentTransferred:
        message = std::make_unique<SegmentTransferredMessage>();
        break;
    case OpenNuendo:
        message = std::make_unique<OpenNuendoMessage>();
        break;
    case CreateNuendo:
        message = std::make_unique<CreateNuendoMessage>();
        break;
    case AssetUpdate:
        message = std::make_unique<AssetUpdateMessage>();
        break;
    case SegmentUpdate:
        message = std::make_unique<SegmentUpdateMessage>();
        break;
    default:
        message = std::make_unique<VexGacMessageBase>(t);
        break;
    }
    message->readBody(root.value(kBody).toObject());
    return message;
}

void VexGacMessageBase::writeBody(JsonWriter& /*w*/) const {}

void VexGacMessageBase::readBody(const QJsonObject& /*body*/) {}

void AssetListMessage::writeBody(JsonWriter& w) const
{
    w.key("AssetFiles");
    writeAssetArray(w, assetFiles);
}

void AssetListMessage::readBody(const QJsonObject& body)
{
    assetFiles = readAssetArray(body.value(QStringLiteral("AssetFiles")));
}

bool AssetListMessage::equals(const VexGacMessageBase& o) const
{
    const auto* other = dynamic_cast<const AssetListMessage*>(&o);
    return other && VexGacMessageBase::equals(o) && assetFiles == other->assetFiles;
}

void SegmentMessage::writeBody(JsonWriter& w) const
{
    w.key("AssetSegmentData");
    writeSegment(w, assetSegmentData);
}

void SegmentMessage::readBody(const QJsonObject& body)
{
    assetSegmentData = readSegment(body.value(QStringLiteral("AssetSegmentData")).toObject());
}

bool SegmentMessage::equals(const VexGacMessageBase& o) const
{
    const auto* other = dynamic_cast<const SegmentMessage*>(&o);
    return other && VexGacMessageBase::equals(o) && assetSegmentData == other->assetSegmentData;
}

void DisplayValueMessage::writeBody(JsonWriter& w) const
{
    w.member("DisplayValue", displayValue);
}

void DisplayValueMessage::readBody(const QJsonObject& body)
{
    displayValue = readString(body, QStringLiteral("DisplayValue"));
}

bool DisplayValueMessage::equals(const VexGacMessageBase& o) const
{
    const auto* other = dynamic_cast<const DisplayValueMessage*>(&o);
    return other && VexGacMessageBase::equals(o) && displayValue == other->displayValue;
}

void OpenNuendoMessage::writeBody(JsonWriter& w) const
{
    w.member("AssetFilePath", assetFilePath);
}

void OpenNuendoMessage::readBody(const QJsonObject& body)
{
    assetFilePath = readString(body, QStringLiteral("AssetFilePath"));
}

bool OpenNuendoMessage::equals(const VexGacMessageBase& o) const
{
    const auto* other = dynamic_cast<const OpenNuendoMessage*>(&o);
    return other && VexGacMessageBase::equals(o) && assetFilePath == other->assetFilePath;
}

} // namespace Vexmw

#pragma once

#include <QByteArray>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

class QJsonObject;

namespace Vexmw {

// Texts are 8-bit UTF-8, as the SDK takes them.

struct AssetMetaData
{
    std::string projectPath;
    std::string repositoryUrl;
    double startTime = 0.0;
    double length = 0.0;
    bool operator==(const AssetMetaData& o) const;
    bool operator!=(const AssetMetaData& o) const { return !(*this == o); }
};

struct AssetData
{
    std::string filePath;
    std::string additionalMetaDataFilePath;
    AssetMetaData metaData;
    bool operator==(const AssetData& o) const;
    bool operator!=(const AssetData& o) const { return !(*this == o); }
};

// One event of a track: the asset placed and where. The JSON form spreads the
// events over four parallel arrays.
struct TrackEvent
{
    AssetData asset;
    double startPosition = 0.0;
    double length = 0.0;
    double dataOffset = 0.0;
    bool operator==(const TrackEvent& o) const;
    bool operator!=(const TrackEvent& o) const { return !(*this == o); }
};

struct TrackData
{
    std::vector<TrackEvent> events;
    std::string name;
    bool operator==(const TrackData& o) const;
    bool operator!=(const TrackData& o) const { return !(*this == o); }
};

struct MarkerData
{
    int id = 0;
    double startPosition = 0.0;
    double endPosition = 0.0;
    bool operator==(const MarkerData& o) const;
    bool operator!=(const MarkerData& o) const { return !(*this == o); }
};

struct SegmentData
{
    std::vector<TrackData> tracks;
    std::vector<MarkerData> markers;
    double tempo = 120.0;
    int timeSignatureNumerator = 4;
    int timeSignatureDenominator = 4;
    bool operator==(const SegmentData& o) const;
    bool operator!=(const SegmentData& o) const { return !(*this == o); }
};

class JsonWriter;

// A message exchanged with the server. Its JSON form is
// {"VexGacMessageHeader": {"Type": t, "Version": 1}, "VexGacMessageBody": {...}}.
class VexGacMessageBase
{
public:
    enum Type : std::int32_t
    {
        AssetExported = 0,
        AssetTransferred = 1,
        SegmentTransferred = 2,
        OpenNuendo = 3,
        CreateNuendo = 4,
        AssetUpdate = 5,
        SegmentUpdate = 6,
    };
    static constexpr int kVersion = 1;

    explicit VexGacMessageBase(std::int32_t type)
        : m_type(type)
    {}
    virtual ~VexGacMessageBase() = default;

    std::int32_t type() const { return m_type; }

    // Compact JSON text with every member in its documented order.
    QByteArray toJson() const;
    // The record named by the document's "Type"; an unknown type gives a bare
    // base record. Null when the text is not a message of version 1.
    static std::unique_ptr<VexGacMessageBase> fromJson(const QByteArray& json);

    virtual bool equals(const VexGacMessageBase& o) const { return m_type == o.m_type; }

protected:
    virtual void writeBody(JsonWriter& w) const;
    virtual void readBody(const QJsonObject& body);

    VexGacMessageBase(const VexGacMessageBase&) = default;
    VexGacMessageBase& operator=(const VexGacMessageBase&) = default;

private:
    std::int32_t m_type;
};

class AssetListMessage : public VexGacMessageBase
{
public:
    std::vector<AssetData> assetFiles;
    bool equals(const VexGacMessageBase& o) const override;

protected:
    using VexGacMessageBase::VexGacMessageBase;
    void writeBody(JsonWriter& w) const override;
    void readBody(const QJsonObject& body) override;
};

class SegmentMessage : public VexGacMessageBase
{
public:
    SegmentData assetSegmentData;
    bool equals(const VexGacMessageBase& o) const override;

protected:
    using VexGacMessageBase::VexGacMessageBase;
    void writeBody(JsonWriter& w) const override;
    void readBody(const QJsonObject& body) override;
};

class DisplayValueMessage : public VexGacMessageBase
{
public:
    std::string displayValue;
    bool equals(const VexGacMessageBase& o) const override;

protected:
    using VexGacMessageBase::VexGacMessageBase;
    void writeBody(JsonWriter& w) const override;
    void readBody(const QJsonObject& body) override;
};

class AssetExportedMessage final : public AssetListMessage
{
public:
    AssetExportedMessage()
        : AssetListMessage(AssetExported)
    {}
};

class AssetTransferredMessage final : public AssetListMessage
{
public:
    AssetTransferredMessage()
        : AssetListMessage(AssetTransferred)
    {}
};

class SegmentTransferredMessage final : public SegmentMessage
{
public:
    SegmentTransferredMessage()
        : SegmentMessage(SegmentTransferred)
    {}
};

class CreateNuendoMessage final : public SegmentMessage
{
public:
    CreateNuendoMessage()
        : SegmentMessage(CreateNuendo)
    {}
};

class AssetUpdateMessage final : public DisplayValueMessage
{
public:
    AssetUpdateMessage()
        : DisplayValueMessage(AssetUpdate)
    {}
};

class SegmentUpdateMessage final : public DisplayValueMessage
{
public:
    SegmentUpdateMessage()
        : DisplayValueMessage(SegmentUpdate)
    {}
};

class OpenNuendoMessage final : public VexGacMessageBase
{
public:
    OpenNuendoMessage()
        : VexGacMessageBase(OpenNuendo)
    {}
    explicit OpenNuendoMessage(std::string path)
        : VexGacMessageBase(OpenNuendo)
        , assetFilePath(std::move(path))
    {}
    std::string assetFilePath;
    bool equals(const VexGacMessageBase& o) const override;

protected:
    void writeBody(JsonWriter& w) const override;
    void readBody(const QJsonObject& body) override;
};

} // namespace Vexmw

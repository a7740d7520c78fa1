#pragma once

#include <QMetaType>
#include <QString>

#include <cstdint>

// The search filter's criteria as one value: carried by signal from the search
// widget through the manager to the table browser, and filled through a pointer
// by the synchronous "Required" questions.
struct SearchCriteriaStruct
{
    // Comparison modes, the index of the mode choice in the search dialog.
    enum Mode : std::int32_t
    {
        GreaterOrEqual = 0,
        LessOrEqual = 1,
        Equal = 2,
    };
    // Bits of formatMask.
    enum FormatBit : std::uint32_t
    {
        FormatWav = 1u << 0,
        FormatAiff = 1u << 1,
        FormatMp3 = 1u << 2,
        FormatOgg = 1u << 3,
        FormatFlac = 1u << 4,
        FormatError = 1u << 28,
    };

    QString name;
    bool useDetail = false;
    std::uint32_t formatMask =
        FormatWav | FormatAiff | FormatMp3 | FormatOgg | FormatFlac | FormatError;
    bool useRate = false;
    std::int32_t rate = 48000;
    std::int32_t rateMode = GreaterOrEqual;
    bool useChannels = false;
    std::int32_t channels = 1;
    std::int32_t channelsMode = GreaterOrEqual;
    bool useTime = false;
    std::int32_t timeMs = 0;
    std::int32_t timeMode = GreaterOrEqual;
    // Advanced: the Description column's fields must contain this text
    // (letter case aside); empty means no such test.
    QString description;
};

Q_DECLARE_METATYPE(SearchCriteriaStruct)

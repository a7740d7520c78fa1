#pragma once

#include <cstdint>
#include <ctime>
#include <string>

// A file's modification time as the table shows it, "%04d/%02d/%02d
// %02d:%02d:%02d" in local time, kept as the number YYYYMMDDhhmmss: 8 bytes a
// record instead of a string, and it orders as the text does. Empty when the
// file's status could not be read; "0000/00/00 00:00:00" (the number 0) when
// the time could not be converted. Years outside 0..9999, which the text could
// not order by, count as not converted.
class ModifyTime final
{
public:
    ModifyTime() = default;

    // The local time of `seconds` since the epoch.
    static ModifyTime FromSeconds(std::time_t seconds);
    static ModifyTime Unconverted() { return ModifyTime(0); }
    // Reads the text form back; an empty text gives an empty time, any other
    // text that is not in the layout gives Unconverted().
    static ModifyTime FromText(const std::string& text);

    bool empty() const { return m_value < 0; }
    // The table's text; empty when empty.
    std::string text() const;
    // Orders as text() does; -1 when empty.
    std::int64_t number() const { return m_value; }

    friend bool operator==(ModifyTime a, ModifyTime b) { return a.m_value == b.m_value; }
    friend bool operator!=(ModifyTime a, ModifyTime b) { return !(a == b); }

private:
    explicit ModifyTime(std::int64_t value)
        : m_value(value)
    {}

    std::int64_t m_value = -1;
};

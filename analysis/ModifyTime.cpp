#include "ModifyTime.h"

#include <cstdio>

namespace {

std::int64_t pack(int year, int month, int day, int hour, int minute, int second)
{
    return ((((std::int64_t(year) * 100 + month) * 100 + day) * 100 + hour) * 100 + minute) * 100 +
           second;
}

bool inRange(int value, int low, int high)
{
    return value >= low && value <= high;
}

} // namespace

ModifyTime ModifyTime::FromSeconds(std::time_t seconds)
{
    std::tm local{};
    if (!localtime_r(&seconds, &local))
        return Unconverted();
    const int year = local.tm_year + 1900;
    // Leap seconds show as :60; the fields stay two digits wide.
    if (!inRange(year, 0, 9999) || !inRange(local.tm_mon, 0, 11) ||
        !inRange(local.tm_mday, 1, 31) || !inRange(local.tm_hour, 0, 23) ||
        !inRange(local.tm_min, 0, 59) || !inRange(local.tm_sec, 0, 60))
        return Unconverted();
    return ModifyTime(
        pack(year, local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec));
}

ModifyTime ModifyTime::FromText(const std::string& text)
{
    if (text.empty())
        return {};
    int year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0;
    char tail = 0;
    if (text.size() != 19 ||
        std::sscanf(text.c_str(), "%4d/%2d/%2d %2d:%2d:%2d%c", &year, &month, &day, &hour, &minute,
                    &second, &tail) != 6 ||
        !inRange(year, 0, 9999) || !inRange(month, 0, 99) || !inRange(day, 0, 99) ||
        !inRange(hour, 0, 99) || !inRange(minute, 0, 99) || !inRange(second, 0, 99))
        return Unconverted();
    return ModifyTime(pack(year, month, day, hour, minute, second));
}

std::string ModifyTime::text() const
{
    if (m_value < 0)
        return {};
    std::int64_t v = m_value;
    const auto take = [&v] {
        const int field = int(v % 100);
        v /= 100;
        return field;
    };
    const int second = take();
    const int minute = take();
    const int hour = take();
    const int day = take();
    const int month = take();
    const int year = int(v);
    char out[32];
    std::snprintf(out, sizeof out, "%04d/%02d/%02d %02d:%02d:%02d", year, month, day, hour, minute,
                  second);
    return out;
}

#include "QorDate.h"

#include <ctime>
#include <utility>

QorDate::QorDate()
{
    Initialize(0, 0, 0, 0, 0, 0, 0);
}

void QorDate::Initialize(short y, char m, char d, int h, int min, int s, int dow)
{
    if (y > 1000)
    {
        year = y;
        localYear = static_cast<std::int16_t>(y - 1911);
    }
    else
    {
        year = static_cast<std::int16_t>(y + 1911);
        localYear = y;
    }
    month = static_cast<std::int8_t>(m);
    day = static_cast<std::int8_t>(d);
    hour = h;
    hour12 = h < 13 ? h : h - 12;
    afternoon = h > 12 ? 1 : 0;
    minute = min;
    second = s;
    dayOfWeek = dow;
}

void QorDate::GetCurrent()
{
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    Initialize(static_cast<short>(local.tm_year + 1900), static_cast<char>(local.tm_mon + 1),
               static_cast<char>(local.tm_mday), local.tm_hour, local.tm_min, local.tm_sec, local.tm_wday + 1);
    localYear = static_cast<std::int16_t>(local.tm_year - 11);
}

char QorDate::operator==(QorDate o) const
{
    return year == o.year && month == o.month && day == o.day && hour == o.hour && hour12 == o.hour12 &&
           afternoon == o.afternoon && minute == o.minute && second == o.second && dayOfWeek == o.dayOfWeek;
}

char QorDate::operator>(QorDate o) const
{
    if (year != o.year)
        return year > o.year;
    if (month != o.month)
        return month > o.month;
    if (day != o.day)
        return day > o.day;
    if (hour != o.hour)
        return hour > o.hour;
    if (minute != o.minute)
        return minute > o.minute;
    return second > o.second;
}

char QorDate::operator<(QorDate o) const
{
    return o > *this;
}

QorDate& QorDate::operator+=(QorDate)
{
    return *this;
}

short CountAge(QorDate& a, QorDate& b)
{
    const QorDate* later = &a;
    const QorDate* earlier = &b;
    if (b > a)
        std::swap(later, earlier);
    else if (!(a > b))
        return 0;
    short age = static_cast<short>(later->year - earlier->year);
    if (!(later->month >= earlier->month && later->day >= earlier->day))
        --age;
    return age;
}

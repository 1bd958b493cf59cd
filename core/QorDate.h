#pragma once

#include "core/QorExport.h"

#include <cstdint>

class QorFile;

/// Calendar date and time of day, with the year also in the Minguo calendar (year - 1911) and the hour
/// also in 12-hour form. A date is empty when month and day are both 0.
/// \note GetCurrent counts the day of week from Sunday = 1; dates from QorFile::GetFileTime count from
///       Sunday = 0.
class QOR_API QorDate
{
public:
    /// An empty date: year 1911, local year 0, everything else 0.
    QorDate();

    /// A year above 1000 is Western; 1000 or less is a Minguo year (0 gives 1911).
    void Initialize(short year, char month, char day, int hour, int minute, int second, int dayOfWeek);
    /// Fills the date from the local clock.
    void GetCurrent();
    char IsEmpty() const { return month == 0 && day == 0; }

    /// Every field but the local year is compared.
    char operator==(QorDate other) const;
    /// Lexicographic on year, month, day, hour, minute, second.
    char operator>(QorDate other) const;
    char operator<(QorDate other) const;
    /// Date arithmetic is not offered: the date is left unchanged.
    QorDate& operator+=(QorDate other);

    /// Writes the 30-byte form; returns 0.
    unsigned long Save(QorFile& file) const;
    /// Reads the 30-byte form; returns 0.
    unsigned long Load(QorFile& file);

    std::int16_t year = 1911;
    std::int16_t localYear = 0;
    std::int8_t month = 0;
    std::int8_t day = 0;
    std::int32_t hour = 0;
    std::int32_t hour12 = 0;
    std::int32_t afternoon = 0;
    std::int32_t minute = 0;
    std::int32_t second = 0;
    std::int32_t dayOfWeek = 0;
};

/// Whole years from the earlier to the later date; one less unless the later date's month and day are
/// both at least the earlier one's (so 15 March 1990 to 1 May 2000 gives 9). Equal dates give 0.
QOR_API short CountAge(QorDate& a, QorDate& b);

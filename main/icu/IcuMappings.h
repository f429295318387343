#pragma once
// Enumerations of the interface that are checked on their way to ICU. A value that the table does not know throws
// QuorvexException with the text and the code given here; ICU never sees it.

#include <unicode/calendar.h>
#include <unicode/datefmt.h>
#include <unicode/dcfmtsym.h>
#include <unicode/dtfmtsym.h>

namespace QvxICU44 {

/// 0..3: full, long, medium, short. Throws "Unknown UEStyle", 0x80A9CA1D.
[[nodiscard]] icu::DateFormat::EStyle DateStyle(int style);
/// 0..10: year, month, day of month, hour of day, minute, second, millisecond, week of year, year of week-of-year, day
/// of week, day of year. Throws "Unknown calendar date field.", 0xDECF1A87.
[[nodiscard]] UCalendarDateFields DateField(int field);
/// 1..7, Sunday is 1. Throws "Unknown day of week.", 0xA4F1F77D. The same table in both directions.
[[nodiscard]] UCalendarDaysOfWeek DayOfWeek(int day);
/// 0..3. Throws "Unknown width type.", 0x8AAE7D56.
[[nodiscard]] icu::DateFormatSymbols::DtWidthType SymbolWidth(int width);
/// 0..2. Throws "Unknown context type.", 0x0EF0FAE5.
[[nodiscard]] icu::DateFormatSymbols::DtContextType SymbolContext(int context);
/// 0..18. Throws "Unknown symbol id.", 0x576B2DAE.
[[nodiscard]] icu::DecimalFormatSymbols::ENumberFormatSymbol NumberSymbol(int symbol);

} // namespace QvxICU44

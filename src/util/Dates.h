// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Date and time values and their texts.

#include <string>
#include <string_view>

namespace velmora {

// Days since 1899-12-30, the fraction being the time passed since midnight, also on days before that one, so that date
// and time are added. Proleptic Gregorian calendar, years 1 to 9999, no time zone.
using TDateTime = double;

TDateTime EncodeDate(int year, int month, int day);  // raises EConvertError for what is no date
TDateTime EncodeTime(int hour, int minute, int second, int millisecond = 0);  // the same for what is no time
struct TDateParts {
  int year, month, day, hour, minute, second;
};
TDateParts DecodeDateTime(TDateTime value);  // to the nearest second; raises EConvertError outside the years

std::string DateText(TDateTime value);           // yyyy-mm-dd
std::string TimeText(TDateTime value);           // hh:mm:ss
std::string DateTimeText(TDateTime value);       // yyyy-mm-dd hh:mm:ss; the date alone at midnight
std::string ShortDateTimeText(TDateTime value);  // yyyy-mm-dd hh:mm

// "yyyy-mm-dd hh:mm:ss", the time optional; empty text gives 0. Raises "Nothing to StrChop!" or EConvertError.
TDateTime ParseDateTime(std::string_view text);

}  // namespace velmora

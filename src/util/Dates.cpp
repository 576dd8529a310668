// SPDX-License-Identifier: GPL-3.0-or-later
#include "util/Dates.h"

#include <chrono>
#include <cmath>

#include "util/Errors.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {
namespace {

constexpr std::chrono::sys_days kDayZero = std::chrono::year(1899) / 12 / 30;
constexpr int kFirstYear = 1;
constexpr int kLastYear = 9999;
constexpr std::int64_t kSecondsPerDay = 86400;
constexpr double kMillisecondsPerDay = 86400000.0;

bool IsWithin(int value, int low, int high) { return value >= low && value <= high; }

TDateTime ParseDate(std::string text) {
  const std::int32_t year = StrToInt(StrChop("-", text));
  const std::int32_t month = StrToInt(StrChop("-", text));
  return EncodeDate(year, month, StrToInt(text));
}

TDateTime ParseTime(std::string text) {
  const std::int32_t hour = StrToInt(StrChop(":", text));
  const std::int32_t minute = StrToInt(StrChop(":", text));
  return EncodeTime(hour, minute, StrToInt(text));
}

}  // namespace

TDateTime EncodeDate(int year, int month, int day) {
  if (IsWithin(year, kFirstYear, kLastYear) && IsWithin(month, 1, 12) && IsWithin(day, 1, 31)) {
    const std::chrono::year_month_day date{std::chrono::year(year), std::chrono::month(static_cast<unsigned>(month)),
                                           std::chrono::day(static_cast<unsigned>(day))};
    if (date.ok()) return static_cast<TDateTime>((std::chrono::sys_days(date) - kDayZero).count());
  }
  throw EConvertError(Format("'%04d-%02d-%02d' is not a valid date", year, month, day));
}

TDateTime EncodeTime(int hour, int minute, int second, int millisecond) {
  if (!IsWithin(hour, 0, 23) || !IsWithin(minute, 0, 59) || !IsWithin(second, 0, 59) || !IsWithin(millisecond, 0, 999))
    throw EConvertError(Format("'%02d:%02d:%02d.%03d' is not a valid time", hour, minute, second, millisecond));
  return (((hour * 60 + minute) * 60 + second) * 1000 + millisecond) / kMillisecondsPerDay;
}

TDateParts DecodeDateTime(TDateTime value) {
  static const TDateTime kFirst = EncodeDate(kFirstYear, 1, 1);
  static const TDateTime kEnd = EncodeDate(kLastYear, 12, 31) + 1;
  const double rounded = std::round(value * static_cast<double>(kSecondsPerDay));
  // Written so that a value that is no number at all fails too.
  if (!(rounded >= kFirst * kSecondsPerDay && rounded < kEnd * kSecondsPerDay))
    throw EConvertError(Format("'%s' is not a valid date and time", FloatText(value)));
  const std::chrono::seconds seconds(static_cast<std::int64_t>(rounded));
  const auto days = std::chrono::floor<std::chrono::days>(seconds);
  const std::chrono::year_month_day date(kDayZero + days);
  const std::chrono::hh_mm_ss time(seconds - days);
  return {.year = static_cast<int>(date.year()),
          .month = static_cast<int>(static_cast<unsigned>(date.month())),
          .day = static_cast<int>(static_cast<unsigned>(date.day())),
          .hour = static_cast<int>(time.hours().count()),
          .minute = static_cast<int>(time.minutes().count()),
          .second = static_cast<int>(time.seconds().count())};
}

std::string DateText(TDateTime value) {
  const TDateParts parts = DecodeDateTime(value);
  return Format("%04d-%02d-%02d", parts.year, parts.month, parts.day);
}

std::string TimeText(TDateTime value) {
  const TDateParts parts = DecodeDateTime(value);
  return Format("%02d:%02d:%02d", parts.hour, parts.minute, parts.second);
}

std::string DateTimeText(TDateTime value) {
  const std::string time = TimeText(value);
  return time == "00:00:00" ? DateText(value) : DateText(value) + " " + time;
}

std::string ShortDateTimeText(TDateTime value) { return DateText(value) + " " + LeftPart(TimeText(value), 5); }

TDateTime ParseDateTime(std::string_view text) {
  if (text.empty()) return 0;
  std::string rest(text);
  const TDateTime date = ParseDate(StrChop(" ", rest, true));
  return rest.empty() ? date : date + ParseTime(rest);
}

}  // namespace velmora

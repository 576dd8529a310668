// SPDX-License-Identifier: GPL-3.0-or-later
#include "lint/ColumnRules.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <optional>

#include "mysqltext/ColumnParts.h"
#include "mysqltext/ColumnType.h"
#include "mysqltext/TableOptions.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kZeroDate[] =
    "Column %s of table %s has the default %s, which is no date: MySQL refuses it unless its sql_mode allows it.";
constexpr char kGiveDate[] = "Let it be null by default, or give it a date that there is.";
constexpr char kCounter[] =
    "The counter of table %s, column %s, is at %d %% of what %s holds: the next number %s %s of %s.";
constexpr char kLive[] = "is";
constexpr char kInFile[] = "in the file is";
constexpr char kWiden[] = "Make the column %s, and those that refer to it, before it is full.";
constexpr char kStartAnew[] = "Plan now for what becomes of new rows: no larger type is there.";
constexpr char kNoTransactions[] =
    "Table %s is of the engine %s, which knows no transactions: what fails on the way leaves half of its work.";
constexpr char kMakeInnoDb[] = "Make it an InnoDB table, unless it is meant so.";

// --- Dates

// Whether the value begins with a date of which a part is zero: "0000-00-00", "2020-00-10 00:00:00".
bool IsZeroDate(std::string_view value) {
  std::array<int, 3> parts{};
  const char* at = value.data();
  const char* const end = at + value.size();
  for (std::size_t i = 0; i < parts.size(); ++i) {
    const auto [after, fault] = std::from_chars(at, end, parts.at(i));
    const bool goes_on = i + 1 == parts.size() || (after != end && *after == '-');
    if (fault != std::errc() || !goes_on) return false;
    at = after == end ? after : after + 1;
  }
  return parts[1] == 0 || parts[2] == 0;
}

// --- Counters

struct TCounterType {
  std::string_view type;
  std::uint64_t most;  // with a sign; without one twice as many and one more
};
constexpr std::array<TCounterType, 5> kCounterTypes = {{{"tinyint", 127},
                                                        {"smallint", 32767},
                                                        {"mediumint", 8388607},
                                                        {"int", 2147483647},
                                                        {"bigint", 9223372036854775807}}};

std::optional<std::uint64_t> NextNumber(const TTableText& table) {
  const TTableOption* option = table.FindOption("AUTO_INCREMENT");
  if (option == nullptr) return std::nullopt;
  const std::string text = OptionValue(*option);
  std::uint64_t number = 0;
  const auto [end, fault] = std::from_chars(text.data(), text.data() + text.size(), number);
  return fault == std::errc() && end == text.data() + text.size() && number > 0 ? std::optional(number) : std::nullopt;
}

void LookAtCounter(TTableLook& at, const TElement& element, std::uint64_t next) {
  constexpr int kAll = 100, kNearlyFull = 95;
  const TColumnParts& column = element.text.Column();
  const auto* const type = std::ranges::find(kCounterTypes, column.type, &TCounterType::type);
  if (type == kCounterTypes.end()) return;
  const std::uint64_t most = column.is_unsigned ? type->most * 2 + 1 : type->most;
  const auto used = static_cast<long double>(next - 1) * kAll / static_cast<long double>(most);
  const int percent = std::min(static_cast<int>(used), kAll);
  if (percent < at.wishes.counter_percent) return;
  const std::string name = column.type + (column.is_unsigned ? " unsigned" : "");
  const bool largest = name == "bigint unsigned";
  const std::string larger = column.type == "bigint" || column.type == "int" ? "bigint unsigned" : "bigint";
  at.Add(percent >= std::max(kNearlyFull, at.wishes.counter_percent) ? ESeverity::Error : ESeverity::Warning, element,
         Format(kCounter, at.table.name, column.name, percent, name, at.schema.live ? kLive : kInFile,
                std::to_string(next), std::to_string(most)),
         largest ? std::string(kStartAnew) : Format(kWiden, larger));
}

}  // namespace

void LookForZeroDates(TTableLook& at) {
  for (const TElement& element : at.table.elements) {
    if (element.kind != EElement::Column) continue;
    const TColumnParts& column = element.text.Column();
    if (!column.default_value || !InList(column.type, {"date", "datetime", "timestamp"})) continue;
    const TToken& value = TokenAt(element.text.Tokens(), column.default_value->first);
    const bool alone = column.default_value->last == column.default_value->first + 1;
    const bool zero = (value.kind == EToken::String && IsZeroDate(ValueOf(value))) || value.text == "0";
    if (alone && zero)
      at.Add(element, Format(kZeroDate, column.name, at.table.name, element.text.Part(*column.default_value)),
             kGiveDate);
  }
}

void LookForFullCounters(TTableLook& at) {
  const std::optional<std::uint64_t> next = NextNumber(at.table);
  if (!next) return;
  for (const TElement& element : at.table.elements)
    if (element.kind == EElement::Column && element.text.Column().auto_increment) LookAtCounter(at, element, *next);
}

void LookForNoTransactions(TTableLook& at) {
  const std::string engine = LintEngine(at.table);
  if (InList(engine, {"myisam", "aria", "mrg_myisam"}))
    at.Add(Format(kNoTransactions, at.table.name, at.table.FindOption("ENGINE")->value), kMakeInnoDb);
}

}  // namespace velmora

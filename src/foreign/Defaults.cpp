// SPDX-License-Identifier: GPL-3.0-or-later
#include "foreign/Defaults.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>

#include "exact/compare/ServerDefaults.h"
#include "mysqltext/ColumnParts.h"
#include "mysqltext/Lexer.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kNotThere[] = "%s: %s has no such default";
constexpr char kNoValue[] = "%s is no value of a %s";

// The place after the quote that ends what begins at `at`; 0 where none does.
std::size_t AfterQuote(std::string_view text, std::size_t at) {
  const char quote = text[at];
  for (++at; at < text.size(); ++at) {
    if (text[at] != quote) continue;
    if (at + 1 >= text.size() || text[at + 1] != quote) return at + 1;
    ++at;
  }
  return 0;
}

bool IsQuote(char c) { return c == '\'' || c == '"'; }

// The place after the bracket that closes the one at `at`; 0 where none does.
std::size_t AfterBracket(std::string_view text, std::size_t at) {
  int depth = 0;
  while (at < text.size()) {
    if (IsQuote(text[at])) {
      at = AfterQuote(text, at);
      if (at == 0) return 0;
      continue;
    }
    if (text[at] == '(') ++depth;
    if (text[at] == ')' && --depth == 0) return at + 1;
    ++at;
  }
  return 0;
}

// The place of `what`, in lower case, outside quotes and brackets, from `at` on.
std::size_t FindOutside(std::string_view text, std::string_view what, std::size_t at) {
  while (at < text.size()) {
    if (SameText(text.substr(at, what.size()), what)) return at;
    std::size_t next = at + 1;
    if (IsQuote(text[at])) next = AfterQuote(text, at);
    if (text[at] == '(') next = AfterBracket(text, at);
    if (next == 0) break;
    at = next;
  }
  return std::string_view::npos;
}

// What stands between the brackets of a call of `function`, if that is all there is.
std::optional<std::string_view> ArgumentOf(std::string_view text, std::string_view function) {
  if (text.size() <= function.size() || !SameText(text.substr(0, function.size()), function)) return std::nullopt;
  const std::size_t open = text.find_first_not_of(' ', function.size());
  if (open == std::string_view::npos || text[open] != '(' || AfterBracket(text, open) != text.size())
    return std::nullopt;
  return TrimView(text.substr(open + 1, text.size() - open - 2));
}

// cast(x as t), convert(t, x), x::t.
std::optional<std::string_view> WithoutCast(std::string_view text) {
  if (const auto inside = ArgumentOf(text, "cast"))
    if (const std::size_t as = FindOutside(*inside, " as ", 0); as != std::string_view::npos)
      return inside->substr(0, as);
  if (const auto inside = ArgumentOf(text, "convert"))
    if (const std::size_t comma = FindOutside(*inside, ",", 0);
        comma != std::string_view::npos && FindOutside(*inside, ",", comma + 1) == std::string_view::npos)
      return inside->substr(comma + 1);
  const std::size_t colons = FindOutside(text, "::", 0);
  if (colons != std::string_view::npos && colons > 0) return text.substr(0, colons);
  return std::nullopt;
}

// Without what stands around a value: the word "default", "=", brackets, casts.
std::string_view Core(std::string_view text) {
  for (;;) {
    text = TrimView(text);
    constexpr std::string_view kDefault = "default ";
    if (SameText(text.substr(0, kDefault.size()), kDefault))
      text.remove_prefix(kDefault.size());
    else if (text.starts_with('='))
      text.remove_prefix(1);
    else if (text.starts_with('(') && AfterBracket(text, 0) == text.size())
      text = text.substr(1, text.size() - 2);
    else if (const auto inner = WithoutCast(text))
      text = *inner;
    else
      return text;
  }
}

// The text of a literal in quotes, N'..' too.
std::optional<std::string> TextLiteral(std::string_view core) {
  if (core.size() > 1 && (core[0] == 'N' || core[0] == 'n') && IsQuote(core[1])) core.remove_prefix(1);
  if (core.empty() || !IsQuote(core.front()) || AfterQuote(core, 0) != core.size()) return std::nullopt;
  const std::string quote(1, core.front());
  return StrReplace(core.substr(1, core.size() - 2), quote + quote, quote);
}

// --- Calls

enum class ECall { Moment, UtcMoment, Day, Clock, Uuid };

struct TCall {
  std::string_view name;  // in lower case, without brackets
  ECall call;
};
constexpr TCall kCalls[] = {
    {"getdate", ECall::Moment},
    {"sysdatetime", ECall::Moment},
    {"sysdatetimeoffset", ECall::Moment},
    {"now", ECall::Moment},
    {"current_timestamp", ECall::Moment},
    {"localtimestamp", ECall::Moment},
    {"sysdate", ECall::Moment},
    {"systimestamp", ECall::Moment},
    {"datetime", ECall::Moment},
    {"'now'", ECall::Moment},
    {"getutcdate", ECall::UtcMoment},
    {"sysutcdatetime", ECall::UtcMoment},
    {"current_date", ECall::Day},
    {"date", ECall::Day},
    {"curdate", ECall::Day},
    {"'today'", ECall::Day},
    {"trunc(sysdate)", ECall::Day},
    {"current_time", ECall::Clock},
    {"time", ECall::Clock},
    {"localtime", ECall::Clock},
    {"newid", ECall::Uuid},
    {"newsequentialid", ECall::Uuid},
    {"sys_guid", ECall::Uuid},
    {"gen_uuid", ECall::Uuid},
    {"uuid", ECall::Uuid},
    {"genguid", ECall::Uuid},
    {"uuid_to_char(gen_uuid())", ECall::Uuid},
};

std::optional<ECall> CallOf(std::string_view core) {
  std::string name = LowerText(core);
  std::erase(name, ' ');
  for (const TCall& row : kCalls)
    if (row.name == name) return row.call;
  // An argument says how many digits of a second are meant.
  const std::size_t open = name.find('(');
  if (open == std::string::npos || name.back() != ')') return std::nullopt;
  const std::string inside = name.substr(open + 1, name.size() - open - 2);
  if (inside.find_first_not_of("0123456789") != std::string::npos) return std::nullopt;
  name.resize(open);
  for (const TCall& row : kCalls)
    if (row.name == name) return row.call;
  return std::nullopt;
}

// --- Values

struct TWordValue {
  std::string_view word;
  int value;
};
constexpr TWordValue kBooleans[] = {{"true", 1}, {"false", 0}, {".t.", 1}, {".f.", 0}, {".y.", 1},
                                    {".n.", 0},  {"yes", 1},   {"no", 0},  {"on", 1},  {"off", 0},
                                    {"y", 1},    {"n", 0},     {"t", 1},   {"f", 0}};

std::optional<int> BooleanOf(std::string_view word) {
  for (const TWordValue& row : kBooleans)
    if (SameText(word, row.word)) return row.value;
  return std::nullopt;
}

// The digits of a number, a sign in front; (-(1)) and $5 are numbers, too.
std::optional<std::string> NumberOf(std::string_view core) {
  std::string text(TrimView(core));
  // Of two numbers side by side nobody makes one.
  const std::size_t last = text.find_last_of("0123456789.");
  if (text.find_first_of(" ()", std::min(text.find_first_of("0123456789."), text.size())) < last + 1)
    return std::nullopt;
  std::erase_if(text, [](char c) { return c == '(' || c == ')' || c == ' ' || c == '$'; });
  if (text.starts_with('+')) text.erase(0, 1);
  if (text.starts_with('.')) text.insert(0, 1, '0');
  if (text.starts_with("-.")) text.insert(1, 1, '0');
  if (text.ends_with('.')) text.pop_back();
  return TryStrToFloat(text) ? std::optional(text) : std::nullopt;
}

bool IsDigits(std::string_view text) {
  return !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
}

// Whether there is such a day, and servers take it whatever their mode.
bool IsDay(std::string_view year, std::string_view month, std::string_view day) {
  const auto number = [](std::string_view digits) { return std::atoi(std::string(digits).c_str()); };
  const std::chrono::year_month_day date(std::chrono::year(number(year)),
                                         std::chrono::month(static_cast<unsigned>(number(month))),
                                         std::chrono::day(static_cast<unsigned>(number(day))));
  return number(year) > 0 && date.ok();
}

// "2024-05-31", or "20240531" or "5/31/2024" as the first.
std::optional<std::string> DayOf(std::string_view text) {
  constexpr std::size_t kBareDigits = 8;
  if (IsDigits(text) && text.size() == kBareDigits) {
    const std::string day = Format("%s-%s-%s", text.substr(0, 4), text.substr(4, 2), text.substr(6));
    return DayOf(day);
  }
  const char sign = text.find('/') != std::string_view::npos ? '/' : '-';
  const std::size_t first = text.find(sign);
  const std::size_t second = first == std::string_view::npos ? first : text.find(sign, first + 1);
  if (second == std::string_view::npos) return std::nullopt;
  std::array<std::string_view, 3> parts = {text.substr(0, first), text.substr(first + 1, second - first - 1),
                                           text.substr(second + 1)};
  if (sign == '/') parts = {parts[2], parts[0], parts[1]};
  constexpr std::size_t kYearDigits = 4;
  for (const std::string_view part : parts)
    if (!IsDigits(part) || part.size() > kYearDigits) return std::nullopt;
  if (parts[0].size() != kYearDigits || !IsDay(parts[0], parts[1], parts[2])) return std::nullopt;
  const auto two = [](std::string_view part) { return (part.size() == 1 ? "0" : "") + std::string(part); };
  return std::string(parts[0]) + "-" + two(parts[1]) + "-" + two(parts[2]);
}

// "10:20" and "10:20:30.5" as they are, with seconds; "1:20:00 PM" as "13:20:00".
std::optional<std::string> ClockOf(std::string_view text) {
  constexpr int kNoon = 12, kHours = 24, kSixty = 60;
  const bool evening = SameText(text.substr(std::max<std::size_t>(text.size(), 2) - 2), "pm");
  const bool half = evening || SameText(text.substr(std::max<std::size_t>(text.size(), 2) - 2), "am");
  if (half) text = TrimView(text.substr(0, text.size() - 2));
  TStringList parts;
  SplitText(":", text, parts);
  if (parts.size() < 2 || parts.size() > 3) return std::nullopt;
  std::string fraction;
  if (const std::size_t point = parts.back().find('.'); parts.size() == 3 && point != std::string::npos) {
    fraction = parts[2].substr(point);
    parts[2].resize(point);
  }
  if (parts.size() == 2) parts.emplace_back("00");
  for (const std::string& part : parts)
    if (!IsDigits(part) || part.size() > 2) return std::nullopt;
  if (!fraction.empty() && !IsDigits(fraction.substr(1))) return std::nullopt;
  int hour = StrToInt(parts[0]);
  if (half && (hour < 1 || hour > kNoon)) return std::nullopt;
  if (half) hour = hour % kNoon + (evening ? kNoon : 0);
  if (hour >= kHours || StrToInt(parts[1]) >= kSixty || StrToInt(parts[2]) >= kSixty) return std::nullopt;
  return Format("%02d:%s:%s%s", hour, parts[1], parts[2], fraction);
}

// A date, a time or both, as MySQL writes them for the type; nothing for what is neither.
std::optional<std::string> MomentOf(std::string_view text, const std::string& type) {
  text = TrimView(text);
  const std::size_t gap = text.find_first_of(" T");
  auto day = DayOf(text.substr(0, gap));
  const std::string_view rest = !day ? text : gap == std::string_view::npos ? "" : TrimView(text.substr(gap + 1));
  auto clock = ClockOf(rest);
  if (type == "time") return clock;
  if (!day || (gap != std::string_view::npos && !clock)) return std::nullopt;
  if (type == "date") return day;
  return *day + " " + clock.value_or("00:00:00");
}

bool IsTextType(const TColumnText& type) {
  return type.type.ends_with("text") || type.type.ends_with("blob") || type.type == "json" || IsShapeType(type.type);
}

bool IsMomentType(const TColumnText& type) { return IsTimeType(type.type) || type.type == "date"; }

struct TBits {
  std::string_view type;
  int bits;
};
constexpr TBits kBits[] = {{"tinyint", 8}, {"smallint", 16}, {"mediumint", 24}, {"int", 32}, {"bigint", 64}};

// Of a whole number: its digits, without a sign.
bool FitsBits(std::string_view printed, int bits, bool is_unsigned) {
  const bool negative = printed.starts_with('-');
  if (negative) printed.remove_prefix(1);
  std::uint64_t digits = 0;
  if (std::from_chars(printed.data(), printed.data() + printed.size(), digits).ec != std::errc()) return false;
  const std::uint64_t half = std::uint64_t{1} << (bits - 1);
  return digits <= (is_unsigned ? 2 * (half - 1) + 1 : negative ? half : half - 1);
}

// Sources take a default that their column cannot hold; servers refuse the table. They round it to the digits that the
// type keeps before they look.
bool FitsType(const std::string& number, const TColumnText& type) {
  constexpr long long kUsualDigits = 10;
  const std::vector<TToken> tokens = Tokens(number);
  const std::string printed = PrintedDefault(type, TTokens(tokens).first(tokens.size() - 1), false).value_or(number);
  if (type.type == "bit") return std::ssize(printed) - std::ssize(std::string_view("b''")) <= type.Length().value_or(1);
  if (type.type == "float") return std::abs(TryStrToFloat(number).value_or(0)) <= std::numeric_limits<float>::max();
  if (type.is_unsigned && number.starts_with('-') && TryStrToFloat(number) != 0.0) return false;
  const std::size_t first = std::min(printed.find_first_of("123456789."), printed.size());
  if (type.type == "decimal")
    return static_cast<long long>(std::min(printed.find('.'), printed.size()) - first) <=
           type.Length().value_or(kUsualDigits) - type.Fraction().value_or(0);
  const auto* row = std::ranges::find(kBits, type.type, &TBits::type);
  return row == std::end(kBits) || FitsBits(printed, row->bits, type.is_unsigned);
}

class TDefaultMaker {
 public:
  TDefaultMaker(const TForeignColumn& column, const TColumnText& type, const TTargetServer& server)
      : column_(column), type_(type), server_(server) {}

  TMadeDefault Make() {
    if (!column_.default_text || column_.counting == ECounting::Counts) return {};
    core_ = Core(*column_.default_text);
    if (core_.empty() || SameText(core_, "null") || SameText(core_, ".null.")) return {};
    const auto call = CallOf(core_);
    const auto text = TextLiteral(core_);
    // A text that says "NOW" is one where texts are kept.
    if (call && !(text && type_.HasLetters())) return OfCall(*call);
    if (text) return OfText(*text);
    return OfWord();
  }

 private:
  TMadeDefault NoForm() const { return {{}, *column_.default_text}; }
  TMadeDefault NoValue() const { return {{}, Format(kNoValue, *column_.default_text, type_.type)}; }

  TMadeDefault Expression(const std::string& text) const {
    if (server_.HasExpressionDefaults()) return {"(" + text + ")"};
    return {{}, Format(kNotThere, *column_.default_text, server_.Text())};
  }

  TMadeDefault OfCall(ECall call) const {
    switch (call) {
      case ECall::Moment:
        return OfMoment();
      case ECall::UtcMoment:
        return IsMomentType(type_) ? Expression("utc_timestamp()") : NoForm();
      case ECall::Day:
        return type_.type == "date" || type_.type == "datetime" ? Expression("curdate()") : NoForm();
      case ECall::Clock:
        return type_.type == "time" ? Expression("curtime()") : NoForm();
      case ECall::Uuid:
        return OfUuid();
    }
    return NoForm();
  }

  TMadeDefault OfMoment() const {
    if (type_.type == "date") return Expression("curdate()");
    if (type_.type == "time") return Expression("curtime()");
    if (type_.type != "datetime" && type_.type != "timestamp") return NoForm();
    const long long fraction = type_.Fraction().value_or(0);
    if (type_.type == "datetime" && !server_.HasMomentDefaults())
      return {{}, Format(kNotThere, *column_.default_text, server_.Text())};
    return {fraction == 0 ? "current_timestamp()" : Format("current_timestamp(%d)", fraction)};
  }

  TMadeDefault OfUuid() const {
    if (type_.type == "uuid" || (type_.HasLetters() && !IsTextType(type_))) return Expression("uuid()");
    if (type_.type == "binary" || type_.type == "varbinary") return Expression("unhex(replace(uuid(),'-',''))");
    return NoForm();
  }

  TMadeDefault OfText(const std::string& text) const {
    if (type_.HasLetters()) return Quoted(text);
    if (Trim(text).empty() && type_.IsNumber()) return {};
    if (IsMomentType(type_)) {
      const auto moment = MomentOf(text, type_.type);
      return moment ? TMadeDefault{QuotedText(*moment)} : NoValue();
    }
    if (type_.IsNumber()) return OfNumber(text);
    return type_.type == "binary" || type_.type == "varbinary" ? Quoted(text) : NoForm();
  }

  TMadeDefault Quoted(const std::string& text) const {
    const bool sized = type_.type == "char" || type_.type == "varchar";
    if (sized && static_cast<long long>(CharCount(text)) > type_.Length().value_or(1)) return NoValue();
    if (!IsTextType(type_)) return {QuotedText(text)};
    if (server_.HasExpressionDefaults()) return {server_.mariadb ? QuotedText(text) : "(" + QuotedText(text) + ")"};
    return {{}, Format(kNotThere, *column_.default_text, server_.Text())};
  }

  TMadeDefault OfNumber(std::string_view text) const {
    const auto number = NumberOf(text);
    if (!number) {
      const auto word = BooleanOf(Trim(std::string(text)));
      return word && column_.family == EFamily::Boolean ? TMadeDefault{Format("%d", *word)} : NoValue();
    }
    if (column_.family == EFamily::Boolean) return {TryStrToFloat(*number) == 0.0 ? "0" : "1"};
    return FitsType(*number, type_) ? TMadeDefault{*number} : NoValue();
  }

  // Numbers, words, dates in signs of their own.
  TMadeDefault OfWord() const {
    if (core_.size() > 2 && core_.front() == '#' && core_.back() == '#')
      return OfText(std::string(core_.substr(1, core_.size() - 2)));
    if (core_.starts_with("{") && core_.ends_with("}"))
      return OfText(RemoveChar(RemoveChar(RemoveChar(core_, '{'), '}'), '^'));
    const auto number = NumberOf(core_);
    if (type_.IsNumber()) {
      if (!number && !(BooleanOf(core_) && column_.family == EFamily::Boolean)) return NoForm();
      return OfNumber(core_);
    }
    if (type_.type == "bit") return !number ? NoForm() : FitsType(*number, type_) ? TMadeDefault{*number} : NoValue();
    if (number && type_.HasLetters()) return Quoted(std::string(core_));
    const bool bytes = type_.type == "binary" || type_.type == "varbinary";
    if (bytes && SameText(core_.substr(0, 2), "0x") && core_.size() % 2 == 0 &&
        core_.find_first_not_of("0123456789abcdefABCDEF", 2) == std::string_view::npos)
      return core_.size() == 2 ? TMadeDefault{"''"} : TMadeDefault{"x'" + std::string(core_.substr(2)) + "'"};
    return NoForm();
  }

  const TForeignColumn& column_;
  const TColumnText& type_;
  const TTargetServer& server_;
  std::string_view core_;
};

}  // namespace

TMadeDefault MakeDefault(const TForeignColumn& column, const TColumnText& type, const TTargetServer& server) {
  return TDefaultMaker(column, type, server).Make();
}

}  // namespace velmora

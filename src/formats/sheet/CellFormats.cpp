// SPDX-License-Identifier: GPL-3.0-or-later
#include "formats/sheet/CellFormats.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "util/Dates.h"
#include "util/Text.h"

namespace velmora {

namespace {

struct TFormatRange {
  unsigned first, last;
};
// Of the formats that need no pattern; those from 27 on are of East Asian and Thai releases.
constexpr TFormatRange kMomentFormats[] = {{14, 22}, {27, 36}, {45, 47}, {50, 58}, {71, 81}};

constexpr double kSecondsPerDay = 86400;
constexpr double kLeapDay = 60;        // the 29th of February 1900
constexpr double kFirstOf1904 = 1462;  // 1904-01-01
constexpr double kFirstOf10000 = 2958466;

constexpr std::string_view kGeneral = "general";
constexpr std::string_view kMomentLetters = "ymdhsebg";
constexpr std::string_view kElapsedLetters = "hms";

enum class EMark { None, Number, Moment, EndOfPart };

// The marks of a pattern, one after the other; what is quoted or escaped is passed over.
class TPatternScanner {
 public:
  explicit TPatternScanner(std::string_view pattern) : rest_(pattern) {}

  bool AtEnd() const { return rest_.empty(); }
  EMark Next() {
    const char c = LowerChar(rest_.front());
    if (SameText(rest_.substr(0, kGeneral.size()), kGeneral)) return Take(kGeneral.size(), EMark::Number);
    if (c == '"') return Take(EndOf('"'), EMark::None);
    if (c == '[') return Bracket();
    if (c == ';') return Take(1, EMark::EndOfPart);
    if (c == '\\' || c == '_' || c == '*') return Take(2, EMark::None);
    if (c == 'e' && rest_.size() > 1 && (rest_[1] == '+' || rest_[1] == '-')) return Take(2, EMark::Number);
    if (c == '0' || c == '#' || c == '?') return Take(1, after_seconds_ ? EMark::None : EMark::Number);
    after_seconds_ = c == 's' || (after_seconds_ && (c == '.' || c == ','));
    return Take(1, kMomentLetters.find(c) != std::string_view::npos ? EMark::Moment : EMark::None);
  }

 private:
  // The number of characters up to `c`, itself included.
  std::size_t EndOf(char c) const { return std::min(rest_.find(c, 1), rest_.size() - 1) + 1; }
  EMark Take(std::size_t count, EMark mark) {
    rest_.remove_prefix(std::min(count, rest_.size()));
    return mark;
  }
  // "[h]", "[mm]", "[ss]" are times that have passed, other brackets hold colours, conditions and languages.
  EMark Bracket() {
    const std::size_t size = EndOf(']');
    const std::string_view inside = rest_.substr(1, size - std::min<std::size_t>(size, 2));
    const bool elapsed = !inside.empty() && std::ranges::all_of(inside, [](char c) {
      return kElapsedLetters.find(LowerChar(c)) != std::string_view::npos;
    });
    after_seconds_ = elapsed;
    return Take(size, elapsed ? EMark::Moment : EMark::None);
  }

  std::string_view rest_;
  bool after_seconds_ = false;  // where digits are fractions of one
};

}  // namespace

// The parts are for positive and negative numbers, zero and texts, or have conditions. One that is for moments is
// enough, since zero often shows as something else. Places for digits outweigh letters, as in "0 Std".
bool IsMomentPattern(std::string_view pattern) {
  TPatternScanner scanner(pattern);
  bool has_letters = false, has_digits = false;
  while (!scanner.AtEnd()) {
    const EMark mark = scanner.Next();
    if (mark == EMark::EndOfPart) {
      if (has_letters && !has_digits) return true;
      has_letters = has_digits = false;
    }
    has_letters = has_letters || mark == EMark::Moment;
    has_digits = has_digits || mark == EMark::Number;
  }
  return has_letters && !has_digits;
}

bool TCellFormats::IsMoment(std::size_t style) const {
  if (style >= styles_.size()) return false;
  const unsigned format = styles_[style];
  if (format == 0) return false;  // "General", which some programs spell in their user's language
  if (const auto found = patterns_.find(format); found != patterns_.end()) return found->second;
  return std::ranges::any_of(kMomentFormats,
                             [&](const TFormatRange& each) { return each.first <= format && format <= each.last; });
}

TVariant TCellFormats::Value(double number, std::size_t style) const {
  if (!std::isfinite(number)) return {};
  if (!IsMoment(style) || number < 0) return number;
  double days = std::round(number * kSecondsPerDay) / kSecondsPerDay;
  if (number < 1) return TMoment{days < 1 ? days : 0};
  if (from_1904_) days += kFirstOf1904;
  if (days >= kFirstOf10000) return number;
  if (std::floor(days) == kLeapDay) {
    const std::string time = TimeText(days - kLeapDay);
    return "1900-02-29" + (days == kLeapDay ? "" : " " + time);
  }
  return TMoment{days < kLeapDay ? days + 1 : days};
}

}  // namespace velmora

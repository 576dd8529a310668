// SPDX-License-Identifier: GPL-3.0-or-later
#include "util/Format.h"

#include <fmt/args.h>
#include <fmt/printf.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>

#include "util/Errors.h"

namespace velmora {
namespace {

constexpr int kFloatDigits = 15;

// "1e+20" and "1e-05" as "1E20" and "1E-5".
std::string ShortExponent(std::string_view text) {
  const std::size_t mark = text.find('e');
  if (mark == std::string_view::npos) return std::string(text);
  std::string result(text.substr(0, mark));
  result += 'E';
  std::string_view exponent = text.substr(mark + 1);
  if (exponent.front() == '-') result += '-';
  exponent.remove_prefix(exponent.find_first_not_of("+-0"));
  return result.append(exponent);
}

// A number takes up the whole of `text`, or there is none.
template <class T, class... Form>
std::optional<T> WholeNumber(std::string_view text, Form... form) {
  T value{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, form...);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return value;
}

// Takes a "+" off; a second sign after it makes it no number.
std::string_view WithoutPlus(std::string_view text) {
  return text.size() > 1 && text[0] == '+' && text[1] != '-' ? text.substr(1) : text;
}

}  // namespace

std::string FormatArgs(std::string_view pattern, std::initializer_list<TFormatArg> args) {
  fmt::dynamic_format_arg_store<fmt::printf_context> store;
  for (const TFormatArg& arg : args) std::visit([&store](const auto& value) { store.push_back(value); }, arg.value);
  return fmt::vsprintf(fmt::string_view(pattern), store);
}

void RaiseNoInteger(std::string_view text) { throw EConvertError(Format("'%s' is not a valid integer value", text)); }

std::optional<std::int64_t> TryStrToInt(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
  if (!text.starts_with('$')) return WholeNumber<std::int64_t>(WithoutPlus(text));
  const auto bits = WholeNumber<std::uint64_t>(text.substr(1), 16);
  if (!bits || *bits > std::numeric_limits<std::int64_t>::max()) return std::nullopt;
  return static_cast<std::int64_t>(*bits);
}

std::int32_t StrToInt(std::string_view text) {
  const std::int64_t value = StrToInt64(text);
  if (value != static_cast<std::int32_t>(value)) RaiseNoInteger(text);
  return static_cast<std::int32_t>(value);
}

std::int64_t StrToInt64(std::string_view text) {
  const auto value = TryStrToInt(text);
  if (!value) RaiseNoInteger(text);
  return *value;
}

std::optional<double> TryStrToFloat(std::string_view text) {
  // What is no digit, sign, point or exponent would be one of the words that name infinity and not-a-number.
  if (text.find_first_not_of("0123456789+-.eE") != std::string_view::npos) return std::nullopt;
  return WholeNumber<double>(WithoutPlus(text), std::chars_format::general);
}

double StrToFloat(std::string_view text) {
  const auto value = TryStrToFloat(text);
  if (!value) throw EConvertError(Format("'%s' is not a valid floating point value", text));
  return *value;
}

std::string FloatText(double value) {
  if (std::isnan(value)) return "NAN";
  if (std::isinf(value)) return value < 0 ? "-INF" : "INF";
  if (value == 0) return "0";  // also for the negative zero
  std::array<char, 32> buffer;
  const auto [end, error] =
      std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, std::chars_format::general, kFloatDigits);
  return ShortExponent(std::string_view(buffer.data(), end));
}

}  // namespace velmora

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Texts from printf-like patterns with %s and %d, and numbers to and from text, all in the C locale.

#include <concepts>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace velmora {

// One value for a pattern: a whole number, a number, or a text that outlives the call.
struct TFormatArg {
  template <std::integral T>
  TFormatArg(T number) : value(static_cast<std::int64_t>(number)) {}  // NOLINT: any number is one
  TFormatArg(double number) : value(number) {}                        // NOLINT
  TFormatArg(std::string_view text) : value(text) {}                  // NOLINT
  TFormatArg(const std::string& text) : value(text) {}                // NOLINT
  TFormatArg(const char* text) : value(text) {}                       // NOLINT

  std::variant<std::int64_t, double, std::string_view> value;
};

std::string FormatArgs(std::string_view pattern, std::initializer_list<TFormatArg> args);

// The formatting library stays out of this header, which nearly every source includes.
template <class... Args>
std::string Format(std::string_view pattern, const Args&... args) {
  return FormatArgs(pattern, {TFormatArg(args)...});
}

// Sign and decimal digits, or "$" and hexadecimal digits, blanks in front allowed; nothing else.
std::optional<std::int64_t> TryStrToInt(std::string_view text);
// The same; raises EConvertError "'%s' is not a valid integer value". Values beyond 32 bits are refused.
std::int32_t StrToInt(std::string_view text);
std::int64_t StrToInt64(std::string_view text);           // the same with 64 bits
[[noreturn]] void RaiseNoInteger(std::string_view text);  // the error of both

// An optional sign, digits, a decimal point, an exponent; nothing else, so no blanks and no "inf" or "nan".
std::optional<double> TryStrToFloat(std::string_view text);
double StrToFloat(std::string_view text);  // raises EConvertError "'%s' is not a valid floating point value"

// General format with 15 significant digits and a decimal point, as in "1.5"; with an exponent below 0.0001 and from
// 1E15 on, as in "1E-5" or "1E20".
std::string FloatText(double value);

}  // namespace velmora

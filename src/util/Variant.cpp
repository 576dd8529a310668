// SPDX-License-Identifier: GPL-3.0-or-later
#include "util/Variant.h"

#include <cmath>
#include <utility>

#include "util/Format.h"

namespace velmora {
namespace {

template <class... F>
struct TOverloaded : F... {
  using F::operator()...;
};
template <class... F>
TOverloaded(F...) -> TOverloaded<F...>;  // which not every compiler finds by itself

std::int64_t RoundToInt(double value) {
  constexpr double kLimit = 9223372036854775808.0;  // 2 to the 63rd
  const double rounded = std::nearbyint(value);
  if (!(rounded >= -kLimit && rounded < kLimit)) RaiseNoInteger(FloatText(value));
  return static_cast<std::int64_t>(rounded);
}

}  // namespace

TVariant IfNull(const TVariant& value, const TVariant& defaultValue) { return VarIsNull(value) ? defaultValue : value; }

std::string VarToText(const TVariant& value) {
  return std::visit(TOverloaded{[](std::monostate) { return std::string(); },
                                [](bool truth) { return std::string(truth ? "True" : "False"); },
                                [](std::int64_t number) { return std::to_string(number); },
                                [](double number) { return FloatText(number); },
                                [](const TMoment& moment) { return DateTimeText(moment.value); },
                                [](const std::string& text) { return text; }},
                    value);
}

std::string VarToText(TVariant&& value) {
  std::string* text = std::get_if<std::string>(&value);
  return text != nullptr ? std::move(*text) : VarToText(value);
}

std::int64_t VarToInt(const TVariant& value) {
  return std::visit(
      TOverloaded{[](std::monostate) { return std::int64_t{0}; }, [](bool truth) { return std::int64_t{truth}; },
                  [](std::int64_t number) { return number; }, [](double number) { return RoundToInt(number); },
                  [](const TMoment& moment) { return RoundToInt(moment.value); },
                  [](const std::string& text) { return StrToInt64(text); }},
      value);
}

double VarToFloat(const TVariant& value) {
  return std::visit(
      TOverloaded{[](std::monostate) { return 0.0; }, [](bool truth) { return truth ? 1.0 : 0.0; },
                  [](std::int64_t number) { return static_cast<double>(number); }, [](double number) { return number; },
                  [](const TMoment& moment) { return moment.value; },
                  [](const std::string& text) { return StrToFloat(text); }},
      value);
}

}  // namespace velmora

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The keys of engines, and values for them.

#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <utility>

namespace velmora {

enum class EKeyKind {
  Text,
  Secret,   // a text that is not shown unasked
  Boolean,  // "Y", anything else is false
  Port      // a decimal integer
};

struct TEngineKey {
  std::string_view name;
  EKeyKind kind = EKeyKind::Text;
  std::string_view standard = {};  // the value where none is given; in task files every key stands
};

// Values by key, as texts, the way that task files hold them. A key that is not there has the empty value.
class TEngineValues {
 public:
  void Set(std::string_view key, std::string value) { values_.insert_or_assign(std::string(key), std::move(value)); }
  bool Has(std::string_view key) const { return values_.contains(key); }
  std::string Text(std::string_view key) const;
  bool Boolean(std::string_view key) const { return Text(key) == "Y"; }
  int Integer(std::string_view key) const;  // raises EConvertError

 private:
  std::map<std::string, std::string, std::less<>> values_;
};

}  // namespace velmora

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Column types of the server: as they are declared, and as they and their values go over the wire.

#include <optional>
#include <string>
#include <string_view>

#include "support/tds/TdsWire.h"

namespace velmora::testing {

// A declared type: "int", "decimal(9,2)", "nvarchar(max)".
class TTdsType {
 public:
  explicit TTdsType(std::string_view declared);  // raises std::runtime_error for an unknown name

  void PutInfo(TTdsWriter& out) const;  // TYPE_INFO
  // Whole numbers and letters come as texts; all else has to be given as its bytes on the wire.
  void PutValue(TTdsWriter& out, const std::optional<std::string>& value) const;

 private:
  std::string Encoded(const std::string& value) const;

  struct TRow;
  static const TRow kRows[];
  const TRow* row_;
  int first_ = 0, second_ = 0;  // what stands in brackets
  bool max_ = false;
};

}  // namespace velmora::testing

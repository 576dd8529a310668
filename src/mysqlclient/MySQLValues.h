// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Result columns and values as a MySQL server sends them, turned into fields and values of a dataset. Common to all
// backends that talk to a server.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/Dataset.h"
#include "util/Variant.h"

namespace velmora {

// What a server tells about a column of a result; numbers as in its protocol.
struct TMyColumn {
  std::string name;
  int type = 0;
  unsigned flags = 0;
  unsigned charset = 0;
  std::uint64_t length = 0;  // bytes, in the connection's character set
};

TFieldDef MyFieldDef(const TMyColumn& column);

// How the texts of a column become values; made once per column of a result.
class TMyValueReader {
 public:
  // `times_as_sent`: a date or time stays text where a moment says less than the server: with a fraction of a second,
  // which a moment rounds, and for "0000-00-00".
  explicit TMyValueReader(const TMyColumn& column, bool times_as_sent = false);

  // Whole numbers come as such, beyond 64 bits with sign as text; decimals as text, which keeps them exact; floats as
  // numbers; bits as the whole number they spell. A date without year, month and day ("0000-00-00") is null, as no
  // date stands for it; what else is no date or no time of a day ("2005-00-10", "-01:00:00") stays text. Nothing is
  // null; texts and bytes are themselves.
  TVariant Read(std::optional<std::string_view> text) const;

 private:
  using TRead = TVariant (*)(std::string_view text);

  TRead read_;
  bool times_as_sent_;
};

}  // namespace velmora

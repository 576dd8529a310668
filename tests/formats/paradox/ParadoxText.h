#pragma once

#include <string>

#include "formats/paradox/ParadoxReader.h"
#include "util/Variant.h"

namespace velmora::testing {

// A value with its kind, as in "int 5", "float 0.5", "text a", "null".
inline std::string Shown(const TVariant& value) {
  static constexpr const char* kKinds[] = {"null", "truth ", "int ", "float ", "moment ", "text "};
  return kKinds[value.index()] + VarToText(value);
}

// The next `count` records as texts: values joined by "|", each record ended by ";".
inline std::string ReadAll(TPxTable& table, std::int64_t count) {
  std::string text;
  for (std::int64_t i = 0; i < count; ++i) {
    table.ReadRecord(i);
    for (std::size_t k = 0; k < table.Values().size(); ++k) text += (k > 0 ? "|" : "") + VarToText(table.Values()[k]);
    text += ";";
  }
  return text;
}

inline std::string ReadAll(TPxTable& table) { return ReadAll(table, table.Header().numRecords); }

}  // namespace velmora::testing

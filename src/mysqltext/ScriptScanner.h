#pragma once

// Where the statements of a script stand.

#include <cstddef>
#include <string_view>
#include <vector>

namespace velmora {

// The places (start, length) of the statements of a script: ends are ";" outside quotes, backticks and comments.
// Comments before a statement do not belong to it.
struct TScriptRange {
  std::size_t start = 0;
  std::size_t length = 0;
};
std::vector<TScriptRange> ScanStatements(std::string_view script);

}  // namespace velmora

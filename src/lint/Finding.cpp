// SPDX-License-Identifier: GPL-3.0-or-later
#include "lint/Finding.h"

#include <array>

namespace velmora {

std::string_view SeverityWord(ESeverity severity) {
  constexpr std::array<std::string_view, kSeverityCount> kWords = {"off", "note", "warning", "error"};
  return kWords[static_cast<std::size_t>(severity)];
}

std::string_view ElementWord(EElement kind) {
  if (kind == EElement::Column) return "column";
  if (kind == EElement::ForeignKey) return "foreign key";
  return IsKey(kind) ? "index" : "table";
}

std::string NameOf(const TFinding& finding) {
  return finding.element.empty() ? finding.table : finding.table + "." + finding.element;
}

}  // namespace velmora

#pragma once

// Rows of schema rowsets as texts, a line each.

#include <string>
#include <vector>

#include "formats/port/Provider.h"

namespace velmora::testing {

template <class Row, class TextOfRow>
std::vector<std::string> TextsOf(const std::vector<Row>& rows, TextOfRow text_of) {
  std::vector<std::string> texts;
  for (const Row& row : rows) texts.push_back(text_of(row));
  return texts;
}

inline std::vector<std::string> IndexTexts(const std::vector<TOLEDBIndexRow>& rows) {
  return TextsOf(rows, [](const TOLEDBIndexRow& i) {
    return i.INDEX_NAME + "." + std::to_string(i.ORDINAL_POSITION) + " " + i.COLUMN_NAME +
           (i.PRIMARY_KEY ? " primary" : "") + (i.UNIQUE ? " unique" : "");
  });
}

}  // namespace velmora::testing

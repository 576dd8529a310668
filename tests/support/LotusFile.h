#pragma once

// Bytes of Lotus 1-2-3 files of releases 3 (wk3) and 4 (wk4). The records are those of the formats' published
// descriptions, as in Guenter Born, "The File Formats Handbook" (1995), chapter "Lotus 1-2-3 WK3 format".

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

namespace velmora::testing {

// Formats of cells: the number's own, a date as dd-mmm-yy, a time as hh:mm:ss.
enum EWkFormat : std::uint8_t { wkGeneral = 0x71, wkDate = 0x72, wkTime = 0x7B };

struct TWkCell {
  std::uint16_t row;
  std::uint8_t column;
  std::variant<double, std::string> value;  // texts as the file has them: letters of code page 850
  EWkFormat format = wkGeneral;
  bool formula = false;  // the number is the result of one
};

struct TWkSheet {
  std::string name;
  std::vector<TWkCell> cells = {};
};

struct TWkFile {
  std::vector<TWkSheet> sheets;
  bool release4 = false;
  int sheets_claimed = -1;  // by the head; -1: those that there are

  std::string Bytes() const;
};

}  // namespace velmora::testing

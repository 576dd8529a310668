#include "support/LotusFile.h"

#include <cmath>
#include <cstddef>
#include <map>

namespace velmora::testing {

namespace {

enum ERecord : std::uint16_t {
  rtBegin = 0,
  rtEnd = 1,
  rtRowFormats = 0x13,
  rtLabel = 0x16,
  rtNumber = 0x17,
  rtFormula = 0x19,
  rtExtra = 0x1B
};
constexpr std::uint16_t kSheetName = 0x36B0;  // the kind of an extra record

std::string Little(std::uint64_t number, std::size_t size) {
  std::string bytes;
  for (std::size_t i = 0; i < size; ++i) bytes += static_cast<char>(number >> (8 * i) & 0xFF);
  return bytes;
}

std::string Record(ERecord type, const std::string& data) { return Little(type, 2) + Little(data.size(), 2) + data; }

// The 80-bit number of the 8087.
std::string Extended(double value) {
  if (value == 0) return std::string(10, '\0');
  int exponent = 0;
  const double fraction = std::frexp(std::fabs(value), &exponent);
  const auto mantissa = static_cast<std::uint64_t>(std::ldexp(fraction, 64));
  const auto head = static_cast<std::uint64_t>(exponent + 16382) | (value < 0 ? 0x8000U : 0U);
  return Little(mantissa, 8) + Little(head, 2);
}

std::string Place(const TWkCell& cell, std::size_t sheet) {
  return Little(cell.row, 2) + Little(sheet, 1) + Little(cell.column, 1);
}

std::string CellRecord(const TWkCell& cell, std::size_t sheet) {
  if (const auto* text = std::get_if<std::string>(&cell.value))
    return Record(rtLabel, Place(cell, sheet) + "'" + *text + std::string(1, '\0'));
  const double number = std::get<double>(cell.value);
  if (!cell.formula) return Record(rtNumber, Place(cell, sheet) + Extended(number));
  // The formula is that number itself: code 0 and the number, then code 3, the end.
  return Record(rtFormula, Place(cell, sheet) + Extended(number) + Little(0, 1) + Extended(number) + Little(3, 1));
}

// One record per row that has formats, with four bytes per column from the first.
std::string RowFormats(const TWkSheet& sheet, std::size_t number) {
  std::map<std::uint16_t, std::string> rows;
  for (const TWkCell& cell : sheet.cells) {
    if (cell.format == wkGeneral) continue;
    std::string& formats = rows[cell.row];
    while (formats.size() <= cell.column * 4U) formats += Little(wkGeneral, 4);
    formats[cell.column * 4U] = static_cast<char>(cell.format);
  }
  std::string records;
  for (const auto& [row, formats] : rows)
    records += Record(rtRowFormats, Little(number, 1) + Little(0, 1) + Little(row, 2) + formats);
  return records;
}

}  // namespace

std::string TWkFile::Bytes() const {
  const std::size_t last_sheet = sheets_claimed >= 0 ? static_cast<std::size_t>(sheets_claimed) - 1 : sheets.size() - 1;
  std::string bytes =
      Record(rtBegin, Little(release4 ? 0x1002 : 0x1000, 2) + Little(4, 2) + Little(0, 4) + Little(8191, 2) +
                          Little(last_sheet, 1) + Little(255, 1) + Little(0, 4) + Little(0x0201, 2) + Little(0, 8));
  for (std::size_t i = 0; i < sheets.size(); ++i) {
    bytes += Record(rtExtra, Little(kSheetName, 2) + Little(i, 2) + sheets[i].name + std::string(1, '\0'));
    bytes += RowFormats(sheets[i], i);
  }
  for (std::size_t i = 0; i < sheets.size(); ++i)
    for (const TWkCell& cell : sheets[i].cells) bytes += CellRecord(cell, i);
  return bytes + Record(rtEnd, {});
}

}  // namespace velmora::testing

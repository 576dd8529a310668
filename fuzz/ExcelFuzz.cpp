// SPDX-License-Identifier: GPL-3.0-or-later

// A workbook: a file of whatever kind, the stream of one before 2007 alone, or the parts of a later one, which are put
// into an archive so that the search need not guess its sums.

#include <zlib.h>

#include <array>
#include <string>

#include "Harnesses.h"
#include "Input.h"
#include "formats/sheet/BiffWorkbook.h"
#include "formats/sheet/ExcelFile.h"
#include "formats/sheet/SheetReader.h"
#include "formats/sheet/XlsxWorkbook.h"

namespace velmora::fuzzing {
namespace {

constexpr std::array kParts = {"_rels/.rels",   "xl/workbook.xml", "xl/_rels/workbook.xml.rels",
                               "xl/styles.xml", "xl/texts.xml",    "xl/worksheets/first.xml"};

std::string Little(std::size_t value, std::size_t bytes) {
  std::string text;
  for (; bytes > 0; --bytes, value >>= 8) text += static_cast<char>(value & 0xFF);
  return text;
}

// An archive of parts that are stored as they are.
std::string ArchiveOf(const std::vector<std::string_view>& parts) {
  std::string files, folder;
  for (std::size_t i = 0; i < parts.size(); ++i) {
    const std::string_view part = parts[i], name = kParts[i];
    const auto sum = crc32(0, reinterpret_cast<const Bytef*>(part.data()), static_cast<uInt>(part.size()));
    const std::string head = Little(20, 2) + Little(0, 8) + Little(sum, 4) + Little(part.size(), 4) +
                             Little(part.size(), 4) + Little(name.size(), 2) + Little(0, 2);
    folder += "PK\1\2" + Little(20, 2) + head + Little(0, 10) + Little(files.size(), 4) + std::string(name);
    files += "PK\3\4" + head + std::string(name) + std::string(part);
  }
  return files + folder + "PK\5\6" + Little(0, 4) + Little(parts.size(), 2) + Little(parts.size(), 2) +
         Little(folder.size(), 4) + Little(files.size(), 4) + Little(0, 2);
}

void ReadSheets(std::vector<TSheet> sheets, bool names) {
  TSheetReader reader("book", std::move(sheets), {.suffix = "$", .quotes = true}, {names, names});
  ReadAll(reader);
}

}  // namespace

void FuzzExcel(std::string_view input) {
  const std::size_t way = Choose(input, 6);
  const bool names = way % 2 == 0;
  if (way < 2)
    ReadAll(*OpenExcelFileHere(PutFiles({{"book", input}}) + "/book", names, names));
  else if (way < 4)
    ReadSheets(ReadBiffWorkbook(input), names);
  else
    ReadSheets(ReadXlsxWorkbook(ArchiveOf(Parts(input, kParts.size()))), names);
}

}  // namespace velmora::fuzzing

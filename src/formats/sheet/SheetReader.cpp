// SPDX-License-Identifier: GPL-3.0-or-later
#include "formats/sheet/SheetReader.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "util/Errors.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kNoTable[] = "There is no sheet \"%s\" with cells in %s";
constexpr char kTableFault[] = "%s: sheet \"%s\": %s";

// Letters, digits and "_", no digit in front. Every character beyond ASCII counts as a letter.
bool IsPlainWord(std::string_view word) {
  const auto is_digit = [](char c) { return c >= '0' && c <= '9'; };
  const auto fits = [&](char c) {
    const char letter = LowerChar(c);
    return is_digit(c) || (letter >= 'a' && letter <= 'z') || c == '_' || static_cast<unsigned char>(c) >= 0x80;
  };
  return !word.empty() && !is_digit(word.front()) && std::ranges::all_of(word, fits);
}

}  // namespace

TSheetReader::TSheetReader(std::string path, std::vector<TSheet> sheets, TSheetNaming naming, TSheetRule rule)
    : path_(std::move(path)) {
  std::erase_if(sheets, [](const TSheet& sheet) { return sheet.cells.empty(); });
  std::vector<std::string> words;
  words.reserve(sheets.size());
  for (const TSheet& sheet : sheets) words.push_back(SheetWord(sheet.name));
  MakeDistinct(words);
  for (std::size_t i = 0; i < sheets.size(); ++i) {
    const std::string bare = words[i] + std::string(naming.suffix);
    const bool quoted = naming.quotes && !IsPlainWord(words[i]);
    tables_.push_back({quoted ? "'" + StrReplace(bare, "'", "''") + "'" : bare, bare, std::move(sheets[i].name),
                       TSheetTable(std::move(sheets[i].cells), rule)});
  }
}

std::vector<TOLEDBTableRow> TSheetReader::Tables() {
  std::vector<TOLEDBTableRow> rows;
  for (const TNamedTable& table : tables_) rows.push_back({table.name, "TABLE"});
  return rows;
}

TFileTable TSheetReader::Structure(const std::string& table) {
  const TNamedTable& found = Find(table);
  return found.table.Structure(found.name);
}

TFileRows TSheetReader::Rows(const std::string& table, std::int64_t limit) {
  const TNamedTable& found = Find(table);
  try {
    return {.rows = found.table.Rows(limit), .numbers = {}};
  } catch (const EVelmora& error) {
    RaiseError(Format(kTableFault, path_, found.sheet, error.what()));
  }
}

const TSheetReader::TNamedTable& TSheetReader::Find(const std::string& name) const {
  const auto exact = std::ranges::find(tables_, name, &TNamedTable::name);
  if (exact != tables_.end()) return *exact;
  for (const auto member : {&TNamedTable::name, &TNamedTable::bare_name, &TNamedTable::sheet}) {
    const auto near =
        std::ranges::find_if(tables_, [&](const TNamedTable& each) { return SameText(each.*member, name); });
    if (near != tables_.end()) return *near;
  }
  RaiseError(Format(kNoTable, name, path_));
}

}  // namespace velmora

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "formats/port/FileReader.h"
#include "formats/sheet/SheetTable.h"

namespace velmora {

// How a format makes a table's name of a sheet's.
struct TSheetNaming {
  std::string_view suffix;
  bool quotes = false;  // in apostrophes, those inside doubled, unless the sheet's name is a plain word
};

// A file of sheets, each of which is a table; one without cells is none. A table is also found by its name in other
// letter case or without its apostrophes, and, where no table has that name, by the name of its sheet: what stands
// around that is hard to type on a command line.
class TSheetReader final : public TFileReader {
 public:
  TSheetReader(std::string path, std::vector<TSheet> sheets, TSheetNaming naming, TSheetRule rule);

  std::vector<TOLEDBTableRow> Tables() override;
  TFileTable Structure(const std::string& table) override;
  TFileRows Rows(const std::string& table, std::int64_t limit) override;

 private:
  struct TNamedTable {
    std::string name;
    std::string bare_name;  // without the apostrophes
    std::string sheet;
    TSheetTable table;
  };
  const TNamedTable& Find(const std::string& name) const;

  std::string path_;
  std::vector<TNamedTable> tables_;
};

}  // namespace velmora

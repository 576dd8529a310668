// SPDX-License-Identifier: GPL-3.0-or-later

// Files and folders through their engines, as the rest of the program sees them: "engine" in the cases of
// tests/data/formats.

#include <algorithm>

#include "core/Meta.h"
#include "engines/oledb/DBConnDBF.h"
#include "engines/oledb/DBConnExcel.h"
#include "engines/oledb/DBConnFoxPro.h"
#include "engines/oledb/DBConnLotus.h"
#include "support/EngineText.h"
#include "support/FormatCase.h"
#include "support/LineDiff.h"
#include "support/ScratchFolder.h"
#include "util/Text.h"

namespace velmora::testing {
namespace {

// Of words as in "engine Excel shop.xls HDR IMEX"; null for an engine of another program.
std::unique_ptr<TDBConn> Engine(const TScratchFolder& folder, const std::vector<std::string>& words) {
  const std::string path = words.size() > 2 ? folder / words[2] : folder.Path();
  const auto has = [&](const char* word) { return std::ranges::count(words, word) > 0; };
  if (words[1] == "DBF") return std::make_unique<TDBConnDBF>(path);
  if (words[1] == "FoxPro") return std::make_unique<TDBConnFoxPro>(path);
  if (words[1] == "Excel") return std::make_unique<TDBConnExcel>(path, has("HDR"), has("IMEX"));
  if (words[1] == "Lotus") return std::make_unique<TDBConnLotus>(path);
  return nullptr;
}

TEST(FileEnginesTest, Cases) {
  for (const std::string& name : FormatCaseNames()) {
    const TScratchFolder folder;
    const TFormatCase files = FormatCase(name);
    for (const auto& [words, expected] : files.asks) {
      const auto engine = words[0] == "engine" ? Engine(folder, words) : nullptr;
      if (!engine) continue;
      files.PutInto(folder.Path());
      const std::string found = StrReplace(EngineText(*engine), folder.Path(), "@");
      if (found != expected) ADD_FAILURE() << name << ": " << JoinList(words, " ") << "\n" << LineDiff(expected, found);
      std::string display;
      engine->GetDisplayName(display);
      EXPECT_TRUE(display.starts_with(folder.Path()));
    }
  }
}

TEST(FileEnginesTest, FoxProCountsDeletedRowsInItsChunks) {
  const TScratchFolder folder;
  FormatCase("foxpro-2").PutInto(folder.Path());  // the second of four is deleted
  TDBConnFoxPro conn(folder.Path());
  conn.Connect();
  EXPECT_TRUE(conn.SupportsChunks("fox"));
  const auto names = [&](std::int64_t first, std::int64_t count) {
    std::string text;
    for (const auto rows = conn.OpenTableDataChunk("fox", first, count); !rows->Eof(); rows->Next()) {
      std::string literal;
      conn.FieldValParam(rows->Field(0), literal);
      text += literal + ";";
    }
    return text;
  };
  EXPECT_EQ(names(1, 2), "'Ann';");
  EXPECT_EQ(names(2, 2), "'Bob';");
  EXPECT_EQ(names(3, 9), "'Bob';'Eve';");
  EXPECT_EQ(names(5, 9), "");
}

TEST(FileEnginesTest, SheetsHaveSeveralNames) {
  const TScratchFolder folder;
  FormatCase("excel-5").PutInto(folder.Path());
  TDBConnExcel conn(folder / "shop.xls", false, true);
  conn.Connect();
  for (const char* name : {"'My Sheet$'", "My Sheet$", "my sheet"})
    EXPECT_EQ(RowLines(*conn.OpenTable(name)), "row float 5|null\nrow null|float 6\n");
  EXPECT_EQ(conn.GetRecordCount("'My Sheet$'"), 2);
  EXPECT_FALSE(conn.SupportsChunks("My Sheet$"));
}

}  // namespace
}  // namespace velmora::testing

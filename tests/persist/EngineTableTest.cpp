// SPDX-License-Identifier: GPL-3.0-or-later
#include "persist/EngineTable.h"

#include <gtest/gtest.h>

#include "support/MessageOf.h"
#include "xml/XMLAccess.h"

namespace velmora {
namespace {

using testing::MessageOf;

// As in "8 MySQL: server password* port:0 (reference target)"; secrets are starred, and switches end in "?".
std::string Shown(const TEngineRow& row) {
  std::string text = std::to_string(row.engine) + " " + EngineName(row) + ":";
  for (const TEngineKey& key : row.keys) {
    text += " " + std::string(key.name) + (key.kind == EKeyKind::Secret ? "*" : "");
    if (key.kind == EKeyKind::Boolean) text += "?";
    if (!key.standard.empty()) text += ":" + std::string(key.standard);
  }
  if (row.InTask(ETaskRole::Reference)) text += row.InTask(ETaskRole::Target) ? " (reference target)" : " (reference)";
  return text;
}

TEST(EngineTableTest, EachEngineHasItsKeysAndPlaces) {
  const TStringList kRows = {
      "2 DBF: folder (reference)",
      "3 Lotus 1-2-3: filename",
      "5 Interbase/Firebird: server database username password* (reference)",
      "6 Access: filename password* sysdb_filename* (reference target)",
      "7 SQL Server: server database username password* windows_authentication?:N (reference target)",
      "8 MySQL: server database username password* port:0 (reference target)",
      "9 : filename (reference)",
      "10 Oracle: server username password* authmode:Normal direct?:N (reference target)",
      "11 Paradox: folder (reference)",
      "12 Text: folder HDR?:N separator:\t (reference)",
      "14 Excel: filename HDR?:N IMEX?:Y (reference)",
      "15 FoxPro: folder (reference)",
      "16 ODBC: dsn (reference)",
  };
  TStringList rows;
  for (const TEngineRow& row : EngineTable()) {
    rows.push_back(Shown(row));
    EXPECT_EQ(FindEngine(row.engine), &row);
  }
  EXPECT_EQ(rows, kRows);
}

TEST(EngineTableTest, NamesAndKeysAreFoundIgnoringCase) {
  EXPECT_EQ(FindEngine("sql SERVER")->engine, kEngineSQLServer);
  EXPECT_EQ(FindEngine("MySQL "), nullptr);
  EXPECT_EQ(FindEngine(""), nullptr) << "the script engine is not found by its missing name";
  EXPECT_EQ(FindEngine(13), nullptr);
  EXPECT_EQ(FindEngine("Text")->FindKey("hdr")->name, "HDR");
  EXPECT_EQ(FindEngine("Text")->FindKey("filename"), nullptr);
}

TEST(EngineTableTest, StandardValuesFillOnlyWhatIsMissing) {
  TEngineValues values;
  values.Set("separator", "");
  FillStandardValues(*FindEngine("Text"), values);
  EXPECT_TRUE(values.Has("separator") && values.Text("separator").empty()) << "columns of fixed width were asked for";
  EXPECT_TRUE(values.Has("folder") && values.Text("folder").empty());
  EXPECT_EQ(values.Text("HDR"), "N");
}

TEST(EngineTableTest, OnlyACapitalYIsTrue) {
  TEngineValues values;
  for (const char* text : {"y", "Yes", "", " Y", "1", "N", "Y"}) {
    values.Set("HDR", text);
    EXPECT_EQ(values.Boolean("HDR"), text == std::string("Y")) << text;
  }
}

// Those that no task holds; the others are cases of tests/data/tasks/engines.txt.
TEST(EngineTableTest, EnginesOutsideTasksAreMadeAndWrittenToo) {
  for (const int engine : {kEngineLotus, kEngineMySQLScript}) {
    TEngineValues values;
    values.Set("filename", "a <b>");
    TXMLAccess store;
    const std::unique_ptr<TDBConn> conn = MakeEngine(*FindEngine(engine), values);
    EXPECT_EQ(conn->GetEngine(), engine);
    FindEngine(engine)->write(*conn, "/root/x", store);
    EXPECT_EQ(store.xmlGetVal("/root/x/filename"), "a <b>");
  }
}

TEST(EngineTableTest, PortsAreIntegers) {
  TEngineValues values;
  for (const char* port : {"", "3306 ", "x", "3306.0", "99999999999"}) {
    values.Set("port", port);
    EXPECT_EQ(MessageOf([&] { MakeEngine(*FindEngine(kEngineMySQL), values); }),
              "'" + std::string(port) + "' is not a valid integer value");
  }
}

}  // namespace
}  // namespace velmora

#include "persist/EngineTable.h"

#include <gtest/gtest.h>

#include "engines/mysql/DBConnMySQL.h"
#include "engines/mysql/DBConnMySQLscript.h"
#include "engines/mysql/OfflineEngine.h"
#include "support/FakeMyConnection.h"
#include "support/MessageOf.h"
#include "util/Format.h"
#include "xml/XMLAccess.h"

namespace velmora {
namespace {

using testing::MessageOf;

TEngineClients FakeClients() {
  return {[](const TEngineValues&) {
    return std::make_unique<testing::TFakeMyConnection>(std::make_shared<testing::TFakeMyServer>());
  }};
}

// As in "server database port:3306"; secrets are starred.
std::string KeysOf(const TEngineRow& row) {
  std::string text;
  for (const TEngineKey& key : row.keys) {
    text += (text.empty() ? "" : " ") + std::string(key.name) + (key.kind == EKeyKind::Secret ? "*" : "");
    if (key.kind == EKeyKind::Boolean) text += "?";
    if (!key.standard.empty()) text += ":" + std::string(key.standard);
  }
  return text;
}

TEST(EngineTableTest, EachEngineHasItsKeysAndPlaces) {
  constexpr struct {
    int engine;
    const char *name, *keys;
    bool reference, target;
  } kRows[] = {
      {2, "DBF", "folder", true, false},
      {3, "Lotus 1-2-3", "filename", false, false},
      {5, "Interbase/Firebird", "server database username password*", true, false},
      {6, "Access", "filename password* sysdb_filename*", true, true},
      {7, "SQL Server", "server database username password* windows_authentication?:N", true, true},
      {8, "MySQL", "server database username password* port:0", true, true},
      {9, "", "filename", true, false},
      {10, "Oracle", "server username password* authmode:Normal direct?:N", true, true},
      {11, "Paradox", "folder", true, false},
      {12, "Text", "folder HDR?:N separator:\t", true, false},
      {14, "Excel", "filename HDR?:N IMEX?:Y", true, false},
      {15, "FoxPro", "folder", true, false},
      {16, "ODBC", "dsn", true, false},
  };
  ASSERT_EQ(EngineTable().size(), std::size(kRows));
  for (std::size_t i = 0; i < std::size(kRows); ++i) {
    const TEngineRow& row = EngineTable()[i];
    EXPECT_EQ(row.engine, kRows[i].engine);
    EXPECT_EQ(EngineName(row), kRows[i].name);
    EXPECT_EQ(KeysOf(row), kRows[i].keys);
    EXPECT_EQ(row.InTask(ETaskRole::Reference), kRows[i].reference) << row.engine;
    EXPECT_EQ(row.InTask(ETaskRole::Target), kRows[i].target) << row.engine;
    EXPECT_EQ(FindEngine(row.engine), &row);
  }
}

TEST(EngineTableTest, NamesAndKeysAreFoundIgnoringCase) {
  EXPECT_EQ(FindEngine("sql SERVER")->engine, kEngineSQLServer);
  EXPECT_EQ(FindEngine("MySQL "), nullptr);
  EXPECT_EQ(FindEngine(""), nullptr) << "the script engine is not found by its missing name";
  EXPECT_EQ(FindEngine(13), nullptr);
  const TEngineRow& text = *FindEngine("Text");
  EXPECT_EQ(text.FindKey("hdr")->name, "HDR");
  EXPECT_EQ(text.FindKey("filename"), nullptr);
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
  for (const char* text : {"y", "Yes", "", " Y", "1", "N"}) {
    values.Set("HDR", text);
    EXPECT_FALSE(values.Boolean("HDR")) << text;
  }
  values.Set("HDR", "Y");
  EXPECT_TRUE(values.Boolean("HDR"));
}

TEST(EngineTableTest, ValuesMakeAnEngineThatWritesThemAgain) {
  for (const TEngineRow& row : EngineTable()) {
    TEngineValues values;
    for (const TEngineKey& key : row.keys)
      values.Set(key.name, key.kind == EKeyKind::Port      ? "-3307"
                           : key.kind == EKeyKind::Boolean ? "Y"
                                                           : "a <b> " + std::string(key.name));
    const std::unique_ptr<TDBConn> conn = MakeEngine(row, values, FakeClients());
    EXPECT_EQ(conn->GetEngine(), row.engine);
    TXMLAccess store;
    row.write(*conn, "/root/x", store);
    std::size_t at = 0;
    for (const TEngineKey& key : row.keys) {
      EXPECT_EQ(store.xmlGetVal(Format("/root/x/%s", key.name)), values.Text(key.name));
      at = store.xmlGetText().find(Format("<%s>", key.name), at);
      EXPECT_NE(at, std::string::npos) << key.name << " does not stand in its order";
    }
  }
}

TEST(EngineTableTest, PortsAreIntegers) {
  TEngineValues values;
  for (const char* port : {"", "3306 ", "x", "3306.0", "99999999999"}) {
    values.Set("port", port);
    EXPECT_EQ(MessageOf([&] { MakeEngine(*FindEngine(kEngineMySQL), values, FakeClients()); }),
              "'" + std::string(port) + "' is not a valid integer value");
  }
}

TEST(EngineTableTest, AScriptFileIsNoPartOfATask) {
  TDBConnMySQLOffline conn("a/b.sql");
  TXMLAccess store;
  EXPECT_EQ(MessageOf([&] { conn.SaveParams("/root/x", store); }),
            "a/b.sql is a script file, which cannot be part of a task file");
}

}  // namespace
}  // namespace velmora

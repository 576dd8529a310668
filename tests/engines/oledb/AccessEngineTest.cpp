// SPDX-License-Identifier: GPL-3.0-or-later
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "engines/oledb/DBConnAccess.h"
#include "support/FakeOLEDB.h"
#include "support/MessageOf.h"
#include "support/ScratchFolder.h"
#include "util/Files.h"

namespace velmora {
namespace {

using ::testing::ElementsAre;
using testing::MessageOf;

class AccessEngineTest : public ::testing::Test {
 protected:
  testing::TScratchFolder folder;
  std::string path = folder / "shop.mdb";
  testing::TFakeOLEDB backend;
  TDBConnAccess engine{path, "", "", backend.Maker()};
};

TEST_F(AccessEngineTest, MakesAMissingFile) {
  engine.Connect();
  EXPECT_THAT(backend.TakeLog(), ElementsAre("create " + path + " 5", "open " + path, "tables"));
  EXPECT_THAT(engine.TakeWarnings(), ElementsAre(path + " was made, empty"));
  WriteFileText(path, "");
  engine.Connect();
  EXPECT_THAT(backend.TakeLog(), ElementsAre("tables")) << "an open one stays open";
  engine.Disconnect();
  engine.Connect();
  EXPECT_THAT(backend.TakeLog(), ElementsAre("close", "open " + path, "tables"));
  EXPECT_EQ(engine.GetConnectionObject().InitializationString(),
            "Provider=Microsoft.Jet.OLEDB.4.0;User ID=Admin;Password=;Data Source=" + path + ";");
  EXPECT_TRUE(engine.TakeWarnings().empty()) << "told once";

  TDBConnAccess other("/nowhere/a.mdb", "", "", backend.Maker());
  backend.errors["create /nowhere/a.mdb 5"] = "Cannot write";
  EXPECT_EQ(MessageOf([&] { other.Connect(); }), "Cannot write");
  EXPECT_THAT(backend.log, ElementsAre("create /nowhere/a.mdb 5")) << "nothing is opened then";
}

TEST_F(AccessEngineTest, WritesDefaultsInItsOwnWay) {
  const struct {
    const char *value, *text;
  } kCases[] = {
      {"(getdate())", " default now()"},
      {"(((GetDate())))", " default now()"},
      {"getdate()", " default now()"},
      {"((0))", " default 0"},
      {"(1)+(2)", " default 1)+(2"},
      {"()", ""},
      {"(", " default ("},
      {"'x'", " default 'x'"},
      {"", ""},
  };
  for (const auto& c : kCases) {
    TMetaColumn column;
    column.datatype = ntI4;
    column.notnull = column.autoinc = true;
    column.default_ = c.value;
    std::string text;
    engine.no_defaults = false;
    engine.ColumnDescription(column, true, text);
    EXPECT_EQ(text, std::string("int not null identity") + c.text);
    engine.no_defaults = true;
    engine.ColumnDescription(column, true, text);
    EXPECT_EQ(text, "int not null identity");
    engine.ColumnDescription(column, false, text);
    EXPECT_EQ(text, "int");
  }
}

}  // namespace
}  // namespace velmora

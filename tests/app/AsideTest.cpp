// SPDX-License-Identifier: GPL-3.0-or-later

// Sources whose reading a program with windows leaves to another thread, and may leave there for good.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/Sources.h"
#include "foreign/FactReaders.h"
#include "support/Asides.h"
#include "support/EngineText.h"
#include "support/FormatCase.h"
#include "support/PrivateFirebird.h"
#include "support/ScratchFolder.h"
#include "util/Lists.h"

namespace velmora {
namespace {

using testing::EngineText;
using testing::FormatCase;
using testing::TElsewhere;
using testing::TFirebirdFolder;
using testing::TScratchFolder;

struct TSourceCase {
  const char* files;  // of tests/data/formats; null: a database of Firebird
  const char* source;
};

class AsideTest : public ::testing::TestWithParam<TSourceCase> {
 protected:
  AsideTest() {
    if (GetParam().files != nullptr)
      FormatCase(GetParam().files).PutInto(folder_.Path());
    else
      firebird_.NewDatabase("shop.fdb", {"create table T (A integer not null primary key, B varchar(9))",
                                         "insert into T values (1, 'b')"});
    source_ = GetParam().source + (GetParam().files == nullptr ? firebird_.Path() + "/shop.fdb" : folder_.Path());
  }

  // All that the source says, the facts of its tables included.
  std::string Everything() {
    const std::unique_ptr<TDBConn> conn = MakeSource(source_);
    conn->Connect();
    std::string text = EngineText(*conn);
    const std::unique_ptr<TFactReader> facts = MakeFactReader(*conn);
    for (const std::string& name : facts->Tables()) {
      const TForeignTable table = facts->Table(name);
      text += "\nfacts of " + name + ":";
      for (const TForeignColumn& column : table.columns) text += " " + column.name + " " + column.native;
      text += " " + std::to_string(table.keys.size()) + " keys " + JoinList(table.warnings, "|");
    }
    return text;
  }

 private:
  TFirebirdFolder firebird_;
  TScratchFolder folder_;
  std::string source_;
};

TEST_P(AsideTest, AThreadOfItsOwnReadsTheSameAndWhatIsLeftThereDisturbsNobody) {
  const std::string expected = Everything();
  EXPECT_THAT(expected, ::testing::HasSubstr("facts of "));
  int calls = 0;
  {
    TElsewhere elsewhere;
    const TAsideGuard guard(elsewhere);
    EXPECT_EQ(Everything(), expected);
    calls = elsewhere.done;
  }
  EXPECT_GT(calls, 2);
  for (int i = 0; i < calls; ++i) {
    TElsewhere elsewhere(i);
    const TAsideGuard guard(elsewhere);
    try {
      EXPECT_NE(Everything(), expected) << "the call " << i << " that was left goes unnoticed";
    } catch (const EVelmora&) {  // it was left, or the connection is not there any more
    }
    EXPECT_EQ(Everything(), expected) << "after the call " << i;
  }
}

INSTANTIATE_TEST_SUITE_P(Sources, AsideTest,
                         ::testing::Values(TSourceCase{"text-delimited", "Text:HDR=Y;separator=%2C;folder="},
                                           TSourceCase{"text-fixed", "Text:HDR=Y;folder="},
                                           TSourceCase{"paradox-keys", "Paradox:folder="},
                                           TSourceCase{"dbase-iv", "DBF:folder="},
                                           TSourceCase{"foxpro-visual", "FoxPro:folder="},
                                           TSourceCase{nullptr, "Interbase/Firebird:username=SYSDBA;database="}));

}  // namespace
}  // namespace velmora

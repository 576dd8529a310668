// SPDX-License-Identifier: GPL-3.0-or-later

// Sources that are files of other programs, made equal on a server; what they become there.

#include <gtest/gtest.h>

#include "app/Sources.h"
#include "foreign/live/ForeignSync.h"
#include "support/FormatCase.h"
#include "support/ScratchFolder.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {
namespace {

struct TFileCase {
  const char* files;   // a case of tests/data/formats
  const char* source;  // with %s for the folder
  const char* table;   // and what its columns become
  const char* columns;
};

constexpr TFileCase kCases[] = {
    {"excel-8", "Excel:filename=%s/shop.xls;HDR=Y;IMEX=Y", "Orders",
     "Order No#:double,Name:varchar,day:date,at:time,when:datetime,sum:int"},
    {"lotus", "Lotus 1-2-3:filename=%s/shop.wk4", "Orders",
     "id:bigint,café:varchar,day:date,at:time,mixed:varchar,sum:double"},
    {"dbase-iv", "DBF:folder=%s", "PEOPLE", "NAME:char,STRAßE:char,PAY:decimal,BORN:date,IN:tinyint,NOTE:longtext"},
    {"foxpro-visual", "FoxPro:folder=%s/shop.dbc", "orders", "order_number:int,customer_name:char"},
    {"jet3", "Access:filename=%s/shop.mdb", "Words", "id:int,word:varchar,left:smallint,late:smallint"},
};

class FileSourcesLiveTest : public testing::TForeignSync, public ::testing::TestWithParam<TFileCase> {};

TEST_P(FileSourcesLiveTest, AreThereAfterARun) {
  const std::vector<std::string> there = testing::FormatCaseNames();
  if (std::ranges::find(there, GetParam().files) == there.end()) GTEST_SKIP() << "left out of this build";
  const testing::TScratchFolder folder;
  testing::FormatCase(GetParam().files).PutInto(folder.Path());
  SyncFrom(MakeSource(Format(GetParam().source, folder.Path())));
  EXPECT_EQ(testing::Answer(target_.Connection(),
                            "select group_concat(column_name, ':', data_type order by ordinal_position) from "
                            "information_schema.columns where table_schema = database() and table_name = '" +
                                std::string(GetParam().table) + "'"),
            GetParam().columns);
}

INSTANTIATE_TEST_SUITE_P(Files, FileSourcesLiveTest, ::testing::ValuesIn(kCases),
                         [](const auto& each) { return StrReplace(each.param.files, "-", "_"); });

}  // namespace
}  // namespace velmora

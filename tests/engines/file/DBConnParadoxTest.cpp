#include "engines/file/DBConnParadox.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>

#include "core/Meta.h"
#include "formats/paradox/ParadoxHeader.h"
#include "formats/paradox/ParadoxText.h"
#include "support/MessageOf.h"
#include "support/MetaDump.h"
#include "support/ParadoxFile.h"
#include "support/RecordingHost.h"
#include "support/ScratchFolder.h"
#include "util/Errors.h"
#include "util/Text.h"
#include "xml/XMLAccess.h"

namespace velmora {
namespace {

using testing::DumpMeta;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing::MessageOf;
using testing::PutFile;
using testing::PxFloat;
using testing::PxInteger;
using testing::PxMemoField;
using testing::PxText;
using testing::TPxFile;

class DBConnParadoxTest : public ::testing::Test {
 protected:
  void Write(const std::string& name, const TPxFile& file) { PutFile(folder_ / name, file.Bytes()); }
  TStringList Tables() {
    TStringList list{"stale"};
    conn_.ListTables(list);
    return list;
  }
  std::string Fetched(const std::string& table) {
    conn_.Connect();
    conn_.meta().GotoTable(table);
    conn_.FetchIfNeeded();
    return DumpMeta(conn_.meta());
  }

  testing::TScratchFolder folder_;
  TDBConnParadox conn_{folder_.Path()};
};

const TPxFile kLetter{.fields = {{"c", pxAlpha, 1}}, .blocks = {{{"a"}}}};

// One field of each type and some of none, with the values of one record.
const TPxFile kEveryType{
    .fields = {{"unknown first", 99, 3},
               {"alpha", pxAlpha, 5},
               {"date", pxDate, 4},
               {"short", pxShort, 2},
               {"long", pxLong, 4},
               {"currency", pxCurrency, 8},
               {"number", pxNumber, 8},
               {"logical", pxLogical, 1},
               {"memo", pxMemo, 12},
               {"binary", pxBinary, 13},
               {"formatted", pxFmtMemo, 12},
               {"ole", pxOLE, 12},
               {"graphic", pxGraphic, 12},
               {"time", pxTime, 4},
               {"timestamp", pxTimestamp, 8},
               {"autoinc", pxAutoInc, 4},
               {"unknown behind it", 7, 4},
               {"bcd", pxBCD, 2},
               {"bytes", pxBytes, 4}},
    .blocks = {{{"xyz" + PxText("ab", 5) + PxInteger(730120, 4) + PxInteger(-3, 2) + PxInteger(70000, 4) +
                 PxFloat(1.25) + PxFloat(-2.5) + "\x81" + PxMemoField("no", 0, 2) + PxMemoField("\x01\x02\x03", 0, 3) +
                 PxMemoField("rt", 0, 2) + PxMemoField("ol", 0, 1) + PxMemoField("gr", 0, 0) + PxInteger(45296000, 4) +
                 PxFloat((730120 + 0.25) * 86400000) + PxInteger(9, 4) + "wxyz" + std::string(17, '\xC1') + "byte"}}}};

TEST_F(DBConnParadoxTest, StructureOfEveryType) {
  Write("t.db", kEveryType);
  EXPECT_EQ(Fetched("t"),
            "table t fetched\n"
            "column unknown first <TEXT>(0)\n"
            "column alpha <VARCHAR>(5)\n"
            "column date <DATE>(0)\n"
            "column short <I2>(0)\n"
            "column long <I4>(0)\n"
            "column currency <DOUBLE>(0)\n"
            "column number <DOUBLE>(0)\n"
            "column logical <BOOL>(0)\n"
            "column memo <TEXT>(0)\n"
            "column binary <BYTES>(13)\n"
            "column formatted <TEXT>(0)\n"
            "column ole <BYTES>(12)\n"
            "column graphic <BYTES>(12)\n"
            "column time <TIME>(0)\n"
            "column timestamp <TIMESTAMP>(0)\n"
            "column autoinc <I4>(0) autoinc\n"
            "column unknown behind it <I4>(0)\n"
            "column bcd <DOUBLE>(0)\n"
            "column bytes <BYTES>(4)\n");
}

TEST_F(DBConnParadoxTest, RowsOfEveryType) {
  Write("t.db", kEveryType);
  TTableGuard rows(conn_, "t");
  std::string text;
  for (std::size_t i = 0; i < rows->Fields().size(); ++i) {
    const TField field = rows->Field(i);
    text += field.def.name + ": " + std::string(FieldKindName(field.def.kind)) + " " + std::to_string(field.def.size) +
            " " + testing::Shown(field.value) + "\n";
  }
  EXPECT_EQ(text,
            "unknown first: memo 3 null\n"
            "alpha: string 5 text ab\n"
            "date: date 0 moment 2000-01-01\n"
            "short: small integer 0 int -3\n"
            "long: integer 0 int 70000\n"
            "currency: float 0 float 1.25\n"
            "number: float 0 float -2.5\n"
            "logical: boolean 0 truth True\n"
            "memo: memo 12 text no\n"
            "binary: blob 13 text \x01\x02\x03\n"
            "formatted: memo 12 text rt\n"
            "ole: blob 12 text o\n"
            "graphic: blob 12 null\n"
            "time: time 0 moment 1899-12-30 12:34:56\n"
            "timestamp: timestamp 0 moment 2000-01-01 06:00:00\n"
            "autoinc: integer 0 int 9\n"
            "unknown behind it: integer 0 null\n"
            "bcd: float 0 null\n"
            "bytes: blob 4 null\n");
  EXPECT_EQ(rows->RecordCount(), 1);
}

TEST_F(DBConnParadoxTest, ThePrimaryKeyIsTheFirstColumns) {
  TPxFile file{.fields = {{"a", pxShort, 2}, {"b", pxAutoInc, 4}, {"c", pxAlpha, 9}}, .keys = 2};
  Write("t.db", file);
  const std::string columns = "column a <I2>(0)\ncolumn b <I4>(0) autoinc\ncolumn c <VARCHAR>(9)\n";
  EXPECT_EQ(Fetched("t"), "table t fetched\n" + columns + "key primary key(a,b) primary unique\n");
  TTableGuard rows(conn_, "t");
  EXPECT_TRUE(rows->Eof());
  EXPECT_EQ(rows->Fields().size(), 3U);
  file.keys = 0;
  Write("t.db", file);
  conn_.FetchTableStructure("t");
  EXPECT_EQ(DumpMeta(conn_.meta()), "table t\n" + columns) << "the old description is gone";
}

TEST_F(DBConnParadoxTest, TablesAreTheFiles) {
  Write("b.DB", kLetter);
  Write("A.db", kLetter);
  Write("c.dB", kLetter);
  Write("copy~.db", kLetter);
  PutFile(folder_ / "t.mb", "");
  EXPECT_THAT(Tables(), ElementsAre("A", "b", "c"));
  for (const std::string table : {"a", "A", "B", "b", "C"}) EXPECT_EQ(conn_.GetRecordCount(table), 1) << table;
  Write("a.db", {.fields = kLetter.fields});
  EXPECT_EQ(conn_.GetRecordCount("a"), 0) << "the very name goes first";
  EXPECT_EQ(conn_.GetRecordCount("A"), 1);
  TDBConnParadox nowhere(folder_ / "none");
  nowhere.Connect();
  EXPECT_TRUE(nowhere.meta().tTables.Empty());
}

TEST_F(DBConnParadoxTest, ConnectTwiceDisconnectAndClone) {
  Write("t.db", kLetter);
  Fetched("t");
  const std::unique_ptr<TDBConn> clone = conn_.Clone();
  conn_.Disconnect();
  const std::string structure = "table t fetched\ncolumn c <VARCHAR>(1)\n";
  EXPECT_EQ(DumpMeta(conn_.meta()), structure) << "Disconnect leaves the store";
  Write("u.db", kLetter);
  TStringList progress;
  conn_.on_progress = [&](TDBConn&, double total, double position) {
    progress.push_back(VarToText(position) + "/" + VarToText(total));
  };
  conn_.Connect();
  EXPECT_EQ(DumpMeta(conn_.meta()), "table t\ntable u\n");
  EXPECT_THAT(progress, ElementsAre("0/1", "1/1"));
  EXPECT_EQ(DumpMeta(clone->meta()), structure) << "a store of its own";
  EXPECT_EQ(clone->meta().owner(), clone.get());
  std::string name;
  clone->GetDisplayName(name);
  EXPECT_EQ(name, folder_.Path());
  EXPECT_EQ(clone->GetEngine(), 11);
  TTableGuard rows(*clone, "t");
  EXPECT_EQ(rows->RecordCount(), 1);
}

TEST_F(DBConnParadoxTest, AValueThatNoFieldTakesIsNull) {
  const std::string good = PxInteger(1, 2) + PxInteger(730120, 4) + PxFloat(6.3e13);
  const std::string bad = PxInteger(2, 2) + PxInteger(2000000000, 4) + PxFloat(1e300);
  Write("t.db",
        {.fields = {{"n", pxShort, 2}, {"day", pxDate, 4}, {"at", pxTimestamp, 8}}, .blocks = {{{good, bad, good}}}});
  TTableGuard silent(conn_, "t");
  EXPECT_EQ(silent->RecordCount(), 3);
  TStringList warnings;
  conn_.on_open = [&](const std::string& table, const std::string& field, std::int64_t row, const std::string& text) {
    warnings.push_back(table + "." + field + " " + std::to_string(row) + ": " + text);
  };
  TTableGuard rows(conn_, "t");
  EXPECT_THAT(warnings,
              ElementsAre("t.day 2: Row #2: '1999306406' is not a valid date and time (set to NULL)",
                          "t.at 2: Row #2: '1.15740740740741E292' is not a valid date and time (set to NULL)"));
  rows->Next();
  EXPECT_EQ(VarToText(rows->Value(0)), "2");
  EXPECT_TRUE(VarIsNull(rows->Value(1)));
  EXPECT_TRUE(VarIsNull(rows->Value(2)));
}

TEST_F(DBConnParadoxTest, ThePumpRunsEvery1000Records) {
  testing::TRecordingHost host;
  const THostGuard guard(host);
  for (const auto& [records, pumped] : {std::pair{0, 0}, {1, 1}, {1000, 1}, {1001, 2}, {2500, 3}}) {
    TPxFile file = kLetter;
    file.blockKilobytes = 32;
    file.blocks = {{{std::string(static_cast<std::size_t>(records), 'x')}, records - 1}};
    file.records = static_cast<std::uint32_t>(records);
    Write("t.db", file);
    host.pumped = 0;
    EXPECT_EQ(TTableGuard(conn_, "t")->RecordCount(), records);
    EXPECT_EQ(host.pumped, pumped) << records;
  }
}

TEST_F(DBConnParadoxTest, EncipheredTablesAreListedAndNoMore) {
  TPxFile file = kLetter;
  file.encryption = 0xCAFE;
  Write("t.db", file);
  EXPECT_THAT(Tables(), ElementsAre("t"));
  EXPECT_EQ(conn_.GetRecordCount("t"), 1);
  EXPECT_EQ(MessageOf([&] { Fetched("t"); }), "This file is encrypted.");
  EXPECT_EQ(MessageOf([&] { conn_.OpenTable("t"); }), "This file is encrypted.");
  EXPECT_FALSE(conn_.meta().tTables.Current().fetched);
}

TEST_F(DBConnParadoxTest, WhatItHasAndWhatItLacks) {
  TXMLAccess store;
  conn_.SaveParams("/root/reference", store);
  EXPECT_EQ(store.xmlGetVal("/root/reference/folder"), folder_.Path());
  EXPECT_FALSE(conn_.SupportsChunks("t"));
  EXPECT_TRUE(conn_.CanCreateTables());
  EXPECT_EQ(conn_.ExecSQL("x"), -1);
  std::string text;
  for (const std::function<void()>& operation : {std::function<void()>([&] { conn_.GetConnected(); }),
                                                 {[&] { conn_.GetConnectionObject(); }},
                                                 {[&] { conn_.ApplyParams(); }},
                                                 {[&] { conn_.AutoIncKeyword(text); }},
                                                 {[&] { conn_.OpenQuery("x"); }},
                                                 {[&] { conn_.OpenTableDataChunk("t", 1, 1); }},
                                                 {[&] { conn_.ParseDDL("x"); }},
                                                 {[&] { conn_.StartTransaction(); }},
                                                 {[&] { conn_.Commit(); }},
                                                 {[&] { conn_.Rollback(); }},
                                                 {[&] { conn_.InTransaction(); }},
                                                 {[&] { conn_.CreateTable("t", {}); }},
                                                 {[&] { conn_.TruncateTable("t"); }},
                                                 {[&] { conn_.SurrogateKeyColumn("t", text); }}})
    EXPECT_THROW(operation(), EAbstractError);
}

}  // namespace
}  // namespace velmora

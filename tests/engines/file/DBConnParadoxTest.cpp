// SPDX-License-Identifier: GPL-3.0-or-later
#include "engines/file/DBConnParadox.h"

#include <gmock/gmock.h>

#include <algorithm>

#include "core/Meta.h"
#include "support/EngineText.h"
#include "support/FormatCase.h"
#include "support/LineDiff.h"
#include "support/MessageOf.h"
#include "support/MetaDump.h"
#include "support/RecordingHost.h"
#include "support/ScratchFolder.h"
#include "util/Errors.h"
#include "util/Text.h"
#include "xml/XMLAccess.h"

namespace velmora::testing {
namespace {

using ::testing::ElementsAre;

class DBConnParadoxTest : public ::testing::Test {
 protected:
  // A table of one letter, changed.
  void Write(const std::string& name, const std::string& change = "") {
    PutFile(folder_ / name, BytesOver(FormatCase("paradox-blocks").Bytes("t.db"), "@6 le4:1 " + change));
  }
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

  TScratchFolder folder_;
  TDBConnParadox conn_{folder_.Path()};
};

TEST_F(DBConnParadoxTest, Cases) {
  for (const std::string name : {"paradox-types", "paradox-orders"}) {
    const TScratchFolder folder;
    const TFormatCase files = FormatCase(name);
    const auto ask =
        std::ranges::find(files.asks, std::vector<std::string>{"engine", "Paradox"}, &TFormatCase::TAsk::words);
    files.PutInto(folder.Path());
    TDBConnParadox conn(folder.Path());
    std::string found = StrReplace(EngineText(conn), folder.Path(), "@");
    conn.on_open = [&](const std::string& table, const std::string& field, std::int64_t row, const std::string& text) {
      found += "warning: " + table + "." + field + " " + std::to_string(row) + ": " + text + "\n";
    };
    const auto tables = conn.meta().tTables.Rows();
    for (const TTableRow& table : tables) MessageOf([&] { conn.OpenTable(table.name); });
    if (found != ask->answer) ADD_FAILURE() << name << ": engine Paradox\n" << LineDiff(ask->answer, found);
  }
}

TEST_F(DBConnParadoxTest, AFetchReplacesTheOldDescription) {
  Write("t.db", "@35 le2:1");
  const std::string columns = "column c <VARCHAR>(1)\n";
  EXPECT_EQ(Fetched("t"), "table t fetched\n" + columns + "key primary key(c) primary unique\n");
  Write("t.db");
  conn_.FetchTableStructure("t");
  EXPECT_EQ(DumpMeta(conn_.meta()), "table t\n" + columns);
}

TEST_F(DBConnParadoxTest, TablesAreTheFiles) {
  Write("b.DB");
  Write("A.db");
  Write("c.dB");
  Write("copy~.db");
  PutFile(folder_ / "t.mb", "");
  EXPECT_THAT(Tables(), ElementsAre("A", "b", "c"));
  for (const std::string table : {"a", "A", "B", "b", "C"}) EXPECT_EQ(conn_.GetRecordCount(table), 1) << table;
  Write("a.db", "@6 le4:0");
  EXPECT_EQ(conn_.GetRecordCount("a"), 0) << "the very name goes first";
  EXPECT_EQ(conn_.GetRecordCount("A"), 1);
  TDBConnParadox nowhere(folder_ / "none");
  nowhere.Connect();
  EXPECT_TRUE(nowhere.meta().tTables.Empty());
}

TEST_F(DBConnParadoxTest, ConnectTwiceDisconnectAndClone) {
  Write("t.db");
  Fetched("t");
  const std::unique_ptr<TDBConn> clone = conn_.Clone();
  conn_.Disconnect();
  const std::string structure = "table t fetched\ncolumn c <VARCHAR>(1)\n";
  EXPECT_EQ(DumpMeta(conn_.meta()), structure) << "Disconnect leaves the store";
  Write("u.db");
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

TEST_F(DBConnParadoxTest, ThePumpRunsEvery1000Records) {
  TRecordingHost host;
  const THostGuard guard(host);
  for (const auto& [records, pumped] : {std::pair{0, 0}, {1, 1}, {1000, 1}, {1001, 2}, {2500, 3}}) {
    const std::string count = std::to_string(records), last = std::to_string(records - 1);
    Write("t.db", "@5 20 @6 le4:" + count + " @0x804 le2:" + last + " \"x\"*32762 cut:34816");
    host.pumped = 0;
    EXPECT_EQ(TTableGuard(conn_, "t")->RecordCount(), records);
    EXPECT_EQ(host.pumped, pumped) << records;
  }
}

TEST_F(DBConnParadoxTest, EncipheredTablesAreListedAndNoMore) {
  Write("t.db", "@68 le4:0xCAFE");
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
}  // namespace velmora::testing

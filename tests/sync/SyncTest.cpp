// SPDX-License-Identifier: GPL-3.0-or-later

// The run of a comparison as a whole: its order, its progress, its guarded end. What the passes decide is in the pairs.

#include "sync/Sync.h"

#include <gtest/gtest.h>

#include "support/FakeConn.h"
#include "support/MessageOf.h"
#include "support/RecordingHost.h"
#include "support/SyncRig.h"

namespace velmora::testing {
namespace {

// A table of int columns that may be null.
std::string Table(const std::string& name, const TStringList& columns) {
  return "create table `" + name + "` (`" + JoinList(columns, "` int(11) default NULL, `") +
         "` int(11) default NULL) ENGINE=InnoDB;\n";
}

std::unique_ptr<TDBConn> Offline(const TScriptFile& file) { return std::make_unique<TDBConnMySQLOffline>(file.Path()); }

std::string ColumnsOf(TDBConn& conn, const std::string& table) {
  TStringList names;
  conn.meta().ColumnNames(table, names, false);
  return JoinList(names, ",");
}

TEST(Sync, RefusesToStartWithoutBothSides) {
  const TScriptFile file(Table("t", {"a"}));
  TSyncRig rig(file.Path(), file.Path());
  TDBConn* conn = rig.connections.reference.get();
  EXPECT_EQ(MessageOf([&] { rig.sync.SetDatabases(nullptr, nullptr); }), "TDBSync: Empty reference database!");
  EXPECT_EQ(MessageOf([&] { rig.sync.SetDatabases(conn, nullptr); }), "TDBSync: Empty target database!");
  EXPECT_EQ(rig.sync.RefConn, conn);
  EXPECT_EQ(MessageOf([&] { rig.sync.Compare(); }), "TDBSync: Empty target database!");
}

TEST(Sync, ReportsEachTableOfEachPass) {
  const TScriptFile reference(Table("t", {"a", "b"}) + Table("n", {"a"}));
  const TScriptFile target(Table("t", {"a"}));
  TSyncRig rig(reference.Path(), target.Path());
  TRecordingTreeView view;
  rig.tree.SetView(&view);
  TRecordingHost host;
  const THostGuard guard(host);
  rig.Compare();
  EXPECT_EQ(rig.progress.calls, (TStringList{"ShowSimple: Connecting...", "ShowTwoBars: Analyzing structure..., 9",
                                             "StartDetail: Dropping obsolete tables, 1", "StepDetail",             //
                                             "StartDetail: Analyzing columns, 2", "StepDetail", "StepDetail",      //
                                             "StartDetail: Analyzing keys, 2", "StepDetail", "StepDetail",         //
                                             "StartDetail: Analyzing constraints, 2", "StepDetail", "StepDetail",  //
                                             "StartDetail: New tables, 2", "StepDetail", "StepDetail", "Finish"}));
  EXPECT_EQ(host.pumped, 9);
  EXPECT_EQ(rig.log.lines, TStringList{"Done."});
  EXPECT_EQ(view.calls, (TStringList{"begin", "+t", "+t/New column b", "+n", "end"}));
}

// A side that writes down when it is connected anew and which statements are replayed on it.
class TRecordingSide : public TDBConnMySQLOffline {
 public:
  TRecordingSide(const TScriptFile& file, std::string name, TStringList& calls)
      : TDBConnMySQLOffline(file.Path()), name_(std::move(name)), calls_(calls) {}
  void Reconnect() override {
    calls_.push_back("reconnect " + name_);
    TDBConnMySQLOffline::Reconnect();
  }
  void ParseDDL(const std::string& sql) override {
    if (!sql.starts_with("create ")) calls_.push_back(sql);  // that would be a fetch
    TDBConnMySQLOffline::ParseDDL(sql);
  }

 private:
  std::string name_;
  TStringList& calls_;
};

TEST(Sync, ReplaysEachDecisionOnTheTargetAlone) {
  const struct {
    const char* reference;
    const char* target;
    TStringList replayed;
  } cases[] = {
      {"create table t (id int not null, n int not null, p int default null, key ix (n), "
       "constraint f foreign key (p) references q (id)) type=InnoDB;",
       "create table t (id int, p int default null) type=MyISAM; create table old (a int not null) type=InnoDB;",
       {"drop table old;", "alter table t type=InnoDB", "alter table t modify column id int not null;",
        "alter table t add column n int not null;", "alter table t add key `ix` (n);",
        "alter table t add constraint f foreign key(p) references q(id);"}},
      {"create table t (id int not null auto_increment, b int not null, primary key (id, b), "
       "key _tmp_autoinc_key (id)) type=x;",
       "create table t (id int not null auto_increment, b int not null, primary key (id), "
       "key _tmp_autoinc_key (b)) type=x;",
       {"alter table t add primary key (id,b);", "alter table t modify key `_tmp_autoinc_key` (id);"}},
  };
  for (const auto& c : cases) {
    const TScriptFile reference(c.reference);
    const TScriptFile target(c.target);
    TStringList calls;
    TSyncRig rig(std::make_unique<TRecordingSide>(reference, "reference", calls),
                 std::make_unique<TRecordingSide>(target, "target", calls));
    rig.Compare();
    TStringList expected{"reconnect reference", "reconnect target"};
    expected.insert(expected.end(), c.replayed.begin(), c.replayed.end());
    EXPECT_EQ(calls, expected);
  }
}

TEST(Sync, TheTargetBehindARunKnowsNothingOfIt) {
  const TScriptFile reference(Table("t", {"a", "b"}));
  const TScriptFile target(Table("t", {"a"}) + Table("old", {"a"}));
  TSyncRig rig(reference.Path(), target.Path());
  rig.Compare();
  EXPECT_EQ(rig.sync.TableUnderWay(), "");
  EXPECT_EQ(rig.sync.TgtConn, nullptr);
  EXPECT_EQ(ColumnsOf(*rig.connections.target, "t"), "a");
  EXPECT_TRUE(rig.connections.target->meta().FindTable("old"));
  EXPECT_TRUE(rig.connections.target->GetConnected());
}

TEST(Sync, AFailureKeepsTheActionsAndStillReplacesTheTarget) {
  const TScriptFile reference(Table("t", {"a", "b"}) + Table("u", {"a"}));
  const TScriptFile target(Table("t", {"a"}) + Table("u", {"a", "b"}) + Table("old", {"a"}));
  TSyncRig rig(reference.Path(), target.Path());
  TRecordingTreeView view;
  rig.tree.SetView(&view);
  EXPECT_EQ(MessageOf([&] { rig.Compare(); }), "List index out of bounds (-1)");
  EXPECT_EQ(rig.sync.TableUnderWay(), "u");
  EXPECT_EQ(rig.sync.ActionLog, (TStringList{"Obsolete table old", "New column b"}));
  EXPECT_EQ(rig.data.mtActions.Count(), 2u);
  EXPECT_EQ(rig.sync.TgtConn, nullptr);
  EXPECT_EQ(ColumnsOf(*rig.connections.target, "t"), "a");
  EXPECT_EQ(rig.progress.calls.back(), "Finish");
  EXPECT_EQ(view.calls.back(), "end");
  EXPECT_TRUE(rig.log.lines.empty());
}

TEST(Sync, ASecondRunStartsAfresh) {
  const TScriptFile reference(Table("t", {"b", "a"}));
  const TScriptFile target(Table("t", {"a", "b"}));
  TSyncRig rig(reference.Path(), target.Path());
  rig.Compare();
  const TStringList first = rig.sync.ActionLog;
  rig.Compare();  // a mere change of order is found again
  EXPECT_EQ(rig.sync.ActionLog, first);
  EXPECT_EQ(rig.data.mtActions.Count(), 2u);
}

TEST(Sync, NeedsCreationTextsOfTablesOnBothSides) {
  const TScriptFile target(Table("t", {"a"}) + Table("old", {"a"}));
  auto reference = std::make_unique<TFakeConn>();
  reference->engine = kEngineSQLServer;
  reference->tables = {"t"};
  TSyncRig rig(std::move(reference), Offline(target));
  EXPECT_EQ(MessageOf([&] { rig.Compare(); }), "CachedTableDDL unsupported");
  EXPECT_EQ(rig.sync.ActionLog, TStringList{"Obsolete table old"});
}

TEST(Sync, NeedsATargetThatReplaysStatements) {
  struct TMuteTarget : TFakeConn {
    std::unique_ptr<TDBConn> Clone() override { return std::make_unique<TMuteTarget>(); }
  };
  const TScriptFile empty("");
  auto target = std::make_unique<TMuteTarget>();
  target->tables = {"old"};
  TSyncRig rig(Offline(empty), std::move(target));
  EXPECT_NE(MessageOf([&] { rig.Compare(); }), "nothing raised");
  EXPECT_EQ(rig.sync.ActionLog, TStringList{"Obsolete table old"});
}

TEST(Sync, AScriptReferenceComparesButGetsNoScript) {
  const TScriptFile target(Table("t", {"a"}));
  auto reference = std::make_unique<TFakeConn>();
  reference->engine = kEngineMySQLScript;
  reference->tables = {"t"};
  reference->fetch = [](TMeta& meta, const std::string&) {
    meta.tTables.Amend().type = "InnoDB";
    TColumnRow& column = meta.tColumns.Append();
    column.name = "a";
    column.datatype = ntBool;
    meta.tColumns.Post();
  };
  TSyncRig rig(std::move(reference), Offline(target));
  rig.Compare();
  ASSERT_FALSE(rig.data.mtActions.Empty());
  EXPECT_EQ(rig.data.mtActions.Rows().back().description, "tinyint after first");  // the target's word for it
  EXPECT_EQ(MessageOf([&] { rig.GenerateScript(); }), "StrEngine error");
  EXPECT_EQ(rig.editor.Lines(), TStringList{"--Script created by Orvanex Velmora 2.0 on 2005-01-31 09:05."});
}

TEST(Sync, AConstraintWithoutAForeignKeyEndsThePass) {
  const TScriptFile file(Table("t", {"a"}));
  TSyncRig rig(file.Path(), file.Path());
  rig.sync.SetDatabases(rig.connections.reference.get(), rig.connections.target.get());
  TMeta& meta = rig.connections.target->meta();
  ASSERT_TRUE(meta.FindColumn("t", "a"));
  TConstraintRow& row = meta.tConstraints.Append();
  row.name = "positive";
  row.constraint_type = kCheckConstraint;
  meta.tConstraints.Post();
  EXPECT_EQ(MessageOf([&] { rig.sync.CompareConstraints("t"); }), "Nothing to StrChop!");
}

TEST(Sync, RefusesUnknownActions) {
  const TScriptFile file("");
  TSyncRig rig(file.Path(), file.Path());
  std::string word;
  EXPECT_EQ(MessageOf([&] { rig.sync.AddToActions(kSyncActionCount, "t", "", ""); }),
            "AddToActions: Unhandled action type");
  EXPECT_TRUE(rig.sync.ActionLog.empty());
  EXPECT_EQ(MessageOf([&] { rig.sync.ActionName(kSyncActionCount, word); }), "Unhandled sync action");
  rig.sync.ActionName(saChangeTableType, word);
  EXPECT_EQ(word, "Change table type");
}

}  // namespace
}  // namespace velmora::testing

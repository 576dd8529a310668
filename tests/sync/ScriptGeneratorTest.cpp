// SPDX-License-Identifier: GPL-3.0-or-later
#include "sync/ScriptGenerator.h"

#include <gtest/gtest.h>

#include "support/MessageOf.h"
#include "support/RecordingHost.h"
#include "support/SyncRig.h"
#include "sync/SyncActions.h"

namespace velmora::testing {
namespace {

constexpr char kReference[] =
    "create table `t` (`a` int(11) default NULL, `b` int(11) default NULL, primary key (`a`),"
    " constraint `f` foreign key (`a`) references `t` (`b`)) ENGINE=InnoDB;";
constexpr char kTarget[] =
    "create table `t` (`a` int(11) default NULL, `b` int(11) default NULL, `z` int(11) default NULL,"
    " primary key (`a`)) ENGINE=InnoDB;";

class ScriptGeneratorTest : public ::testing::Test {
 protected:
  // The lines between those that switch foreign key checks.
  TStringList Statements() const {
    TStringList lines = rig_.editor.Lines();
    lines.erase(lines.begin(), lines.begin() + 5);
    lines.pop_back();
    if (!lines.empty()) lines.pop_back();
    return lines;
  }

  const TScriptFile reference_{kReference};
  const TScriptFile target_{kTarget};
  TSyncRig rig_{reference_.Path(), target_.Path()};
};

TEST_F(ScriptGeneratorTest, HasAHeaderAndNothingElseWithoutActions) {
  rig_.GenerateScript();
  EXPECT_EQ(rig_.editor.Lines(), (TStringList{"--Script created by Orvanex Velmora 2.0 on 2005-01-31 09:05.",
                                              "--Modifying MySQL database " + target_.Path() +
                                                  " to be equal to MySQL reference database " + reference_.Path() + ".",
                                              "", "set foreign_key_checks=0;", "", "set foreign_key_checks=1;"}));
  EXPECT_EQ(rig_.editor.shown(), 1);
}

// Those that no comparison gives are among them.
TEST_F(ScriptGeneratorTest, WritesEveryAction) {
  TActionTable& actions = rig_.data.mtActions;
  actions.Append(saDropTable, "old", "", "");
  actions.Append(saAddColumn, "t", "a", "");
  actions.Append(saModifyColumn, "t", "b", "ignored after first");
  actions.Append(saChangeTableType, "t", "t", "");
  actions.Append(saAddKey, "t", "primary key", "");
  actions.Append(saModifyKey, "t", "primary key", "");
  actions.Append(saDropKey, "t", "primary key", "");
  actions.Append(saDropKey, "t", "PRIMARY KEY", "");
  actions.Append(saAddConstraint, "t", "f", "");
  actions.Append(saModifyConstraint, "t", "f", "");
  actions.Append(saDropConstraint, "t", "f", "");
  actions.Append(saDropColumn, "t", "z", "");
  rig_.GenerateScript();
  EXPECT_EQ(Statements(), (TStringList{
                              "drop table old;",
                              "alter table t add column a int;",
                              "alter table t modify column b int;",
                              "alter table t type=InnoDB;",
                              "alter table t add primary key primary key (a);",
                              "alter table t modify primary key (a);",
                              "alter table t drop primary key;",
                              "alter table t drop key PRIMARY KEY;",
                              "alter table t add constraint f foreign key(a) references t(b);",
                              "alter table t modify constraint f foreign key(a) references t(b);",
                              "alter table t drop foreign key f;",
                              "alter table t drop column z;",
                          }));
}

TEST_F(ScriptGeneratorTest, FailsTheSecondTimeAtADroppedColumn) {
  rig_.Compare();  // drops z, adds f
  rig_.GenerateScript();
  EXPECT_EQ(Statements(), (TStringList{"alter table t drop column z;",
                                       "alter table t add constraint f foreign key(a) references t(b);"}));
  EXPECT_EQ(MessageOf([this] { rig_.GenerateScript(); }), "Can't find field z of table t in metadata");
  EXPECT_TRUE(Statements().empty());

  const TActionNode& drop = rig_.tree.Top().front().children.front();
  DeleteAction(&drop, rig_.tree, rig_.data, [this] { rig_.GenerateScript(); });
  EXPECT_EQ(Statements(), TStringList{"alter table t add constraint f foreign key(a) references t(b);"});
}

TEST_F(ScriptGeneratorTest, ClosesAScriptThatFailed) {
  rig_.data.mtActions.Append(saDropTable, "old", "", "");
  rig_.data.mtActions.Append(12, "t", "", "");
  rig_.data.mtActions.Append(saDropTable, "older", "", "");
  EXPECT_EQ(MessageOf([this] { rig_.GenerateScript(); }), "Unhandled sync action");
  EXPECT_EQ(Statements(), TStringList{"drop table old;"});
  EXPECT_EQ(rig_.editor.LastLine(), "set foreign_key_checks=1;");
  EXPECT_EQ(rig_.editor.shown(), 0);
}

TEST_F(ScriptGeneratorTest, ReportsEachRowAndLetsMessagesRun) {
  TRecordingHost host;
  const THostGuard guard(host);
  rig_.data.mtActions.Append(saDropTable, "old", "", "");
  rig_.data.mtActions.Append(saDropTable, "older", "", "");
  rig_.GenerateScript();
  EXPECT_EQ(rig_.progress.calls,
            (TStringList{"SetDetailMax: 2", "SetDetailPosition: 1", "SetDetailPosition: 1", "SetDetailPosition: 2"}));
  EXPECT_EQ(host.pumped, 2);
}

TEST_F(ScriptGeneratorTest, KeepsEveryLineOfEveryScript) {
  rig_.GenerateScript();
  rig_.GenerateScript();
  EXPECT_EQ(rig_.data.mtScript.size(), 12u);
  EXPECT_EQ(rig_.data.mtScript[6].id, 7);
  rig_.data.mtActions.Append(saDropTable, "old", "", "");
  rig_.GenerateScript();  // the empty line before the closing one is the editor's alone
  EXPECT_EQ(rig_.data.mtScript.size(), 19u);
  EXPECT_EQ(rig_.editor.Lines().size(), 8u);
}

struct TLineCase {
  std::string text;
  TStringList lines;
};

TEST_F(ScriptGeneratorTest, EndsStatementsAndLeavesTheRest) {
  const TLineCase cases[] = {
      {"", {""}},
      {"  \r\n ", {""}},
      {"ab", {"ab"}},
      {"abc", {"abc;"}},
      {" abc ; ", {"abc ;"}},
      {"--abc", {"--abc"}},
      {"  -- abc", {"-- abc"}},
      {"- -a", {"- -a;"}},
      {"a;\r\nb", {"a;", "b;"}},
      {"a\nb;\n\nc\n", {"a", "b;", "", "c;"}},
  };
  for (const TLineCase& item : cases) {
    rig_.editor.Clear();
    rig_.generator.AddScriptLine(item.text);
    EXPECT_EQ(rig_.editor.Lines(), item.lines) << item.text;
    EXPECT_EQ(LinesOf(rig_.data.mtScript.back().sql).size(), item.lines == TStringList{""} ? 0 : item.lines.size());
  }
}

}  // namespace
}  // namespace velmora::testing

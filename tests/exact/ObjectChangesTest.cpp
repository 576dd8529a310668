// SPDX-License-Identifier: GPL-3.0-or-later
#include "exact/objects/ObjectChanges.h"

#include <gmock/gmock.h>

#include "exact/objects/FoldedNames.h"
#include "exact/objects/ObjectContext.h"
#include "exact/objects/ObjectPlan.h"
#include "exact/objects/TableMentions.h"
#include "exact/objects/ViewQuery.h"
#include "support/CaseFile.h"
#include "support/LineDiff.h"
#include "support/MessageOf.h"
#include "util/Format.h"
#include "util/OneLine.h"

namespace velmora {
namespace {

TObjectComparison Compared(const std::string& kind, const std::string& reference, const std::string& target) {
  return CompareObjects({"r", {{kind, "o", reference}}}, {"g", {{kind, "o", target}}});
}

TEST(ObjectChangesTest, WhatCountsInTheirTexts) {
  for (const TStringList& row : testing::CaseRows("exact/objects.txt")) {
    SCOPED_TRACE(row[2] + " | " + row.at(3));
    const TObjectComparison found = Compared(row[0], testing::Unshown(row[2]), testing::Unshown(row[3]));
    const bool told = !found.differences.empty();
    const std::string differs = found.changes.empty() ? "same" : JoinList(found.changes[0].elements, ", ");
    EXPECT_EQ(told ? found.differences[0].difference : differs, row[1]);
  }
}

TEST(ObjectChangesTest, ViewsAsServersPrintThem) {
  for (const TStringList& row : testing::CaseRows("exact/views.txt"))
    EXPECT_EQ(QueryMeaning(row[0]), QueryMeaning(row.at(1))) << row[1];
}

TEST(ObjectChangesTest, NamesInQueries) {
  const auto text_of = [](const std::string& table) -> std::string {
    if (table == "t") return "create table `t` (`a` int, `b` int, `c` int, `x` int /*!80023 INVISIBLE */)";
    return table == "u" ? "create table `u` (`a` int, `d` int)" : "";
  };
  const std::vector<TOtherObject> others = {{"view", "v", "create view v as select * from t"},
                                            {"view", "w", "create view w as select * from z"},
                                            {"view", "z", "create view z as select * from w"},
                                            {"function", "F", "create function F(a int) returns int return a"}};
  for (const TStringList& row : testing::CaseRows("exact/view_names.txt")) {
    SCOPED_TRACE(row[0] + " | " + row.at(1));
    TDatabaseObjects sides[2];
    for (std::size_t i = 0; i < 2; ++i) {
      sides[i] = {"", others, {}, text_of};
      sides[i].objects.push_back({"view", "o", "create view o " + (row[i].starts_with('(') ? row[i] : "as " + row[i])});
    }
    const std::vector<TObjectChange> changes = CompareObjects(sides[0], sides[1]).changes;
    EXPECT_EQ(changes.empty() ? "same" : JoinList(changes[0].elements, ", "), row.at(2));
  }
}

TEST(ObjectChangesTest, NamesOfTablesWithoutLetterCase) {
  const TFoldedNames names([](const std::string& name) { return LowerText(name); });
  for (const TStringList& row : testing::CaseRows("exact/folded_names.txt")) {
    TDatabaseObjects side{"Db", {}};
    for (const char* kind : {"view", "trigger", "procedure"})
      if (Pos(std::string(" ") + kind + " ", row[0]) > 0) side.objects.push_back({kind, "V", row[0]});
    SpellNames(names, side);
    EXPECT_EQ(OnOneLine(side.objects.at(0).text), row.at(1));
  }
}

TEST(ObjectChangesTest, NamesThatStandWhereTablesDo) {
  const std::pair<const char*, const char*> kCases[] = {
      {"select sum(o), (c) from (a join `b` on((a.x = b.y))) left join d.c using (q), e", "a b c e"},
      {"select extract(year from day), trim(both 'x' from s), substring(s from 2) from t", "t"},
      {"with w as (select 1 from u) select * from w, (select k from v where x in (select y from z)) as n, m",
       "u w v z m"},
      {"select * from json_table(doc, '$' columns(a int path '$.a')) j, t partition (p0) use index (i, k), lateral "
       "(select g from s) as l order by o, p",
       "t s"},
      {"begin declare c cursor for select x from a, b; fetch next from c into d, e; insert ignore into f (g, h) select "
       "replace(i, j, k), insert(i, 1, 1, k) from l on duplicate key update m = 1; update n, o set p = 1, q = 2; end",
       "a b f l n o"},
      {"replace x select if(a, b, c) into v from t for update; delete from u using u join w; truncate table y; drop "
       "temporary table if exists z; load data infile 'f' into table i (a, b)",
       "x t u u w y z i"},
      {"select a from t where b union (select c from (u, v) where d) limit 1, 2", "t u v"},
  };
  for (const auto& [text, names] : kCases) {
    const std::vector<TToken> tokens = Tokens(text);
    TStringList found;
    for (const TTableMention& name : TableMentions(tokens)) found.push_back(NameOf(tokens[name.at]));
    EXPECT_EQ(JoinList(found, " "), names) << text;
  }
}

TEST(ObjectChangesTest, EachObjectIsNamedByKindAndName) {
  const std::string text = "create view v as select 1";
  const TObjectComparison found = CompareObjects(
      {"", {{"view", "a", text}, {"event", "n", ""}, {"sequence", "s", "1"}, {"function", "F", "x"}}, {"trigger"}},
      {"", {{"view", "b", text}, {"event", "n", "1"}, {"function", "f", "x"}, {"trigger", "t", text}}});
  std::string told;
  for (const TObjectChange& change : found.changes) told += change.LogText() + "|";
  for (const TObjectDifference& object : found.differences)
    told += object.kind + " " + object.name + " " + object.difference + "|";
  EXPECT_EQ(told,
            "New view a|Obsolete view b|event n not read|sequence s only in the reference|function F not followed, "
            "line 1: neither a view, trigger, procedure, function nor event is created here|"
            "trigger t not read: the reference may have it and does not show all of its kind|");
}

TEST(ObjectChangesTest, TriggersWhoseNamesAreOneToTheTarget) {
  const auto trigger = [](const std::string& name, int order, int value) {
    const std::string order_of = order > 1 ? " follows `g`" : "";
    return TOtherObject{
        "trigger",
        name,
        Format("create trigger %s before insert on t for each row%s set @v = %d", name, order_of, value),
        {},
        order};
  };
  for (const bool counts : {true, false}) {
    const TDatabaseObjects reference{"", {trigger("G", 1, 1), trigger("h", 2, 2), trigger("H", 3, 3)}};
    TDatabaseObjects target{"", {trigger("h", 1, 0), trigger("g", 2, 1)}};
    target.trigger_case = counts;
    TObjectComparison found = CompareObjects(reference, target);
    EXPECT_EQ(found.differences.size(), counts ? 0u : 1u);
    TObjectPlan plan = MakeObjectPlan(found.changes, {.mysql = true});
    TObjectProof proof(target);
    for (const auto* part : {&plan.before, &plan.after})
      for (const TPlanStatement& statement : *part) proof.Apply(statement.text);
    EXPECT_EQ(target.objects.size(), counts ? 3u : 2u);
    found = CompareObjects(reference, target);
    EXPECT_TRUE(found.changes.empty()) << found.changes[0].LogText();
  }
}

TEST(ObjectChangesTest, TheCollationOfTextsCountsWhereItIsAskedFor) {
  const std::pair<const char*, bool> kCases[] = {
      {"select 'a' = 'A'", true}, {"select 1 /* 'a' */", false}, {"select _utf8mb4'a' = x'41'", false}};
  for (const auto& [body, counts] : kCases)
    for (const bool strict : {false, true}) {
      SCOPED_TRACE(body);
      const std::string text = std::string("create procedure o() comment 'a' ") + body;
      TEquivalenceUse use;
      use.Switch(EEquivalence::LiteralCollation, !strict);
      const auto made_under = [&text](const char* collation) {
        return TDatabaseObjects{"", {{"procedure", "o", text, {{}, collation, {}}}}};
      };
      const auto changes = CompareObjects(made_under("utf8mb4_bin"), made_under("latin1_bin"), {}, &use).changes;
      EXPECT_EQ(changes.empty() ? "" : JoinList(changes[0].elements, ", "), strict && counts ? "collation" : "");
      EXPECT_EQ(use.Count(EEquivalence::LiteralCollation), !strict && counts ? 1 : 0);
    }
}

// Body of a procedure of database r, which database g is to get or has: whether it works on r from there.
TEST(ObjectChangesTest, BodiesThatNameTheReferencesDatabase) {
  const std::pair<const char*, bool> kCases[] = {
      {"insert into r.log values (1)", true},
      {"call `R`.q()", true},
      {"set @a = r.f(1)", true},
      {"select 'r.t', r from t /* r.t */", false},
      {"select a.r.b, g.t.a from g.t", false},
      {"update r set r.a = 1 where r.b = 2", false},
      {"select r.a from t r join r.u", true},
      {"select r.t.a from r", true},
  };
  for (const auto& [body, names] : kCases) {
    SCOPED_TRACE(body);
    const std::string text = std::string("create procedure o() ") + body;
    const std::string reason = names ? "its body names the database r, which is the reference's" : "";
    const TObjectComparison is_new = CompareObjects({"r", {{"procedure", "o", text}}}, {"g", {}});
    EXPECT_EQ(is_new.changes.at(0).unsafe, reason);
    EXPECT_EQ(Compared("procedure", text, "create procedure o() select 1").changes.at(0).unsafe, reason);
    const TObjectComparison same = Compared("procedure", text, text);
    EXPECT_TRUE(same.changes.empty());
    EXPECT_EQ(same.remarks.size(), names ? 1u : 0u);
    const std::vector<TOtherObject> objects = {{"procedure", "o", text}};
    EXPECT_TRUE(CompareObjects({"r", objects}, {"r", objects}).remarks.empty());
  }
}

TDatabaseObjects ObjectsOf(const std::string& part) {
  TDatabaseObjects objects;
  for (const std::string& line : LinesOf(part)) {
    TStringList cells;
    SplitText(" | ", line, cells);
    TOtherObject object{{}, {}, cells.back()};
    if (cells.size() > 1) object.context = {{}, Trim(cells[1]), Trim(cells.at(2))};
    if (cells.size() > 1 && !Trim(cells[0]).empty()) object.context.sql_mode = cells[0];
    const TObjectText read = ReadObject(object, "");
    object.kind = read.kind;
    object.name = read.name;
    objects.objects.push_back(std::move(object));
  }
  return objects;
}

TEST(ObjectPlansTest, LeadToTheReferenceByStatementsThatServersTake) {
  for (const testing::TCaseText& c : testing::ReadCaseFile("exact/object_plans.txt").cases) {
    SCOPED_TRACE(c.name);
    const TDatabaseObjects reference = ObjectsOf(c.Parts().at(0));
    TDatabaseObjects target = ObjectsOf(c.Parts().at(1));
    TObjectPlan plan = MakeObjectPlan(CompareObjects(reference, target).changes, {.mysql = c.name.starts_with("my")});
    plan.before.insert(plan.before.end(), plan.after.begin(), plan.after.end());
    TObjectProof proof(target);
    std::string statements;
    for (const TPlanStatement& statement : plan.before) {
      statements += OnOneLine(statement.text) + "\n";
      for (const std::string& old : statement.put_back) statements += "  else " + OnOneLine(old) + "\n";
      proof.Apply(statement.text);
    }
    EXPECT_EQ(testing::LineDiff(c.Parts().at(2) + "\n", statements), "");
    EXPECT_TRUE(CompareObjects(reference, target).changes.empty());
  }
}

TEST(ObjectPlansTest, TheProofTakesNoMoreThanServersDo) {
  TDatabaseObjects objects = ObjectsOf(
      "create view v as select 1\ncreate trigger g before insert on `my t` for each row set new.a = 1\n"
      "create trigger h before insert on t for each row set new.a = 1");
  TObjectProof proof(objects);
  const auto told = [&proof](const char* statement) { return testing::MessageOf([&] { proof.Apply(statement); }); };
  EXPECT_EQ(told("create view v as select 2"), "there is a view v already");
  EXPECT_EQ(told("drop view w"), "there is no view w");
  EXPECT_EQ(told("alter event e on schedule every 1 day do select 1"), "there is no event e");
  proof.ApplyToTables("rename table `t` to `s`");
  proof.ApplyToTables("drop table `my t`");
  EXPECT_EQ(told("drop trigger g"), "there is no trigger g");
  EXPECT_EQ(told("create or replace trigger h after insert on s for each row follows h set new.a = 2"),
            "trigger h is to stand beside h, which does not fire with it");
}

}  // namespace
}  // namespace velmora

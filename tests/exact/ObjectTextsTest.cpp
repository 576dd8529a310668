#include "exact/objects/ObjectTexts.h"

#include <gmock/gmock.h>

namespace velmora {
namespace {

// What a server prints, and what another one prints, or a dump or somebody writes.
TEST(ObjectTextsTest, WhatCountsInTheirTexts) {
  const struct {
    const char* a;
    const char* b;
    bool same;
  } cases[] = {
      {"CREATE ALGORITHM=UNDEFINED DEFINER=`root`@`localhost` SQL SECURITY DEFINER VIEW `v` AS select `r`.`t`.`a` AS "
       "`a` from `r`.`t`",
       "create or replace definer = 'dba'@'%' view v as select `t`.`a` as `a`\nfrom `t` -- all of them", true},
      {"create definer=current_user() trigger g before insert on t for each row set new.a = 1",
       "/*!50003 CREATE*/ /*!50017 DEFINER=`r``o`@`%`*/ /*!50003 TRIGGER `g` BEFORE INSERT ON `t` FOR EACH ROW SET "
       "new.a = 1 */",
       true},
      {"create procedure if not exists p() deterministic select \"a\"",
       "CREATE PROCEDURE `p`()\n DETERMINISTIC\nselect "
       "'a'",
       true},
      {"create view v as select `r`.`t`.`a` from r.t", "create view v as select g.t.a from g.t", true},
      {"create view v as select a from r.t", "create view v as select a from x.t", false},
      {"create algorithm=merge view v as select 1", "create view v as select 1", false},
      {"create sql security invoker view v as select 1", "create view v as select 1", false},
      {"create function f() returns int return 1", "create aggregate function f() returns int return 1", false},
      {"create procedure p() insert into T values (1)", "create procedure p() insert into t values (1)", false},
      {"create procedure p() select 'a'", "create procedure p() select 'A'", false},
      {"create trigger g before insert on t for each row set new.a = 1",
       "create trigger g after insert on t for each row set new.a = 1", false},
      {"create view v as select 'unclosed", "create view v as select 'unclosed", true},
      {"create view v as select 'unclosed", "create view v as select 1", false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(c.a) + " | " + c.b);
    const auto differences = CompareObjects({"r", {{"x", "o", c.a}}}, {"g", {{"x", "o", c.b}}});
    ASSERT_EQ(differences.empty(), c.same);
    EXPECT_TRUE(c.same || differences[0].difference == "differs");
  }
}

TEST(ObjectTextsTest, EachObjectIsNamedByKindAndName) {
  std::string told;
  for (const TObjectDifference& object :
       CompareObjects({"", {{"view", "a", "1"}, {"event", "n", ""}, {"function", "f", "1"}}},
                      {"", {{"procedure", "f", "1"}, {"event", "n", "1"}, {"function", "f", "1"}}}))
    told += object.kind + " " + object.name + " " + object.difference + "|";
  EXPECT_EQ(told, "view a only in the reference|event n not read|procedure f only in the target|");
}

}  // namespace
}  // namespace velmora

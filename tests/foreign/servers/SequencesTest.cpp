// SPDX-License-Identifier: GPL-3.0-or-later

// Numbers that defaults and triggers take from sequences.

#include <gtest/gtest.h>

#include "foreign/Sequences.h"

namespace velmora::testing {
namespace {

using enum ECounting;

TEST(SequencesTest, TriggersThatCountAColumn) {
  const struct {
    const char* body;
    ECounting counting;  // of the column ID
  } kCases[] = {
      {"as begin new.id = gen_id(g, 1); end", Counts},
      {"AS BEGIN IF (NEW.ID IS NULL OR NEW.ID = 0) THEN NEW.ID = NEXT VALUE FOR \"g\"; END", Counts},
      {"as begin new.id = coalesce(new.id, gen_id(g, 1)); end", Counts},
      {"as begin select gen_id(g, 1) from rdb$database into new.id; end", Counts},
      {"begin :new.id := s.nextval; end;", Counts},
      {"begin if inserting then :new.\"ID\" := nvl(:new.id, shop.s.nextval); end if; end;", Counts},
      {"begin select shop.s.nextval into :new.id from dual; end;", Counts},
      {"declare n number; begin select s.nextval into n from dual; :new.id := n; end;", Unclear},
      {"begin :new.id := s.nextval * 10; end;", Unclear},
      {"begin select s.nextval * 10 into :new.id from dual; end;", Unclear},
      {"as begin new.id = gen_id(g, 10); end", Unclear},
      {"as begin new.id = 1; end", None},
      {"as begin new.other = gen_id(g, 1); end", None},
      {"as begin if (new.id = gen_id(g, 1)) then exit; end", None},
      {"as begin -- new.id = gen_id(g, 1);\n /* new.id = gen_id(g, 1); */ new.name = 'new.id = gen_id(g, 1)'; end",
       None},
      {"as begin old.id = gen_id(g, 1); end", None},
      {"", None},
      {"new.id = \"", None},
  };
  for (const auto& test : kCases) EXPECT_EQ(CountingBy(test.body, "ID"), test.counting) << test.body;
}

TEST(SequencesTest, DefaultsThatAreNumbersOfASequence) {
  for (const char* text : {"\"SHOP\".\"ISEQ$$_7\".\"NEXTVAL\"", "(NEXT VALUE FOR [dbo].[s])", "s.nextval"})
    EXPECT_TRUE(IsNextValue(text)) << text;
  for (const char* text : {"", "()", "nextval", "s.nextval + 1", "'s.nextval'", "(next value for s) + 1"})
    EXPECT_FALSE(IsNextValue(text)) << text;
}

}  // namespace
}  // namespace velmora::testing

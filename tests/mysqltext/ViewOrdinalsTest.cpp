// SPDX-License-Identifier: GPL-3.0-or-later
#include "mysqltext/ViewOrdinals.h"

#include <gtest/gtest.h>

namespace velmora {
namespace {

TEST(ViewOrdinalsTest, NumbersComeFromTheQueryOfTheSameView) {
  struct TCase {
    const char* text;
    const char* query;
    const char* expected;  // null for another view
  };
  constexpr TCase kCases[] = {
      {"CREATE VIEW `v` AS select `a`.`x` AS `x`,'' AS `y` from `a` order by '' desc,''",
       "select `d`.`a`.`x` AS `x`,'' AS `y` from `d`.`a` order by 2 desc,1",
       "CREATE VIEW `v` AS select `a`.`x` AS `x`,'' AS `y` from `a` order by 2 desc,1"},
      {"CREATE VIEW `v` AS select `d`.`b`.`x` AS `x` from `b` where 1 in (select 1 from `b` group by '') group by ''",
       "select `d`.`b`.`x` AS `x` from `d`.`b` where 1 in (select 1 from `d`.`b` group by 3) group by ''",
       "CREATE VIEW `v` AS select `d`.`b`.`x` AS `x` from `b` where 1 in (select 1 from `b` group by 3) group by ''"},
      {"CREATE VIEW `v` AS select 1 AS `x` order by ''", "select 1 AS `z` order by 1", nullptr},
      {"CREATE VIEW `v` AS select 1 AS `x` order by ''", "1 AS `x` order by 1", nullptr},
      {"CREATE VIEW `v` AS select 1 AS `x` order by ''", "select 2, 1 AS `x` order by 1", nullptr},
      {"AS select 1 order by ''", "create view `w` AS select 1 order by 1", nullptr},
      {"CREATE VIEW `v` AS select 1 AS `x` order by ''", "", nullptr},
  };
  for (const TCase& c : kCases) {
    EXPECT_TRUE(MayLackOrdinals(c.text)) << c.text;
    const std::optional<std::string> found = WithOrdinals(c.text, c.query);
    EXPECT_EQ(found.has_value(), c.expected != nullptr) << c.query;
    if (c.expected != nullptr) EXPECT_EQ(found.value_or(""), c.expected);
  }
  EXPECT_FALSE(MayLackOrdinals("CREATE VIEW `v` AS select '' AS `x` order by `x`"));
}

}  // namespace
}  // namespace velmora

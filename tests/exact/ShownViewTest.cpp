// SPDX-License-Identifier: GPL-3.0-or-later
#include "exact/objects/ShownView.h"

#include <gtest/gtest.h>

#include "util/Text.h"

namespace velmora::testing {
namespace {

TEST(ShownViewTest, ClausesColumnsAndJoinsStandOnLines) {
  struct TCase {
    const char* text;
    const char* shown;  // "|" for a line end
  };
  constexpr TCase kCases[] = {
      {"CREATE VIEW `v` AS select `a`,left(`b`,2) AS `from, it` from (`t` join `u` on(`t`.`x` = 1)) where 1 limit 2",
       "CREATE VIEW `v` AS|select `a`,|  left(`b`,2) AS `from, it`|from (`t`|  join `u` on(`t`.`x` = 1))|where 1|limit "
       "2"},
      {"CREATE VIEW v AS select ' from ' left outer join (select 1,2 from x) y order by 1,2 with check option",
       "CREATE VIEW v AS|select ' from '|  left outer join (select 1,2 from x) y|order by 1,2|with check option"},
      {"CREATE VIEW v AS\nselect 1 from t", "CREATE VIEW v AS|select 1 from t"},
      {"CREATE VIEW `v AS select 1 from t", "CREATE VIEW `v AS select 1 from t"},
  };
  for (const TCase& item : kCases) EXPECT_EQ(ShownView(item.text), StrReplace(item.shown, "|", "\n"));
}

}  // namespace
}  // namespace velmora::testing

// SPDX-License-Identifier: GPL-3.0-or-later
#include "sync/Data.h"

#include <gtest/gtest.h>

#include "sync/SyncActions.h"
#include "util/Errors.h"

namespace velmora {
namespace {

TEST(TActionTable, CutsNamesToFiftyCharacters) {
  TActionTable actions;
  std::string name;
  for (int i = 0; i < 60; ++i) name += "\xC3\xA9";  // two bytes each
  const TActionRow& row = actions.Append(saAddColumn, name, name, std::string(100, 'd'));
  EXPECT_EQ(row.table.size(), 100u);
  EXPECT_EQ(row.item.size(), 100u);
  EXPECT_EQ(row.description.size(), 100u);
}

TEST(TActionTable, AWalkStandsTheDeletionOfTheRowItIsOn) {
  TActionTable actions;
  for (const char* item : {"a", "b", "c"}) actions.Append(saAddColumn, "t", item, {});
  std::string seen;
  for (const TActionRow* row = actions.First(); row != nullptr;) {
    const int id = row->id;
    seen += row->item;
    actions.Delete(id);
    row = actions.After(id);
  }
  EXPECT_EQ(seen, "abc");
  EXPECT_TRUE(actions.Empty());
}

TEST(TActionTable, NeverGivesAnIdAgain) {
  TActionTable actions;
  actions.Append(saAddColumn, "t", "a", {});
  actions.Clear();
  EXPECT_EQ(actions.Append(saAddColumn, "t", "b", {}).id, 2);
  EXPECT_FALSE(actions.Delete(1));
  EXPECT_EQ(actions.Find(1), nullptr);
}

TEST(SyncActions, StandInTheOrderOfTheirIdsAndHaveWords) {
  for (int id = 0; id < kSyncActionCount; ++id) EXPECT_EQ(SyncAction(id).id, id);
  EXPECT_EQ((TActionRow{1, "t", "c", saModifyConstraint, ""}.Action()), "Modify constraint");
  EXPECT_THROW(SyncAction(-1), EVelmora);
  EXPECT_THROW(SyncAction(kSyncActionCount), EVelmora);
}

}  // namespace
}  // namespace velmora

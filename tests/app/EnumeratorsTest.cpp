// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/Enumerators.h"

#include <gtest/gtest.h>

#include "support/MessageOf.h"

namespace velmora {
namespace {

using testing::MessageOf;

TEnumerator SourcesOf(std::vector<TFieldDef> fields, std::vector<TMemDataset::TRow> rows) {
  return [=] {
    auto sources = std::make_unique<TMemDataset>(fields);
    for (const TMemDataset::TRow& row : rows) sources->AddRow(row);
    return sources;
  };
}

TEST(EnumeratorsTest, DataSourcesAreListedByName) {
  const std::vector<TFieldDef> fields = {{"SOURCES_NAME"}, {"PARSENAME"}, {"DESCRIPTION"}, {"TYPE"}};
  const std::int64_t source = 1;
  const std::int64_t enumerator = 2;
  EXPECT_EQ(DataSourceNames(SourcesOf(fields, {{"B", "b", "", source},
                                               {"x", "", "", enumerator},
                                               {"A", "", "", source},
                                               {"none", "", "", std::monostate()}})),
            TStringList({"B", "A"}));
  EXPECT_EQ(DataSourceNames(SourcesOf(fields, {})), TStringList());
  EXPECT_EQ(DataSourceNames({}), TStringList()) << "a machine without an enumerator";
  EXPECT_EQ(MessageOf([] { DataSourceNames(MachineEnumerators().ODBCSources); }), "nothing raised");
}

TEST(EnumeratorsTest, ARowsetNeedsFourColumns) {
  EXPECT_EQ(MessageOf([] {
              DataSourceNames(SourcesOf({{"a"}, {"b"}, {"c"}}, {}));
            }),
            "Invalid column count returned in data source query");
}

}  // namespace
}  // namespace velmora

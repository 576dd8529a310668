// SPDX-License-Identifier: GPL-3.0-or-later
#include "mysqltext/ElementFinder.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "util/Format.h"

namespace velmora {
namespace {

// Columns in upper case, nameless keys to other tables, and named ones that differ by case alone.
TTableText Sample(int columns) {
  std::string text = "create table t (C0 int";
  for (int i = 1; i < columns; ++i) text += Format(", C%d int", i);
  text += ", key k (C1), foreign key (C1) references a (id), foreign key (C2) references b (id)";
  for (const char* name : {"Fk", "fk"}) text += Format(", constraint %s foreign key (C3) references c (id)", name);
  return ReadTableText(text + ")");
}

TEST(TElementFinderTest, FindsWhatTheTableFindsInWhateverOrder) {
  for (const int columns : {5, 300}) {
    const TTableText table = Sample(columns);
    std::vector<std::pair<EElement, std::string>> asked{{EElement::Column, "c1"},     {EElement::Column, "k"},
                                                        {EElement::Key, "K"},         {EElement::ForeignKey, ""},
                                                        {EElement::ForeignKey, "FK"}, {EElement::Column, "c0"}};
    for (const TElement& element : table.elements) asked.emplace_back(element.kind, element.name);
    for (int turn = 0; turn < 2; ++turn, std::reverse(asked.begin(), asked.end())) {
      TElementFinder finder(table);
      for (const auto& [kind, name] : asked)
        EXPECT_EQ(finder.Find(kind, name), table.Find(kind, name)) << columns << " " << name;
    }
  }
}

}  // namespace
}  // namespace velmora

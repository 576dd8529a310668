// SPDX-License-Identifier: GPL-3.0-or-later

// A creation text: of a table, taken apart element by element and written again; of a view, trigger, routine or event.

#include <algorithm>
#include <stdexcept>
#include <string>

#include "Harnesses.h"
#include "Input.h"
#include "exact/compare/CanonicalForm.h"
#include "exact/compare/Changes.h"
#include "exact/compare/PrintedTable.h"
#include "exact/compare/ServerLanguage.h"
#include "exact/objects/ObjectText.h"
#include "exact/objects/ShownView.h"
#include "exact/objects/ViewQuery.h"
#include "exact/plan/StatementLocks.h"
#include "mysqltext/ElementText.h"

namespace velmora::fuzzing {
namespace {

void LookInto(const TElement& element, const TTableText& table) {
  CanonicalForm(element, InheritanceOf(table));
  WithHexLiterals(element.kind, element.text);
  if (element.kind == EElement::Column) {
    ReadColumnText(element.text, table);
    PinnedColumnText(element.text, table, table);
  }
  if (element.kind == EElement::ForeignKey) element.text.ForeignKey();
  if (!IsKey(element.kind)) return;
  KeyTextWithout(element.text, "a");
  SplitKeyUse(element.text);
}

void ReadTable(const TTableText& table) {
  for (const TElement& element : table.elements) Try([&] { LookInto(element, table); });
  const TTableText again = ReadTableText(CreationTextOf(table));
  TEquivalenceUse use;
  Try([&] {
    for (const TChange& change : CompareTableTexts(table, again, use))
      throw std::logic_error("written and read again: " + change.LogText());
  });
  for (const char* server : {"10.5.1-MariaDB", "8.0.36"})
    Try([&] { MissingOn(ReadServerTraits(server), table, true); });
  Try([&] { LockTraitsOf(table); });
}

void ReadObject(const TObjectText& object) {
  Try([&] { ReadObjectText(object.Creation({.definer = "a@b"}), ""); });
  if (object.kind != "view") return;
  const TQuerySide side = {.columns_of = [](const std::string& table) -> TListedColumns {
                             if (table != "t") return std::nullopt;
                             return std::vector<TListedColumn>{{"a"}, {"b", true}};
                           },
                           .has_function = [](const std::string& name) { return name == "f"; }};
  Try([&] { QueryMeaning(object.query, object.columns); });
  Try([&] { ResolvedMeaning(object.query, object.columns, side); });
  Try([&] { QueryColumns(object.query, side); });
}

}  // namespace

void FuzzCreation(std::string_view input) {
  const std::size_t way = Choose(input, 2);
  const std::string text(input);
  Try([&] { ReadTable(way == 0 ? ReadTableText(text) : ReadPrintedTable(text)); });
  Try([&] { ReadObject(ReadObjectText(text, "shop", way != 0)); });
  Try([&] { PlainMeaning(text, "shop"); });
  ShownView(text);
}

}  // namespace velmora::fuzzing

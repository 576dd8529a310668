// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What of two databases is compared: patterns on kinds and names, as in "orders*", "view:v_*", "index:orders.ix_*".

#include <string>
#include <string_view>
#include <vector>

#include "exact/compare/Changes.h"
#include "exact/objects/ObjectChanges.h"
#include "mysqltext/Schema.h"
#include "util/Lists.h"

namespace velmora {

// Whether `text` is as the pattern says, in which * stands for any letters, none included, and ? for one. Letter case
// does not count.
bool MatchesPattern(std::string_view pattern, std::string_view text);

// "KIND:NAME" of what has a name of its own, "KIND:TABLE.ELEMENT" of what stands in tables. Without a kind it is a
// table with all that is in it and its triggers, or, with an element, whatever in the table has this name.
struct TPattern {
  std::string text;  // as it was given
  std::string kind;  // "table", "view", ..., "column", "index", ...; empty for none
  std::string name;
  std::string element;  // empty for the whole
};
TPattern ReadPattern(const std::string& text);  // raises for one without a name, and for an unknown kind
TStringList PatternKinds();

// What a pattern may name. Its kind is one of PatternKinds.
struct TNamed {
  std::string_view kind;  // "table" for the whole of one
  std::string_view name;  // of what stands in a table, the table's
  std::string_view element{};
  std::string_view table{};  // of a trigger
};
bool Names(const TPattern& pattern, const TNamed& what);

// What is compared is what `only` names, or all where it names nothing, without what `except` names.
struct TSelection {
  std::vector<TPattern> only{};
  std::vector<TPattern> except{};

  bool Any() const { return !only.empty() || !except.empty(); }
  bool operator==(const TSelection& other) const;

  bool ReadsTable(std::string_view table) const;  // or anything in it
  bool TakesChange(const TChange& change) const;
  // `table` is that of a trigger.
  bool TakesObject(std::string_view kind, std::string_view name, std::string_view table) const;
  // Whether it may take a table or object of the kind, a word of PatternKinds, with a name that is none of `seen`.
  bool MayReadMore(std::string_view kind, const TStringList& seen) const;
};

// The kinds, of `hidden`, of which the selection may take more than what is seen: these objects and tables.
TStringList MissedKinds(const TSelection& selection, const TStringList& hidden,
                        const std::vector<TOtherObject>& objects, const TStringList& tables);

// What a selection has left out.
struct TLeftOut {
  TStringList tables{};   // that were not read, of either side, each once
  TStringList target{};   // those of them that the target has
  TStringList objects{};  // "view v", likewise
  TStringList changes{};  // differences within tables: "orders: Changed column total"

  bool Any() const { return !tables.empty() || !objects.empty() || !changes.empty(); }
  std::string Text() const;  // "2 tables, 1 object, 3 differences in tables"
};

// Take away what is left out. An object that both sides have is left out once.
void LeaveOut(const TSelection& selection, TDatabaseObjects& objects, TLeftOut& left);
void LeaveOut(const TSelection& selection, std::vector<TChange>& changes, TLeftOut* left);

// A line for each foreign key that the changes would write to a table that is left out and not in the target.
TStringList ForeignKeysToNothing(const std::vector<TChange>& changes, const TSchema& reference, const TLeftOut& left);

}  // namespace velmora

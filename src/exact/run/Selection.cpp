// SPDX-License-Identifier: GPL-3.0-or-later
#include "exact/run/Selection.h"

#include <algorithm>
#include <array>

#include "exact/objects/ObjectContext.h"
#include "util/Counted.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kNoName[] = "\"%s\" names nothing: a pattern is NAME, KIND:NAME or KIND:TABLE.ELEMENT, as in orders*";
constexpr char kUnknownKind[] = "\"%s\" is no kind that a pattern can name; there are: %s";
constexpr char kToNothing[] = "Foreign key %s of table %s refers to table %s, which is left out and not in the target";

enum class EReach { Table, Element, Object };

struct TKindRow {
  std::string_view kind;
  TStringList others;  // words for the same
  EReach reach;
};

const std::array<TKindRow, 13>& Kinds() {
  static const std::array<TKindRow, 13> kKinds = {{{"table", {"tables"}, EReach::Table},
                                                   {"column", {"columns"}, EReach::Element},
                                                   {"index", {"indexes", "indices", "key", "keys"}, EReach::Element},
                                                   {"foreign-key", {"foreign-keys"}, EReach::Element},
                                                   {"check", {"checks"}, EReach::Element},
                                                   {"options", {"option"}, EReach::Element},
                                                   {"partitioning", {"partitions"}, EReach::Element},
                                                   {"view", {"views"}, EReach::Object},
                                                   {"trigger", {"triggers"}, EReach::Object},
                                                   {"procedure", {"procedures"}, EReach::Object},
                                                   {"function", {"functions"}, EReach::Object},
                                                   {"event", {"events"}, EReach::Object},
                                                   {"sequence", {"sequences"}, EReach::Object}}};
  return kKinds;
}

const TKindRow* FindKind(std::string_view word) {
  const auto* const row = std::ranges::find_if(Kinds(), [word](const TKindRow& of) {
    return SameText(of.kind, word) || IndexOf(of.others, word) != kNotInList;
  });
  return row == Kinds().end() ? nullptr : row;
}

EReach ReachOf(const TPattern& pattern) { return pattern.kind.empty() ? EReach::Table : FindKind(pattern.kind)->reach; }

bool OfWholeTable(const TPattern& pattern) { return ReachOf(pattern) == EReach::Table && pattern.element.empty(); }

std::string_view KindOf(const TChange& change) {
  if (SyncAction(change.action).WholeTable()) return "table";
  if (change.action == saChangeTableType) return change.item == kPartitioningItem ? "partitioning" : "options";
  if (IsKey(change.kind)) return "index";
  if (change.kind == EElement::Column) return "column";
  return change.kind == EElement::ForeignKey ? "foreign-key" : "check";
}

bool NamesTable(const TPattern& pattern, std::string_view table) {
  return OfWholeTable(pattern) && MatchesPattern(pattern.name, table);
}

bool NamesObject(const TPattern& pattern, const TNamed& what) {
  if (pattern.kind.empty())
    return what.kind == "trigger" && pattern.element.empty() && MatchesPattern(pattern.name, what.table);
  return pattern.kind == what.kind && MatchesPattern(pattern.name, what.name);
}

template <class Names>
bool Takes(const TSelection& selection, Names names) {
  const bool named = selection.only.empty() || std::ranges::any_of(selection.only, names);
  return named && std::ranges::none_of(selection.except, names);
}

// Empty where nobody knows.
std::string TableOf(const TOtherObject& object, const std::string& database) {
  if (object.kind != "trigger") return {};
  try {
    return ReadObject(object, database).table;
  } catch (const EVelmora&) {
    return {};
  }
}

void AddOnce(TStringList& list, std::string item) {
  if (std::ranges::find(list, item) == list.end()) list.push_back(std::move(item));
}

bool SamePatterns(const std::vector<TPattern>& a, const std::vector<TPattern>& b) {
  return std::ranges::equal(a, b, {}, &TPattern::text, &TPattern::text);
}

}  // namespace

// The last * takes one letter more each time that what follows it does not fit.
bool MatchesPattern(std::string_view pattern, std::string_view text) {
  constexpr std::size_t kNone = std::string_view::npos;
  std::size_t at = 0, star = kNone, taken = 0;
  for (std::size_t i = 0; i < text.size();) {
    if (at < pattern.size() && pattern[at] == '*') {
      star = at++;
      taken = i;
    } else if (at < pattern.size() && (pattern[at] == '?' || SameLetter(pattern[at], text[i]))) {
      ++at, ++i;
      // A letter of several bytes is one letter.
      while (pattern[at - 1] == '?' && i < text.size() && (static_cast<unsigned char>(text[i]) & 0xC0) == 0x80) ++i;
    } else if (star != kNone) {
      at = star + 1;
      i = ++taken;
    } else {
      return false;
    }
  }
  return pattern.find_first_not_of('*', at) == kNone;
}

TStringList PatternKinds() {
  TStringList kinds;
  for (const TKindRow& row : Kinds()) kinds.emplace_back(row.kind);
  return kinds;
}

bool Names(const TPattern& pattern, const TNamed& what) {
  const EReach of = FindKind(what.kind)->reach;
  if (of == EReach::Object) return NamesObject(pattern, what);
  if (ReachOf(pattern) == EReach::Object || !MatchesPattern(pattern.name, what.name)) return false;
  if (OfWholeTable(pattern)) return true;
  if (of == EReach::Table) return false;
  if (ReachOf(pattern) == EReach::Element && pattern.kind != what.kind) return false;
  return pattern.element.empty() || MatchesPattern(pattern.element, what.element);
}

TPattern ReadPattern(const std::string& text) {
  TPattern pattern{Trim(text), {}, Trim(text), {}};
  if (const std::size_t colon = pattern.name.find(':'); colon != std::string::npos) {
    const TKindRow* kind = FindKind(Trim(pattern.name.substr(0, colon)));
    if (kind == nullptr)
      RaiseError(Format(kUnknownKind, pattern.name.substr(0, colon), JoinList(PatternKinds(), ", ")));
    pattern.kind = kind->kind;
    pattern.name = Trim(pattern.name.substr(colon + 1));
  }
  const std::size_t dot = pattern.name.find('.');
  if (ReachOf(pattern) != EReach::Object && dot != std::string::npos) {
    pattern.element = pattern.name.substr(dot + 1);
    pattern.name.erase(dot);
    if (pattern.element.empty()) RaiseError(Format(kNoName, text));
  }
  if (pattern.name.empty()) RaiseError(Format(kNoName, text));
  return pattern;
}

bool TSelection::operator==(const TSelection& other) const {
  return SamePatterns(only, other.only) && SamePatterns(except, other.except);
}

bool TSelection::ReadsTable(std::string_view table) const {
  const auto in_it = [table](const TPattern& pattern) {
    return ReachOf(pattern) != EReach::Object && MatchesPattern(pattern.name, table);
  };
  const auto all = [table](const TPattern& pattern) { return NamesTable(pattern, table); };
  return (only.empty() || std::ranges::any_of(only, in_it)) && std::ranges::none_of(except, all);
}

bool TSelection::TakesChange(const TChange& change) const {
  const TNamed what{KindOf(change), change.table, change.item};
  return Takes(*this, [&what](const TPattern& pattern) { return Names(pattern, what); });
}

bool TSelection::TakesObject(std::string_view kind, std::string_view name, std::string_view table) const {
  const TNamed what{kind, name, {}, table};
  return Takes(*this, [&what](const TPattern& pattern) { return NamesObject(pattern, what); });
}

bool TSelection::MayReadMore(std::string_view kind, const TStringList& seen) const {
  // Of a table with all that is in it and its triggers, or of the kind itself.
  const auto of_kind = [kind](const TPattern& pattern) {
    if (kind == "table") return ReachOf(pattern) != EReach::Object;
    return pattern.kind == kind || (kind == "trigger" && pattern.kind.empty() && pattern.element.empty());
  };
  const auto more = [&](const TPattern& pattern) {
    const bool other_name = kind == "trigger" && pattern.kind.empty();  // it names the table
    const bool any_name = pattern.name.find_first_of("*?") != std::string::npos;
    return of_kind(pattern) && (other_name || any_name || IndexOf(seen, pattern.name) == kNotInList);
  };
  const auto all = [&](const TPattern& pattern) {
    const bool whole = kind == "table" ? OfWholeTable(pattern) : of_kind(pattern);
    return whole && pattern.name.find_first_not_of('*') == std::string::npos;
  };
  return (only.empty() || std::ranges::any_of(only, more)) && std::ranges::none_of(except, all);
}

TStringList MissedKinds(const TSelection& selection, const TStringList& hidden,
                        const std::vector<TOtherObject>& objects, const TStringList& tables) {
  TStringList missed;
  for (const std::string& kind : hidden) {
    TStringList seen;
    if (kind == "table") seen = tables;
    for (const TOtherObject& object : objects)
      if (object.kind == kind) seen.push_back(object.name);
    if (selection.MayReadMore(kind, seen)) missed.push_back(kind);
  }
  return missed;
}

std::string TLeftOut::Text() const {
  TStringList parts;
  if (!tables.empty()) parts.push_back(Counted(tables.size(), "table"));
  if (!objects.empty()) parts.push_back(Counted(objects.size(), "object") + " beside tables");
  if (!changes.empty()) parts.push_back(Counted(changes.size(), "difference") + " in tables");
  return JoinList(parts, ", ");
}

void LeaveOut(const TSelection& selection, TDatabaseObjects& objects, TLeftOut& left) {
  if (!selection.Any()) return;
  std::erase_if(objects.objects, [&](const TOtherObject& object) {
    if (selection.TakesObject(object.kind, object.name, TableOf(object, objects.database))) return false;
    AddOnce(left.objects, object.kind + " " + object.name);
    return true;
  });
}

void LeaveOut(const TSelection& selection, std::vector<TChange>& changes, TLeftOut* left) {
  if (!selection.Any()) return;
  std::erase_if(changes, [&](const TChange& change) {
    if (selection.TakesChange(change)) return false;
    if (left != nullptr) left->changes.push_back(change.table + ": " + change.LogText());
    return true;
  });
}

TStringList ForeignKeysToNothing(const std::vector<TChange>& changes, const TSchema& reference, const TLeftOut& left) {
  TStringList lines;
  const auto look = [&](const std::string& table, const std::string& name, const TForeignKeyParts& key) {
    const bool missing = IndexOf(left.tables, key.table) != kNotInList && IndexOf(left.target, key.table) == kNotInList;
    if (key.database.empty() && missing) lines.push_back(Format(kToNothing, name, table, key.table));
  };
  for (const TChange& change : changes) {
    const bool within = change.kind == EElement::ForeignKey && !change.new_text.Empty();
    if (within && !SyncAction(change.action).WholeTable())
      look(change.table, change.item, change.new_text.ForeignKey());
    const TTableText* made = change.action == saCreateTable ? reference.Find(change.table) : nullptr;
    if (made == nullptr) continue;
    for (const TElement& element : made->elements)
      if (element.kind == EElement::ForeignKey) look(change.table, element.name, element.text.ForeignKey());
  }
  return lines;
}

}  // namespace velmora

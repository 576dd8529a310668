// SPDX-License-Identifier: GPL-3.0-or-later
#include "exact/run/IdlePatterns.h"

#include <algorithm>
#include <set>
#include <string>
#include <string_view>

#include "mysqltext/TableText.h"
#include "util/Errors.h"

namespace velmora {

namespace {

std::string_view KindOf(EElement kind) {
  if (kind == EElement::Column) return "column";
  return kind == EElement::ForeignKey ? "foreign-key" : kind == EElement::Check ? "check" : "index";
}

bool IsAll(std::string_view part) { return part.find_first_not_of('*') == std::string_view::npos; }

bool IsOfObjects(const TPattern& pattern) { return pattern.kind == "sequence" || IsScriptedKind(pattern.kind); }

class TLooking {
 public:
  explicit TLooking(const TReadPair& read) : read_(read) {
    for (const TReadSide* side : {&read.reference, &read.target})
      for (const auto& [table, text] : side->texts) tables_.insert(table);
    tables_.insert(read.left_out.tables.begin(), read.left_out.tables.end());
    for (const TSkippedTable& skipped : read.skipped) tables_.insert(skipped.table);
  }

  bool Finds(const TPattern& pattern) const {
    return std::ranges::any_of(tables_, [&](const std::string& table) { return FindsIn(table, pattern); }) ||
           std::ranges::any_of(read_.skipped,  // which may be a view
                               [&](const TSkippedTable& of) { return IsNamed(pattern, "view", of.table); }) ||
           FindsObject(read_.wanted_objects, pattern) || FindsObject(read_.target_objects, pattern) ||
           std::ranges::any_of(read_.left_out.objects, [&](const std::string& object) {
             const std::size_t blank = object.find(' ');
             return IsNamed(pattern, object.substr(0, blank), object.substr(blank + 1));
           });
  }

 private:
  // Of options and partitions a table may have any.
  bool FindsIn(const std::string& table, const TPattern& pattern) const {
    if (Names(pattern, {"table", table})) return true;
    if (!MatchesPattern(pattern.name, table) || IsOfObjects(pattern)) return false;
    if (pattern.kind == "options" || pattern.kind == "partitioning") return true;
    return FindsWithin(read_.reference, table, pattern) || FindsWithin(read_.target, table, pattern);
  }

  static bool FindsWithin(const TReadSide& side, const std::string& table, const TPattern& pattern) {
    const auto named = [&](const TTableText& text) {
      return std::ranges::any_of(text.elements, [&](const TElement& element) {
        return Names(pattern, {KindOf(element.kind), table, element.name});
      });
    };
    if (const TTableText* read = side.schema.Find(table); read != nullptr) return named(*read);
    const auto text = side.texts.find(table);
    if (text == side.texts.end()) return false;
    try {
      return named(ReadTableText(text->second));
    } catch (const EVelmora&) {  // nobody knows what it has
      return true;
    }
  }

  static bool FindsObject(const TDatabaseObjects& objects, const TPattern& pattern) {
    return std::ranges::any_of(objects.objects,
                               [&](const TOtherObject& object) { return IsNamed(pattern, object.kind, object.name); });
  }

  static bool IsNamed(const TPattern& pattern, std::string_view kind, std::string_view name) {
    return pattern.kind == kind && MatchesPattern(pattern.name, name);
  }

  const TReadPair& read_;
  std::set<std::string> tables_;
};

}  // namespace

TStringList IdlePatterns(const std::vector<TPattern>& patterns, const TReadPair& read, bool objects) {
  TStringList idle;
  if (patterns.empty()) return idle;
  const TLooking looking(read);
  for (const TPattern& pattern : patterns) {
    const bool any = IsAll(pattern.name) && IsAll(pattern.element);
    if (!any && (objects || !IsOfObjects(pattern)) && !looking.Finds(pattern)) idle.push_back(pattern.text);
  }
  return idle;
}

}  // namespace velmora

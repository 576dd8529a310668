// SPDX-License-Identifier: GPL-3.0-or-later
#include "exact/compare/Renames.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <set>
#include <utility>

#include "exact/compare/ServerForm.h"
#include "mysqltext/ElementText.h"
#include "mysqltext/KeyText.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kNoRename[] = "\"%s\" is no rename, which is TABLE.COLUMN=NAME or TABLE=NAME";
constexpr char kOffer[] = "%s may have become %s (score %s): --rename '%s'";

constexpr std::size_t kMostPairs = 4096;  // of columns of a table, and of tables that look alike
constexpr std::size_t kNear = 2;          // places
constexpr double kTenths = 10;            // that scores are shown in

// One name at `at`, up to one of the signs or, in backticks, to their end.
std::string TakeName(const std::string& text, std::size_t& at) {
  if (at >= text.size() || text[at] != '`') {
    const std::size_t end = std::min(text.find_first_of(".=", at), text.size());
    std::string name = Trim(text.substr(at, end - at));
    at = end;
    return name;
  }
  std::string name;
  for (++at; at < text.size(); ++at) {
    if (text[at] != '`') {
      name += text[at];
      continue;
    }
    if (text.substr(++at, 1) != "`") return name;
    name += '`';
  }
  return {};
}

std::string Written(const std::string& name) {
  return name.find_first_of(".=`") != std::string::npos || Trim(name) != name ? QuotedName(name) : name;
}

// --- Scores

// How much of the longer name the beginning and the end are that both have.
double Likeness(const std::string& a, const std::string& b) {
  const std::size_t shorter = std::min(a.size(), b.size());
  std::size_t first = 0, last = 0;
  while (first < shorter && SameLetter(a[first], b[first])) ++first;
  while (last < shorter - first && SameLetter(a[a.size() - 1 - last], b[b.size() - 1 - last])) ++last;
  return static_cast<double>(first + last) / static_cast<double>(std::max<std::size_t>({a.size(), b.size(), 1}));
}

struct TPlace {
  std::size_t at = 0;
  std::string before;  // the columns around it
  std::string after;
};

TPlace PlaceOf(const TTableText& table, const std::string& column) {
  TPlace place;
  std::string last;
  bool found = false;
  for (const TElement& element : table.elements) {
    if (element.kind != EElement::Column) continue;
    if (found) return place.after = element.name, place;
    found = SameText(element.name, column);
    if (found) place.before = last;
    if (!found) ++place.at;
    last = element.name;
  }
  return place;
}

// 0 for places that are not near each other.
double Nearness(const TPlace& a, const TPlace& b) {
  const int same = (SameText(a.before, b.before) ? 1 : 0) + (SameText(a.after, b.after) ? 1 : 0);
  const std::size_t apart = a.at < b.at ? b.at - a.at : a.at - b.at;
  constexpr std::array<double, 3> kBySides = {0.5, 0.8, 1.0};
  return same == 0 && apart > kNear ? 0 : kBySides[static_cast<std::size_t>(same)];
}

// --- Pairs

using TChanges = std::vector<const TChange*>;

class TOffers {
 public:
  TOffers(const TSchema& reference, const TSchema& target, const TEquivalenceUse& use)
      : reference_(reference), target_(target), use_(use) {}

  void AddColumns(const TChanges& gone, const TChanges& made) {
    if (gone.size() * made.size() > kMostPairs) return;
    for (const TChange* from : gone)
      for (const TChange* to : made)
        if (const double score = ScoreOf(*from, *to); score > 0) Add(*from, *to, from->table, score);
  }

  void AddTables(const TChanges& gone, const TChanges& made) {
    if (gone.size() * made.size() > kMostPairs) return;
    for (const TChange* from : gone)
      for (const TChange* to : made)
        if (SameBody(*target_.Find(from->table), *reference_.Find(to->table)))
          Add(*from, *to, {}, 0.8 + 0.2 * Likeness(from->table, to->table));
  }

  // The best first; what it takes is in no other.
  std::vector<TRenameOffer> Take() {
    std::ranges::stable_sort(found_, std::greater<>{}, &TRenameOffer::score);
    std::set<int> taken;
    std::erase_if(found_, [&taken](const TRenameOffer& offer) {
      if (taken.contains(offer.goes) || taken.contains(offer.comes)) return true;
      taken.insert({offer.goes, offer.comes});
      return false;
    });
    return std::move(found_);
  }

 private:
  static std::string NameOf(const TChange& change) { return change.item.empty() ? change.table : change.item; }

  void Add(const TChange& from, const TChange& to, const std::string& table, double score) {
    found_.push_back({{table, NameOf(from), NameOf(to)}, score, from.id, to.id});
  }

  double ScoreOf(const TChange& from, const TChange& to) {
    const TTableText& wanted = *reference_.Find(from.table);
    const TTableText& there = *target_.Find(from.table);
    const double near = Nearness(PlaceOf(there, from.item), PlaceOf(wanted, to.item));
    if (near == 0) return 0;
    TEquivalenceUse use = use_;
    TElement column = *there.Find(EElement::Column, from.item);
    RenameColumn(column, to.item);
    if (!TElementComparison(wanted, there, use).Same(*wanted.Find(EElement::Column, to.item), column)) return 0;
    return 0.5 + 0.3 * near + 0.2 * Likeness(from.item, to.item);
  }

  bool SameBody(TTableText there, const TTableText& wanted) const {
    const std::string former = std::exchange(there.name, wanted.name);
    MoveMadeNames(there, former, {});
    for (TElement& element : there.elements)
      if (element.kind == EElement::ForeignKey) MoveReferences(element, former, wanted.name);
    TEquivalenceUse use = use_;
    return CompareTableTexts(wanted, there, use).empty();
  }

  const TSchema& reference_;
  const TSchema& target_;
  const TEquivalenceUse& use_;
  std::vector<TRenameOffer> found_;
};

// Tables that may be alike have the same columns.
std::string ColumnNames(const TTableText& table) {
  std::string names;
  for (const TElement& element : table.elements)
    if (element.kind == EElement::Column) names += LowerText(element.name) + '\n';
  return names;
}

struct TGoneAndMade {
  TChanges gone;
  TChanges made;
};

}  // namespace

std::string TRename::Place() const { return OfTable() ? from : table + "." + from; }

std::string TRename::Text() const {
  return (OfTable() ? std::string() : Written(table) + ".") + Written(from) + "=" + Written(to);
}

TRename ReadRename(const std::string& text) {
  std::size_t at = 0;
  TRename rename;
  const auto sign = [&](char c) { return at < text.size() && text[at] == c && ++at > 0; };
  rename.from = TakeName(text, at);
  if (sign('.')) {
    rename.table = std::exchange(rename.from, TakeName(text, at));
    if (rename.table.empty()) RaiseError(Format(kNoRename, text));
  }
  const bool named = sign('=');
  rename.to = TakeName(text, at);
  if (!named || rename.from.empty() || rename.to.empty() || at != text.size()) RaiseError(Format(kNoRename, text));
  return rename;
}

std::string TRenameOffer::Text() const {
  const TRename becomes{rename.table, rename.to, {}};
  return Format(kOffer, rename.Place(), becomes.Place(), FloatText(std::round(score * kTenths) / kTenths),
                rename.Text());
}

std::vector<TRenameOffer> RenameOffers(const std::vector<TChange>& changes, const TSchema& reference,
                                       const TSchema& target, const TEquivalenceUse& use) {
  std::map<std::string, TGoneAndMade> columns;  // by table
  std::map<std::string, TGoneAndMade> tables;   // by the names of their columns
  for (const TChange& change : changes) {
    if (change.action == saDropColumn) columns[change.table].gone.push_back(&change);
    if (change.action == saAddColumn) columns[change.table].made.push_back(&change);
    if (change.action == saDropTable) tables[ColumnNames(*target.Find(change.table))].gone.push_back(&change);
    if (change.action == saCreateTable) tables[ColumnNames(*reference.Find(change.table))].made.push_back(&change);
  }
  TOffers offers(reference, target, use);
  for (const auto& [table, both] : columns) offers.AddColumns(both.gone, both.made);
  for (const auto& [names, both] : tables) offers.AddTables(both.gone, both.made);
  return offers.Take();
}

}  // namespace velmora

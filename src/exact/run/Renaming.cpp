// SPDX-License-Identifier: GPL-3.0-or-later
#include "exact/run/Renaming.h"

#include <algorithm>
#include <set>

#include "exact/compare/PrintedTable.h"
#include "exact/objects/Dependents.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kNotThere[] = "Rename %s: the %s has no %s %s";
constexpr char kDone[] = "Rename %s: the target has the new name already";
constexpr char kBoth[] = "Rename %s does not fit: the %s has %s, too";
constexpr char kCircle[] =
    "Rename %s cannot be done beside the others: the target has both names. Rename by way of a third one by hand, and "
    "compare without it";
constexpr char kTwice[] = "Rename %s does not fit: another one has one of its names";
constexpr char kNotCompared[] = "Rename %s does not fit: table %s is not compared";
constexpr char kSameName[] = "Rename %s does not fit: to the target's server both names are the same";
constexpr char kNames[] = "%s %s names %s, which is renamed";

class TFitting {
 public:
  TFitting(const TReadPair& read, const TSelection& selection, bool case_counts)
      : read_(read), selection_(selection), case_counts_(case_counts) {}

  TRenaming Fit(const std::vector<TRename>& wishes) {
    for (const TRename& wish : wishes)
      if (wish.OfTable()) FitTable(wish);
    for (const TRename& wish : wishes)
      if (!wish.OfTable()) FitColumn(wish);
    for (const auto& [rename, line] : both_there_) {
      const bool circle = std::ranges::any_of(undone_, [&wish = rename](const TRename& other) {
        return other.table == wish.table &&
               (SameNames(wish, other.to, wish.from) || SameNames(wish, other.from, wish.to));
      });
      (circle ? result_.refused : result_.told).push_back(circle ? Format(kCircle, rename.Text()) : line);
    }
    return std::move(result_);
  }

 private:
  // As it was read, where letter case is nothing to the target's server.
  std::string Spelled(const std::string& table) const {
    if (!case_counts_)
      for (const TReadSide* side : {&read_.target, &read_.reference})
        for (const auto& [name, text] : side->texts)
          if (SameText(name, table)) return name;
    return table;
  }

  bool Compared(const TRename& wish, const std::string& table) {
    const bool skipped = std::ranges::any_of(read_.skipped, [&](const TSkippedTable& of) { return of.table == table; });
    if (selection_.ReadsTable(table) && !skipped) return true;
    result_.told.push_back(Format(kNotCompared, wish.Text(), table));
    return false;
  }

  // Both sides have looked at what is there: `old_*` and `new_*` tell which of them have the names. Whether the two are
  // one, be it done already.
  bool Settle(const TRename& wish, const std::string& kind, bool old_there, bool new_there, bool old_wanted,
              bool new_wanted) {
    if (!new_wanted) RaiseError(Format(kNotThere, wish.Text(), kReferenceSide, kind, wish.to));
    if (!old_there && !new_there) RaiseError(Format(kNotThere, wish.Text(), kTargetSide, kind, wish.from));
    if (!old_there) return Tell(Format(kDone, wish.Text()), true);
    undone_.push_back(wish);
    if (new_there || old_wanted) {
      both_there_.emplace_back(
          wish, Format(kBoth, wish.Text(), new_there ? kTargetSide : kReferenceSide, new_there ? wish.to : wish.from));
      return false;
    }
    const bool twice = std::ranges::any_of(result_.fits, [&wish](const TRenameChange& other) {
      const TRename& rename = other.rename;
      return rename.table == wish.table &&
             (SameNames(wish, rename.from, wish.from) || SameNames(wish, rename.to, wish.to));
    });
    if (twice) return Tell(Format(kTwice, wish.Text()), false);
    result_.fits.push_back({0, wish});
    return true;
  }

  static bool SameNames(const TRename& wish, const std::string& a, const std::string& b) {
    return wish.OfTable() ? a == b : SameText(a, b);
  }

  bool Tell(std::string line, bool result) {
    result_.told.push_back(std::move(line));
    return result;
  }

  void FitTable(TRename wish) {
    if (SameText(wish.from, wish.to) && !case_counts_) return result_.told.push_back(Format(kSameName, wish.Text()));
    wish.from = Spelled(wish.from);
    wish.to = Spelled(wish.to);
    if (!Compared(wish, wish.from) || !Compared(wish, wish.to)) return;
    const auto has = [](const TReadSide& side, const std::string& name) { return side.texts.contains(name); };
    if (Settle(wish, "table", has(read_.target, wish.from), has(read_.target, wish.to), has(read_.reference, wish.from),
               has(read_.reference, wish.to)))
      tables_.push_back(wish);
  }

  // The names of a table on both sides, where one is renamed.
  std::pair<std::string, std::string> NamesOf(const std::string& table) const {
    for (const TRename& rename : tables_)
      if (rename.from == table || rename.to == table)
        return {read_.target.texts.contains(rename.from) ? rename.from : rename.to, rename.to};
    return {table, table};
  }

  void FitColumn(TRename wish) {
    wish.table = Spelled(wish.table);
    const auto [there, wanted] = NamesOf(wish.table);
    if (!Compared(wish, there) || !Compared(wish, wanted)) return;
    const TTableText target = TableOf(read_.target, there, wish, kTargetSide);
    const TTableText reference = TableOf(read_.reference, wanted, wish, kReferenceSide);
    const auto has = [](const TTableText& table, const std::string& column) {
      return table.Find(EElement::Column, column) != nullptr;
    };
    wish.table = wanted;
    Settle(wish, "column", has(target, wish.from), has(target, wish.to), has(reference, wish.from),
           has(reference, wish.to));
  }

  static TTableText TableOf(const TReadSide& side, const std::string& name, const TRename& wish, const char* of) {
    if (const TTableText* table = side.schema.Find(name)) return *table;
    const auto text = side.texts.find(name);
    if (text == side.texts.end()) RaiseError(Format(kNotThere, wish.Text(), of, "table", name));
    return ReadPrintedTable(text->second);
  }

  const TReadPair& read_;
  const TSelection& selection_;
  bool case_counts_;
  std::vector<TRename> tables_;                              // renamed, or done already
  std::vector<TRename> undone_;                              // whose old name the target has
  std::vector<std::pair<TRename, std::string>> both_there_;  // of these, on one side, with what to tell
  TRenaming result_;
};

bool Names(const std::set<std::string>& names, const TRename& rename) {
  return names.contains(LowerText(rename.from)) && (rename.OfTable() || names.contains(LowerText(rename.table)));
}

}  // namespace

std::string TRenameChange::Item() const {
  return Format("%s %s to %s", rename.OfTable() ? "table" : "column", rename.from, rename.to);
}

std::string TRenameChange::LogText() const { return SyncAction(saRename).LogText({}, Item()); }

TRenaming FitRenames(const std::vector<TRename>& wishes, const TReadPair& read, const TSelection& selection,
                     bool case_counts) {
  return TFitting(read, selection, case_counts).Fit(wishes);
}

TStringList NamesOfRenamed(const std::vector<TRenameChange>& renames, const TDatabaseObjects& objects,
                           const std::vector<TObjectChange>& changes) {
  TStringList lines;
  if (renames.empty()) return lines;
  std::set<TObjectKey> changed;
  for (const TObjectChange& change : changes) changed.insert(objects.KeyOf(change.kind, change.name));
  for (const TOtherObject& object : objects.objects) {
    if (changed.contains(objects.KeyOf(object.kind, object.name))) continue;
    const std::set<std::string> names = NamesSpokenOf(object);
    for (const TRenameChange& change : renames)
      if (Names(names, change.rename)) lines.push_back(Format(kNames, object.kind, object.name, change.rename.Place()));
  }
  return lines;
}

void LeaveUnrenamed(const std::vector<TRenameChange>& struck_out, std::vector<TChange>& changes,
                    std::vector<TObjectChange>& objects) {
  const auto stays = [&struck_out](const std::string& table) {
    return std::ranges::any_of(struck_out, [&table](const TRenameChange& change) { return change.Table() == table; });
  };
  std::erase_if(changes, [&](const TChange& change) {
    if (stays(change.table)) return true;
    const bool key = change.kind == EElement::ForeignKey && !change.new_text.Empty();
    return key && !SyncAction(change.action).WholeTable() && stays(change.new_text.ForeignKey().table);
  });
  if (struck_out.empty()) return;
  std::erase_if(objects, [&](const TObjectChange& change) {
    if (change.new_text == nullptr) return false;
    if (!change.new_text->table.empty() && stays(change.new_text->table)) return true;
    const std::set<std::string> names = NamesSpokenOf(change.new_object);
    return std::ranges::any_of(struck_out, [&names](const TRenameChange& of) {
      return Names(names, {of.rename.table, of.rename.to, {}});
    });
  });
}

}  // namespace velmora

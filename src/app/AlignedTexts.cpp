// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/AlignedTexts.h"

#include <algorithm>
#include <deque>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "app/TextBlocks.h"
#include "exact/compare/Changes.h"
#include "exact/compare/GeneratedKey.h"
#include "exact/compare/OptionEquivalences.h"
#include "mysqltext/LexicalRules.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kSpellingNote[] = "Written differently, means the same.";
constexpr char kCommaNote[] = "Only the comma at the end differs.";
constexpr char kInheritedNote[] = "Written alike, but what the two tables hand down differs.";
constexpr char kIgnoredNote[] = "Counts as equal: %s";
constexpr char kMovedNote[] = "Moved: stands at line %d of the other text.";
constexpr char kMovedChangedNote[] = "Changed and moved: stands at line %d of the other text.";

constexpr std::size_t kMostAsked = 16;  // parts of a line of which each is asked whether it counts
constexpr char kOneElement[] = "CREATE TABLE `t` (%s\n)";
constexpr char kNoElement[] = "CREATE TABLE `t` (`c` int\n";

constexpr std::size_t kNone = static_cast<std::size_t>(-1);

// --- What stands beside what

using TKeys = std::vector<std::string>;  // what things are called: those called alike go together

struct TOrder {
  std::vector<std::pair<std::size_t, std::size_t>> steps;  // places; kNone where there is nothing on that side
  std::array<std::vector<std::size_t>, 2> matches;         // of each place, by ESide, that on the other side
};

// Of several alike the first goes with the first, and so on.
void Match(const TKeys& left, const TKeys& right, TOrder& order) {
  std::unordered_map<std::string_view, std::deque<std::size_t>> places;
  for (std::size_t j = 0; j < right.size(); ++j) places[right[j]].push_back(j);
  order.matches[kLeft].assign(left.size(), kNone);
  order.matches[kRight].assign(right.size(), kNone);
  for (std::size_t i = 0; i < left.size(); ++i) {
    const auto found = places.find(left[i]);
    if (found == places.end() || found->second.empty()) continue;
    const std::size_t j = found->second.front();
    found->second.pop_front();
    order.matches[kLeft][i] = j;
    order.matches[kRight][j] = i;
  }
}

// As many side by side as go without crossing; between these, first what is left over on the left.
TOrder OrderOf(const TKeys& left, const TKeys& right) {
  TOrder order;
  Match(left, right, order);
  std::vector<std::size_t> common, places;
  for (std::size_t i = 0; i < left.size(); ++i) {
    if (order.matches[kLeft][i] == kNone) continue;
    common.push_back(i);
    places.push_back(order.matches[kLeft][i]);
  }
  std::size_t i = 0;
  std::size_t j = 0;
  const auto up_to = [&](std::size_t end_left, std::size_t end_right) {
    while (i < end_left) order.steps.emplace_back(i++, kNone);
    while (j < end_right) order.steps.emplace_back(kNone, j++);
  };
  for (const std::size_t place : LongestIncreasing(places)) {
    up_to(common[place], places[place]);
    order.steps.emplace_back(i++, j++);
  }
  up_to(left.size(), right.size());
  return order;
}

// --- Lines

// Without blanks around it and the comma at its end.
std::string_view ContentOf(std::string_view line) {
  line = TrimView(line);
  if (line.ends_with(',')) line.remove_suffix(1);
  return TrimView(line);
}

// The comma at the end of a line; empty for none.
TLetters CommaOf(std::string_view line) {
  const std::size_t last = line.find_last_not_of(" \t\r\n");
  return last != std::string_view::npos && line[last] == ',' ? TLetters{last, last + 1} : TLetters{};
}

struct TLines {
  std::size_t first = 0;
  std::size_t last = 0;  // the line after them
};

TLines LinesOfBlock(const TBlock& block) { return {block.first, block.last}; }

bool OneLineEach(const TBlock& a, const TBlock& b) { return a.last == a.first + 1 && b.last == b.first + 1; }

std::string ItemOf(const TBlock& block) { return block.element != nullptr ? block.element->name : block.key; }

void Add(std::vector<TLetters>& all, TLetters letters) {
  if (letters.first < letters.last) all.push_back(letters);
}

// Of a line: its letters. A list that has become shorter closes its brackets elsewhere, and servers quote differently.
std::string KeyOf(std::string_view line) {
  std::string key;
  for (std::size_t at = 0; at < line.size(); ++at) {
    at += VersionMark(line, at);
    if (at < line.size() && std::string_view(" \t\r\n`,;()*/").find(line[at]) == std::string_view::npos)
      key += LowerChar(line[at]);
  }
  return key;
}

TKeys KeysOf(const std::vector<std::string_view>& lines, TLines range) {
  TKeys keys;
  for (std::size_t line = range.first; line < range.last; ++line) keys.push_back(KeyOf(lines[line]));
  return keys;
}

// --- Notes

std::string NamesOf(const TEquivalenceUse& use) {
  std::string names;
  for (const TEquivalence& row : Equivalences())
    if (use.Count(row.id) > 0)
      names += (names.empty() ? "" : "\n") + std::string(row.name) + " (" + std::string(row.help) + ")";
  return names;
}

// Empty for none.
std::string IgnoredNote(const TEquivalenceUse& use) {
  const std::string names = NamesOf(use);
  return names.empty() ? "" : Format(kIgnoredNote, names);
}

std::string IgnoredNote(EEquivalence id) {
  TEquivalenceUse use;
  use.Add(id);
  return IgnoredNote(use);
}

// What two blocks come to.
struct TVerdict {
  bool same = false;
  std::string note;  // why, of those that are the same
};

// --- Aligning

class TAligner {
 public:
  TAligner(const std::string& left, const std::string& right, TEquivalenceUse use)
      : texts_{TTextBlocks(left), TTextBlocks(right)}, use_(use) {}
  TAlignedRows Run();

 private:
  const std::vector<std::string_view>& Lines(ESide side) const { return texts_[side].Lines(); }
  const TTableText& Table(ESide side) const { return texts_[side].Table(); }

  void AlignBlocks();
  void AlignWholeTexts();
  void Beside(const TBlock& left, const TBlock& right);
  void Alone(ESide side, const TBlock& block, const TBlock* other);
  void AlignLines(TLines left, TLines right, const TVerdict& verdict);
  void AddLine(ESide side, std::size_t line, TAlignedRow row);
  TAlignedRow PairOf(std::size_t left, std::size_t right, const TVerdict& verdict, const TBlock* block);
  void AddLetters(std::string_view a, std::string_view b, const TVerdict& verdict, const TBlock* block,
                  TAlignedRow& row);

  std::vector<bool> WhatCounts(const TBlock& block, std::string_view a, std::string_view b,
                               const std::vector<TLetterHunk>& hunks, std::string& note);

  TVerdict Judge(const TBlock& left, const TBlock& right);
  bool SameMeaning(const TBlock& left, const TBlock& right);
  bool EndsInOptions() const;
  bool Ignorable(const TBlock& block, std::string_view left, std::string_view right, const TLetterHunk& hunk);
  bool MeansWhatItMeant(const TBlock& block, const std::string& line);

  std::array<TTextBlocks, 2> texts_;
  TEquivalenceUse use_;
  const TTableText* generated_ = nullptr;     // whose generated key does not count
  std::optional<TElementComparison> across_;  // of both tables
  std::optional<TElementComparison> within_;  // of the left one with itself
  TAlignedRows rows_;
};

TAlignedRows TAligner::Run() {
  const bool by_blocks = !texts_[kLeft].Blocks().empty() && !texts_[kRight].Blocks().empty();
  if (by_blocks)
    AlignBlocks();
  else
    AlignWholeTexts();
  return std::move(rows_);
}

void TAligner::AlignBlocks() {
  if (use_.On(EEquivalence::GeneratedKey)) generated_ = WithGeneratedKey(Table(kLeft), Table(kRight));
  across_.emplace(Table(kLeft), Table(kRight), use_);
  within_.emplace(Table(kLeft), Table(kLeft), use_);
  const std::vector<TBlock>& left = texts_[kLeft].Blocks();
  const std::vector<TBlock>& right = texts_[kRight].Blocks();
  std::array<TKeys, 2> keys;
  for (const ESide side : {kLeft, kRight})
    for (const TBlock& block : texts_[side].Blocks()) keys[side].push_back(block.key);
  const TOrder order = OrderOf(keys[kLeft], keys[kRight]);
  const auto other = [](const std::vector<TBlock>& blocks, std::size_t place) {
    return place == kNone ? nullptr : &blocks[place];
  };
  for (const auto& [i, j] : order.steps) {
    const std::size_t first = rows_.size();
    if (j == kNone)
      Alone(kLeft, left[i], other(right, order.matches[kLeft][i]));
    else if (i == kNone)
      Alone(kRight, right[j], other(left, order.matches[kRight][j]));
    else
      Beside(left[i], right[j]);
    const std::string item = ItemOf(i != kNone ? left[i] : right[j]);
    for (std::size_t row = first; row < rows_.size(); ++row) rows_[row].item = item;
  }
}

void TAligner::AlignWholeTexts() {
  const std::size_t left = Lines(kLeft).size();
  const std::size_t right = Lines(kRight).size();
  const std::size_t heads = left > 0 && right > 0 ? 1 : 0;
  if (heads > 0) rows_.push_back(PairOf(0, 0, {}, nullptr));
  AlignLines({heads, left}, {heads, right}, {});
}

void TAligner::Beside(const TBlock& left, const TBlock& right) {
  const TVerdict verdict = Judge(left, right);
  if (OneLineEach(left, right))
    rows_.push_back(PairOf(left.first, right.first, verdict, &left));
  else
    AlignLines(LinesOfBlock(left), LinesOfBlock(right), verdict);
}

// The order of what is no column does not count.
void TAligner::Alone(ESide side, const TBlock& block, const TBlock* other) {
  TAlignedRow row;
  row.kind = side == kLeft ? EAlignedRow::OnlyLeft : EAlignedRow::OnlyRight;
  if (block.element != nullptr && &Table(side) == generated_ && IsOfGeneratedKey(*block.element)) {
    row.kind = EAlignedRow::Equal;
    row.note = IgnoredNote(EEquivalence::GeneratedKey);
  }
  if (block.kind == EBlock::Partitioning && use_.On(EEquivalence::Partitions)) {
    row.kind = EAlignedRow::Equal;
    row.note = IgnoredNote(EEquivalence::Partitions);
  }
  if (other != nullptr) {
    const TBlock& left = side == kLeft ? block : *other;
    const TBlock& right = side == kLeft ? *other : block;
    const TVerdict verdict = Judge(left, right);
    row.moved = true;
    row.note = Format(verdict.same ? kMovedNote : kMovedChangedNote, other->first + 1);
    const bool column = block.element->kind == EElement::Column;
    if (verdict.same && (!column || use_.On(EEquivalence::ColumnOrder))) {
      row.kind = EAlignedRow::Equal;
      row.note = IgnoredNote(column ? EEquivalence::ColumnOrder : EEquivalence::KeyOrder) + "\n" + row.note;
    }
    if (OneLineEach(left, right)) row.sides[side] = PairOf(left.first, right.first, verdict, &left).sides[side];
  }
  for (std::size_t line = block.first; line < block.last; ++line) AddLine(side, line, row);
}

void TAligner::AddLine(ESide side, std::size_t line, TAlignedRow row) {
  row.sides[side].line = line;
  rows_.push_back(std::move(row));
}

// What is left over between the lines that both have goes side by side.
void TAligner::AlignLines(TLines left, TLines right, const TVerdict& verdict) {
  const TOrder order = OrderOf(KeysOf(Lines(kLeft), left), KeysOf(Lines(kRight), right));
  const auto alone = [&](ESide side, std::size_t line) {
    const EAlignedRow kind = side == kLeft ? EAlignedRow::OnlyLeft : EAlignedRow::OnlyRight;
    AddLine(side, line, {.kind = verdict.same ? EAlignedRow::Equal : kind, .note = verdict.note});
  };
  std::deque<std::size_t> waiting;  // lines of the left that have nothing beside them yet
  const auto flush = [&] {
    for (; !waiting.empty(); waiting.pop_front()) alone(kLeft, waiting.front());
  };
  for (const auto& [i, j] : order.steps) {
    if (j == kNone) {
      waiting.push_back(left.first + i);
    } else if (i != kNone) {
      flush();
      rows_.push_back(PairOf(left.first + i, right.first + j, verdict, nullptr));
    } else if (waiting.empty()) {
      alone(kRight, right.first + j);
    } else {
      rows_.push_back(PairOf(waiting.front(), right.first + j, verdict, nullptr));
      waiting.pop_front();
    }
  }
  flush();
}

// `block` is that of the left line where that is the whole of it, and so can be asked what counts in it.
TAlignedRow TAligner::PairOf(std::size_t left, std::size_t right, const TVerdict& verdict, const TBlock* block) {
  TAlignedRow row;
  row.sides[kLeft].line = left;
  row.sides[kRight].line = right;
  const std::string_view a = Lines(kLeft)[left];
  const std::string_view b = Lines(kRight)[right];
  if (ContentOf(a) != ContentOf(b)) {
    AddLetters(a, b, verdict, block, row);
  } else if (block != nullptr && !verdict.same) {
    row.kind = EAlignedRow::Changed;
    row.note = kInheritedNote;
  }
  if ((CommaOf(a) == TLetters()) == (CommaOf(b) == TLetters())) return row;
  if (row.kind == EAlignedRow::Same) row = {.kind = EAlignedRow::Equal, .sides = row.sides, .note = kCommaNote};
  Add(row.sides[kLeft].ignored, CommaOf(a));
  Add(row.sides[kRight].ignored, CommaOf(b));
  return row;
}

void TAligner::AddLetters(std::string_view a, std::string_view b, const TVerdict& verdict, const TBlock* block,
                          TAlignedRow& row) {
  row.kind = verdict.same ? EAlignedRow::Equal : EAlignedRow::Changed;
  row.note = verdict.note;
  const std::vector<TLetterHunk> hunks = DifferingLetters(ContentOf(a), ContentOf(b));
  std::vector<bool> counts(hunks.size(), !verdict.same);
  if (!verdict.same && block != nullptr && hunks.size() <= kMostAsked)
    counts = WhatCounts(*block, a, b, hunks, row.note);
  const auto add = [](TAlignedSide& side, bool counted, TLetters letters, std::string_view line) {
    const auto indent = static_cast<std::size_t>(ContentOf(line).data() - line.data());
    Add(counted ? side.counts : side.ignored, {letters.first + indent, letters.last + indent});
  };
  for (std::size_t i = 0; i < hunks.size(); ++i) {
    add(row.sides[kLeft], counts[i], hunks[i].left, a);
    add(row.sides[kRight], counts[i], hunks[i].right, b);
  }
}

// Of lines that do not mean the same. If by itself none of it counts, all of it does together.
std::vector<bool> TAligner::WhatCounts(const TBlock& block, std::string_view a, std::string_view b,
                                       const std::vector<TLetterHunk>& hunks, std::string& note) {
  use_.ResetCounts();
  std::vector<bool> counts;
  counts.reserve(hunks.size());
  for (const TLetterHunk& hunk : hunks) counts.push_back(!Ignorable(block, ContentOf(a), ContentOf(b), hunk));
  if (std::ranges::find(counts, true) == counts.end()) return std::vector<bool>(hunks.size(), true);
  note = IgnoredNote(use_);
  return counts;
}

// --- Meaning

TVerdict TAligner::Judge(const TBlock& left, const TBlock& right) {
  use_.ResetCounts();
  if (!SameMeaning(left, right)) return {};
  const std::string note = IgnoredNote(use_);
  return {true, note.empty() ? kSpellingNote : note};
}

bool TAligner::SameMeaning(const TBlock& left, const TBlock& right) {
  const TTableText& a = Table(kLeft);
  const TTableText& b = Table(kRight);
  switch (left.kind) {
    case EBlock::Head:
      return a.temporary == b.temporary;
    case EBlock::Element:
      return across_->Same(*left.element, *right.element);
    case EBlock::Options:
      return SameOptions(a, b, use_) && (!EndsInOptions() || SamePartitioning(a, b, use_));
    case EBlock::Partitioning:
      return SamePartitioning(a, b, use_);
  }
  return false;
}

// Whether the partitioning of a side, if it has one, stands in the lines of the options.
bool TAligner::EndsInOptions() const {
  return std::ranges::any_of(texts_, [](const TTextBlocks& text) {
    return !text.Table().partitioning.empty() && text.Blocks().back().kind == EBlock::Options;
  });
}

// What differs does not count if the left line means what it meant when only this is as the right one has it.
bool TAligner::Ignorable(const TBlock& block, std::string_view left, std::string_view right, const TLetterHunk& hunk) {
  const auto part = [](std::string_view line, std::size_t first, std::size_t last) {
    return std::string(line.substr(first, last - first));
  };
  const std::string line = part(left, 0, hunk.left.first) + ' ' + part(right, hunk.right.first, hunk.right.last) + ' ' +
                           part(left, hunk.left.last, left.size());
  try {
    return MeansWhatItMeant(block, line);
  } catch (const EVelmora&) {
    return false;
  }
}

bool TAligner::MeansWhatItMeant(const TBlock& block, const std::string& line) {
  const bool element = block.kind == EBlock::Element;
  if (!element && block.kind != EBlock::Options) return false;
  const TTableText table = ReadTableText(element ? Format(kOneElement, line) : kNoElement + line);
  if (!element) return SameOptions(Table(kLeft), table, use_) && SamePartitioning(Table(kLeft), table, use_);
  return table.elements.size() == 1 && within_->Same(*block.element, table.elements.front());
}

}  // namespace

TAlignedRows AlignTexts(const std::string& left, const std::string& right, TEquivalenceUse use) {
  return TAligner(left, right, use).Run();
}

}  // namespace velmora

// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/DifferenceFilter.h"

#include <algorithm>
#include <optional>

#include "util/Errors.h"
#include "util/Text.h"

namespace velmora {

namespace {

// As patterns call what lists of differences call otherwise.
std::string_view PatternKind(EDifferenceKind kind) {
  if (kind == EDifferenceKind::ForeignKey) return "foreign-key";
  return kind == EDifferenceKind::Constraint ? "check" : KindWord(kind);
}

TNamed NamedBy(const TDifference& difference) {
  const std::string_view kind = PatternKind(difference.kind);
  if (OfTable(difference.kind)) return {kind, difference.table, difference.item};
  return {kind, difference.item, {}, difference.trigger_table};
}

// Nothing for a word.
std::optional<TPattern> PatternIn(const std::string& text) {
  const bool unfinished = text.ends_with(':') || (text.ends_with('.') && text.find(':') != std::string::npos);
  if (text.find_first_of(":*?") == std::string::npos) return std::nullopt;
  try {
    return ReadPattern(unfinished ? text + "*" : text);
  } catch (const EVelmora&) {  // no kind stands in front
    return std::nullopt;
  }
}

}  // namespace

TDifferenceFilter::TDifferenceFilter(const std::string& text) {
  TStringList parts;
  SplitPlain(' ', text, parts);
  std::erase(parts, std::string());
  for (const std::string& part : parts)
    if (std::optional<TPattern> pattern = PatternIn(part))
      patterns_.push_back(std::move(*pattern));
    else
      words_.push_back(LowerText(part));
}

bool TDifferenceFilter::operator==(const TDifferenceFilter& other) const {
  return words_ == other.words_ && std::ranges::equal(patterns_, other.patterns_, {}, &TPattern::text, &TPattern::text);
}

bool TDifferenceFilter::Shows(const TDifference& difference, const std::string& words) const {
  const auto stands = [&words](const std::string& word) { return words.find(word) != std::string::npos; };
  if (!std::ranges::all_of(words_, stands)) return false;
  const TNamed what = NamedBy(difference);
  return patterns_.empty() ||
         std::ranges::any_of(patterns_, [&what](const TPattern& pattern) { return Names(pattern, what); });
}

// What is told of a whole table speaks of its columns, which are none that differ.
std::string FilteredWords(const TDifference& difference) {
  std::string words = difference.table + " " + difference.item + " " + difference.trigger_table + " ";
  words.append(KindWord(difference.kind)).append(" ").append(StateWord(difference.state));
  if (!difference.unsafe.empty()) words += " unsafe: " + difference.unsafe;
  return LowerText(difference.kind == EDifferenceKind::Table ? words : words + " " + difference.detail);
}

}  // namespace velmora

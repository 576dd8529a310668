// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/LetterDiff.h"

#include <algorithm>
#include <cstdint>

#include "mysqltext/LexicalRules.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr std::size_t kMostCells = 1U << 16;  // of a pair of lines, so that thousands of long ones stay quick

struct TWord {
  std::string_view text;
  std::size_t first = 0;
  char quote = 0;  // that it stands in, itself one included

  // A quoted word is another one than a plain one: the quotes go with what they hold.
  bool operator==(const TWord& other) const {
    if (quote != other.quote) return false;
    return quote == '\'' || quote == '"' ? text == other.text : SameText(text, other.text);
  }
};
using TWords = std::vector<TWord>;

bool IsWordLetter(char c) {
  const bool letter = (LowerChar(c) >= 'a' && LowerChar(c) <= 'z') || (c >= '0' && c <= '9');
  return letter || c == '_' || c == '$' || static_cast<unsigned char>(c) > 0x7F;
}

std::size_t RunEnd(std::string_view line, std::size_t at, bool (*holds)(char)) {
  while (at < line.size() && holds(line[at])) ++at;
  return at;
}

// Of a quoted text the words too: a comment of many may differ in one. A line of a longer text may begin within quotes;
// what is marked then is no less true.
TWords WordsOf(std::string_view line) {
  TWords words;
  char quote = 0;
  for (std::size_t at = 0; at < line.size();) {
    const char c = line[at];
    const char before = quote;
    std::size_t end = at + 1;
    if (IsWordLetter(c))
      end = RunEnd(line, at, IsWordLetter);
    else if (quote != 0 && c == '\\' && quote != '`')
      end = std::min(at + 2, line.size());
    else if (quote == 0 ? IsQuote(c) : c == quote)
      quote = quote == 0 ? c : 0;
    if (quote != 0 || !IsSpace(c)) words.push_back({line.substr(at, end - at), at, before != 0 ? before : quote});
    at = end;
  }
  return words;
}

// Lengths of the longest common sequences of what stands after each pair of places.
class TCommonLengths {
 public:
  TCommonLengths(const TWords& left, const TWords& right, std::size_t first, std::size_t end_left,
                 std::size_t end_right)
      : first_(first), width_(end_right - first + 1), cells_((end_left - first + 1) * width_) {
    for (std::size_t i = end_left; i-- > first;)
      for (std::size_t j = end_right; j-- > first;)
        At(i, j) = left[i] == right[j] ? At(i + 1, j + 1) + 1 : std::max(At(i + 1, j), At(i, j + 1));
  }
  std::uint32_t& At(std::size_t i, std::size_t j) { return cells_[(i - first_) * width_ + j - first_]; }

 private:
  std::size_t first_;
  std::size_t width_;
  std::vector<std::uint32_t> cells_;
};

// From the first of these words to the last; of none the place after the word before.
TLetters LettersOf(const TWords& words, std::size_t first, std::size_t last) {
  if (first < last) return {words[first].first, words[last - 1].first + words[last - 1].text.size()};
  const std::size_t place = first == 0 ? 0 : words[first - 1].first + words[first - 1].text.size();
  return {place, place};
}

class TLetterDiff {
 public:
  TLetterDiff(std::string_view left, std::string_view right) : left_(WordsOf(left)), right_(WordsOf(right)) {}
  std::vector<TLetterHunk> Run();

 private:
  void Walk(std::size_t first, std::size_t end_left, std::size_t end_right);
  void Add(std::size_t i, std::size_t to_i, std::size_t j, std::size_t to_j);

  TWords left_;
  TWords right_;
  std::vector<TLetterHunk> hunks_;
};

std::vector<TLetterHunk> TLetterDiff::Run() {
  std::size_t first = 0;
  while (first < left_.size() && first < right_.size() && left_[first] == right_[first]) ++first;
  std::size_t end_left = left_.size();
  std::size_t end_right = right_.size();
  while (end_left > first && end_right > first && left_[end_left - 1] == right_[end_right - 1]) --end_left, --end_right;
  if ((end_left - first + 1) * (end_right - first + 1) <= kMostCells)
    Walk(first, end_left, end_right);
  else
    Add(first, end_left, first, end_right);
  return std::move(hunks_);
}

void TLetterDiff::Walk(std::size_t first, std::size_t end_left, std::size_t end_right) {
  TCommonLengths common(left_, right_, first, end_left, end_right);
  std::size_t i = first;
  std::size_t j = first;
  while (i < end_left || j < end_right) {
    const std::size_t from_i = i;
    const std::size_t from_j = j;
    while ((i < end_left || j < end_right) && !(i < end_left && j < end_right && left_[i] == right_[j]))
      if (j == end_right || (i < end_left && common.At(i + 1, j) >= common.At(i, j + 1)))
        ++i;
      else
        ++j;
    Add(from_i, i, from_j, j);
    while (i < end_left && j < end_right && left_[i] == right_[j]) ++i, ++j;
  }
}

void TLetterDiff::Add(std::size_t i, std::size_t to_i, std::size_t j, std::size_t to_j) {
  if (i < to_i || j < to_j) hunks_.push_back({LettersOf(left_, i, to_i), LettersOf(right_, j, to_j)});
}

}  // namespace

std::vector<TLetterHunk> DifferingLetters(std::string_view left, std::string_view right) {
  return TLetterDiff(left, right).Run();
}

}  // namespace velmora

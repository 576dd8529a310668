// SPDX-License-Identifier: GPL-3.0-or-later
#include "util/Lists.h"

#include <algorithm>
#include <utility>

#include "util/Errors.h"
#include "util/Text.h"

namespace velmora {
namespace {

// Splits are built apart from the list that gets them, so that the text may be one of its lines.
TStringList Pieces(std::string_view separator, std::string_view text) {
  TStringList pieces;
  std::size_t from = 1;
  while (const std::size_t at = Pos(separator, text, from)) {
    pieces.emplace_back(text.substr(from - 1, at - from));
    from = at + separator.size();
  }
  pieces.emplace_back(text.substr(from - 1));
  return pieces;
}

// One kind of quote mark in a text, asked for at positions that only grow: each byte is looked at a fixed number of
// times.
class TMarks {
 public:
  TMarks(char mark, std::string_view text) : mark_(mark), text_(text), next_(text.find(mark) + 1) {}

  // The first at `from` or after it; 0 when there is none.
  std::size_t First(std::size_t from) {
    if (next_ != 0 && next_ < from) next_ = text_.find(mark_, from - 1) + 1;
    return next_;
  }

 private:
  char mark_;
  std::string_view text_;
  std::size_t next_;
};

// How many of a character stand before positions that only grow.
class TRunningCount {
 public:
  TRunningCount(char c, std::string_view text) : c_(c), text_(text) {}

  std::size_t Before(std::size_t pos) {
    for (; counted_ + 1 < pos; ++counted_) count_ += text_[counted_] == c_ ? 1U : 0U;
    return count_;
  }

 private:
  char c_;
  std::string_view text_;
  std::size_t counted_ = 0;
  std::size_t count_ = 0;
};

// The quotes that SplitQuoted has counted. Deliberate: its reading of quotes is narrow, and existing files are read by
// it. Counting takes place only while both kinds of quotes lie ahead, since "none" (0) is the smallest position of all;
// double quotes are counted again for each separator, from the last apostrophe counted.
class TQuotedState {
 public:
  explicit TQuotedState(std::string_view text)
      : singleMarks_('\'', text), doubleMarks_('"', text), doublesToSeparator_('"', text), doublesToQuote_('"', text) {}

  void Count(std::size_t separator) {
    std::size_t single = singleMarks_.First(quotePos_ + 1);
    const std::size_t firstDouble = doubleMarks_.First(quotePos_ + 1);
    const std::size_t smallest = std::min({separator, single, firstDouble});
    if (single == smallest) {
      for (; single > 0 && single < separator; single = singleMarks_.First(quotePos_ + 1)) {
        ++singles_;
        quotePos_ = single;
      }
    } else if (firstDouble == smallest && firstDouble > 0) {
      doubles_ += doublesToSeparator_.Before(separator) - doublesToQuote_.Before(quotePos_ + 1);
    }
  }

  bool BothEven() const { return singles_ % 2 == 0 && doubles_ % 2 == 0; }

 private:
  TMarks singleMarks_;
  TMarks doubleMarks_;
  TRunningCount doublesToSeparator_;
  TRunningCount doublesToQuote_;
  std::size_t quotePos_ = 0;
  std::size_t singles_ = 0;
  std::size_t doubles_ = 0;
};

}  // namespace

std::ptrdiff_t IndexOf(const TStringList& list, std::string_view text) {
  const auto found =
      std::find_if(list.begin(), list.end(), [&](const std::string& line) { return SameText(line, text); });
  return found == list.end() ? kNotInList : found - list.begin();
}

const std::string& ItemAt(const TStringList& list, std::ptrdiff_t index) {
  if (index < 0 || index >= std::ssize(list)) throw EListError(index);
  return list[static_cast<std::size_t>(index)];
}

void SplitText(std::string_view separator, std::string_view text, TStringList& list) {
  list = text.empty() ? TStringList() : Pieces(separator, text);
}

void SplitPlain(char separator, std::string_view text, TStringList& list) {
  list = Pieces(std::string_view(&separator, 1), text);
}

void SplitQuoted(std::string_view separator, std::string_view text, TStringList& list) {
  TStringList pieces;
  TQuotedState quotes(text);
  std::size_t from = 1;  // where the piece begins
  // Deliberate: the first search begins at the position that is the separator's length in characters; a separator of
  // two or more that opens the text belongs to the first piece.
  std::size_t search = CutChars(text, std::max<std::size_t>(CharCount(separator), 1) - 1).size() + 1;
  while (const std::size_t at = Pos(separator, text, search)) {
    quotes.Count(at);
    // Deliberate: a piece that ends inside quotes is lost, it is not joined with the next one.
    if (quotes.BothEven()) pieces.emplace_back(text.substr(from - 1, at - from));
    from = search = at + separator.size();
  }
  pieces.emplace_back(text.substr(from - 1));
  list = std::move(pieces);
}

std::string JoinList(const TStringList& list, std::string_view separator) {
  std::string text;
  for (std::size_t i = 0; i < list.size(); ++i) {
    if (i > 0) text += separator;
    text += list[i];
  }
  return text;
}

TStringList LinesOf(std::string_view text) {
  TStringList lines;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find_first_of("\r\n"), text.size());
    lines.emplace_back(text.substr(0, end));
    text.remove_prefix(end);
    text.remove_prefix(text.starts_with("\r\n") ? 2 : std::min<std::size_t>(text.size(), 1));
  }
  return lines;
}

}  // namespace velmora

// SPDX-License-Identifier: GPL-3.0-or-later
#include "foreign/Sequences.h"

#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include "util/Text.h"

namespace velmora {

namespace {

// Words, names without their quotes, signs; a text in quotes is the sign alone.
std::vector<std::string> PiecesOf(std::string_view text) {
  const auto in_word = [](char c) {
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || c == '$' ||
           c == '#' || static_cast<signed char>(c) < 0;
  };
  std::vector<std::string> pieces;
  std::size_t at = 0;
  const auto skip_past = [&](std::string_view end, std::size_t from) {
    const std::size_t found = text.find(end, from);
    at = found == std::string_view::npos ? text.size() : found + end.size();
  };
  while (at < text.size()) {
    const std::size_t start = at;
    const char c = text[at];
    if (static_cast<unsigned char>(c) <= ' ') {
      ++at;
    } else if (text.substr(at).starts_with("--")) {
      skip_past("\n", at);
    } else if (text.substr(at).starts_with("/*")) {
      skip_past("*/", at + 2);
    } else if (c == '\'') {
      skip_past("'", at + 1);
      pieces.emplace_back("'");
    } else if (c == '"' || c == '[') {
      skip_past(c == '"' ? "\"" : "]", at + 1);
      pieces.emplace_back(text.substr(start + 1, at - start - 2));
    } else if (in_word(c)) {
      while (at < text.size() && in_word(text[at])) ++at;
      pieces.emplace_back(text.substr(start, at - start));
    } else {
      at += text.substr(at).starts_with(":=") ? 2U : 1U;
      pieces.emplace_back(text.substr(start, at - start));
    }
  }
  return pieces;
}

class TBody {
 public:
  explicit TBody(std::string_view text) : pieces_(PiecesOf(text)) {}

  std::size_t Size() const { return pieces_.size(); }
  bool Is(std::size_t at, std::string_view word) const { return at < Size() && SameText(pieces_[at], word); }
  // Whether a statement or a branch of it begins at this place.
  bool Begins(std::size_t at) const {
    static constexpr std::array<std::string_view, 5> kBefore = {";", "begin", "then", "else", "do"};
    return at == 0 || std::ranges::any_of(kBefore, [&](std::string_view word) { return Is(at - 1, word); });
  }

  // Whether a statement ends at the place after something that was found.
  bool Ends(std::size_t after) const { return after != 0 && (after >= Size() || Is(after, ";")); }

  // The place after the next value of a sequence that begins at `at`; 0 where none does.
  std::size_t AfterNextValue(std::size_t at) const {
    if (Is(at, "gen_id") && Is(at + 1, "(")) return Is(at + 3, ",") && Is(at + 4, "1") && Is(at + 5, ")") ? at + 6 : 0;
    if (Is(at, "next") && Is(at + 1, "value") && Is(at + 2, "for")) return AfterName(at + 3);
    const std::size_t after = AfterName(at);
    return after >= at + 3 && Is(after - 1, "nextval") ? after : 0;
  }

  // The same of that or NVL(NEW.COLUMN, ...) with it.
  std::size_t AfterValue(std::size_t at, std::string_view column) const {
    if (!Is(at, "coalesce") && !Is(at, "nvl")) return AfterNextValue(at);
    const std::size_t comma = Is(at + 1, "(") ? AfterNew(at + 2, column) : 0;
    const std::size_t end = comma != 0 && Is(comma, ",") ? AfterNextValue(comma + 1) : 0;
    return end != 0 && Is(end, ")") ? end + 1 : 0;
  }

  // The place after NEW.COLUMN or :NEW.COLUMN that begins at `at`; 0 for anything else.
  std::size_t AfterNew(std::size_t at, std::string_view column) const {
    const std::size_t word = Is(at, ":") ? at + 1 : at;
    return Is(word, "new") && Is(word + 1, ".") && Is(word + 2, column) ? word + 3 : 0;
  }

  // Whether the select before the "into" at `into` gives the next value and nothing else.
  bool SelectsNextValue(std::size_t into) const {
    std::size_t select = into;
    while (select > 0 && !Is(select, "select") && !Is(select, ";")) --select;
    const std::size_t after = AfterNextValue(select + 1);
    return after != 0 && (after == into || Is(after, "from"));
  }

  bool ReadsSequence() const {
    for (std::size_t at = 0; at < Size(); ++at)
      if (Is(at, "gen_id") || AfterNextValue(at) != 0) return true;
    return false;
  }

 private:
  std::size_t AfterName(std::size_t at) const {
    while (Is(at + 1, ".") && at + 2 < Size()) at += 2;
    return at + 1;
  }

  std::vector<std::string> pieces_;
};

}  // namespace

bool IsNextValue(std::string_view expression) {
  const TBody body(expression);
  std::size_t begin = 0, end = body.Size();
  for (; begin < end && body.Is(begin, "(") && body.Is(end - 1, ")"); --end) ++begin;
  return begin < end && body.AfterNextValue(begin) == end;
}

ECounting CountingBy(std::string_view text, std::string_view column) {
  const TBody body(text);
  bool sets = false;
  for (std::size_t at = 0; at < body.Size(); ++at) {
    const std::size_t after = body.AfterNew(at, column);
    if (after == 0) continue;
    const bool into = at > 0 && body.Is(at - 1, "into");
    const bool assigned = body.Is(after, ":=") || (body.Is(after, "=") && body.Begins(at));
    if (assigned && body.Ends(body.AfterValue(after + 1, column))) return ECounting::Counts;
    if (into && body.SelectsNextValue(at - 1)) return ECounting::Counts;
    sets = sets || into || assigned;
  }
  return sets && body.ReadsSequence() ? ECounting::Unclear : ECounting::None;
}

}  // namespace velmora

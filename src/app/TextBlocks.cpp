// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/TextBlocks.h"

#include <algorithm>

#include "mysqltext/KeyText.h"
#include "mysqltext/Lexer.h"
#include "util/Errors.h"
#include "util/Text.h"

namespace velmora {

namespace {

// Keys of all kinds share their names, as do the elements of every other kind.
std::string KeyOf(const TElement& element) {
  const EElement kind = IsKey(element.kind) ? EElement::Key : element.kind;
  const std::string& name = element.name.empty() ? element.text.Str() : element.name;
  return std::string(1, static_cast<char>('a' + static_cast<int>(kind))) + LowerText(name);
}

std::size_t PartitioningAt(TTokens tokens, std::size_t from) {
  while (from < tokens.size() && !IsKeyword(tokens[from], "partition")) ++from;
  return from;
}

bool InOrder(const std::vector<TBlock>& blocks) {
  return std::all_of(blocks.begin(), blocks.end(), [](const TBlock& block) { return block.first < block.last; });
}

}  // namespace

std::vector<std::string_view> LinesWithEnds(std::string_view text) {
  std::vector<std::string_view> lines;
  if (text.empty()) return lines;
  for (;;) {
    std::size_t end = text.find_first_of("\r\n");
    if (end == std::string_view::npos) break;
    end += text.substr(end, 2) == "\r\n" ? 2U : 1U;
    lines.push_back(text.substr(0, end));
    text.remove_prefix(end);
  }
  lines.push_back(text);
  return lines;
}

TTextBlocks::TTextBlocks(std::string_view text) : lines_(LinesWithEnds(text)) {
  std::size_t start = 0;
  for (const std::string_view line : lines_) {
    starts_.push_back(start);
    start += line.size();
  }
  try {
    ReadBlocks(text);
  } catch (const EVelmora&) {
    blocks_.clear();
  }
  if (!InOrder(blocks_)) blocks_.clear();
}

std::size_t TTextBlocks::LineAt(std::size_t place) const {
  return static_cast<std::size_t>(std::upper_bound(starts_.begin(), starts_.end(), place) - starts_.begin()) - 1;
}

// Every block reaches to the next one; one that begins on the same line as the next has no line.
void TTextBlocks::ReadBlocks(std::string_view text) {
  const std::vector<TToken> tokens = Tokens(text);
  table_ = ReadTableText(text, tokens);
  const std::size_t open = NextBracket(tokens, 0);
  const std::vector<TTokenRange> parts = ListParts(tokens, open);
  if (parts.size() != table_->elements.size()) return;
  const std::size_t close = AfterGroup(tokens, open) - 1;
  const std::size_t partitioning = PartitioningAt(tokens, close);

  const auto begin = [this](EBlock kind, std::size_t line, std::string key, const TElement* element = nullptr) {
    if (!blocks_.empty()) blocks_.back().last = line;
    blocks_.push_back({kind, line, lines_.size(), std::move(key), element});
  };
  begin(EBlock::Head, 0, "head");
  for (std::size_t i = 0; i < parts.size(); ++i)
    begin(EBlock::Element, LineAt(tokens[parts[i].first].start), KeyOf(table_->elements[i]), &table_->elements[i]);
  const std::size_t options = LineAt(tokens[close].start);
  begin(EBlock::Options, options, "options");
  if (partitioning < tokens.size() && LineAt(tokens[partitioning].start) > options)
    begin(EBlock::Partitioning, LineAt(tokens[partitioning].start), "partitioning");
}

}  // namespace velmora

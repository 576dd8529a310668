// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// A creation text as lines, and which of them belong together.

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "mysqltext/TableText.h"

namespace velmora {

enum class EBlock { Head, Element, Options, Partitioning };

struct TBlock {
  EBlock kind = EBlock::Head;
  std::size_t first = 0;  // line, from 0
  std::size_t last = 0;   // the line after it
  std::string key;        // what it is called on either side; several of one text may be called alike
  const TElement* element = nullptr;
};

// Lines with their ends, as editors have them: a text that ends in a line end has an empty line after it. An empty text
// has none.
std::vector<std::string_view> LinesWithEnds(std::string_view text);

// The text outlives this object.
class TTextBlocks {
 public:
  explicit TTextBlocks(std::string_view text);
  TTextBlocks(const TTextBlocks&) = delete;
  TTextBlocks& operator=(const TTextBlocks&) = delete;

  const std::vector<std::string_view>& Lines() const { return lines_; }
  // In order, without gaps, the head first. None for a text that cannot be read, or that does not begin every element
  // on a line of its own, as servers print it.
  const std::vector<TBlock>& Blocks() const { return blocks_; }
  const TTableText& Table() const { return *table_; }  // while there are blocks

 private:
  void ReadBlocks(std::string_view text);
  std::size_t LineAt(std::size_t place) const;

  std::vector<std::string_view> lines_;
  std::vector<std::size_t> starts_;  // of the lines, in bytes
  std::optional<TTableText> table_;
  std::vector<TBlock> blocks_;
};

}  // namespace velmora

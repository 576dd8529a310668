// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The statements of a script that need not be in memory as a whole: dumps with rows may be larger than that.

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "mysqltext/StatementReader.h"
#include "util/Files.h"

namespace velmora {

class TStatementStream {
 public:
  // Called with each part of the script as it comes, in order.
  using TWatch = std::function<void(std::string_view part)>;

  static constexpr std::size_t kPart = std::size_t{4} << 20;    // bytes; memory is that of the longest statement, too
  static constexpr std::size_t kWhole = std::size_t{32} << 20;  // smaller files are read at once

  // Of a file, in parts of `part` bytes at least, or at once. A UTF-8 mark at its beginning is skipped, and lines may
  // end in CR alone. Raises as TFileParts does, and as TStatementReader.
  TStatementStream(std::unique_ptr<TFileParts> file, TWatch watch, std::size_t part = kPart,
                   std::size_t whole = kWhole);
  // Of a text, likewise.
  TStatementStream(std::string script, const TWatch& watch);

  // As TStatementReader, which reads what stands in comments for servers of a version; the statement's text lives until
  // the next call. Raises "line %d: ..." for a statement that is longer than any server takes, too.
  bool Next(TStatement& statement);
  std::size_t MostOfAll() const { return most_; }  // bytes that all statements have together, of a small file; or 0

 private:
  void Begin();
  void Load();
  void GoOn();

  std::unique_ptr<TFileParts> file_;  // null once its end is met
  TWatch watch_;
  std::size_t part_ = kPart;
  std::size_t most_ = 0;
  std::string window_;  // what was read and not taken apart
  std::unique_ptr<TStatementReader> reader_;
};

}  // namespace velmora

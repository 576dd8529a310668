// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// How scripts are cut into statements.

#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace velmora {

struct TStatement {
  std::string_view text;  // trimmed, without its delimiter; comments inside stay
  std::size_t line = 0;   // of its first character, counted from 1
};

// Splits a script into its statements, in one pass and without copying: the texts are parts of the script, which must
// stay as it is while the reader is in use.
//
// A statement ends at ";" outside quotes and comments, or at what a `delimiter` line has put in its place; the last one
// needs no end. A backslash escapes within ' and ", not within backticks; a doubled quote closes and opens again.
// Comments in front of a statement, and line comments after the last one, do not belong to it.
class TStatementReader {
 public:
  // `with_versions`: what stands in comments for servers of a version is a statement, or part of one; its text begins
  // at the mark then. Raises "line %d: NUL byte: this is no text file".
  explicit TStatementReader(std::string_view script, bool with_versions = false);

  // False at the end. Raises "line %d: unclosed %s quote" and "line %d: unclosed comment" with the line where it began.
  bool Next(TStatement& statement);

  // --- Of a script that comes in parts
  bool AtEnd() const { return pos_ == script_.size(); }
  // Where what was not read so far begins. Nothing is read of this part any more: the next call is GoOnIn.
  std::size_t Leave();
  std::size_t Line() const { return counted_line_; }  // on which that is, after Leave
  // Goes on in `script`, which begins with what was not read of the one before. Raises as the constructor does.
  void GoOnIn(std::string_view script);

 private:
  using TStops = std::array<bool, 256>;

  void RefuseNul();
  void SetDelimiter(std::string_view delimiter);
  bool AtDelimiter() const;
  bool SkipToStatement();
  bool TakeDelimiterLine();
  std::size_t PassStatement();
  bool GoToStop();
  void PassQuoted();
  bool PassComment();
  bool PassVersionMark();
  bool AreBlank(std::size_t from, std::size_t to) const;
  std::size_t LineAt(std::size_t pos);
  [[noreturn]] void Raise(std::size_t pos, const std::string& fault);

  std::string_view script_;
  bool with_versions_;
  std::size_t pos_ = 0;
  std::size_t open_marks_ = 0;
  std::size_t first_mark_ = 0;  // where the outermost of these begins
  std::string delimiter_;
  TStops stops_{};  // what may end a statement, or hide its end
  std::size_t counted_pos_ = 0;
  std::size_t counted_line_ = 1;
};

// A statement with its end, as the lines that a script has for it: bodies of routines may hold what ends statements,
// and then another end is agreed on with whoever reads the script. Lines of the statement itself stay together.
std::vector<std::string> Delimited(const std::string& statement);

// The place of a statement in a script.
struct TScriptRange {
  std::size_t start = 0;
  std::size_t length = 0;
};
// The statements of a script that is run as it is: delimiter lines are taken as above, a comment that servers may run
// belongs to its statement, others before and after it do not, and what is not closed, a comment, too, ends with the
// script.
std::vector<TScriptRange> ScanStatements(std::string_view script);

}  // namespace velmora

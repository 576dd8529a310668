// SPDX-License-Identifier: GPL-3.0-or-later
#include "mysqltext/StatementReader.h"

#include <algorithm>

#include "mysqltext/LexicalRules.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr std::size_t kNone = std::string_view::npos;
constexpr std::string_view kDelimiterWord = "delimiter";
constexpr char kNulByte[] = "NUL byte: this is no text file";
constexpr char kUnclosedComment[] = "unclosed comment";
constexpr char kUnclosedQuote[] = "unclosed %s quote";

constexpr std::string_view kStatementStops = "'\"`#-/*";

}  // namespace

TStatementReader::TStatementReader(std::string_view script, bool with_versions)
    : script_(script), with_versions_(with_versions) {
  RefuseNul();
  SetDelimiter(";");
}

std::size_t TStatementReader::Leave() {
  LineAt(pos_);
  return pos_;
}

void TStatementReader::GoOnIn(std::string_view script) {
  script_ = script;
  pos_ = counted_pos_ = 0;
  RefuseNul();
}

void TStatementReader::RefuseNul() {
  const std::size_t nul = script_.find('\0');
  if (nul != kNone) Raise(nul, kNulByte);
}

bool TStatementReader::Next(TStatement& statement) {
  while (SkipToStatement()) {
    if (TakeDelimiterLine()) continue;
    const std::size_t start = pos_;
    const std::size_t end = PassStatement();
    statement.text = TrimView(script_.substr(start, end - start));
    statement.line = LineAt(start);
    return true;
  }
  return false;
}

void TStatementReader::SetDelimiter(std::string_view delimiter) {
  delimiter_ = delimiter;
  stops_.fill(false);
  for (const char c : kStatementStops) stops_[static_cast<unsigned char>(c)] = true;
  stops_[static_cast<unsigned char>(delimiter.front())] = true;
}

bool TStatementReader::AtDelimiter() const { return script_.compare(pos_, delimiter_.size(), delimiter_) == 0; }

// Passes white space, comments and empty statements. False at the end of the script.
bool TStatementReader::SkipToStatement() {
  while (pos_ < script_.size())
    if (IsBlank(script_[pos_]))
      ++pos_;
    else if (AtDelimiter())
      pos_ += delimiter_.size();
    else if ((with_versions_ && VersionMark(script_, pos_) > 0) || !PassComment())
      return true;
  return false;
}

namespace {

// A line of the command line client, not of the server: its length where one begins here, and what it says from there
// on ends statements. Without an argument it changes nothing.
std::size_t DelimiterLine(std::string_view rest, std::string_view& delimiter) {
  if (!SameText(rest.substr(0, kDelimiterWord.size()), kDelimiterWord)) return 0;
  if (rest.size() > kDelimiterWord.size() && !IsBlank(rest[kDelimiterWord.size()])) return 0;
  const std::string_view line = rest.substr(0, rest.find('\n'));
  std::string_view argument = TrimView(line.substr(kDelimiterWord.size()));
  argument = argument.substr(
      0, static_cast<std::size_t>(std::find_if(argument.begin(), argument.end(), IsBlank) - argument.begin()));
  if (!argument.empty()) delimiter = argument;
  return line.size();
}

}  // namespace

bool TStatementReader::TakeDelimiterLine() {
  std::string_view delimiter = delimiter_;
  const std::size_t length = DelimiterLine(script_.substr(pos_), delimiter);
  if (delimiter != delimiter_) SetDelimiter(delimiter);
  pos_ += length;
  return length > 0;
}

// Goes past the statement and its delimiter; gives where its text ends.
std::size_t TStatementReader::PassStatement() {
  std::size_t tail = kNone;  // where line comments begin that nothing but blanks has followed so far
  std::size_t tail_end = 0;
  open_marks_ = 0;
  while (GoToStop()) {
    const std::size_t start = pos_;
    if (open_marks_ == 0 && AtDelimiter()) {
      pos_ += delimiter_.size();
      return start;
    }
    if (IsQuote(script_[pos_])) {
      PassQuoted();
    } else if (PassVersionMark()) {
      continue;
    } else if (!PassComment()) {
      ++pos_;
    } else if (script_[start] != '/') {
      if (tail == kNone || !AreBlank(tail_end, start)) tail = start;
      tail_end = pos_;
    }
  }
  if (open_marks_ > 0) Raise(first_mark_, kUnclosedComment);
  return tail != kNone && AreBlank(tail_end, script_.size()) ? tail : script_.size();
}

bool TStatementReader::GoToStop() {
  while (pos_ < script_.size() && !stops_[static_cast<unsigned char>(script_[pos_])]) ++pos_;
  return pos_ < script_.size();
}

void TStatementReader::PassQuoted() {
  const std::size_t end = QuotedEnd(script_, pos_);
  if (end == kNone) Raise(pos_, Format(kUnclosedQuote, std::string(1, script_[pos_])));
  pos_ = end;
}

// The mark, or what closes it; between the two no delimiter counts.
bool TStatementReader::PassVersionMark() {
  if (!with_versions_) return false;
  if (open_marks_ > 0 && ClosesComment(script_, pos_)) {
    --open_marks_;
    pos_ += 2;
    return true;
  }
  const std::size_t mark = VersionMark(script_, pos_);
  if (mark == 0) return false;
  if (open_marks_++ == 0) first_mark_ = pos_;
  pos_ += mark;
  return true;
}

bool TStatementReader::PassComment() {
  const std::size_t end = CommentEnd(script_, pos_);
  if (end == kNone) Raise(pos_, kUnclosedComment);
  if (end == pos_) return false;
  pos_ = end;
  return true;
}

bool TStatementReader::AreBlank(std::size_t from, std::size_t to) const {
  return std::all_of(script_.begin() + static_cast<std::ptrdiff_t>(from),
                     script_.begin() + static_cast<std::ptrdiff_t>(to), IsBlank);
}

// Positions must not fall from call to call, so that each line end is counted once.
std::size_t TStatementReader::LineAt(std::size_t pos) {
  const auto begin = script_.begin();
  counted_line_ += static_cast<std::size_t>(
      std::count(begin + static_cast<std::ptrdiff_t>(counted_pos_), begin + static_cast<std::ptrdiff_t>(pos), '\n'));
  counted_pos_ = pos;
  return counted_line_;
}

void TStatementReader::Raise(std::size_t pos, const std::string& fault) {
  RaiseError(Format("line %d: %s", LineAt(pos), fault));
}

namespace {

class TScanner {
 public:
  explicit TScanner(std::string_view script) : script_(script) {}
  std::vector<TScriptRange> Scan();

 private:
  // Goes to `end`, or to that of the script where what began is never closed.
  void GoTo(std::size_t end) { at_ = std::min(end, script_.size()); }
  bool TakeDelimiterLine();
  void TakeComment();
  void TakeContent();
  void EndStatement();

  std::string_view script_;
  std::size_t at_ = 0;
  std::size_t start_ = 0;  // of the statement under way
  std::size_t end_ = 0;    // after what it has so far; at most start_ while it has nothing
  std::string_view delimiter_ = ";";
  bool versioned_ = false;  // in a comment for servers of a version, which ends like any other
  std::vector<TScriptRange> found_;
};

// A doubled quote is two texts side by side, which comes to the same.
void TScanner::TakeContent() {
  if (end_ <= start_) start_ = at_;
  if (IsQuote(script_[at_])) {
    GoTo(QuotedEnd(script_, at_));
  } else if (const std::size_t mark = MarkOpening(script_, at_)) {
    versioned_ = true;
    at_ += mark;
  } else if (versioned_ && ClosesComment(script_, at_)) {
    versioned_ = false;
    at_ += 2;
  } else {
    ++at_;
  }
  end_ = at_;
}

// One that is never closed is a statement to the end of the script: what it swallows must not be left out unseen.
void TScanner::TakeComment() {
  const std::size_t end = CommentEnd(script_, at_);
  if (end == kNone && end_ <= start_) start_ = at_;
  GoTo(end);
  if (end == kNone) end_ = at_;
}

bool TScanner::TakeDelimiterLine() {
  if (end_ > start_) return false;
  const std::size_t length = DelimiterLine(script_.substr(at_), delimiter_);
  at_ += length;
  return length > 0;
}

void TScanner::EndStatement() {
  if (end_ > start_) found_.push_back({start_, end_ - start_});
  at_ += delimiter_.size();
  start_ = end_ = at_;
  versioned_ = false;
}

std::vector<TScriptRange> TScanner::Scan() {
  while (at_ < script_.size())
    if (IsSpace(script_[at_]))
      ++at_;
    else if (MarkOpening(script_, at_) == 0 && CommentEnd(script_, at_) != at_)
      TakeComment();
    else if (!versioned_ && script_.substr(at_).starts_with(delimiter_))
      EndStatement();
    else if (!TakeDelimiterLine())
      TakeContent();
  EndStatement();
  return std::move(found_);
}

}  // namespace

std::vector<std::string> Delimited(const std::string& statement) {
  if (statement.find(';') == std::string::npos) return {statement + ";"};
  std::string delimiter = "$$";
  while (statement.find(delimiter) != std::string::npos) delimiter += '$';
  return {"delimiter " + delimiter, statement + delimiter, "delimiter ;"};
}

std::vector<TScriptRange> ScanStatements(std::string_view script) { return TScanner(script).Scan(); }

}  // namespace velmora

#include "mysqltext/StatementReader.h"

#include <algorithm>
#include <cstdint>

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

constexpr std::array<bool, 256> StopsAt(std::string_view characters) {
  std::array<bool, 256> stops{};
  for (const char c : characters) stops[static_cast<unsigned char>(c)] = true;
  return stops;
}

constexpr std::array<bool, 256> kStatementStops = StopsAt("'\"`#-/*");
constexpr std::array<bool, 256> kSingleStops = StopsAt("'\\");
constexpr std::array<bool, 256> kDoubleStops = StopsAt("\"\\");

// The first stop at or behind `from`; the size of the text when there is none.
std::size_t FindStop(const std::array<bool, 256>& stops, std::string_view text, std::size_t from) {
  const std::size_t size = text.size();
  while (from < size && !stops[static_cast<unsigned char>(text[from])]) ++from;
  return from;
}

bool IsSpace(char c) { return static_cast<unsigned char>(c) <= ' '; }

}  // namespace

std::size_t CommentEnd(std::string_view text, std::size_t pos) {
  const std::string_view rest = text.substr(pos);
  if (rest.substr(0, 2) == "/*") {
    const std::size_t end = text.find("*/", pos + 2);
    return end == kNone ? kNone : end + 2;
  }
  const bool dashes = rest.substr(0, 2) == "--" && (rest.size() == 2 || IsSpace(rest[2]));
  if (!dashes && rest.substr(0, 1) != "#") return pos;
  return std::min(text.find('\n', pos), text.size());
}

std::size_t VersionMark(std::string_view text, std::size_t pos) {
  constexpr std::string_view kNoServers = "999999";
  constexpr std::size_t kLeastDigits = 5;
  const std::size_t head = text.substr(pos, 3) == "/*!" ? 3 : text.substr(pos, 4) == "/*M!" ? 4 : 0;
  if (head == 0) return 0;
  const std::string_view digits = text.substr(pos + head, kLeastDigits + 1);
  const auto end = std::find_if(digits.begin(), digits.end(), [](char c) { return c < '0' || c > '9'; });
  const auto count = static_cast<std::size_t>(end - digits.begin());
  return count < kLeastDigits || digits == kNoServers ? 0 : head + count;
}

TStatementReader::TStatementReader(std::string_view script, bool with_versions)
    : script_(script), with_versions_(with_versions) {
  const std::size_t nul = script_.find('\0');
  if (nul != kNone) Raise(nul, kNulByte);
  SetDelimiter(";");
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
  stops_ = kStatementStops;
  stops_[static_cast<unsigned char>(delimiter.front())] = true;
}

bool TStatementReader::AtDelimiter() const { return script_.compare(pos_, delimiter_.size(), delimiter_) == 0; }

// Passes white space, comments and empty statements. False at the end of the script.
bool TStatementReader::SkipToStatement() {
  while (pos_ < script_.size())
    if (IsSpace(script_[pos_]))
      ++pos_;
    else if (AtDelimiter())
      pos_ += delimiter_.size();
    else if ((with_versions_ && VersionMark(script_, pos_) > 0) || !PassComment())
      return true;
  return false;
}

// A line of the command line client, not of the server. Without an argument it changes nothing.
bool TStatementReader::TakeDelimiterLine() {
  const std::string_view rest = script_.substr(pos_);
  if (!SameText(rest.substr(0, kDelimiterWord.size()), kDelimiterWord)) return false;
  if (rest.size() > kDelimiterWord.size() && !IsSpace(rest[kDelimiterWord.size()])) return false;
  const std::string_view line = rest.substr(0, rest.find('\n'));
  std::string_view argument = TrimView(line.substr(kDelimiterWord.size()));
  argument = argument.substr(
      0, static_cast<std::size_t>(std::find_if(argument.begin(), argument.end(), IsSpace) - argument.begin()));
  if (!argument.empty()) SetDelimiter(argument);
  pos_ += line.size();
  return true;
}

// Goes behind the statement and its delimiter; gives where its text ends.
std::size_t TStatementReader::PassStatement() {
  std::size_t tail = kNone;  // where line comments begin that nothing but blanks has followed so far
  std::size_t tail_end = 0;
  open_marks_ = 0;
  while ((pos_ = FindStop(stops_, script_, pos_)) < script_.size()) {
    const std::size_t start = pos_;
    if (open_marks_ == 0 && AtDelimiter()) {
      pos_ += delimiter_.size();
      return start;
    }
    if (script_[pos_] == '\'' || script_[pos_] == '"' || script_[pos_] == '`') {
      PassQuoted();
    } else if (PassVersionMark()) {
      continue;
    } else if (!PassComment()) {
      ++pos_;
    } else if (script_[start] != '/') {
      if (tail == kNone || !IsBlank(tail_end, start)) tail = start;
      tail_end = pos_;
    }
  }
  return tail != kNone && IsBlank(tail_end, script_.size()) ? tail : script_.size();
}

void TStatementReader::PassQuoted() {
  const char quote = script_[pos_];
  std::size_t end = pos_ + 1;
  if (quote == '`') {
    end = std::min(script_.find(quote, end), script_.size());
  } else {
    const TStops& stops = quote == '"' ? kDoubleStops : kSingleStops;
    end = FindStop(stops, script_, end);
    while (end < script_.size() && script_[end] == '\\') end = FindStop(stops, script_, end + 2);
  }
  if (end >= script_.size()) Raise(pos_, Format(kUnclosedQuote, std::string(1, quote)));
  pos_ = end + 1;
}

// The mark, or what closes it; between the two no delimiter counts.
bool TStatementReader::PassVersionMark() {
  if (!with_versions_) return false;
  if (open_marks_ > 0 && script_.compare(pos_, 2, "*/") == 0) {
    --open_marks_;
    pos_ += 2;
    return true;
  }
  const std::size_t mark = VersionMark(script_, pos_);
  if (mark == 0) return false;
  ++open_marks_;
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

bool TStatementReader::IsBlank(std::size_t from, std::size_t to) const {
  return std::all_of(script_.begin() + static_cast<std::ptrdiff_t>(from),
                     script_.begin() + static_cast<std::ptrdiff_t>(to), IsSpace);
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

}  // namespace velmora

// SPDX-License-Identifier: GPL-3.0-or-later
#include "engines/server/OraClient.h"

#include <algorithm>

#include "util/Errors.h"
#include "util/Text.h"
#include "util/Words.h"

namespace velmora {

namespace {

constexpr char kNotConnected[] = "Not connected";

// The end of what begins at `begin` and lasts until `close`, or the text if that is missing.
std::size_t EndAfter(std::string_view text, std::size_t begin, std::string_view close) {
  const std::size_t found = text.find(close, begin);
  return found == std::string_view::npos ? text.size() : found + close.size();
}

// Whether the apostrophe at `at` opens a literal of the form q'[...]', with the letters q or nq in front.
bool IsFreeQuote(std::string_view text, std::size_t at) {
  if (at == 0 || LowerChar(text[at - 1]) != 'q' || at + 1 >= text.size()) return false;
  std::string_view before = text.substr(0, at - 1);
  if (!before.empty() && LowerChar(before.back()) == 'n') before.remove_suffix(1);
  return before.empty() || IsWordDelimiter(before.back());
}

std::size_t EndOfFreeQuote(std::string_view text, std::size_t at) {
  constexpr std::string_view kOpening = "[{(<", kClosing = "]})>";
  const char open = text[at + 1];
  const std::size_t pair = kOpening.find(open);
  const char close[] = {pair == std::string_view::npos ? open : kClosing[pair], '\''};
  return EndAfter(text, at + 2, {close, sizeof close});
}

// After the literal or quoted name that begins at `at`; `at` itself where none does.
std::size_t EndOfQuotes(std::string_view text, std::size_t at) {
  if (text[at] != '\'' && text[at] != '"') return at;
  if (text[at] == '\'' && IsFreeQuote(text, at)) return EndOfFreeQuote(text, at);
  return EndAfter(text, at + 1, text.substr(at, 1));
}

// The same for a comment.
std::size_t EndOfComment(std::string_view text, std::size_t at) {
  const std::string_view mark = text.substr(at, 2);
  if (mark == "--") return EndAfter(text, at, "\n");
  return mark == "/*" ? EndAfter(text, at + 2, "*/") : at;
}

}  // namespace

// --- Session

void TOraSession::SetConnected(bool connected) {
  if (connected != GetConnected()) in_transaction_ = false;
  TClientConnection::SetConnected(connected);
}

// The server opens a transaction by itself with the first change; what there is to start is holding back the commits.
void TOraSession::StartTransaction() {
  CheckConnected();
  in_transaction_ = true;
}

void TOraSession::Commit() {
  CheckConnected();
  DoCommit();
  in_transaction_ = false;
}

void TOraSession::Rollback() {
  CheckConnected();
  DoRollback();
  in_transaction_ = false;
}

TOraResult TOraSession::Run(const std::string& sql) {
  CheckConnected();
  TOraResult result = DoRun(sql);
  if (result.fields.empty() && !in_transaction_) DoCommit();
  return result;
}

void TOraSession::CheckConnected() const {
  if (!GetConnected()) RaiseError(kNotConnected);
}

// --- Query

void TOraQuery::Open() {
  Close();
  result_ = session_.Run(SQL);
}

void TOraQuery::Execute() {
  Close();
  rows_affected_ = session_.Run(SQL).row_count;
}

void TOraQuery::Next() {
  if (!Eof()) ++row_;
}

void TOraQuery::Prior() {
  if (row_ > 0) --row_;
}

const TVariant& TOraQuery::Value(std::size_t field) const {
  static const TVariant kNull;
  if (field >= result_.fields.size()) throw EListError(static_cast<std::int64_t>(field));
  return Eof() ? kNull : result_.rows[row_][field];
}

void TOraQuery::Close() {
  result_.rows = {};
  row_ = 0;
}

// --- Script

void TOraScript::Execute() {
  for (const std::string& sql : OraStatements(SQL)) {
    try {
      session_.Run(sql);
    } catch (const EVelmora&) {
      if (!OnError) throw;
      EOraErrorAction action = EOraErrorAction::Abort;
      OnError(std::current_exception(), sql, action);
      if (action == EOraErrorAction::Abort) return;
    }
  }
}

TStringList OraStatements(std::string_view script) {
  TStringList statements;
  std::size_t begin = 0;
  bool has_words = false;
  const auto take = [&](std::size_t end) {
    if (has_words) statements.push_back(Trim(script.substr(begin, end - begin)));
    begin = std::min(end + 1, script.size());
    has_words = false;
  };
  for (std::size_t at = 0; at < script.size();) {
    if (const std::size_t end = EndOfComment(script, at); end != at) {
      at = end;
      continue;
    }
    if (script[at] == ';')
      take(at);
    else if (!IsWordSpace(script[at]))
      has_words = true;
    at = std::max(at + 1, EndOfQuotes(script, at));
  }
  take(script.size());
  return statements;
}

}  // namespace velmora

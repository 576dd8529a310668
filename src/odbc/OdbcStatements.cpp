// SPDX-License-Identifier: GPL-3.0-or-later
#include "odbc/OdbcStatements.h"

#include <cctype>
#include <cstddef>

#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

bool IsBlank(char c) { return std::isspace(static_cast<unsigned char>(c)) != 0; }

// Takes `word`, or a number where it is empty, and the blanks after it off the front of `rest`; gives what was taken.
std::string_view TakeWord(std::string_view& rest, std::string_view word) {
  std::size_t end = 0;
  while (end < rest.size() && !IsBlank(rest[end])) ++end;
  const std::string_view taken = rest.substr(0, end);
  if (!word.empty() && !SameText(taken, word)) return {};
  while (end < rest.size() && IsBlank(rest[end])) ++end;
  rest.remove_prefix(end);
  return taken;
}

// Takes a leading "select top n" off `sql`, and gives n.
std::int64_t TakeTop(std::string_view& sql) {
  std::string_view rest = sql;
  while (!rest.empty() && IsBlank(rest.front())) rest.remove_prefix(1);
  if (TakeWord(rest, "select").empty() || TakeWord(rest, "top").empty()) return kNoLimit;
  const std::string_view count = TakeWord(rest, {});
  if (count.empty() || count.find_first_not_of("0123456789") != std::string_view::npos) return kNoLimit;
  const auto number = TryStrToInt(count);
  if (!number) return kNoLimit;
  sql = rest;
  return *number;
}

// The end of what begins with the quote at `start`; doubled quotes inside come out right as two texts.
std::size_t QuotedEnd(std::string_view sql, std::size_t start) {
  const std::size_t end = sql.find(sql[start], start + 1);
  return end == std::string_view::npos ? sql.size() : end + 1;
}

std::string WithNames(std::string_view sql, std::string_view quote) {
  const std::string quotes = "'\"" + std::string(quote.substr(0, 1));
  std::string out;
  std::size_t at = 0;
  while (at < sql.size()) {
    const std::size_t close = sql[at] == '[' ? sql.find(']', at) : std::string_view::npos;
    if (close != std::string_view::npos) {
      out += OdbcName(sql.substr(at + 1, close - at - 1), quote);
      at = close + 1;
      continue;
    }
    const bool quoted = !IsBlank(sql[at]) && quotes.find(sql[at]) != std::string::npos;
    const std::size_t end = quoted ? QuotedEnd(sql, at) : at + 1;
    out += sql.substr(at, end - at);
    at = end;
  }
  return out;
}

}  // namespace

std::string OdbcName(std::string_view name, std::string_view quote) {
  if (TrimView(quote).empty()) return std::string(name);
  const std::string mark(quote);
  return mark + StrReplace(name, mark, mark + mark) + mark;
}

TOdbcCommand AdaptStatement(std::string_view sql, std::string_view quote) {
  TOdbcCommand command;
  command.limit = TakeTop(sql);
  command.sql = (command.limit == kNoLimit ? "" : "select ") + WithNames(sql, quote);
  return command;
}

}  // namespace velmora

// SPDX-License-Identifier: GPL-3.0-or-later
#include "exact/objects/ObjectContext.h"

#include <algorithm>
#include <array>

#include "mysqltext/Lexer.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Lists.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kPlainBackslash[] = "NO_BACKSLASH_ESCAPES";
constexpr char kBackslash[] = "line %d: a backslash is a letter here, by the mode %s";

// Modes that not every server has: MySQL Reference Manual and MariaDB Documentation, "Server SQL Modes", "SQL_MODE".
struct TModeRow {
  std::string_view mode;
  bool mysql;  // MySQL of today has it
  bool mariadb;
  bool reads;  // bodies are read by it
};
constexpr std::array<TModeRow, 14> kModes = {{{"NO_AUTO_CREATE_USER", false, true, false},
                                              {"NO_KEY_OPTIONS", false, true, false},
                                              {"NO_FIELD_OPTIONS", false, true, false},
                                              {"NO_TABLE_OPTIONS", false, true, false},
                                              {"MYSQL323", false, true, false},
                                              {"MYSQL40", false, true, false},
                                              {"DB2", false, true, false},
                                              {"MAXDB", false, true, false},
                                              {"MSSQL", false, true, false},
                                              {"POSTGRESQL", false, true, false},
                                              {"ORACLE", false, true, true},
                                              {"EMPTY_STRING_IS_NULL", false, true, true},
                                              {"SIMULTANEOUS_ASSIGNMENT", false, true, true},
                                              {"TIME_TRUNCATE_FRACTIONAL", true, false, false}}};

bool Lacks(const TPlanServer& server, const TModeRow& row) {
  return (server.mysql && !row.mysql) || (server.mariadb && !row.mariadb);
}

TStringList ModesIn(std::string_view sql_mode) {
  TStringList modes;
  SplitPlain(',', std::string(sql_mode), modes);
  return modes;
}

bool HasMode(std::string_view sql_mode, std::string_view mode) {
  return IndexOf(ModesIn(sql_mode), mode) != kNotInList;
}

bool IsQuotedName(std::string_view token) { return token.starts_with("`"); }

// The first backslash that does not stand in a name in backticks, where it is a letter in every mode; npos for none.
std::size_t BackslashOutsideNames(std::string_view text, bool quotes_names) {
  std::size_t place = text.find('\\');
  if (place == std::string_view::npos) return place;
  try {
    for (const TToken& token : TokensByMode(text, quotes_names)) {
      if (place < token.start) return place;
      while (place < token.End() && IsQuotedName(token.text)) place = text.find('\\', place + 1);
    }
  } catch (const EVelmora&) {  // which it keeps the lexer from reading
  }
  return place;
}

}  // namespace

std::string ModesFor(const std::string& sql_mode, const TPlanServer& server) {
  TStringList modes = ModesIn(sql_mode);
  std::erase_if(modes, [&](const std::string& mode) {
    return std::ranges::any_of(kModes, [&](const TModeRow& row) { return row.mode == mode && Lacks(server, row); });
  });
  // It stands for other modes on another server, and those that it stood for are named beside it.
  if (HasMode(sql_mode, "ANSI_QUOTES")) std::erase(modes, "ANSI");
  return JoinList(modes, ",");
}

std::string MissingMode(const std::string& sql_mode, const TPlanServer& server) {
  for (const TModeRow& row : kModes)
    if (row.reads && Lacks(server, row) && HasMode(sql_mode, row.mode)) return std::string(row.mode);
  return {};
}

TObjectText ReadObject(const TOtherObject& object, const std::string& database) {
  return ReadObjectText(object.text, database, QuotesNames(object.context.sql_mode.value_or("")));
}

std::vector<TToken> TokensOf(const TOtherObject& object) {
  return TokensByMode(object.text, QuotesNames(object.context.sql_mode.value_or("")));
}

bool QuotesNames(std::string_view sql_mode) { return HasMode(sql_mode, "ANSI_QUOTES"); }

bool HasPlainBackslashes(std::string_view sql_mode) { return HasMode(sql_mode, kPlainBackslash); }

bool RefusesNotPreserve(std::string_view sql_mode) { return HasMode(sql_mode, "HIGH_NOT_PRECEDENCE"); }

std::string UnreadableIn(std::string_view sql_mode, std::string_view text) {
  std::size_t place = std::string_view::npos;
  std::string_view mode = kPlainBackslash;
  if (HasPlainBackslashes(sql_mode)) place = BackslashOutsideNames(text, QuotesNames(sql_mode));
  if (place == std::string_view::npos && QuotesNames(sql_mode)) {
    place = text.find("\\\"");
    mode = "ANSI_QUOTES";
  }
  return place == std::string_view::npos ? "" : Format(kBackslash, LineOf(text, place), std::string(mode));
}

}  // namespace velmora

// SPDX-License-Identifier: GPL-3.0-or-later
#include "mysqltext/TableOptions.h"

#include <algorithm>
#include <array>

#include "mysqltext/Charsets.h"
#include "util/Text.h"

namespace velmora {

namespace {

// Options of two words; the first is tried before the second may be an option of its own.
struct TTwoWords {
  std::string_view first;
  std::string_view second;
  std::string_view name;
};
constexpr std::array<TTwoWords, 5> kTwoWords = {{{"character", "set", "DEFAULT CHARSET"},
                                                 {"data", "directory", "DATA DIRECTORY"},
                                                 {"index", "directory", "INDEX DIRECTORY"},
                                                 {"start", "transaction", "START TRANSACTION"},
                                                 {"with", "system", ""}}};

struct TOtherName {
  std::string_view word;
  std::string_view name;
};
constexpr std::array<TOtherName, 2> kOtherNames = {{{"CHARSET", "DEFAULT CHARSET"}, {"TYPE", "ENGINE"}}};

struct TReset {
  std::string_view name;
  std::string_view value;  // empty for what cannot be set back
};
constexpr std::array<TReset, 34> kResets = {{{"AUTO_INCREMENT", "1"},
                                             {"AUTOEXTEND_SIZE", "0"},
                                             {"AVG_ROW_LENGTH", "0"},
                                             {"CHECKSUM", "0"},
                                             {"COLLATE", ""},
                                             {"COMMENT", "''"},
                                             {"COMPRESSION", "'NONE'"},
                                             {"CONNECTION", "''"},
                                             {"DATA DIRECTORY", ""},
                                             {"DEFAULT CHARSET", ""},
                                             {"DELAY_KEY_WRITE", "0"},
                                             {"ENCRYPTION", "'N'"},
                                             {"ENGINE", ""},
                                             {"ENGINE_ATTRIBUTE", "''"},
                                             {"INDEX DIRECTORY", ""},
                                             {"INSERT_METHOD", "NO"},
                                             {"KEY_BLOCK_SIZE", "0"},
                                             {"MAX_ROWS", "0"},
                                             {"MIN_ROWS", "0"},
                                             {"PACK_KEYS", "DEFAULT"},
                                             {"PAGE_CHECKSUM", "DEFAULT"},
                                             {"PASSWORD", "''"},
                                             {"ROW_FORMAT", "DEFAULT"},
                                             {"SECONDARY_ENGINE", "NULL"},
                                             {"SECONDARY_ENGINE_ATTRIBUTE", "''"},
                                             {"SEQUENCE", ""},
                                             {"START TRANSACTION", ""},
                                             {"STATS_AUTO_RECALC", "DEFAULT"},
                                             {"STATS_PERSISTENT", "DEFAULT"},
                                             {"STATS_SAMPLE_PAGES", "DEFAULT"},
                                             {"STORAGE", ""},
                                             {"TABLESPACE", "`innodb_file_per_table`"},
                                             {"TRANSACTIONAL", "DEFAULT"},
                                             {"UNION", "()"}}};

const TReset* FindReset(const TTableOption& option) {
  for (const TReset& row : kResets)
    if (option.name == row.name) return &row;
  return nullptr;
}

std::string UpperText(std::string_view text) {
  std::string result(text);
  for (char& c : result)
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  return result;
}

bool IsPlainWord(std::string_view name) {
  return !name.empty() && std::all_of(name.begin(), name.end(), [](char c) {
    return c == '_' || (LowerChar(c) >= 'a' && LowerChar(c) <= 'z') || (c >= '0' && c <= '9');
  });
}

// Names of options of an engine may be in backticks.
std::string ReadName(TTokens tokens, std::size_t& at) {
  if (IsKeyword(tokens[at], "default") && !TokenAt(tokens, at + 1).Is("=")) ++at;
  if (!IsName(TokenAt(tokens, at))) return "";
  for (const TTwoWords& row : kTwoWords)
    if (IsKeyword(tokens[at], row.first) && IsKeyword(TokenAt(tokens, at + 1), row.second)) {
      at += 2;
      return std::string(row.name);
    }
  const std::string name = UpperText(NameOf(tokens[at++]));
  for (const TOtherName& row : kOtherNames)
    if (name == row.word) return std::string(row.name);
  return IsPlainWord(name) ? name : QuotedName(name);
}

bool IsValue(const TToken& token) {
  return IsName(token) || token.kind == EToken::String || token.kind == EToken::Number;
}

}  // namespace

bool IsFlagOption(const TTableOption& option) { return option.name == "START TRANSACTION"; }

std::optional<TTableOption> ReadTableOption(std::string_view text, TTokens tokens, std::size_t& at) {
  TTableOption option;
  option.name = ReadName(tokens, at);
  if (option.name.empty()) return std::nullopt;
  if (IsFlagOption(option)) return option;
  if (TokenAt(tokens, at).Is("=")) ++at;
  const std::size_t first = at;
  if (TokenAt(tokens, at).Is("-") || TokenAt(tokens, at).Is("+")) ++at;
  const bool group = TokenAt(tokens, at).Is("(");
  if (!group && !IsValue(TokenAt(tokens, at))) return std::nullopt;
  const std::size_t after = AfterValue(tokens, at);
  if (group && !tokens[after - 1].Is(")")) return std::nullopt;
  at = after;
  option.value = TextOf(text, tokens, first, at);
  return option;
}

bool IsEngineOption(const TTableOption& option) { return FindReset(option) == nullptr; }

// Engines that know nothing of transactions print the option as a mere comment.
bool OutlivesEngine(const TTableOption& option, std::string_view engine) {
  return !IsEngineOption(option) && (option.name != "TRANSACTIONAL" || InList(engine, {"aria", "innodb"}));
}

std::optional<std::string_view> OptionResetValue(const TTableOption& option) {
  const TReset* row = FindReset(option);
  if (row == nullptr) return "DEFAULT";
  return row->value.empty() ? std::nullopt : std::optional(row->value);
}

std::string OptionValue(const TTableOption& option) {
  const std::string_view value = option.value;
  if (value.starts_with('`')) return NameOf({EToken::Name, value, 0});
  if (value.starts_with('\'') || value.starts_with('"')) return ValueOf({EToken::String, value, 0});
  if (!value.starts_with('(')) return LowerText(value);
  std::string result;
  for (const TToken& token : Tokens(value))
    result += token.kind == EToken::Name ? NameOf(token) : std::string(token.text);
  return result;
}

std::string OptionText(const TTableOption& option) {
  return IsFlagOption(option) ? option.name : option.name + "=" + option.value;
}

}  // namespace velmora

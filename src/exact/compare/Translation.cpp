// SPDX-License-Identifier: GPL-3.0-or-later
#include "exact/compare/Translation.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "exact/compare/CanonicalForm.h"
#include "exact/compare/ServerCompletion.h"
#include "exact/compare/ServerDefaults.h"
#include "mysqltext/Charsets.h"
#include "mysqltext/ColumnParts.h"
#include "mysqltext/ElementText.h"
#include "mysqltext/KeyText.h"
#include "mysqltext/TableOptions.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kMariaDbJson[] = "longtext CHARACTER SET utf8mb4 COLLATE utf8mb4_bin";

void Replace(TElement& element, const TToken& first, const TToken& last, std::string_view text) {
  element.text = std::string(element.text.Str()).replace(first.start, last.End() - first.start, text);
}

bool IsLong(std::string_view type) { return type.ends_with("text") || type.ends_with("blob"); }

bool NamesColumn(const TElement& key, const std::string& column) {
  const std::vector<std::string> columns = IsKey(key.kind) ? KeyColumns(key) : std::vector<std::string>();
  return std::any_of(columns.begin(), columns.end(), [&](auto& name) { return SameText(name, column); });
}

class TTranslator {
 public:
  TTranslator(TTableText& table, const TServerTraits& from, const TServerTraits& to)
      : table_(table), from_(from), to_(to) {}

  void Translate() {
    NameCollation();
    for (TElement& element : table_.elements) {
      if (from_.mysql && !to_.mysql) DropIntroducers(element);
      if (element.kind == EElement::Column)
        TranslateColumn(element);
      else if (IsKey(element.kind))
        TranslateKey(element);
    }
    DropOptions();
    if (to_.mysql && !from_.mysql) TakeChecks();
  }

 private:
  // --- Character sets

  // A Unicode set without a collation has the one that its server gives it.
  std::string OwnCollation(const std::string& charset) const {
    constexpr int kFirstWith0900 = 80001;
    const bool newer = from_.mysql && from_.version >= kFirstWith0900 && charset == "utf8mb4";
    return charset + (newer ? "_0900_ai_ci" : "_general_ci");
  }
  bool LacksCollation(const std::string& charset, const std::string& collation) const {
    return collation.empty() && InList(charset, {"utf8mb4", "utf8mb3", "ucs2", "utf16", "utf32"});
  }

  void NameCollation() {
    const TCharset charset = TableCharset(table_);
    if (!LacksCollation(charset.charset, charset.collation)) return;
    const auto named = std::find_if(table_.options.begin(), table_.options.end(),
                                    [](const TTableOption& option) { return option.name == "DEFAULT CHARSET"; });
    table_.options.insert(named + 1, {"COLLATE", OwnCollation(charset.charset)});
  }

  void NameCollation(TElement& column) {
    const TColumnParts& parts = column.text.Column();
    if (!LacksCollation(parts.charset, parts.collation)) return;
    const TTokens tokens = column.text.Tokens();
    for (std::size_t at = 1; at + 2 < tokens.size(); ++at) {
      if (!IsKeyword(tokens[at], "character") || !IsKeyword(tokens[at + 1], "set")) continue;
      const TToken set = tokens[at + 2];
      return Replace(column, set, set, std::string(set.text) + " COLLATE " + OwnCollation(parts.charset));
    }
  }

  // Scripts are in utf8mb4, and MariaDB forgets escapes in texts of expressions that name their set.
  static void DropIntroducers(TElement& element) {
    const TTokens tokens = element.text.Tokens();
    std::string text = element.text.Str();
    for (auto token = tokens.rbegin(); token != tokens.rend(); ++token) {
      if (token->kind != EToken::String) continue;
      std::string set = LowerText(PrefixOf(*token));
      std::string value = ValueOf(*token);
      std::size_t start = token->start;
      const auto before = token + 1;
      if (set == "x" && before != tokens.rend() && before->kind == EToken::Word && before->text.starts_with('_')) {
        set = LowerText(before->text);
        value = BytesOf(value, 4);
        start = before->start;
      }
      const auto letters =
          set == "_binary" || !set.starts_with('_') ? std::nullopt : LettersOf(value, CharsetName(set.substr(1)));
      if (letters) text.replace(start, token->End() - start, QuotedText(*letters));
      if (set == "_binary") text.erase(start, token->start - start);  // bytes are no letters anyway
    }
    if (text != element.text.Str()) element.text = std::move(text);
  }

  // --- Columns

  void TranslateColumn(TElement& column) {
    NameCollation(column);
    if (to_.mysql) DropWidth(column);
    if (to_.mysql == from_.mysql) return;
    if (to_.mysql) {
      MakeJson(column);
      BracketDefault(column);
    } else {
      SpellShape(column);
      UnbracketDefault(column);
      SpellJson(column);
    }
  }

  static void SpellShape(TElement& column) {
    const TToken type = column.text.Tokens()[1];
    if (type.Is("geomcollection")) Replace(column, type, type, "geometrycollection");
  }

  // From 8.0.19 on MySQL keeps the widths of whole numbers only where zeros fill them up, and of tinyint(1).
  void DropWidth(TElement& column) {
    constexpr int kFirstWithout = 80019;
    const TColumnParts& parts = column.text.Column();
    const bool year = parts.type == "year";
    if ((!year && !IsWholeType(parts.type)) || parts.zerofill || parts.arguments.first == parts.arguments.last) return;
    const TTokens tokens = column.text.Tokens();
    const bool boolean = parts.type == "tinyint" && !parts.is_unsigned && tokens[parts.arguments.first].text == "1";
    if (boolean || (to_.version != 0 && to_.version < kFirstWithout)) return;
    Replace(column, tokens[parts.arguments.first - 1], tokens[parts.arguments.last], "");
  }

  bool IsJson(const TElement& column) const {
    const TColumnParts& parts = column.text.Column();
    if (parts.type != "longtext" || parts.collation != "utf8mb4_bin" || !parts.check || parts.generated) return false;
    const TTokens tokens = column.text.Tokens();
    const TTokens check = tokens.subspan(parts.check->first, parts.check->last - parts.check->first);
    const bool valid = check.size() == 4 && IsKeyword(check[0], "json_valid") && IsName(check[2]) &&
                       SameText(NameOf(check[2]), column.name);
    return valid && std::none_of(table_.elements.begin(), table_.elements.end(),
                                 [&](const TElement& key) { return NamesColumn(key, column.name); });
  }

  // "longtext character set utf8mb4 collate utf8mb4_bin ... check (json_valid(c))"
  void MakeJson(TElement& column) {
    if (!IsJson(column)) return;
    const TColumnParts& parts = column.text.Column();
    const TTokens tokens = column.text.Tokens();
    std::string text = QuotedName(column.name) + " json";
    for (std::size_t at = 2; at < tokens.size(); ++at) {
      if (at + 2 == parts.check->first) at = parts.check->last + 1;
      if (at >= tokens.size()) break;
      if (IsKeyword(tokens[at], "character")) at += 3;
      if (IsKeyword(tokens[at], "collate")) {
        ++at;
        continue;
      }
      text += (tokens[at].start > tokens[at - 1].End() ? " " : "") + std::string(tokens[at].text);
    }
    column.text = std::move(text);
  }

  void SpellJson(TElement& column) {
    if (column.text.Column().type != "json") return;
    const TToken type = column.text.Tokens()[1];
    Replace(column, type, type, kMariaDbJson);
    column.text = column.text.Str() + " CHECK (json_valid(" + QuotedName(column.name) + "))";
  }

  // MySQL has brackets around what is computed, and computes whatever a long column has.
  void BracketDefault(TElement& column) {
    const TColumnParts& parts = column.text.Column();
    if (!parts.default_value || parts.default_value->first == parts.default_value->last) return;
    const TTokens tokens = column.text.Tokens();
    const TToken first = tokens[parts.default_value->first];
    const TToken last = tokens[parts.default_value->last - 1];
    const bool is_long = IsLong(parts.type) || parts.type == "json" || IsShapeType(parts.type);
    const bool call = first.kind == EToken::Word && last.Is(")") && !first.Is("current_timestamp");
    const bool literal = first.kind == EToken::String || first.kind == EToken::Number || first.Is("-");
    if (call || (is_long && literal)) Replace(column, first, last, "(" + column.text.Part(*parts.default_value) + ")");
  }

  // MariaDB takes a text in brackets for that text.
  void UnbracketDefault(TElement& column) {
    const TColumnParts& parts = column.text.Column();
    if (!parts.default_value) return;
    const TTokens tokens = column.text.Tokens();
    TTokenRange inner = *parts.default_value;
    while (inner.last > inner.first + 2 && tokens[inner.first].Is("(") && tokens[inner.last - 1].Is(")")) {
      ++inner.first;
      --inner.last;
    }
    const bool plain = inner.last == inner.first + 1 && tokens[inner.first].kind == EToken::String;
    if (plain && inner.first > parts.default_value->first)
      Replace(column, tokens[parts.default_value->first], tokens[parts.default_value->last - 1],
              QuotedText(ValueOf(tokens[inner.first])));
  }

  // --- Keys and the rest

  void TranslateKey(TElement& key) {
    if (to_.mysql == from_.mysql) return;
    const TTokens tokens = key.text.Tokens();
    for (std::size_t at = AfterGroup(tokens, NextBracket(tokens, 0)); at < tokens.size(); ++at) {
      if (IsKeyword(tokens[at], "comment")) ++at;
      if (IsKeyword(TokenAt(tokens, at), to_.mysql ? "ignored" : "invisible"))
        return Replace(key, tokens[at], tokens[at], to_.mysql ? "INVISIBLE" : "IGNORED");
      if (const std::size_t count = Forgotten(tokens, at); count > 0) {
        Replace(key, tokens[at], tokens[at + count - 1], "");
        key.text = Trim(key.text.Str());
        return TranslateKey(key);
      }
    }
  }

  // How many tokens stand here that MySQL forgets: methods of keys of which the engine makes trees, and sizes of their
  // blocks where the table names none.
  std::size_t Forgotten(TTokens tokens, std::size_t at) const {
    const std::string engine = EngineOf(table_);
    if (!to_.mysql || at + 1 >= tokens.size()) return 0;
    const bool trees = InList(engine, {"innodb", "myisam"});
    if (trees && IsKeyword(tokens[at], "using") && IsKeyword(tokens[at + 1], "hash")) return 2;
    const bool sized = engine != "innodb" || table_.FindOption("KEY_BLOCK_SIZE") != nullptr;
    if (sized || !IsKeyword(tokens[at], "key_block_size")) return 0;
    return std::min<std::size_t>(tokens[at + 1].Is("=") ? 3 : 2, tokens.size() - at);
  }

  // Those of one product that say what holds without them, too.
  void DropOptions() {
    if (to_.mysql == from_.mysql) return;
    std::erase_if(table_.options, [](const TTableOption& option) {
      if (!InList(option.name, {"COMPRESSION", "ENCRYPTION", "AUTOEXTEND_SIZE", "SECONDARY_ENGINE", "TABLESPACE"}))
        return false;
      const auto reset = OptionResetValue(option);
      return reset && SameText(OptionValue(option), OptionValue({option.name, std::string(*reset)}));
    });
  }

  // MySQL has checks of tables alone, each with a name of its own in all of a database. Those that MariaDB has named
  // get MySQL's names.
  void TakeChecks() {
    std::vector<TElement> columns;
    std::vector<TElement> others;
    for (TElement& element : table_.elements) {
      const bool column = element.kind == EElement::Column;
      std::vector<TElement> inside;
      if (column) inside = TakeInlineElements(element, to_);
      if (element.kind == EElement::Check && element.name.starts_with("CONSTRAINT_")) element.name.clear();
      (column ? columns : others).push_back(std::move(element));
      std::move(inside.begin(), inside.end(), std::back_inserter(others));
    }
    const auto is_check = [](const TElement& element) { return element.kind == EElement::Check; };
    const bool any = std::any_of(others.begin(), others.end(), is_check);
    table_.elements = std::move(columns);
    if (any)
      AddElements(std::move(others), true, to_, table_);
    else
      std::move(others.begin(), others.end(), std::back_inserter(table_.elements));
  }

  TTableText& table_;
  const TServerTraits& from_;
  const TServerTraits& to_;
};

}  // namespace

std::string WithoutMarks(std::string_view text) {
  const std::vector<TToken> tokens = Tokens(text);
  std::string result;
  std::size_t done = 0;
  for (const TToken& token : tokens) {
    const std::string_view between = text.substr(done, token.start - done);
    const bool blank = between.find_first_not_of(" \t\r\n") == std::string_view::npos;
    result += blank ? between : std::string_view(" ");
    result += token.text;
    done = token.End();
  }
  return result;
}

void TranslateTable(TTableText& table, const TServerTraits& from, const TServerTraits& to) {
  TTranslator(table, from, to).Translate();
}

}  // namespace velmora

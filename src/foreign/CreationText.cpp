// SPDX-License-Identifier: GPL-3.0-or-later
#include "foreign/CreationText.h"

#include <algorithm>
#include <array>

#include "mysqltext/ColumnParts.h"
#include "mysqltext/Lexer.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kCharset[] = "utf8mb4";

struct TRuleWords {
  EReferenceRule rule;
  const char* words;
};
constexpr std::array<TRuleWords, 5> kRules = {{{EReferenceRule::NoAction, ""},
                                               {EReferenceRule::Restrict, ""},
                                               {EReferenceRule::Cascade, "CASCADE"},
                                               {EReferenceRule::SetNull, "SET NULL"},
                                               {EReferenceRule::SetDefault, "SET DEFAULT"}}};

std::string RuleText(const char* when, EReferenceRule rule) {
  const std::string words = std::ranges::find(kRules, rule, &TRuleWords::rule)->words;
  return words.empty() ? "" : std::string(" ON ") + when + " " + words;
}

std::string NameList(const TStringList& names) {
  TStringList quoted;
  for (const std::string& name : names) quoted.push_back(QuotedName(name));
  return JoinList(quoted, ",");
}

std::string KeyParts(const TMappedKey& key) {
  TStringList parts;
  for (const TMappedKeyPart& part : key.parts)
    parts.push_back(QuotedName(part.column) + (part.letters > 0 ? Format("(%d)", part.letters) : "") +
                    (part.descending ? " DESC" : ""));
  return JoinList(parts, ",");
}

std::string TypeText(const TElementText& text, const TColumnParts& parts) {
  std::string type = parts.type;
  if (parts.is_boolean) type = "tinyint(1)";
  if (parts.arguments.first != parts.arguments.last) type += "(" + text.Part(parts.arguments) + ")";
  return type + (parts.is_unsigned ? " unsigned" : "") + (parts.zerofill ? " zerofill" : "");
}

void Append(std::string& text, const std::string& piece) {
  if (!piece.empty()) text += (text.empty() ? "" : " ") + piece;
}

// A number after such a word belongs to it.
void AddFurther(const TElementText& text, const TColumnParts& parts, TColumnPieces& pieces) {
  bool of_type = false;
  for (const TTokenRange& range : parts.rest) {
    const TToken& first = text.Tokens()[range.first];
    of_type = InList(LowerText(first.text), {"compressed", "srid", "ref_system_id"}) ||
              (of_type && first.kind == EToken::Number);
    Append(of_type ? pieces.of_type : pieces.further, text.Part(range));
  }
  if (parts.invisible) Append(pieces.further, "INVISIBLE");
}

}  // namespace

std::string TColumnPieces::Text() const {
  std::string text = QuotedName(name);
  const auto add = [&text](const std::string& piece) { Append(text, piece); };
  add(type);
  add(of_type);
  add(charset);
  add(generated);
  if (not_null) add("NOT NULL");
  if (null_word && !not_null) add("NULL");
  if (!default_value.empty()) add("DEFAULT " + default_value);
  if (!on_update.empty()) add("ON UPDATE " + on_update);
  if (auto_increment) add("AUTO_INCREMENT");
  if (!comment.empty()) add("COMMENT " + comment);
  add(further);
  if (!check.empty()) add("CHECK (" + check + ")");
  return text;
}

TColumnPieces PiecesOf(const TElement& column) {
  const TElementText& text = column.text;
  const TColumnParts& parts = text.Column();
  TColumnPieces pieces;
  pieces.name = column.name;
  pieces.type = TypeText(text, parts);
  pieces.charset = CharsetText({parts.charset, parts.collation});
  pieces.null_word = parts.null || parts.type == "timestamp";
  pieces.not_null = parts.not_null;
  if (parts.default_value) pieces.default_value = text.Part(*parts.default_value);
  if (SameText(pieces.default_value, "null")) pieces.default_value.clear();
  if (parts.on_update) pieces.on_update = text.Part(*parts.on_update);
  pieces.auto_increment = parts.auto_increment;
  if (parts.generated)
    pieces.generated =
        "GENERATED ALWAYS AS (" + text.Part(*parts.generated) + ")" + (parts.stored ? " STORED" : " VIRTUAL");
  if (parts.comment) pieces.comment = text.Part({*parts.comment, *parts.comment + 1});
  if (parts.check) pieces.check = text.Part(*parts.check);
  AddFurther(text, parts, pieces);
  return pieces;
}

TColumnPieces PiecesOf(const TMappedColumn& column) {
  TColumnPieces pieces;
  pieces.name = column.name;
  pieces.type = column.type.type;
  pieces.not_null = column.not_null.value_or(false);
  pieces.null_word = SameText(LeftPart(pieces.type, 9), "timestamp");
  pieces.auto_increment = column.counts;
  if (!column.counts) pieces.default_value = column.default_value.text;
  if (!column.source.comment.empty()) pieces.comment = QuotedText(column.source.comment);
  return pieces;
}

TElement KeyElement(const TMappedKey& key) {
  const std::string parts = "(" + KeyParts(key) + ")";
  if (key.kind == EForeignKeyKind::Primary) return {EElement::PrimaryKey, "PRIMARY", "PRIMARY KEY " + parts};
  const bool unique = key.kind == EForeignKeyKind::Unique;
  const std::string text = (unique ? "UNIQUE KEY " : "KEY ") + QuotedName(key.name) + " " + parts;
  return {unique ? EElement::UniqueKey : EElement::Key, key.name, text + (key.hashed ? " USING HASH" : "")};
}

TElement ReferenceElement(const TMappedReference& reference) {
  return {EElement::ForeignKey, reference.name,
          "CONSTRAINT " + QuotedName(reference.name) + " FOREIGN KEY (" + NameList(reference.columns) +
              ") REFERENCES " + QuotedName(reference.table) + " (" + NameList(reference.references) + ")" +
              RuleText("DELETE", reference.on_delete) + RuleText("UPDATE", reference.on_update)};
}

TElement CheckElement(const TMappedCheck& check) {
  return {EElement::Check, check.name, "CONSTRAINT " + QuotedName(check.name) + " CHECK (" + check.text + ")"};
}

TCharset NewCharset(const std::string& collation) { return {kCharset, collation}; }

std::string CharsetText(const TCharset& charset) {
  std::string text;
  if (!charset.charset.empty()) text = "CHARACTER SET " + charset.charset;
  if (!charset.collation.empty()) text += (text.empty() ? "" : " ") + ("COLLATE " + charset.collation);
  return text;
}

std::vector<TTableOption> NewTableOptions(const TMappedTable& table, const std::string& collation) {
  std::vector<TTableOption> options = {{"ENGINE", "InnoDB"}, {"DEFAULT CHARSET", kCharset}};
  if (!collation.empty()) options.push_back({"COLLATE", collation});
  if (!table.comment.empty()) options.push_back({"COMMENT", QuotedText(table.comment)});
  return options;
}

// Two blanks part a line from its comment.
std::string ShownCreationText(const TTableText& text, const TMappedTable& table) {
  const std::string plain = CreationTextOf(text);
  std::string shown;
  std::size_t done = 0;
  std::size_t end = QuotedName(text.name).size();
  for (const TElement& element : text.elements) {
    if (element.kind != EElement::Column) continue;
    const auto column = std::ranges::find_if(
        table.columns, [&](const TMappedColumn& mapped) { return SameText(mapped.name, element.name); });
    if (column == table.columns.end()) continue;
    end = std::min(plain.find('\n', plain.find(element.text.Str(), end)), plain.size());
    shown.append(plain, done, end - done).append("  -- ").append(ShownText(NativeText(column->source)));
    done = end;
  }
  return shown.append(plain, done);
}

}  // namespace velmora

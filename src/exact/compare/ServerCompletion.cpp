// SPDX-License-Identifier: GPL-3.0-or-later
#include "exact/compare/ServerCompletion.h"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

#include "exact/compare/CanonicalForm.h"
#include "exact/compare/SameExpressions.h"
#include "exact/compare/ServerDefaults.h"
#include "mysqltext/Charsets.h"
#include "mysqltext/ColumnParts.h"
#include "mysqltext/ColumnType.h"
#include "mysqltext/ElementFinder.h"
#include "mysqltext/ElementText.h"
#include "mysqltext/KeyText.h"
#include "mysqltext/Lexer.h"
#include "mysqltext/TableOptions.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kNoCharset[] =
    "Table %s is converted to a character set, and only the target knows which one its column %s has had before";

// --- Options

// Of an option that is named twice the last one counts.
void DropRepeated(std::vector<TTableOption>& options) {
  std::vector<TTableOption> kept;
  for (std::size_t at = 0; at < options.size(); ++at) {
    const bool again = std::any_of(options.begin() + static_cast<std::ptrdiff_t>(at) + 1, options.end(),
                                   [&](const TTableOption& later) { return later.name == options[at].name; });
    if (!again) kept.push_back(std::move(options[at]));
  }
  options = std::move(kept);
}

void TakeOver(TTableText& table, const TTableText& counterpart, std::string_view name) {
  const TTableOption* option = counterpart.FindOption(name);
  if (option != nullptr && table.FindOption(name) == nullptr) table.options.push_back(*option);
}

void CompleteOptions(TTableText& table, const TTableText* counterpart) {
  DropRepeated(table.options);
  if (counterpart == nullptr) return;
  TakeOver(table, *counterpart, "ENGINE");
  if (TableCharset(table) != TCharset()) return;
  TakeOver(table, *counterpart, "DEFAULT CHARSET");
  TakeOver(table, *counterpart, "COLLATE");
}

// --- Columns

// The type of bytes that is the like of a type of letters; itself for any other.
std::string_view BytesTypeOf(std::string_view type) {
  if (type == "char") return "binary";
  if (type == "varchar") return "varbinary";
  const TSizedType* sized = SizedText(type);
  return sized == nullptr ? type : sized->blob;
}

// A column's text in pieces: name, type with its brackets, and the attributes, some of which are taken out.
class TColumnRewriter {
 public:
  TColumnRewriter(TElement& column, const TCharset& of_table)
      : column_(column),
        source_(column.text),
        tokens_(source_.Tokens()),
        parts_(source_.Column()),
        kind_(parts_.type),
        taken_(tokens_.size(), false),
        charset_(of_table) {
    if (!parts_.charset.empty() || !parts_.collation.empty()) charset_ = NamedCharset(parts_.charset, parts_.collation);
    after_type_ = AfterType();
    type_ = source_.Part({1, after_type_});
  }

  void Complete(const TCharset& of_table, const TElement* counterpart, const TServerTraits& server) {
    CompleteLetters();
    CompleteSize();
    CompleteMembers();
    CompleteJson(counterpart);
    if (changed_) Write();
    CompleteDefault(of_table, server);
    CompleteTimestamp(server);
  }

 private:
  std::size_t AfterType() const {
    std::size_t at = IsKeyword(TokenAt(tokens_, 1), "national") ? 3 : 2;
    while (
        at < tokens_.size() && tokens_[at].kind == EToken::Word &&
        InList(LowerText(tokens_[at].text), {"varying", "precision", "varchar", "varbinary", "varcharacter", "char"}))
      ++at;
    return TokenAt(tokens_, at).Is("(") ? AfterGroup(tokens_, at) : at;
  }
  std::string Arguments() const {
    if (parts_.arguments.first == parts_.arguments.last) return {};
    return "(" + source_.Part(parts_.arguments) + ")";
  }
  std::optional<long long> Length() const {
    if (parts_.arguments.last != parts_.arguments.first + 1) return std::nullopt;
    return TryStrToInt(std::string(tokens_[parts_.arguments.first].text));
  }

  void SetType(std::string text) {
    type_ = std::move(text);
    changed_ = true;
  }

  // Takes the word out of the attributes.
  bool TakeWord(std::string_view word) {
    for (const TTokenRange& rest : parts_.rest) {
      if (rest.last != rest.first + 1 || !IsKeyword(tokens_[rest.first], word) || taken_[rest.first]) continue;
      taken_[rest.first] = true;
      return changed_ = true;
    }
    return false;
  }

  void TakeCharset() {
    for (std::size_t at = after_type_; at < tokens_.size(); ++at) {
      const bool set = IsKeyword(tokens_[at], "character") && IsKeyword(TokenAt(tokens_, at + 1), "set");
      const bool one = IsKeyword(tokens_[at], "charset") || IsKeyword(tokens_[at], "collate");
      if (!set && !one) continue;
      std::size_t last = at + (set ? 3 : 2);
      if (TokenAt(tokens_, last - 1).Is("=")) ++last;
      for (std::size_t gone = at; gone < std::min(last, tokens_.size()); ++gone) taken_[gone] = true;
    }
  }

  void CompleteLetters() {
    const bool short_national = InList(LowerText(tokens_[1].text), {"nchar", "nvarchar"});
    if (short_national || IsKeyword(tokens_[1], "national")) {
      charset_ = NamedCharset("utf8mb3", "");
      const bool varies = kind_ == "varchar" || kind_ == "nvarchar";
      SetType((varies ? "varchar" : "char") + Arguments() + " CHARACTER SET utf8mb3");
    }
    if (!IsLetterType(kind_)) return;
    const bool bytes = TakeWord("byte") || charset_.charset == "binary";
    if (TakeWord("ascii")) SetCharset("latin1");
    if (TakeWord("unicode")) SetCharset("ucs2");
    if (bytes && !InList(kind_, {"enum", "set"})) {
      TakeCharset();
      kind_ = BytesTypeOf(kind_);
      SetType(kind_ + Arguments());
    } else if (!charset_.charset.empty() && TakeWord("binary")) {  // the set's collation by bytes
      SetType(type_ + " COLLATE " + charset_.charset + "_bin");
    }
  }

  void SetCharset(const std::string& charset) {
    charset_ = NamedCharset(charset, "");
    SetType(type_ + " CHARACTER SET " + charset);
  }

  // text(n) is the smallest type that takes as many letters.
  void CompleteSize() {
    const bool text = kind_ == "text";
    const std::optional<long long> length = Length();
    constexpr long long kFloatDigits = 24;
    if (length && kind_ == "float") return SetType(*length > kFloatDigits ? "double" : "float");
    if ((!text && kind_ != "blob") || !length) return;
    if (text && charset_.charset.empty()) return;
    const long long letters = std::min(*length, kSizedTypes.back().bytes + 1);
    const long long bytes = letters * (text ? LetterBytes(charset_.charset).most : 1);
    for (const TSizedType& row : kSizedTypes) {
      if (bytes > row.bytes) continue;
      type_.replace(0, type_.find(')') + 1, text ? row.text : row.blob);
      return SetType(type_);
    }
  }

  void CompleteMembers() {
    if (!InList(kind_, {"enum", "set"})) return;
    std::string members;
    bool blanks = false;
    for (std::size_t at = parts_.arguments.first; at < parts_.arguments.last; ++at) {
      if (tokens_[at].kind != EToken::String) continue;
      std::string member = ValueOf(tokens_[at]);
      blanks = blanks || member.ends_with(' ');
      member.erase(member.find_last_not_of(' ') + 1);
      members += (members.empty() ? "" : ",") + QuotedText(member);
    }
    if (blanks) type_.replace(0, type_.rfind(')') + 1, kind_ + "(" + members + ")");
    changed_ = changed_ || blanks;
  }

  // MariaDB has texts for them, with a check.
  void CompleteJson(const TElement* counterpart) {
    if (kind_ != "json" || counterpart == nullptr) return;
    const std::string text = LowerText(counterpart->text.Str());
    if (text.find(" longtext ") == std::string::npos || text.find("json_valid(") == std::string::npos) return;
    SetType("longtext CHARACTER SET utf8mb4 COLLATE utf8mb4_bin");
    if (!parts_.check) check_ = "CHECK (json_valid(" + QuotedName(column_.name) + "))";
  }

  void Write() {
    std::string text = QuotedName(column_.name) + " " + type_;
    for (std::size_t at = after_type_; at < tokens_.size(); ++at) {
      if (taken_[at]) continue;
      const bool apart = tokens_[at].start > tokens_[at - 1].End() || taken_[at - 1] || at == after_type_;
      text += (apart ? " " : "") + std::string(tokens_[at].text);
    }
    if (!check_.empty()) text += " " + check_;
    column_.text = std::move(text);
  }

  void CompleteDefault(const TCharset& of_table, const TServerTraits& server) {
    const TElementText text = column_.text;
    const TColumnParts& parts = text.Column();
    if (!parts.default_value || parts.default_value->first == parts.default_value->last) return;
    const TTokens value =
        text.Tokens().subspan(parts.default_value->first, parts.default_value->last - parts.default_value->first);
    if (value.size() == 1 && IsKeyword(value[0], "null")) return;
    const auto printed = PrintedDefault(ReadColumnText(text, of_table), value, server.local_time_of_day);
    const std::size_t start = value.front().start;
    const std::size_t size = value.back().End() - start;
    if (printed && text.Str().compare(start, size, *printed) != 0)
      column_.text = WithHexLiterals(EElement::Column, std::string(text.Str()).replace(start, size, *printed));
  }

  // What nobody says of a timestamp. Where the server has them by themselves the first one of a table is special, which
  // the table looks after.
  void CompleteTimestamp(const TServerTraits& server) {
    if (kind_ != "timestamp" || parts_.not_null || parts_.null || parts_.generated) return;
    if (server.explicit_timestamps)
      column_.text = column_.text.Str() + (parts_.default_value ? " NULL" : " NULL DEFAULT NULL");
  }

  TElement& column_;
  const TElementText source_;
  const TTokens tokens_;
  const TColumnParts& parts_;
  std::string kind_;  // its type without arguments, as it becomes
  std::vector<bool> taken_;
  TCharset charset_;
  std::size_t after_type_ = 0;
  std::string type_;
  std::string check_;
  bool changed_ = false;
};

// Of servers that complete timestamps: the first one is set by each change of its row.
void CompleteTimestamps(TTableText& table) {
  bool first = true;
  for (TElement& column : table.elements) {
    if (column.kind != EElement::Column) continue;
    const TColumnParts& parts = column.text.Column();
    if (parts.type != "timestamp" || parts.null || parts.generated) continue;
    std::string text = column.text.Str();
    if (!parts.not_null) text += " NOT NULL";
    if (!parts.default_value && !parts.on_update)
      text += first ? " DEFAULT current_timestamp() ON UPDATE current_timestamp()" : " DEFAULT '0000-00-00 00:00:00'";
    column.text = std::move(text);
    first = false;
  }
}

// --- Keys

// In bytes (MySQL 8.4 Reference Manual, 17.21 InnoDB Limits, and 18.2 The MyISAM Storage Engine).
long long LongestKey(const TTableText& table) {
  constexpr long long kInnoDb = 3072;
  constexpr long long kOldFormat = 767;
  constexpr long long kMyIsam = 1000;
  const std::string engine = EngineOf(table);
  if (engine == "myisam") return kMyIsam;
  const TTableOption* format = table.FindOption("ROW_FORMAT");
  const bool old = format != nullptr && InList(LowerText(format->value), {"compact", "redundant"});
  return old ? kOldFormat : kInnoDb;
}

bool IsBlob(std::string_view type) { return SizedText(type) != nullptr || SizedBlob(type) != nullptr; }

// The bytes of the longest value, as far as keys ask for it; 0 for types that are never cut.
long long BytesOf(const TColumnText& column) {
  for (const TSizedType* row : {SizedText(column.type), SizedBlob(column.type)})
    if (row != nullptr) return row->bytes;
  if (!InList(column.type, {"char", "varchar", "binary", "varbinary"})) return 0;
  return column.Length().value_or(1) * LetterBytes(column.charset.charset).most;
}

std::string CutPart(const TKeyPart& part, const TColumnText& column, bool unique, long long longest) {
  const long long letter = column.HasLetters() ? LetterBytes(column.charset.charset).most : 1;
  const long long bytes = BytesOf(column);
  if (bytes == 0) return part.text;
  const bool blob = IsBlob(column.type);
  if (unique && part.length == 0) return part.text;
  // Deliberate: a long text may have as many letters in a key as it has bytes.
  const long long letters = blob ? bytes : bytes / letter;
  const long long length = std::min({part.length > 0 ? part.length : letters, letters, longest / letter});
  const std::vector<TToken> all = Tokens(part.text);
  const std::size_t after = TokenAt(all, 1).Is("(") ? AfterGroup(all, 1) : 1;
  const std::string rest = after + 1 < all.size() ? " " + TextOf(part.text, all, after, all.size() - 1) : "";
  const bool whole = !blob && length * letter >= bytes;
  return QuotedName(part.column) + (whole ? "" : Format("(%d)", length)) + rest;
}

void CutKey(TElement& key, const TTableText& table, const TCharset& charset, long long longest) {
  if (key.kind == EElement::FulltextKey || key.kind == EElement::SpatialKey) return;
  const TElementText text = key.text;
  const std::vector<TKeyPart>& parts = text.KeyParts();
  std::string list;
  for (const TKeyPart& part : parts) {
    const TElement* column = part.column.empty() ? nullptr : table.Find(EElement::Column, part.column);
    const bool unique = key.kind != EElement::Key;
    list += (list.empty() ? "" : ",") +
            (column == nullptr ? part.text : CutPart(part, ReadColumnText(column->text, charset), unique, longest));
  }
  if (parts.empty()) return;
  const TTokens tokens = text.Tokens();
  const std::size_t open = NextBracket(tokens, 0);
  const std::size_t start = tokens[open].End();
  const std::size_t size = tokens[AfterGroup(tokens, open) - 1].start - start;
  if (text.Str().compare(start, size, list) != 0) key.text = std::string(text.Str()).replace(start, size, list);
}

// The column's text without the tokens that `gone` marks, and `added` before its attributes' end: a check stays last.
std::string Rewritten(const TElementText& text, const std::vector<bool>& gone, const std::string& added) {
  const TTokens tokens = text.Tokens();
  std::string result;
  bool inserted = added.empty();
  for (std::size_t at = 0; at < tokens.size(); ++at) {
    if (!inserted && at > 1 && IsKeyword(tokens[at], "check")) {
      result += " " + added;
      inserted = true;
    }
    if (gone[at]) continue;
    const bool apart = at > 0 && (tokens[at].start > tokens[at - 1].End() || gone[at - 1]);
    result += (apart ? " " : "") + std::string(tokens[at].text);
  }
  return inserted ? result : result + " " + added;
}

}  // namespace

void SetColumnDefault(TElement& column, const std::string& value) {
  const TColumnParts& parts = column.text.Column();
  std::vector<bool> gone(column.text.Tokens().size(), false);
  if (parts.default_value)
    for (std::size_t at = parts.default_value->first - 1; at < parts.default_value->last; ++at) gone[at] = true;
  column.text = Rewritten(column.text, gone, value.empty() ? "" : "DEFAULT " + value);
}

void ConvertColumn(TElement& column, const TTableText& before, const std::vector<TTableOption>& options) {
  const TColumnText had = ReadColumnText(column.text, before);
  if (!had.HasLetters() || had.charset.charset == "binary") return;
  TTableText after;
  after.options = options;
  const TTokens tokens = column.text.Tokens();
  std::vector<bool> gone(tokens.size(), false);
  for (std::size_t at = 1; at < tokens.size(); ++at) {
    const bool set = IsKeyword(tokens[at], "character") && IsKeyword(TokenAt(tokens, at + 1), "set");
    if (!set && !IsKeyword(tokens[at], "charset") && !IsKeyword(tokens[at], "collate")) continue;
    std::size_t last = at + (set ? 3 : 2);
    if (TokenAt(tokens, last - 1).Is("=")) ++last;
    for (; at < std::min(last, tokens.size()); ++at) gone[at] = true;
    --at;
  }
  column.text = Rewritten(column.text, gone, "");
  const TSizedType* row = SizedText(had.type);
  if (row == nullptr) return;
  if (had.charset == TCharset()) RaiseError(Format(kNoCharset, before.name, column.name));
  const long long bytes =
      row->bytes / LetterBytes(had.charset.charset).most * LetterBytes(TableCharset(after).charset).most;
  for (const TSizedType& size : kSizedTypes) {
    if (bytes > size.bytes && size.text != "longtext") continue;
    if (bytes <= row->bytes) return;
    const TToken& type = column.text.Tokens()[1];
    column.text = std::string(column.text.Str()).replace(type.start, type.text.size(), size.text);
    return;
  }
}

void CompleteTable(TTableText& table, const TTableText* counterpart, const TServerTraits& server) {
  CompleteOptions(table, counterpart);
  const TCharset charset = TableCharset(table);
  std::optional<TElementFinder> others;
  if (counterpart != nullptr) others.emplace(*counterpart);
  for (TElement& element : table.elements) {
    if (element.kind != EElement::Column) continue;
    const TElement* there = others ? others->Find(EElement::Column, element.name) : nullptr;
    TColumnRewriter(element, charset).Complete(charset, there, server);
  }
  if (!server.explicit_timestamps) CompleteTimestamps(table);
  SettleTable(table);
  const long long longest = LongestKey(table);
  for (TElement& element : table.elements)
    if (IsKey(element.kind)) CutKey(element, table, charset, longest);
  if (counterpart != nullptr) AdoptExpressions(table, *counterpart);
}

}  // namespace velmora

// SPDX-License-Identifier: GPL-3.0-or-later
#include "mysqltext/ColumnParts.h"

#include <algorithm>
#include <array>

#include "mysqltext/Charsets.h"
#include "util/Text.h"

namespace velmora {

namespace {

struct TSynonym {
  std::string_view written;
  std::string_view type;
};
constexpr std::array<TSynonym, 20> kSynonyms = {{{"bool", "tinyint"},         {"boolean", "tinyint"},
                                                 {"character", "char"},       {"dec", "decimal"},
                                                 {"fixed", "decimal"},        {"float4", "float"},
                                                 {"float8", "double"},        {"geomcollection", "geometrycollection"},
                                                 {"int1", "tinyint"},         {"int2", "smallint"},
                                                 {"int3", "mediumint"},       {"int4", "int"},
                                                 {"int8", "bigint"},          {"integer", "int"},
                                                 {"long", "mediumtext"},      {"middleint", "mediumint"},
                                                 {"numeric", "decimal"},      {"real", "double"},
                                                 {"varcharacter", "varchar"}, {"varchar2", "varchar"}}};

class TColumnReader {
 public:
  explicit TColumnReader(TTokens tokens) : tokens_(tokens) {}
  TColumnParts Read();

 private:
  void ReadType();
  void ReadAttribute();
  bool ReadFlag();
  bool ReadCharset();
  bool ReadValue();
  bool ReadGenerated();
  void ReadReferences();
  void ReadRest();
  TTokenRange ReadExpression();
  TTokenRange ReadBracketed();
  void AfterEquals() {
    if (Now().Is("=")) ++at_;
  }

  const TToken& Now() const { return TokenAt(tokens_, at_); }
  bool Are(std::string_view first, std::string_view second) const {
    return IsKeyword(Now(), first) && IsKeyword(TokenAt(tokens_, at_ + 1), second);
  }
  bool Take(std::string_view word);
  bool Take(std::string_view first, std::string_view second);

  TTokens tokens_;
  std::size_t at_ = 0;
  TColumnParts parts_;
};

bool TColumnReader::Take(std::string_view word) {
  if (!IsKeyword(Now(), word)) return false;
  ++at_;
  return true;
}

bool TColumnReader::Take(std::string_view first, std::string_view second) {
  if (!Are(first, second)) return false;
  at_ += 2;
  return true;
}

TColumnParts TColumnReader::Read() {
  parts_.name = NameOf(Now());
  ++at_;
  ReadType();
  while (at_ < tokens_.size()) ReadAttribute();
  if (parts_.zerofill) parts_.is_unsigned = true;
  return std::move(parts_);
}

void TColumnReader::ReadType() {
  if (Take("national")) parts_.charset = CharsetName("utf8");
  const std::string written = LowerText(Now().text);
  parts_.type = written;
  ++at_;
  for (const TSynonym& row : kSynonyms)
    if (written == row.written) parts_.type = row.type;
  parts_.is_boolean = InList(written, {"bool", "boolean"});
  if (parts_.type == "double") Take("precision");
  if (parts_.type == "char" && Take("varying")) parts_.type = "varchar";
  if (written == "long" && Take("varbinary")) parts_.type = "mediumblob";
  if (written == "long") Take("varchar");
  if (Now().Is("(")) parts_.arguments = ReadBracketed();
}

// What stands between the bracket here and the one that closes it.
TTokenRange TColumnReader::ReadBracketed() {
  const std::size_t open = at_;
  at_ = AfterGroup(tokens_, open);
  return {open + 1, std::max(at_ - 1, open + 1)};
}

void TColumnReader::ReadAttribute() {
  if (!ReadFlag() && !ReadCharset() && !ReadValue() && !ReadGenerated()) ReadRest();
}

bool TColumnReader::ReadFlag() {
  if (Take("unsigned")) return parts_.is_unsigned = true;
  if (Take("signed") || Take("visible")) return true;
  if (Take("zerofill")) return parts_.zerofill = true;
  if (Take("not", "null")) return parts_.not_null = true;
  if (Take("null")) return parts_.null = true;
  if (Take("auto_increment")) return parts_.auto_increment = true;
  if (Take("invisible")) return parts_.invisible = true;
  return false;
}

bool TColumnReader::ReadCharset() {
  const bool charset = Take("character", "set") || Take("charset");
  if (!charset && !Take("collate")) return false;
  AfterEquals();
  const TToken& token = Now();
  const std::string value = token.kind == EToken::String ? ValueOf(token) : NameOf(token);
  if (charset)
    parts_.charset = CharsetName(value);
  else
    parts_.collation = CollationName(value);
  ++at_;
  return true;
}

bool TColumnReader::ReadValue() {
  if (Take("default")) {
    parts_.default_value = ReadExpression();
    return true;
  }
  if (Take("on", "update")) {
    parts_.on_update = ReadExpression();
    return true;
  }
  if (IsKeyword(Now(), "comment") && TokenAt(tokens_, at_ + 1).kind == EToken::String) {
    parts_.comment = at_ + 1;
    at_ += 2;
    return true;
  }
  if (!IsKeyword(Now(), "check") || !TokenAt(tokens_, at_ + 1).Is("(")) return false;
  ++at_;
  parts_.check = ReadBracketed();
  return true;
}

bool TColumnReader::ReadGenerated() {
  const std::size_t start = at_;
  Take("generated", "always");
  if (Take("as") && Now().Is("(")) {
    parts_.generated = ReadBracketed();
    return true;
  }
  at_ = start;
  if (!parts_.generated) return false;
  if (Take("stored") || Take("persistent")) return parts_.stored = true;
  return Take("virtual");
}

// A value as servers print one: with a sign, in brackets, a word or a call, a text after a word (date'...'), texts in
// a row.
TTokenRange TColumnReader::ReadExpression() {
  const std::size_t first = at_;
  if (Now().Is("-") || Now().Is("+")) ++at_;
  const EToken kind = Now().kind;
  at_ = AfterValue(tokens_, at_);
  if (kind == EToken::Word || kind == EToken::String)
    while (Now().kind == EToken::String) ++at_;
  if (kind == EToken::Word && Now().Is("(")) at_ = AfterGroup(tokens_, at_);
  at_ = std::min(at_, tokens_.size());
  return {std::min(first, at_), at_};
}

// Inline foreign keys: their rules must not be taken for the column's "on update".
void TColumnReader::ReadReferences() {
  const auto rule = [&] {
    if (Take("match")) return true;
    return Take("on", "update") || Take("on", "delete");
  };
  ++at_;
  while (IsName(Now()) || Now().Is(".")) ++at_;
  if (Now().Is("(")) at_ = AfterGroup(tokens_, at_);
  while (rule())
    if (!Take("set", "null") && !Take("set", "default") && !Take("no", "action")) ++at_;
  at_ = std::min(at_, tokens_.size());
}

void TColumnReader::ReadRest() {
  const std::size_t first = at_;
  if (IsKeyword(Now(), "references")) {
    ReadReferences();
  } else {
    at_ = AfterValue(tokens_, at_);
    if (Now().Is("=")) at_ = std::min(AfterValue(tokens_, at_ + 1), tokens_.size());
  }
  parts_.rest.push_back({first, at_});
}

}  // namespace

TColumnParts ReadColumnParts(TTokens tokens) { return TColumnReader(tokens).Read(); }

bool IsByteType(std::string_view type) {
  return InList(type, {"binary", "varbinary", "tinyblob", "blob", "mediumblob", "longblob"});
}

bool IsLetterType(std::string_view type) {
  return InList(type, {"char", "varchar", "tinytext", "text", "mediumtext", "longtext", "enum", "set"});
}

bool IsWholeType(std::string_view type) { return InList(type, {"tinyint", "smallint", "mediumint", "int", "bigint"}); }

bool IsNumberType(std::string_view type) { return IsWholeType(type) || InList(type, {"decimal", "float", "double"}); }

bool IsTimeType(std::string_view type) { return InList(type, {"time", "datetime", "timestamp"}); }

bool IsShapeType(std::string_view type) {
  return InList(type, {"geometry", "point", "linestring", "polygon", "multipoint", "multilinestring", "multipolygon",
                       "geometrycollection"});
}

}  // namespace velmora

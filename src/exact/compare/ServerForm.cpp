// SPDX-License-Identifier: GPL-3.0-or-later
#include "exact/compare/ServerForm.h"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

#include "exact/compare/CanonicalForm.h"
#include "mysqltext/ColumnParts.h"
#include "mysqltext/ElementText.h"
#include "mysqltext/KeyText.h"
#include "mysqltext/Lexer.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Lists.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kLineEndInName[] = "line %d: the name %s holds a line end, which no script can carry";

using TElements = std::vector<TElement>;

// --- Texts

// A backslash before a raw line end means that end.
std::string EscapedLineEnds(std::string_view text) {
  std::string result;
  for (std::size_t at = 0; at < text.size(); ++at) {
    const bool escape = text[at] == '\\' && at + 1 < text.size();
    const char c = escape ? text[at + 1] : text[at];
    if (c == '\n' || c == '\r')
      result += c == '\n' ? "\\n" : "\\r";
    else
      result.append(text.substr(at, escape ? 2 : 1));
    if (escape) ++at;
  }
  return result;
}

// The tokens that `kept` marks, one blank where anything stood between them, and `added` before the place.
std::string Joined(std::string_view text, TTokens tokens, const std::vector<bool>& kept, std::size_t place = 0,
                   std::string_view added = {}) {
  std::string result;
  const auto add = [&result](std::string_view part, bool apart) {
    if (apart && !result.empty() && result.back() != ' ') result += ' ';
    result += part;
  };
  for (std::size_t at = 0; at <= tokens.size(); ++at) {
    const bool inserts = at == place && !added.empty();
    if (inserts) add(added, true);
    if (at == tokens.size()) break;
    const bool apart = at > 0 && tokens[at].start > tokens[at - 1].End();
    if (kept[at])
      add(text.substr(tokens[at].start, tokens[at].text.size()), apart || inserts || (at > 0 && !kept[at - 1]));
  }
  return result;
}

void Leave(std::vector<bool>& kept, TTokenRange range) {
  for (std::size_t at = range.first; at < range.last && at < kept.size(); ++at) kept[at] = false;
}

// --- Columns

// A column as it was when this was made: it may be given another text.
struct TColumn {
  explicit TColumn(const TElement& column) : text(column.text), tokens(text.Tokens()), parts(text.Column()) {}
  TColumn(const TColumn&) = delete;
  TColumn& operator=(const TColumn&) = delete;

  const TElementText text;
  const TTokens tokens;
  const TColumnParts& parts;

  std::vector<bool> All() const { return std::vector<bool>(tokens.size(), true); }
  std::string Without(const std::vector<bool>& kept, std::size_t place = 0, std::string_view added = {}) const {
    return Joined(text.Str(), tokens, kept, place, added);
  }
};

// Where attributes begin after type, sign and character set.
std::size_t AfterType(TTokens tokens) {
  static constexpr std::array<std::string_view, 25> kAttributes = {
      {"not",       "null",   "default",    "auto_increment", "comment", "on",      "check",     "unique",
       "primary",   "key",    "references", "generated",      "as",      "visible", "invisible", "constraint",
       "virtual",   "stored", "persistent", "column_format",  "storage", "without", "with",      "ref_system_id",
       "compressed"}};
  std::size_t at = 2;
  while (at < tokens.size()) {
    if (std::any_of(kAttributes.begin(), kAttributes.end(), [&](auto word) { return IsKeyword(tokens[at], word); }))
      break;
    at = AfterValue(tokens, at);
  }
  return std::min(at, tokens.size());
}

std::string KeyOf(std::string_view words, const std::string& column) {
  return std::string(words) + " (" + QuotedName(column) + ")";
}

// Reads what the rest of a column says of keys.
class TInlineReader {
 public:
  TInlineReader(const TColumn& column, const TServerTraits& server) : column_(column), server_(server) {}

  TElements Read() {
    for (at_ = 2; at_ < column_.tokens.size();) ReadOne();
    if (server_.mysql && column_.parts.check) TakeCheck();
    return std::move(found_);
  }
  std::vector<bool> kept{};

 private:
  bool Is(std::size_t at, std::string_view word) const { return IsKeyword(TokenAt(column_.tokens, at), word); }

  void Take(EElement kind, std::string_view words, std::size_t count) {
    const std::string& name = column_.parts.name;
    found_.push_back({kind, kind == EElement::PrimaryKey ? "PRIMARY" : "", KeyOf(words, name)});
    Leave(kept, {at_, at_ + count});
    at_ += count;
  }

  void ReadOne() {
    if (Is(at_, "primary")) return Take(EElement::PrimaryKey, "PRIMARY KEY", Is(at_ + 1, "key") ? 2 : 1);
    if (Is(at_, "unique")) return Take(EElement::UniqueKey, "UNIQUE KEY", Is(at_ + 1, "key") ? 2 : 1);
    if (Is(at_, "key")) return Take(EElement::PrimaryKey, "PRIMARY KEY", 1);
    if (Is(at_, "comment") || Is(at_, "default")) return PassValue();
    if (Is(at_, "references")) return TakeReferences();
    at_ = AfterValue(column_.tokens, at_);
  }

  void PassValue() {
    ++at_;
    if (at_ < column_.tokens.size()) at_ = AfterValue(column_.tokens, at_);
  }

  void TakeReferences() {
    const auto range = std::find_if(column_.parts.rest.begin(), column_.parts.rest.end(),
                                    [this](TTokenRange rest) { return rest.first == at_; });
    if (range == column_.parts.rest.end()) {
      ++at_;
      return;
    }
    if (server_.inline_references)
      found_.push_back(
          {EElement::ForeignKey, "", KeyOf("FOREIGN KEY", column_.parts.name) + " " + column_.text.Part(*range)});
    Leave(kept, *range);
    at_ = range->last;
  }

  void TakeCheck() {
    const TTokenRange inner = *column_.parts.check;
    TTokenRange whole{inner.first - 2, inner.last + 1};
    std::string name;
    if (whole.first >= 2 && IsKeyword(column_.tokens[whole.first - 2], "constraint")) {
      name = NameOf(column_.tokens[whole.first - 1]);
      whole.first -= 2;
    }
    const std::string head = name.empty() ? "" : "CONSTRAINT " + QuotedName(name) + " ";
    found_.push_back({EElement::Check, name, head + "CHECK (" + column_.text.Part(inner) + ")"});
    Leave(kept, whole);
  }

  const TColumn& column_;
  const TServerTraits& server_;
  std::size_t at_ = 0;
  TElements found_;
};

// serial [default value]
bool ExpandSerial(TElement& column) {
  const TColumn read(column);
  const bool type = read.parts.type == "serial";
  const auto& value = read.parts.default_value;
  const bool by_default = value && IsKeyword(TokenAt(read.tokens, value->first), "value");
  if (!type && !by_default) return false;
  std::vector<bool> kept = read.All();
  if (type) kept[1] = false;
  if (by_default) Leave(kept, {value->first - 1, value->last});
  if (read.parts.auto_increment || read.parts.not_null)
    for (std::size_t at = 2; at < kept.size(); ++at)
      if (IsKeyword(read.tokens[at], "not") || IsKeyword(read.tokens[at], "null") ||
          IsKeyword(read.tokens[at], "auto_increment"))
        kept[at] = false;
  const std::size_t place = type ? 2 : AfterType(read.tokens);
  column.text =
      read.Without(kept, place, type ? "bigint(20) unsigned NOT NULL AUTO_INCREMENT" : "NOT NULL AUTO_INCREMENT");
  return true;
}

// Whether there may be something to take out: the most columns say nothing of keys.
bool MayHoldElements(const TElementText& column, const TServerTraits& server) {
  const TColumnParts& parts = column.Column();
  if (!parts.rest.empty() || (server.mysql && parts.check) || parts.type == "serial") return true;
  return parts.default_value && IsKeyword(TokenAt(column.Tokens(), parts.default_value->first), "value");
}

// "not null", whatever was said before.
void SetNotNull(TElement& column) {
  const TColumn read(column);
  if (read.parts.not_null || read.parts.generated) return;
  std::vector<bool> kept = read.All();
  for (std::size_t at = 2; at < kept.size(); ++at) {
    if (!IsKeyword(read.tokens[at], "null")) continue;
    kept[at] = false;
    if (IsKeyword(read.tokens[at - 1], "default")) kept[at - 1] = false;
  }
  column.text = read.Without(kept, AfterType(read.tokens), "NOT NULL");
}

// --- Keys and constraints

std::string BodyOf(const TElement& element) {
  return element.text.Part({element.text.Body(), element.text.Tokens().size()});
}

std::string_view KeyWords(const TElement& key) {
  switch (key.kind) {
    case EElement::PrimaryKey:
      return "PRIMARY KEY";
    case EElement::UniqueKey:
      return "UNIQUE KEY";
    case EElement::FulltextKey:
      return "FULLTEXT KEY";
    case EElement::SpatialKey:
      return "SPATIAL KEY";
    default:
      return SameText(key.text.Str().substr(0, 6), "vector") ? "VECTOR KEY" : "KEY";
  }
}

// What was read of a text that comes out the same is kept.
void SetText(TElement& element, std::string text) {
  if (element.text.Str() != text) element.text = std::move(text);
}

void NameKey(TElement& key, std::string name) {
  const std::string head = key.kind == EElement::PrimaryKey ? "" : QuotedName(name) + " ";
  SetText(key, std::string(KeyWords(key)) + " " + head + BodyOf(key));
  key.name = std::move(name);
}

// A foreign key's text as servers print it; rules stand as they are written, but "match".
std::string ForeignKeyText(const std::string& name, const TForeignKeyParts& parts, const std::string& rules) {
  const auto list = [](const std::vector<std::string>& columns) {
    std::string text;
    for (const std::string& column : columns) text += (text.empty() ? "" : ", ") + QuotedName(column);
    return "(" + text + ")";
  };
  std::string text = name.empty() ? "" : "CONSTRAINT " + QuotedName(name) + " ";
  text += "FOREIGN KEY " + list(parts.columns) + " REFERENCES ";
  if (!parts.database.empty()) text += QuotedName(parts.database) + ".";
  return text + QuotedName(parts.table) + " " + list(parts.references) + rules;
}

struct TReadForeignKey {
  TForeignKeyParts parts;
  std::string rules;  // with a blank before, or empty
};

TReadForeignKey ReadForeignKey(const TElement& key) {
  const TTokens tokens = key.text.Tokens();
  TReadForeignKey result{key.text.ForeignKey(), ""};
  const std::size_t rules = result.parts.rules + (IsKeyword(TokenAt(tokens, result.parts.rules), "match") ? 2 : 0);
  if (rules < tokens.size()) result.rules = " " + key.text.Part({rules, tokens.size()});
  return result;
}

void WriteForeignKey(TElement& key, const TReadForeignKey& read) {
  SetText(key, ForeignKeyText(key.name, read.parts, read.rules));
}

bool HoldsForeignKeys(const std::string& engine) {
  return engine.empty() || InList(engine, {"innodb", "ndb", "ndbcluster", "pbxt"});
}

// Whether the parts of the key begin with those of a foreign key's own, in order.
bool Serves(const TElement& key, const TElement& made) {
  const std::vector<TKeyPart>& parts = key.text.KeyParts();
  const std::vector<TKeyPart>& wanted = made.text.KeyParts();
  return parts.size() >= wanted.size() && std::equal(wanted.begin(), wanted.end(), parts.begin(), [](auto& a, auto& b) {
           return !a.column.empty() && SameText(a.column, b.column) && a.length == b.length;
         });
}

// Keys that foreign keys have brought along go where others serve, as they come. Gives where those begin then that
// stood at `first_new`.
std::size_t DropServedKeys(TElements& elements, std::size_t first_new) {
  std::vector<bool> gone(elements.size(), false);
  for (std::size_t at = 0; at < elements.size(); ++at) {
    const TElement& key = elements[at];
    if (!IsKey(key.kind)) continue;
    for (std::size_t before = 0; before < at; ++before) {
      const TElement& other = elements[before];
      if (gone[before] || !IsKey(other.kind) || (!key.generated && !other.generated)) continue;
      const std::size_t parts = key.text.KeyParts().size();
      const std::size_t others = other.text.KeyParts().size();
      const bool key_is_shorter = key.generated && (!other.generated || parts <= others);
      if (!Serves(key_is_shorter ? other : key, key_is_shorter ? key : other)) continue;
      // Of two that were brought along the longer one stays, and of equal ones the later.
      const bool drop_this = !other.generated || (key.generated && parts < others);
      gone[drop_this ? at : before] = true;
      break;
    }
  }
  const auto old_gone = std::count(gone.begin(), gone.begin() + static_cast<std::ptrdiff_t>(first_new), true);
  TElements left;
  for (std::size_t at = 0; at < elements.size(); ++at)
    if (!gone[at]) left.push_back(std::move(elements[at]));
  elements = std::move(left);
  return first_new - static_cast<std::size_t>(old_gone);
}

// name, or name_2, name_3, ...: the first that no key before `end` has.
std::string FreshKeyName(const TElements& elements, std::size_t end, const std::string& column) {
  const auto taken = [&](const std::string& name) {
    return std::any_of(elements.begin(), elements.begin() + static_cast<std::ptrdiff_t>(end),
                       [&](const TElement& other) { return IsKey(other.kind) && SameText(other.name, name); });
  };
  if (!SameText(column, "PRIMARY") && !taken(column)) return column;
  for (int number = 2;; ++number)
    if (std::string name = Format("%s_%d", column, number); !taken(name)) return name;
}

void NameKeys(TElements& elements, std::size_t first_new) {
  for (std::size_t at = first_new; at < elements.size(); ++at) {
    TElement& key = elements[at];
    if (!IsKey(key.kind)) continue;
    if (key.kind == EElement::PrimaryKey) {
      NameKey(key, "PRIMARY");
      continue;
    }
    const std::vector<std::string> columns = KeyColumns(key);
    const std::string column = columns.empty() || columns[0].empty() ? "functional_index" : columns[0];
    NameKey(key, key.name.empty() ? FreshKeyName(elements, at, column) : key.name);
  }
}

// constraint n foreign key i (a): MariaDB takes the name i for the constraint where n is missing, MySQL does not.
bool IsNamedConstraint(const TElement& element) {
  const TTokens tokens = element.text.Tokens();
  return IsKeyword(TokenAt(tokens, 0), "constraint") && !IsKeyword(TokenAt(tokens, 1), "foreign");
}

constexpr std::string_view kForeignMark = "_ibfk_";
constexpr std::string_view kCheckMark = "_chk_";

// The number in a name that servers make of the table's; 0 for others.
long long MadeNumber(std::string_view name, std::string_view table, std::string_view mark) {
  if (name.size() <= table.size() + mark.size() || name.substr(0, table.size()) != table) return 0;
  if (name.substr(table.size(), mark.size()) != mark) return 0;
  return TryStrToInt(std::string(name.substr(table.size() + mark.size()))).value_or(0);
}

void NameForeignKeys(TElements& elements, bool first, const TTableText& table) {
  long long number = 0;
  if (!first)
    for (const TElement& element : elements)
      if (element.kind == EElement::ForeignKey)
        number = std::max(number, MadeNumber(element.name, table.name, kForeignMark));
  for (TElement& element : elements) {
    if (element.kind != EElement::ForeignKey) continue;
    TReadForeignKey read = ReadForeignKey(element);
    if (read.parts.references.empty()) read.parts.references = read.parts.columns;
    if (element.name.empty()) element.name = Format("%s%s%d", table.name, kForeignMark, ++number);
    WriteForeignKey(element, read);
  }
}

void NameCheck(TElement& check, std::string name) {
  check.text = "CONSTRAINT " + QuotedName(name) + " CHECK " + BodyOf(check);
  check.name = std::move(name);
}

// MySQL goes on from the highest number, MariaDB takes the lowest that is free.
void NameChecks(TElements& elements, bool first, const TServerTraits& server, const TTableText& table) {
  long long number = 0;
  if (server.mysql && !first)
    for (const TElement& element : elements)
      if (element.kind == EElement::Check) number = std::max(number, MadeNumber(element.name, table.name, kCheckMark));
  for (TElement& element : elements) {
    if (element.kind != EElement::Check || !element.name.empty()) continue;
    std::string name;
    do name = server.mysql ? Format("%s%s%d", table.name, kCheckMark, ++number) : Format("CONSTRAINT_%d", ++number);
    while (std::any_of(elements.begin(), elements.end(), [&name](const TElement& other) {
      return other.kind == EElement::Check && SameText(other.name, name);
    }));
    NameCheck(element, std::move(name));
  }
}

// Where an element's text may name columns, in order: the parts of a key, and what stands in expressions and is no
// call.
// Reserved words of expressions: a column of such a name stands in backticks.
bool IsReserved(const TToken& token) {
  static const TStringList kWords = {"and",     "as",       "between",  "binary", "both",    "case",    "char",
                                     "collate", "convert",  "div",      "else",   "exists",  "false",   "for",
                                     "from",    "in",       "interval", "is",     "leading", "like",    "mod",
                                     "not",     "null",     "or",       "regexp", "rlike",   "then",    "trailing",
                                     "true",    "unsigned", "using",    "when",   "xor",     "zerofill"};
  return token.kind == EToken::Word && IndexOf(kWords, token.text) != kNotInList;
}

std::vector<std::size_t> ColumnPlaces(const TElement& element) {
  const TTokens tokens = element.text.Tokens();
  std::vector<TTokenRange> ranges;
  if (element.kind == EElement::Check) ranges = {{2, tokens.size()}};
  if (element.kind == EElement::Column) {
    const TColumnParts& parts = element.text.Column();
    for (const auto& range : {parts.default_value, parts.generated, parts.check})
      if (range) ranges.push_back(*range);
  }
  if (IsKey(element.kind))
    for (const TTokenRange part : ListParts(tokens, NextBracket(tokens, 0)))
      ranges.push_back({part.first, IsName(TokenAt(tokens, part.first)) ? part.first + 1 : part.last});
  std::vector<std::size_t> places;
  for (const TTokenRange& range : ranges) {
    const bool part = IsKey(element.kind) && range.last == range.first + 1;  // a length may follow
    for (std::size_t at = range.first; at < std::min(range.last, tokens.size()); ++at)
      if (IsName(tokens[at]) && !IsReserved(tokens[at]) && (part || !TokenAt(tokens, at + 1).Is("(")) &&
          !TokenAt(tokens, at + 1).Is("."))
        places.push_back(at);
  }
  std::sort(places.begin(), places.end());
  return places;
}

TElement* FindColumn(TTableText& table, std::string_view name) {
  for (TElement& element : table.elements)
    if (element.kind == EElement::Column && SameText(element.name, name)) return &element;
  return nullptr;
}

bool HoldsRawLineEnd(const TToken& token) {
  const bool quoted = token.kind == EToken::Name || token.kind == EToken::String;
  constexpr std::size_t kNone = std::string_view::npos;
  return quoted && (token.text.find('\n') != kNone || token.text.find('\r') != kNone);
}

}  // namespace

std::string WithoutRawLineEnds(std::string_view statement) {
  std::string result;
  std::size_t done = 0;
  for (const TToken& token : Tokens(statement)) {
    if (!HoldsRawLineEnd(token)) continue;
    if (token.kind == EToken::Name)
      RaiseError(Format(kLineEndInName, LineOf(statement, token.start), EscapedLineEnds(token.text)));
    result += statement.substr(done, token.start - done);
    result += EscapedLineEnds(token.text);
    done = token.End();
  }
  return result += statement.substr(done);
}

TTableText ReadTableWithoutRawLineEnds(std::string_view statement, TTokens tokens) {
  const bool plain = std::none_of(tokens.begin(), tokens.end(), HoldsRawLineEnd);
  return plain ? ReadTableText(statement, tokens) : ReadTableText(WithoutRawLineEnds(statement));
}

std::vector<TElement> TakeInlineElements(TElement& column, const TServerTraits& server) {
  if (!MayHoldElements(column.text, server)) return {};
  const bool serial = ExpandSerial(column);
  const TColumn read(column);
  TInlineReader reader(read, server);
  reader.kept = read.All();
  TElements found = reader.Read();
  if (!found.empty() || std::find(reader.kept.begin(), reader.kept.end(), false) != reader.kept.end())
    column.text = read.Without(reader.kept);
  if (serial) found.insert(found.begin(), {EElement::UniqueKey, "", KeyOf("UNIQUE KEY", column.name)});
  return found;
}

void AddElements(std::vector<TElement> added, bool first, const TServerTraits& server, TTableText& table) {
  TElements others;
  TElements columns;
  others.reserve(table.elements.size() + 2 * added.size());  // a foreign key brings one along
  columns.reserve(table.elements.size());
  for (TElement& element : table.elements)
    (element.kind == EElement::Column ? columns : others).push_back(std::move(element));
  const std::size_t first_new = others.size();
  for (TElement& element : added) {
    if (element.kind == EElement::ForeignKey) {
      const TForeignKeyParts& parts = element.text.ForeignKey();
      std::string list;
      for (const std::string& column : parts.columns) list += (list.empty() ? "" : ",") + QuotedName(column);
      others.push_back({EElement::Key, element.name, "KEY (" + list + ")", true});
      if (server.mysql && !IsNamedConstraint(element)) element.name.clear();
    }
    others.push_back(std::move(element));
  }
  NameKeys(others, DropServedKeys(others, first_new));
  NameForeignKeys(others, first, table);
  NameChecks(others, first, server, table);
  table.elements = std::move(columns);
  std::move(others.begin(), others.end(), std::back_inserter(table.elements));
}

void SettleTable(TTableText& table) {
  if (!HoldsForeignKeys(EngineOf(table)))
    std::erase_if(table.elements, [](const TElement& element) { return element.kind == EElement::ForeignKey; });
  for (const TElement& key : table.elements) {
    if (key.kind != EElement::PrimaryKey) continue;
    for (const std::string& name : KeyColumns(key))
      if (TElement* column = FindColumn(table, name)) SetNotNull(*column);
  }
  for (TElement& element : table.elements)
    if (element.kind == EElement::Column && element.text.Column().auto_increment) SetNotNull(element);
}

void MoveReferences(TElement& foreign_key, std::string_view from, std::string_view to) {
  TReadForeignKey read = ReadForeignKey(foreign_key);
  if (!read.parts.database.empty() || read.parts.table != from) return;
  read.parts.table = to;
  WriteForeignKey(foreign_key, read);
}

void LeaveDatabase(TElement& foreign_key, std::string_view database) {
  TReadForeignKey read = ReadForeignKey(foreign_key);
  if (read.parts.database.empty() || read.parts.database != database) return;
  read.parts.database.clear();
  WriteForeignKey(foreign_key, read);
}

void MoveMadeNames(TTableText& table, std::string_view from, const TServerTraits& server) {
  for (TElement& element : table.elements) {
    if (server.mysql && element.kind == EElement::Check && MadeNumber(element.name, from, kCheckMark) > 0)
      NameCheck(element, table.name + element.name.substr(from.size()));
    if (element.kind != EElement::ForeignKey || MadeNumber(element.name, from, kForeignMark) == 0) continue;
    element.name = table.name + element.name.substr(from.size());
    WriteForeignKey(element, ReadForeignKey(element));
  }
}

void RenameColumnIn(TElement& element, std::string_view from, std::string_view to) {
  if (element.kind == EElement::ForeignKey) {
    TReadForeignKey read = ReadForeignKey(element);
    for (std::string& column : read.parts.columns)
      if (SameText(column, from)) column = to;
    return WriteForeignKey(element, read);
  }
  const std::string& written = element.text.Str();
  const TTokens tokens = element.text.Tokens();
  std::string text;
  std::size_t done = 0;
  for (const std::size_t at : ColumnPlaces(element)) {
    if (!SameText(NameOf(tokens[at]), from)) continue;
    text += written.substr(done, tokens[at].start - done) + QuotedName(to);
    done = tokens[at].End();
  }
  if (done > 0) element.text = text + written.substr(done);
}

void RenameReferenced(TElement& foreign_key, std::string_view from, std::string_view to) {
  TReadForeignKey read = ReadForeignKey(foreign_key);
  for (std::string& column : read.parts.references)
    if (SameText(column, from)) column = to;
  WriteForeignKey(foreign_key, read);
}

void MakeNamesAnew(TTableText& table, const TServerTraits& server) {
  if (!server.mysql) return;
  const auto checks = std::stable_partition(table.elements.begin(), table.elements.end(),
                                            [](const TElement& element) { return element.kind != EElement::Check; });
  std::sort(checks, table.elements.end(), [](const TElement& a, const TElement& b) { return a.name < b.name; });
  std::for_each(checks, table.elements.end(), [](TElement& check) { check.name.clear(); });
  AddElements({}, true, server, table);
}

void RenameKey(TElement& key, const std::string& name) { NameKey(key, name); }

void RenameColumn(TElement& column, const std::string& name) {
  column.text = QuotedName(name) + column.text.Str().substr(column.text.Tokens()[0].End());
  column.name = name;
}

}  // namespace velmora

// SPDX-License-Identifier: GPL-3.0-or-later
#include "exact/compare/ServerLanguage.h"

#include <algorithm>
#include <array>
#include <map>
#include <optional>
#include <utility>

#include "exact/compare/CanonicalForm.h"
#include "exact/compare/ExpressionForm.h"
#include "exact/compare/MySqlLimits.h"
#include "exact/compare/ServerFunctions.h"
#include "mysqltext/ColumnParts.h"
#include "mysqltext/ColumnType.h"
#include "mysqltext/ElementText.h"
#include "mysqltext/KeyText.h"
#include "mysqltext/ServerVersion.h"
#include "mysqltext/TableOptions.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kTwice[] = "check %s, a name that a check of table %s has, too, which MySQL does not take";
constexpr char kToVirtual[] = "foreign key %s, to a virtual column of table %s";
constexpr char kNotUnique[] = "foreign key %s, to columns that no unique key of table %s consists of";

// --- What there is, and since when
//
// Of versions that were not reached their manuals say it. MySQL 8.0 Reference Manual: 10.3.12 Invisible
// Indexes, 10.3.13 Descending Indexes, 12.10.1 Unicode Character Sets, 13.4.1 Spatial Data Types, 13.6 Data Type
// Default Values, 14.17 JSON Functions, 15.1.15 CREATE INDEX Statement, 15.1.20 CREATE TABLE Statement (15.1.20.6 CHECK
// Constraints, 15.1.20.8 CREATE TABLE and Generated Columns, 15.1.20.10 Invisible Columns), 26.6.2 Partitioning
// Limitations Relating to Storage Engines; MySQL 5.7 Reference Manual, 11.5 The JSON Data Type; MySQL 9.0 Reference
// Manual, 13.3.5 The VECTOR Type. MariaDB Server Documentation: CREATE TABLE, Generated Columns, Invisible Columns,
// Ignored Indexes, System-Versioned Tables, Application-Time Periods, Storage-Engine Independent Column Compression,
// and the pages of the types.

constexpr int kNever = 0;
constexpr int kAlways = 1;

struct TFeature {
  std::string_view name;
  int mysql = kAlways;
  int mariadb = kAlways;
};

bool Has(const TServerTraits& server, const TFeature& feature) {
  const int since = server.mysql ? feature.mysql : feature.mariadb;
  return since != kNever && (server.version == 0 || server.version >= since);
}

template <std::size_t N>
const TFeature* Find(const std::array<TFeature, N>& rows, std::string_view name) {
  const auto row =
      std::find_if(rows.begin(), rows.end(), [name](const TFeature& feature) { return SameText(feature.name, name); });
  return row == rows.end() ? nullptr : &*row;
}

// Of types that not every server has; the others are everywhere.
constexpr std::array<TFeature, 6> kTypes = {{{"json", 50708, 100207},
                                             {"uuid", kNever, 100700},
                                             {"inet4", kNever, 101000},
                                             {"inet6", kNever, 100500},
                                             {"vector", 90000, 110701},
                                             {"xmltype", kNever, 120300}}};

constexpr TFeature kGenerated = {"generated columns", 50706, 50200};
constexpr TFeature kGeneratedNotNull = {"generated columns that are not null", 50706, kNever};
constexpr TFeature kInvisible = {"invisible columns", 80023, 100303};
constexpr TFeature kInvisibleNotNull = {"invisible columns that are not null and have no default", 80023, kNever};
constexpr TFeature kComputedDefault = {"computed defaults", 80013, 100201};
constexpr TFeature kChecks = {"checks", 80016, 100201};
constexpr TFeature kNotEnforced = {"checks that are not enforced", 80016, kNever};
constexpr TFeature kPeriod = {"periods", kNever, 100403};
constexpr TFeature kExpressionKey = {"keys over expressions", 80013, kNever};
constexpr TFeature kDescending = {"descending keys", 80000, 100801};
constexpr TFeature kParser = {"fulltext parsers", 50703, kNever};
constexpr TFeature kVectorKey = {"vector keys", kNever, 110701};
constexpr TFeature kLongUnique = {"unique keys over whole long columns", kNever, 100400};
constexpr TFeature kDefaultPartition = {"default partitions", kNever, 100202};
constexpr TFeature kSystemTime = {"partitions by system time", kNever, 100304};
constexpr TFeature kPartitionedEngine = {"partitions of this engine", 50100, kAlways};
// As far as was measured: in 10.11.19 and 11.8.6, not in 10.5.23.
constexpr TFeature kPrintedWide = {"computed defaults of wide character sets, so that it prints them", kAlways, 101100};
constexpr TFeature kPrintedLetters = {"letters of four bytes in expressions, so that it prints them", kAlways, 101100};
constexpr TFeature kPartitionedShapes = {"shapes in partitions", kNever, 110800};
constexpr TFeature kOldCollations = {"collations of Unicode 9.0", 80001, kNever};

// Attributes of columns and keys by their first word.
constexpr std::array<TFeature, 11> kAttributes = {{{"COMPRESSED", kNever, 100302},
                                                   {"SRID", 80003, kNever},
                                                   {"REF_SYSTEM_ID", kNever, 100101},
                                                   {"COLUMN_FORMAT", 50100, kNever},
                                                   {"STORAGE", 50100, kNever},
                                                   {"ENGINE_ATTRIBUTE", 80021, kNever},
                                                   {"SECONDARY_ENGINE_ATTRIBUTE", 80021, kNever},
                                                   {"WITHOUT", kNever, 100304},
                                                   {"INVISIBLE", 80000, kNever},
                                                   {"IGNORED", kNever, 100600},
                                                   {"CLUSTERING", kNever, 50500}}};

constexpr std::array<TFeature, 13> kOptions = {{{"TRANSACTIONAL", kNever, kAlways},
                                                {"PAGE_CHECKSUM", kNever, kAlways},
                                                {"SEQUENCE", kNever, 100300},
                                                {"COMPRESSION", 50708, kNever},
                                                {"ENCRYPTION", 50711, kNever},
                                                {"AUTOEXTEND_SIZE", 80023, kNever},
                                                {"ENGINE_ATTRIBUTE", 80021, kNever},
                                                {"SECONDARY_ENGINE", 80013, kNever},
                                                {"SECONDARY_ENGINE_ATTRIBUTE", 80021, kNever},
                                                {"TABLESPACE", 50601, kNever},
                                                {"START TRANSACTION", 80021, kNever},
                                                {"STORAGE", 50100, kNever},
                                                {"WITH SYSTEM VERSIONING", kNever, 100304}}};

constexpr std::array<TFeature, 14> kEngines = {{{"innodb"},
                                                {"myisam"},
                                                {"memory"},
                                                {"csv"},
                                                {"archive"},
                                                {"blackhole"},
                                                {"mrg_myisam"},
                                                {"merge"},
                                                {"federated"},
                                                {"aria", kNever, 50100},
                                                {"rocksdb", kNever, 100200},
                                                {"s3", kNever, 100500},
                                                {"ndbcluster", 50100, kNever},
                                                {"ndb", 50100, kNever}}};

// --- Tables

class TMissing {
 public:
  TMissing(const TServerTraits& server, const TTableText& table, bool foreign)
      : server_(server), table_(table), foreign_(foreign) {}

  TStringList Find() {
    for (const TElement& element : table_.elements) {
      place_ = element.name;
      FindIn(element);
    }
    FindInOptions();
    if (foreign_ && server_.mysql)
      for (std::string& limit : BeyondMySql(table_)) found_.push_back(std::move(limit));
    return std::move(found_);
  }

 private:
  void Add(std::string_view what, std::string_view kind, const std::string& name) {
    found_.push_back(Format("%s (%s %s)", what, kind, name));
  }
  void Need(const TFeature& feature, std::string_view kind) {
    if (!Has(server_, feature)) Add(feature.name, kind, place_);
  }
  void NeedAttribute(const TToken& token, std::string_view kind) {
    const TFeature* row = velmora::Find(kAttributes, token.text);
    if (row != nullptr && !Has(server_, *row)) Add(row->name, kind, place_);
  }

  void FindIn(const TElement& element) {
    if (element.kind == EElement::Column) return FindInColumn(element);
    if (element.kind == EElement::Check) return FindInCheck(element);
    if (element.kind == EElement::Period) return Need(kPeriod, "period");
    if (element.kind == EElement::ForeignKey) return FindInForeignKey(element);
    if (IsKey(element.kind)) FindInKey(element);
  }

  // As far as was measured: 10.11.19 prints them as they are, 10.5.23 and 11.8.6 do not.
  void FindInForeignKey(const TElement& key) {
    constexpr int kPrints = 101119;
    if (server_.mysql || (server_.version >= kPrints && server_.version / 100 == kPrints / 100)) return;
    if (key.text.Str().find("``") != std::string::npos)
      Add("names with back quotes, so that it prints them,", "foreign key", place_);
  }

  void FindInColumn(const TElement& column) {
    const TColumnParts& parts = column.text.Column();
    const TTokens tokens = column.text.Tokens();
    if (!HasType(server_, parts.type)) Add("type " + parts.type, "column", place_);
    if (parts.generated) Need(parts.not_null ? kGeneratedNotNull : kGenerated, "column");
    if (parts.invisible) {
      const bool filled = !parts.not_null || parts.default_value || parts.auto_increment || parts.generated;
      Need(filled ? kInvisible : kInvisibleNotNull, "column");
    }
    if (parts.check) Need(kChecks, "column");
    if (!table_.partitioning.empty() && IsShapeType(parts.type)) Need(kPartitionedShapes, "column");
    FindInDefault(column);
    for (const TTokenRange& rest : parts.rest) NeedAttribute(tokens[rest.first], "column");
    FindCollation(parts.collation, "column");
    for (const auto& range : {parts.default_value, parts.generated, parts.check, parts.on_update})
      if (range) FindInExpression(tokens.subspan(range->first, range->last - range->first), "column");
  }

  void FindInDefault(const TElement& column) {
    const TColumnText read = ReadColumnText(column.text, table_);
    const std::optional<TTokenRange>& range = column.text.Column().default_value;
    if (!range || range->first == range->last) return;
    const TToken& first = column.text.Tokens()[range->first];
    const TToken& last = column.text.Tokens()[range->last - 1];
    const bool computed = last.Is(")") && !first.Is("current_timestamp");
    if (computed) Need(kComputedDefault, "column");
    const bool apart = computed || column.text.Column().type.ends_with("text");  // from the column's definition
    if (apart && InList(read.charset.charset, {"ucs2", "utf16", "utf32"})) Need(kPrintedWide, "column");
  }

  void FindInCheck(const TElement& check) {
    const TTokens tokens = check.text.Tokens();
    const std::size_t body = check.text.Body();
    const std::size_t after = std::min(AfterGroup(tokens, body), tokens.size());
    Need(kChecks, "check");
    if (IsKeyword(TokenAt(tokens, after), "not")) Need(kNotEnforced, "check");
    FindInExpression(tokens.subspan(body, after - body), "check");
  }

  void FindInKey(const TElement& key) {
    const TTokens tokens = key.text.Tokens();
    const std::size_t open = NextBracket(tokens, 0);
    if (IsKeyword(TokenAt(tokens, 0), "vector")) Need(kVectorKey, "key");
    const std::vector<TTokenRange> parts = ListParts(tokens, open);
    const auto descends = [&tokens](TTokenRange part) { return IsKeyword(tokens[part.last - 1], "desc"); };
    if (std::any_of(parts.begin(), parts.end(), descends)) Need(kDescending, "key");
    NeedColumns(key);
    for (std::size_t at = AfterGroup(tokens, open); at < tokens.size(); ++at) {
      if (IsKeyword(tokens[at], "comment")) ++at;
      if (IsKeyword(TokenAt(tokens, at), "parser")) Need(kParser, "key");
      NeedAttribute(TokenAt(tokens, at), "key");
    }
  }
  void NeedColumns(const TElement& key) {
    const std::vector<TKeyPart>& parts = key.text.KeyParts();
    if (std::any_of(parts.begin(), parts.end(), [](auto& part) { return part.column.empty(); }))
      Need(kExpressionKey, "key");
    const auto is_long = [this](auto& part) { return part.length == 0 && IsLong(part.column); };
    if (key.kind == EElement::UniqueKey && std::any_of(parts.begin(), parts.end(), is_long)) Need(kLongUnique, "key");
  }
  bool IsLong(const std::string& name) const {
    const TElement* column = table_.Find(EElement::Column, name);
    if (column == nullptr) return false;
    const std::string& type = column->text.Column().type;
    return type.ends_with("text") || type.ends_with("blob");
  }

  void FindInOptions() {
    for (const TTableOption& option : table_.options) {
      const TFeature* row = velmora::Find(kOptions, option.name);
      const bool known = row == nullptr ? !server_.mysql || !IsEngineOption(option) : Has(server_, *row);
      if (!known) found_.push_back("option " + option.name + "=" + OptionValue(option));
    }
    place_ = EngineOf(table_);
    const TFeature* engine = velmora::Find(kEngines, place_);
    if (engine == nullptr ? foreign_ && !place_.empty() : !Has(server_, *engine)) found_.push_back("engine " + place_);
    place_ = table_.name;
    FindCollation(TableCharset(table_).collation, "table");
    FindInPartitioning();
  }

  void FindInPartitioning() {
    if (table_.partitioning.empty()) return;
    constexpr int kFirstWithEnginesOwn = 80000;
    const bool engines_own = server_.mysql && (server_.version == 0 || server_.version >= kFirstWithEnginesOwn);
    if (engines_own && !InList(EngineOf(table_), {"innodb", "ndb", "ndbcluster"}))
      Add(kPartitionedEngine.name, "table", place_);
    const std::vector<TToken> tokens = Tokens(table_.partitioning);
    for (std::size_t at = 0; at + 1 < tokens.size(); ++at) {
      if (IsKeyword(tokens[at], "system_time")) Need(kSystemTime, "table");
      if (IsKeyword(tokens[at], "default")) Need(kDefaultPartition, "table");
    }
    if (foreign_) FindInExpression(TTokens(tokens).first(tokens.size() - 1), "table");
  }

  void FindCollation(const std::string& collation, std::string_view kind) {
    constexpr char kHint[] = "collation %s (%s %s; --map-collation %s=NAME takes one that it has)";
    if (collation.find("_0900_") == std::string::npos || Has(server_, kOldCollations)) return;
    found_.push_back(Format(kHint, collation, kind, place_, collation));
  }

  void FindInExpression(TTokens tokens, std::string_view kind) {
    const auto is_lost = [](const TToken& token) {
      return token.kind == EToken::String && PrintedText(std::string(token.text)) != token.text;
    };
    if (tokens.size() > 1 && std::any_of(tokens.begin(), tokens.end(), is_lost)) Need(kPrintedLetters, kind);
    for (std::size_t at = 0; at < tokens.size(); ++at) {
      if (tokens[at].kind != EToken::Word || !TokenAt(tokens, at + 1).Is("(")) continue;
      const std::string name = LowerText(tokens[at].text);
      const EFunctionOn on = FunctionOn(server_, name);
      if (on == EFunctionOn::Everywhere ? foreign_ && !IsSharedFunction(name)
                                        : foreign_ || on == EFunctionOn::Elsewhere)
        Add(name + (foreign_ ? "() as both products have it" : "()"), kind, place_);
    }
  }

  const TServerTraits& server_;
  const TTableText& table_;
  bool foreign_;
  std::string place_;  // the name of what is looked at
  TStringList found_;
};

// --- Tables together

bool ConsistsOf(const TElement& key, const std::vector<std::string>& columns) {
  if (key.kind != EElement::PrimaryKey && key.kind != EElement::UniqueKey) return false;
  const std::vector<TKeyPart>& parts = key.text.KeyParts();
  return std::equal(
      parts.begin(), parts.end(), columns.begin(), columns.end(),
      [](const TKeyPart& part, const std::string& name) { return part.length == 0 && SameText(part.column, name); });
}

const TTableText* FindTable(const std::vector<const TTableText*>& tables, std::string_view name) {
  const auto found = std::find_if(tables.begin(), tables.end(), [name](auto* table) { return table->name == name; });
  return found == tables.end() ? nullptr : *found;
}

}  // namespace

TServerTraits ReadServerTraits(const std::string& version) {
  const TServerVersion read = ReadServerVersion(version);
  TServerTraits traits{.mysql = !read.mariadb, .version = read.version};
  // Earlier ones read them and make nothing of them: MySQL 8.4 Reference Manual, 15.1.20.5 FOREIGN KEY Constraints.
  constexpr int kFirstWithInlineReferences = 90000;
  traits.inline_references = !traits.mysql || traits.version >= kFirstWithInlineReferences;
  return traits;
}

std::string ServerName(const TServerTraits& server) {
  return Format("%s %d.%d", server.mysql ? "MySQL" : "MariaDB", server.version / 10000, server.version / 100 % 100);
}

bool HasType(const TServerTraits& server, std::string_view type) {
  const TFeature* row = Find(kTypes, type);
  return row == nullptr || Has(server, *row);
}

bool SpeakAlike(const TServerTraits& a, const TServerTraits& b) {
  return a.mysql == b.mysql && a.version / 100 == b.version / 100;
}

TStringList MissingOn(const TServerTraits& server, const TTableText& table, bool foreign) {
  return TMissing(server, table, foreign).Find();
}

std::map<std::string, std::string> MissingTogether(const TServerTraits& server,
                                                   const std::vector<const TTableText*>& tables) {
  constexpr int kFirstWithUniqueParents = 80400;
  std::map<std::string, std::string> found;
  if (!server.mysql) return found;
  std::map<std::string, std::string> checks;
  for (const TTableText* table : tables)
    for (const TElement& element : table->elements) {
      if (element.kind == EElement::Check) {
        const auto [check, fresh] = checks.emplace(LowerText(element.name), table->name);
        if (!fresh) found[table->name] = Format(kTwice, element.name, check->second);
      }
      if (element.kind != EElement::ForeignKey || server.version < kFirstWithUniqueParents) continue;
      const TForeignKeyParts& parts = element.text.ForeignKey();
      const TTableText* parent = FindTable(tables, parts.table);
      const bool unique =
          parent == nullptr || std::any_of(parent->elements.begin(), parent->elements.end(),
                                           [&](auto& key) { return ConsistsOf(key, parts.references); });
      const bool computed =
          parent != nullptr && std::ranges::any_of(parts.references, [parent](auto& name) {
            const TElement* column = parent->Find(EElement::Column, name);
            return column != nullptr && column->text.Column().generated && !column->text.Column().stored;
          });
      if (computed) found[table->name] = Format(kToVirtual, element.name, parts.table);
      if (!unique) found[table->name] = Format(kNotUnique, element.name, parts.table);
    }
  return found;
}

}  // namespace velmora

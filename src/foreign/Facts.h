// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What a source that is not MySQL holds, in one vocabulary for all engines: plain facts, as the source states them.
// Foreign means: not MySQL's. A foreign key in MySQL's sense is a TForeignReference here.

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <vector>

#include "util/Lists.h"

namespace velmora {

// What the values of a column are, whatever word the source has for it. The mapping has a row for each; which of the
// column's numbers it looks at stands beside it.
enum class EFamily {
  Unknown,  // no form in MySQL: the table is named and skipped

  // Whole numbers
  Int8,  // -128..127
  UInt8,
  Int16,
  UInt16,
  Int32,
  UInt32,
  Int64,
  UInt64,
  Int128,

  // Numbers
  Decimal,     // precision, scale; a scale below 0 or above the precision is taken as it is meant
  Number,      // decimal of any digits, as NUMBER without a precision
  DecFloat,    // decimal floating point
  FieldWidth,  // text of digits: precision is the field's width, the sign and the point included; scale
  Double,
  Single,
  Money,       // 19 digits, 4 of them behind the point
  SmallMoney,  // 10 digits, 4 of them behind the point
  FloatMoney,  // money kept as a double
  Boolean,

  // Letters
  Char,      // length; padded with blanks
  VarChar,   // length
  LongText,  // without a limit
  Guid,      // 36 letters, or 16 bytes
  Variant,   // values of any type, shown as text
  RowId,
  Interval,

  // Bytes
  Binary,  // length
  VarBinary,
  LongBinary,
  RowVersion,  // 8 bytes that the source counts up by itself
  Shape,       // geometry

  // Time
  Date,
  Time,          // fraction
  DateTime,      // fraction
  DateTimeZone,  // fraction; with an offset from UTC

  kCount
};

// How a column gets a number of its own.
enum class ECounting {
  None,
  Counts,   // identity, autonumber; or a sequence or generator that a default or trigger takes for it
  Unclear,  // a trigger or default that may do so, and nobody can tell
};

struct TForeignColumn {
  std::string name{};
  std::string native{};  // the type's word, as the source says it: "nvarchar", "NUMBER", "Currency", "$"
  EFamily family = EFamily::Unknown;
  std::optional<int> precision{};             // digits in all
  std::optional<int> scale{};                 // of these, behind the point
  std::optional<int> fraction{};              // digits of seconds; nothing for none
  std::optional<std::int64_t> length{};       // most letters, or bytes; nothing where the source has no limit
  bool in_bytes = false;                      // of letters: the length counts bytes
  std::optional<bool> nullable{};             // nothing where the source does not say
  std::optional<std::string> default_text{};  // as the source writes it, brackets and quotes included
  ECounting counting = ECounting::None;
  bool computed = false;  // by an expression; or nobody can tell
  std::string comment{};
  std::string remark{};   // what the source has of it beyond these, for the user: "computed: [a]+[b]"
  std::string problem{};  // why the column cannot be mapped; empty where it can
};

struct TForeignKeyPart {
  std::string column;
  bool descending = false;
};

enum class EForeignKeyKind { Primary, Unique, Plain };

struct TForeignKey {
  std::string name{};  // empty where the source has none
  EForeignKeyKind kind = EForeignKeyKind::Plain;
  std::vector<TForeignKeyPart> parts{};
  // What MySQL has no form for and makes the key another one: "filter ([a]>(0))", "expression UPPER(NAME)". Such a key
  // is named and left out.
  std::string problem{};
  std::string remark{};  // what goes without changing the key: "included columns c, d"
};

enum class EReferenceRule { NoAction, Restrict, Cascade, SetNull, SetDefault };

// A foreign key in MySQL's sense.
struct TForeignReference {
  std::string name{};  // empty where the source has none
  TStringList columns{};
  std::string table{};       // the parent, by the name that TFactReader::Tables has for it
  TStringList references{};  // the parent's columns; none: its primary key
  EReferenceRule on_delete = EReferenceRule::NoAction;
  EReferenceRule on_update = EReferenceRule::NoAction;
};

struct TForeignCheck {
  std::string name{};    // empty where the source has none
  std::string column{};  // that it belongs to; empty for one of the table
  std::string text{};    // the condition in the source's language, without a word in front
};

// Kinds of facts. What an engine does not know of a table is neither compared nor dropped in the target.
enum class EFact {
  Nullability,
  Defaults,
  Counting,
  PrimaryKey,
  OtherKeys,
  References,
  Rules,  // of references
  Checks,
  ColumnComments,
  TableComment,
  Order,  // of columns
  kCount
};

class TKnownFacts {
 public:
  constexpr TKnownFacts() = default;
  constexpr TKnownFacts(std::initializer_list<EFact> facts) {  // NOLINT(google-explicit-constructor): a list of facts
    for (const EFact fact : facts) Add(fact);
  }
  constexpr bool Has(EFact fact) const { return (bits_ & Bit(fact)) != 0; }
  constexpr void Add(EFact fact) { bits_ |= Bit(fact); }
  constexpr void Remove(EFact fact) { bits_ &= ~Bit(fact); }
  constexpr bool operator==(const TKnownFacts&) const = default;

 private:
  static constexpr std::uint32_t Bit(EFact fact) { return std::uint32_t{1} << static_cast<unsigned>(fact); }
  std::uint32_t bits_ = 0;
};

struct TForeignTable {
  std::string name{};                     // as TFactReader::Tables has it
  std::vector<TForeignColumn> columns{};  // in order
  std::vector<TForeignKey> keys{};        // at most one is the primary one
  std::vector<TForeignReference> references{};
  std::vector<TForeignCheck> checks{};
  std::string comment{};
  std::optional<TKnownFacts> known{};  // of a table of which the reader knows other facts than of most
  TStringList remarks{};               // what else the source has of the table, for the user
  TStringList warnings{};              // what of it is not compared, though the source has it
  std::string problem{};               // why the table cannot be mapped; it is then skipped with this reason
};

// Reads the facts of one source. The engine is connected and outlives the reader.
class TFactReader {
 public:
  TFactReader() = default;
  virtual ~TFactReader() = default;
  TFactReader(const TFactReader&) = delete;
  TFactReader& operator=(const TFactReader&) = delete;

  virtual TKnownFacts Known() const = 0;
  // In the source's order. Raises where they cannot be listed: never an empty list for a source that is not there.
  virtual TStringList Tables() = 0;
  // Raises what reading the table raises; the table is then skipped with that reason, unless the source is gone.
  virtual TForeignTable Table(const std::string& name) = 0;
  // What the table is called in MySQL, before names that are too long or taken are changed: without the extension of a
  // file, the "$" of a sheet, the schema "dbo".
  virtual std::string PlainName(const std::string& table) const { return table; }
  // After an error: whether the source can still be read. Otherwise the comparison ends with the error.
  virtual bool Reachable() = 0;
};

}  // namespace velmora

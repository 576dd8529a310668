// SPDX-License-Identifier: GPL-3.0-or-later
#include "lint/KeyLimits.h"

#include <algorithm>
#include <array>

#include "mysqltext/ColumnType.h"
#include "mysqltext/KeyText.h"
#include "mysqltext/TableOptions.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kPartTooLong[] = "Column %s takes %d bytes in key %s of table %s; there is room for %d.";
constexpr char kTooLong[] = "Key %s of table %s takes %d bytes; there is room for %d.";
constexpr char kTooMany[] = "Key %s of table %s has %d columns; there is room for %d.";
constexpr char kShorter[] = "Make it shorter, or index fewer letters of it, as in %s(%d).";
constexpr char kShorterColumn[] = "Make it shorter: there is room for %d letters.";
constexpr char kOtherFormat[] = "Make it shorter, or the table's row format dynamic.";
constexpr char kFewer[] = "Leave out columns, or index fewer letters of them.";

// Bytes of a key; of one column in it, if that is less (MySQL 8.4 Reference Manual, 17.21 InnoDB Limits, and 18.2 The
// MyISAM Storage Engine).
struct TRoom {
  long long key = 0;
  long long part = 0;
};

constexpr TRoom kDynamic = {3072, 3072};
constexpr TRoom kCompact = {3072, 767};
constexpr TRoom kMyIsam = {1000, 1000};

bool IsBefore(const std::optional<TServerTraits>& server, int mysql, int mariadb) {
  return server && server->version > 0 && server->version < (server->mysql ? mysql : mariadb);
}

// Nothing where nobody knows.
std::optional<TRoom> RoomOf(const TTableLook& at) {
  constexpr int kDynamicInMySql = 50709, kDynamicInMariaDb = 100202;  // by itself; earlier ones ask a setting
  const std::string engine = LintEngine(at.table);
  if (engine == "myisam") return kMyIsam;
  if (engine != "innodb") return std::nullopt;
  const TTableOption* option = at.table.FindOption("ROW_FORMAT");
  const std::string format = option == nullptr ? "default" : LowerText(OptionValue(*option));
  const bool old = IsBefore(at.schema.server, kDynamicInMySql, kDynamicInMariaDb);
  if (InList(format, {"compact", "redundant"})) return kCompact;
  if (InList(format, {"dynamic", "compressed"})) return old ? std::nullopt : std::optional(kDynamic);
  return old ? kCompact : kDynamic;
}

struct TTypeBytes {
  std::string_view type;
  long long bytes;
};
constexpr std::array<TTypeBytes, 11> kBytes = {{{"tinyint", 1},
                                                {"smallint", 2},
                                                {"mediumint", 3},
                                                {"int", 4},
                                                {"bigint", 8},
                                                {"float", 4},
                                                {"double", 8},
                                                {"date", 3},
                                                {"year", 1},
                                                {"timestamp", 4},
                                                {"datetime", 5}}};

// What a column takes in a key at least: of a type or a character set that is not known the least that it can be.
long long PartBytes(const TKeyPart& part, const TColumnText& column) {
  const long long letter = column.HasLetters() ? LetterBytes(column.charset.charset).most : 1;
  const bool of_length = InList(column.type, {"char", "varchar", "binary", "varbinary"});
  if (part.length > 0) return part.length * letter;
  if (of_length) return column.Length().value_or(1) * letter;
  const auto* const row = std::ranges::find(kBytes, column.type, &TTypeBytes::type);
  return row == kBytes.end() ? 1 : row->bytes;
}

class TKeyLimits {
 public:
  TKeyLimits(TTableLook& at, const TElement& key, const TRoom& room) : at_(at), key_(key), room_(room) {}

  void Look() {
    constexpr std::size_t kMySqlParts = 16, kMariaDbParts = 32;
    const bool mysql = at_.schema.server && at_.schema.server->mysql;
    const std::size_t most = mysql ? kMySqlParts : kMariaDbParts;
    const std::vector<TKeyPart>& parts = key_.text.KeyParts();
    if (parts.size() > most)
      return at_.Add(key_, Format(kTooMany, key_.name, at_.table.name, parts.size(), most), kFewer);
    long long bytes = 0;
    for (const TKeyPart& part : parts) {
      const TElement* column = part.column.empty() ? nullptr : at_.table.Find(EElement::Column, part.column);
      if (column == nullptr) return;
      const TColumnText read = ReadColumnText(column->text, at_.table);
      const long long size = PartBytes(part, read);
      if (size > room_.part) return TellPart(part, read, size);
      bytes += size;
    }
    if (bytes > room_.key) at_.Add(key_, Format(kTooLong, key_.name, at_.table.name, bytes, room_.key), kFewer);
  }

 private:
  void TellPart(const TKeyPart& part, const TColumnText& column, long long size) {
    const long long letter = column.HasLetters() ? LetterBytes(column.charset.charset).most : 1;
    const bool of_format = room_.part < room_.key && size <= room_.key;
    const long long most = room_.part / letter;
    const bool of_queries = key_.kind == EElement::Key;  // what is unique of fewer letters says something else
    at_.Add(key_, Format(kPartTooLong, part.column, size, key_.name, at_.table.name, room_.part),
            of_format    ? std::string(kOtherFormat)
            : of_queries ? Format(kShorter, part.column, most)
                         : Format(kShorterColumn, most));
  }

  TTableLook& at_;
  const TElement& key_;
  const TRoom& room_;
};

}  // namespace

void LookForLongKeys(TTableLook& at) {
  constexpr int kNever = 0, kHashedInMariaDb = 100400;  // unique keys of any length are kept as hashes from there on
  const bool hashes =
      !at.schema.server || (!at.schema.server->mysql && !IsBefore(at.schema.server, kNever, kHashedInMariaDb));
  const std::optional<TRoom> room = RoomOf(at);
  if (!room) return;
  for (const TElement& key : at.table.elements) {
    const bool has_limit =
        key.kind == EElement::PrimaryKey || key.kind == EElement::Key || (key.kind == EElement::UniqueKey && !hashes);
    if (has_limit) TKeyLimits(at, key, *room).Look();
  }
}

}  // namespace velmora

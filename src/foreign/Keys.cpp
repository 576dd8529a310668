// SPDX-License-Identifier: GPL-3.0-or-later
#include "foreign/Keys.h"

#include <algorithm>

#include "foreign/Names.h"
#include "mysqltext/ColumnParts.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr int kLetterBytes = 4;
constexpr long long kLongestPrefix = 255;  // letters
constexpr long long kWholeKey = 3072;      // bytes
constexpr std::size_t kMostParts = 16;
constexpr std::size_t kMostKeys = 64;

constexpr char kPrefix[] = "key %s: the first %d %s of %s count";
constexpr char kNotUnique[] = "key %s is too long to be unique in MySQL: a plain key takes its place";
constexpr char kTooLong[] = "longer than keys of the target can be (%d bytes)";
constexpr char kNoColumn[] = "key %s: there is no column %s";
constexpr char kTooManyParts[] = "key %s has %d parts, of which MySQL takes %d";
constexpr char kTooManyKeys[] = "key %s: MySQL takes %d keys of a table";
constexpr char kLettersByCase[] = "unique key %s: MySQL's usual collations compare letters without their case";

class TKeyMapper {
 public:
  TKeyMapper(const TForeignTable& facts, const TMapContext& context, TMappedTable& table)
      : facts_(facts), context_(context), server_(context.server), table_(table) {}

  void Map() {
    for (const TForeignKey& key : facts_.keys) Map(key);
    std::stable_partition(table_.keys.begin(), table_.keys.end(),
                          [](auto& key) { return key.kind == EForeignKeyKind::Primary; });
  }

 private:
  void Tell(std::string text, EMadeLevel level = EMadeLevel::Warning) {
    table_.told.push_back({table_.name, "", "", "", level, std::move(text)});
  }
  // A key that only makes queries quicker is told of; one that rows have to keep is missed.
  void LeaveOut(const TForeignKey& key, const std::string& reason) {
    TStringList columns;
    for (const TForeignKeyPart& part : key.parts)
      if (const TMappedColumn* column = Find(part.column)) columns.push_back(column->name);
    if (!columns.empty()) table_.open_keys.push_back(std::move(columns));
    if (key.kind == EForeignKeyKind::Plain) return Tell("key " + key.name + " is left out: " + reason);
    const bool primary = key.kind == EForeignKeyKind::Primary;
    table_.unmade.push_back({table_.name, primary ? "PRIMARY" : key.name, primary ? "primary key" : "key", reason});
  }

  const TMappedColumn* Find(const std::string& column) const {
    const auto found = FindNamed(table_.columns, column, &TMappedColumn::SourceName);
    return found == table_.columns.end() ? nullptr : &*found;
  }

  void Map(const TForeignKey& key) {
    if (!key.remark.empty()) Tell("key " + key.name + ": " + key.remark, EMadeLevel::Info);
    if (!key.problem.empty()) return LeaveOut(key, key.problem);
    if (key.parts.empty()) return;
    if (key.parts.size() > kMostParts)
      return LeaveOut(key, Format(kTooManyParts, key.name, key.parts.size(), kMostParts));
    if (key.kind != EForeignKeyKind::Primary && table_.keys.size() >= kMostKeys)
      return LeaveOut(key, Format(kTooManyKeys, key.name, kMostKeys));
    TMappedKey mapped{.name = NameOf(key), .kind = key.kind};
    for (const TForeignKeyPart& part : key.parts) {
      const TMappedColumn* column = Find(part.column);
      if (column == nullptr) return LeaveOut(key, Format(kNoColumn, key.name, part.column));
      mapped.parts.push_back({column->name, 0, part.descending && server_.HasDescendingKeys()});
    }
    if (!Fit(key, mapped)) return;
    TellCase(mapped);
    table_.keys.push_back(std::move(mapped));
  }

  std::string NameOf(const TForeignKey& key) {
    if (key.kind == EForeignKeyKind::Primary) return "PRIMARY";
    return names_.Take(MakeKeyName(key.name, key.parts.empty() ? "key" : key.parts.front().column));
  }

  const TColumnText& TypeOf(const std::string& name) const {
    const auto found =
        std::ranges::find_if(table_.columns, [&](const TMappedColumn& column) { return column.name == name; });
    return context_.read_type(found->type.type);
  }

  static int UnitBytes(const TColumnText& type) { return type.HasLetters() ? kLetterBytes : 1; }
  static bool IsString(const TColumnText& type) {
    return type.HasLetters() || type.type.ends_with("binary") || type.type.ends_with("blob");
  }
  static long long Bytes(const TColumnText& type) {
    constexpr long long kNumber = 8;
    if (!IsString(type)) return kNumber;
    return type.Length().value_or(1) * UnitBytes(type);
  }

  // Whether the key stays; parts of plain ones are cut to what the server takes.
  bool Fit(const TForeignKey& key, TMappedKey& mapped) {
    long long all = 0;
    bool fits = true;
    for (const TMappedKeyPart& part : mapped.parts) {
      const TColumnText& type = TypeOf(part.column);
      fits = fits && !NeedsPrefix(type) && Bytes(type) <= server_.KeyBytes();
      all += Bytes(type);
    }
    if (fits && all <= kWholeKey) return true;
    if (mapped.kind == EForeignKeyKind::Unique && server_.HasLongUniqueKeys()) return mapped.hashed = true;
    if (mapped.kind != EForeignKeyKind::Plain) {
      const bool primary = mapped.kind == EForeignKeyKind::Primary;
      LeaveOut(key, Format(kTooLong, server_.KeyBytes()));
      Tell(Format(kNotUnique, mapped.name));
      mapped.kind = EForeignKeyKind::Plain;
      if (primary) mapped.name = names_.Take("PRIMARY_KEY");
    }
    Cut(mapped);
    return true;
  }

  void Cut(TMappedKey& mapped) {
    const long long share = std::min<long long>(server_.KeyBytes(), kWholeKey / std::ssize(mapped.parts));
    for (TMappedKeyPart& part : mapped.parts) {
      const TColumnText& type = TypeOf(part.column);
      if (!IsString(type) || (!NeedsPrefix(type) && Bytes(type) <= share)) continue;
      part.letters = std::min({share / UnitBytes(type), kLongestPrefix, type.Length().value_or(kLongestPrefix)});
      Tell(Format(kPrefix, mapped.name, part.letters, type.HasLetters() ? "letters" : "bytes", part.column));
    }
  }

  void TellCase(const TMappedKey& mapped) {
    if (mapped.kind == EForeignKeyKind::Plain) return;
    const bool letters =
        std::ranges::any_of(mapped.parts, [&](const TMappedKeyPart& part) { return TypeOf(part.column).HasLetters(); });
    if (letters) Tell(Format(kLettersByCase, mapped.name), EMadeLevel::Info);
  }

  const TForeignTable& facts_;
  const TMapContext& context_;
  const TTargetServer& server_;
  TMappedTable& table_;
  TNames names_;
};

}  // namespace

bool NeedsPrefix(const TColumnText& type) {
  return type.type.ends_with("text") || type.type.ends_with("blob") || type.type == "json";
}

void MapKeys(const TForeignTable& facts, const TMapContext& context, TMappedTable& table) {
  TKeyMapper(facts, context, table).Map();
}

}  // namespace velmora

// SPDX-License-Identifier: GPL-3.0-or-later
#include "exact/plan/LockClasses.h"

#include <algorithm>
#include <initializer_list>

namespace velmora {

namespace {

using enum ELockClass;
using EChange = ELockChange;

struct TClassTexts {
  std::string_view word;
  std::string_view text;
};
constexpr std::array<TClassTexts, 8> kTexts = {{{"", ""},
                                                {"instant", "instant"},
                                                {"in place", "in place"},
                                                {"rebuild", "rebuilds the table; reading and writing go on"},
                                                {"copy with writes", "copies the table; reading and writing go on"},
                                                {"readers only", "in place; no writes meanwhile"},
                                                {"copy", "copies the table; no writes meanwhile"},
                                                {"unknown", "what it locks is not known"}}};

// --- The table
//
// Measured on MariaDB 10.5, 10.11 and 11.8 and on MySQL 9.7; of earlier versions by the manuals: MySQL 5.6, 5.7 and 8.0
// Reference Manual, Online DDL Operations; MariaDB Server Documentation, InnoDB Online DDL Operations.

constexpr int kFirstMySql = 50600;     // they told nothing of locks before
constexpr int kVirtualMySql = 50706;   // computed columns
constexpr int kInstantMySql = 80012;   // instant changes
constexpr int kRenameMySql = 80028;    // instant renaming of columns
constexpr int kAnywhereMySql = 80029;  // instant columns anywhere, and dropped ones
constexpr int kMeasuredMySql = 90000;
constexpr int kFirstMariaDb = 100000;
constexpr int kInstantMariaDb = 100302;
constexpr int kAnywhereMariaDb = 100400;
constexpr int kMeasured = 100500;  // the oldest one that was
constexpr int kLaterMeasured = 101100;

constexpr TLockSteps From(int since, ELockClass is) { return {{{since, is}, {}, {}}}; }
constexpr TLockSteps From(int since, ELockClass is, int later, ELockClass then) {
  return {{{since, is}, {later, then}, {}}};
}
constexpr TLockSteps kCopied = From(kFirstMySql, Copy);
constexpr TLockSteps kCopiedMaria = From(kFirstMariaDb, Copy);
constexpr TLockSteps kDescribed = From(kFirstMySql, InPlace);
constexpr TLockSteps kDescribedMaria = From(kMeasured, Instant);
constexpr TLockSteps kRebuilt = From(kFirstMySql, Rebuild);
constexpr TLockSteps kRebuiltMaria = From(kFirstMariaDb, Rebuild);
constexpr TLockSteps kKeyed = From(kFirstMySql, InPlace);
constexpr TLockSteps kKeyedMaria = From(kFirstMariaDb, InPlace);
constexpr TLockSteps kRead = From(kFirstMySql, ReadersOnly);
constexpr TLockSteps kReadMaria = From(kFirstMariaDb, ReadersOnly);
constexpr TLockSteps kNowhere = {};
constexpr TLockSteps kSettled = From(kFirstMySql, InPlace, kInstantMySql, Instant);

constexpr std::array kRows = {
    TLockRow{EChange::AddColumn, "add column, last", From(kFirstMySql, Rebuild, kInstantMySql, Instant),
             From(kFirstMariaDb, Rebuild, kInstantMariaDb, Instant)},
    TLockRow{EChange::AddColumnBetween, "add column, elsewhere", From(kFirstMySql, Rebuild, kAnywhereMySql, Instant),
             From(kFirstMariaDb, Rebuild, kAnywhereMariaDb, Instant)},
    TLockRow{EChange::AddComputedDefault, "add column with a computed default", From(80013, Copy), kDescribedMaria},
    TLockRow{EChange::AddCheckedColumn, "add column with a check", From(80016, Copy), kDescribedMaria},
    TLockRow{EChange::AddCounter, "add column with a counter", kRead, kReadMaria},
    TLockRow{EChange::AddVirtual, "add virtual column", From(kVirtualMySql, InPlace, kInstantMySql, Instant),
             kDescribedMaria},
    TLockRow{EChange::AddStored, "add stored column", From(kVirtualMySql, Copy), From(kMeasured, Copy)},
    TLockRow{EChange::DropColumn, "drop column", From(kFirstMySql, Rebuild, kAnywhereMySql, Instant),
             From(kFirstMariaDb, Rebuild, kAnywhereMariaDb, Instant)},
    TLockRow{EChange::DropKeyColumn, "drop column with its key", kRebuilt, From(kMeasured, InPlace)},
    TLockRow{EChange::DropWiderKeyColumn, "drop column of a wider key", kRebuilt, kRebuiltMaria},
    TLockRow{EChange::DropVirtual, "drop virtual column", From(kVirtualMySql, InPlace, kInstantMySql, Instant),
             kDescribedMaria},
    TLockRow{EChange::MoveColumn, "move column", kRebuilt, From(kFirstMariaDb, Rebuild, kAnywhereMariaDb, Instant)},
    TLockRow{EChange::MoveVirtual, "move virtual column", From(kMeasuredMySql, Instant), From(kMeasured, Copy)},
    TLockRow{EChange::MoveStored, "move stored column", From(kVirtualMySql, Rebuild), From(kMeasured, Copy)},
    TLockRow{EChange::RenameColumn, "rename column", From(kFirstMySql, InPlace, kRenameMySql, Instant),
             kDescribedMaria},
    TLockRow{EChange::DescribeColumn, "default, comment or use of a column", kSettled, kDescribedMaria},
    TLockRow{EChange::DescribeStored, "default, comment or use of a stored column", From(kMeasuredMySql, Instant),
             From(kMeasured, Copy)},
    TLockRow{EChange::ChangeWidth, "display width", From(kMeasuredMySql, Instant), kDescribedMaria},
    TLockRow{EChange::GrowLetters, "varchar grows", From(kFirstMySql, Copy, 50700, InPlace), kDescribedMaria},
    TLockRow{EChange::GrowLettersAcross, "varchar grows across 255 bytes", kCopied, kCopiedMaria},
    TLockRow{EChange::AppendMember, "enum or set, append", kSettled, kDescribedMaria},
    TLockRow{EChange::ChangeType, "type of a column", kCopied, kCopiedMaria},
    TLockRow{EChange::ChangeVirtual, "expression of a virtual column", From(kMeasuredMySql, Copy), kDescribedMaria},
    TLockRow{EChange::StartCounter, "counter begins", kCopied, From(kMeasured, Copy)},
    TLockRow{EChange::EndCounter, "counter ends", From(kMeasuredMySql, Copy), kDescribedMaria},
    TLockRow{EChange::ForbidNull, "null to not null", From(kFirstMySql, Copy, 50700, Rebuild), kRebuiltMaria},
    TLockRow{EChange::AllowNull, "not null to null", kRebuilt, kRebuiltMaria},
    TLockRow{EChange::WidenCharset, "utf8mb3 to utf8mb4", From(kFirstMySql, Copy, 80000, InPlace), kDescribedMaria},
    TLockRow{EChange::WidenCharsetOfKey, "utf8mb3 to utf8mb4, of a key", kCopied,
             From(kMeasured, Copy, kLaterMeasured, Instant)},
    TLockRow{EChange::WidenCharsetOfMembers, "utf8mb3 to utf8mb4, of an enum or set", From(kMeasuredMySql, Instant),
             From(kMeasured, Copy)},
    TLockRow{EChange::ChangeCollation, "collation of a column", From(kMeasuredMySql, InPlace), kDescribedMaria},
    TLockRow{EChange::ChangeCollationOfKey, "collation of a column of a key", From(kMeasuredMySql, Copy),
             From(kMeasured, Copy, kLaterMeasured, InPlace)},
    TLockRow{EChange::ChangeCollationOfPrimary, "collation of a column of the primary key", From(kMeasuredMySql, Copy),
             From(kMeasured, Copy)},
    TLockRow{EChange::AddColumnCheck, "add check of a column", From(80016, Copy), kDescribedMaria},
    TLockRow{EChange::DropColumnCheck, "drop check of a column", kNowhere, kDescribedMaria},
    TLockRow{EChange::AddKey, "add key", kKeyed, kKeyedMaria},
    TLockRow{EChange::AddComputedKey, "add key over an expression, or a new virtual column",
             From(kMeasuredMySql, ReadersOnly), From(kMeasured, ReadersOnly)},
    TLockRow{EChange::AddFulltext, "add fulltext key", kRead, kReadMaria},
    TLockRow{EChange::AddSpatial, "add spatial key", From(50705, ReadersOnly), From(kMeasured, ReadersOnly)},
    TLockRow{EChange::DropKey, "drop key", kKeyed, kKeyedMaria},
    TLockRow{EChange::RenameKey, "rename key", From(50700, InPlace), kDescribedMaria},
    TLockRow{EChange::UseKey, "use of a key", From(80000, InPlace), From(100600, Instant)},
    TLockRow{EChange::AddPrimary, "add primary key", kRebuilt, kRebuiltMaria},
    TLockRow{EChange::ReplacePrimary, "change primary key", kRebuilt, kRebuiltMaria},
    TLockRow{EChange::DropPrimary, "drop primary key", kCopied, kCopiedMaria},
    TLockRow{EChange::AddForeignKey, "add foreign key, checks on", kCopied, kCopiedMaria},
    TLockRow{EChange::AddForeignKeyUnchecked, "add foreign key, checks off", kKeyed,
             From(kFirstMariaDb, InPlace, kMeasured, Instant)},
    TLockRow{EChange::DropForeignKey, "drop foreign key", kKeyed, From(kFirstMariaDb, InPlace, kMeasured, Instant)},
    TLockRow{EChange::AddCheck, "add check", From(80016, Copy), From(100201, Copy)},
    TLockRow{EChange::AddCheckUnenforced, "add check that is not enforced", From(80016, Instant), kNowhere},
    TLockRow{EChange::DropCheck, "drop check", From(80016, Instant), kDescribedMaria},
    TLockRow{EChange::ChangeRows, "row format, or the table anew", kRebuilt, kRebuiltMaria},
    TLockRow{EChange::ChangeEngine, "another engine", kCopied, kCopiedMaria},
    TLockRow{EChange::ConvertCharset, "convert to a character set", kCopied, kCopiedMaria},
    TLockRow{EChange::DescribeTable, "comment, counter or statistics of a table", kDescribed,
             From(kFirstMariaDb, InPlace, kMeasured, Instant)},
    TLockRow{EChange::HandDownCharset, "default character set of a table", kDescribed,
             From(kFirstMariaDb, InPlace, kMeasured, Instant)},
    TLockRow{EChange::RenameTable, "rename table", From(kFirstMySql, InPlace, 80000, Instant),
             From(kFirstMariaDb, InPlace, kMeasured, Instant)},
    TLockRow{EChange::Partition, "partitioning", kCopied, kCopiedMaria},
};
static_assert(kRows.size() == static_cast<std::size_t>(EChange::Unknown));
static_assert(std::ranges::is_sorted(kRows, {}, &TLockRow::change));

// --- What a table adds to it

bool OneOf(EChange change, std::initializer_list<EChange> list) {
  return std::ranges::find(list, change) != list.end();
}

// Columns that come, go or move among those that rows hold.
bool ReordersRows(EChange change) {
  return OneOf(change, {EChange::AddColumn, EChange::AddColumnBetween, EChange::AddComputedDefault,
                        EChange::AddCheckedColumn, EChange::DropColumn, EChange::MoveColumn});
}

ELockClass InTable(EChange change) {
  const bool described =
      OneOf(change, {EChange::DescribeColumn, EChange::RenameColumn, EChange::ChangeWidth, EChange::AppendMember,
                     EChange::RenameKey, EChange::DescribeTable, EChange::RenameTable});
  const bool copied = OneOf(change, {EChange::AddColumn, EChange::AddColumnBetween, EChange::DropColumn,
                                     EChange::AddKey, EChange::DropKey, EChange::ChangeType, EChange::ForbidNull,
                                     EChange::AllowNull, EChange::ChangeEngine, EChange::ChangeRows});
  return described ? Instant : copied ? Copy : Unknown;
}

ELockClass OfRow(EChange change, const TServerTraits& server) {
  if (change >= EChange::Unknown) return Unknown;
  const TLockRow& row = kRows.at(static_cast<std::size_t>(change));
  ELockClass is = Unknown;
  for (const TLockStep& step : server.mysql ? row.mysql : row.mariadb)
    if (step.since != 0 && step.since <= server.version) is = step.is;
  return is;
}

// A table that is made anew has to have its keys of these kinds made by somebody.
ELockClass RebuiltAs(const TLockTraits& table, const TServerTraits& server) {
  if (table.fulltext) return server.mysql ? Copy : ReadersOnly;
  return table.spatial ? ReadersOnly : Rebuild;
}

// Of MariaDB's tables with virtual columns, whose places it counts.
ELockClass BesideComputed(EChange change, const TLockTraits& table, ELockClass is) {
  if (!table.computed || !ReordersRows(change)) return is;
  if (OneOf(change, {EChange::AddColumnBetween, EChange::MoveColumn})) return Copy;
  return table.computed_key ? std::max(is, ReadersOnly) : is;
}

// MySQL makes all virtual columns of such a table anew, and then finds that they cannot come together.
ELockClass BesideFunctional(EChange change, const TLockTraits& table, ELockClass is) {
  if (!table.functional || is == Unknown) return is;
  if (change == EChange::DropVirtual) return std::max(is, InPlace);
  return OneOf(change, {EChange::AddVirtual, EChange::AddComputedKey}) ? Copy : is;
}

// They copy while others write, but not where a counter begins, nor where other tables change rows of this one.
ELockClass AsCopied(ELockClass is, EChange change, const TLockTraits& table, const TServerTraits& server) {
  constexpr int kCopiesWithWrites = 110200;
  const bool takes_turns = change == EChange::StartCounter || table.cascades;
  const bool writes = !server.mysql && server.version >= kCopiesWithWrites && !takes_turns;
  return is == Copy && writes ? CopyWithWrites : is;
}

}  // namespace

std::string_view LockWord(ELockClass of) { return kTexts.at(static_cast<std::size_t>(of)).word; }
std::string_view LockText(ELockClass of) { return kTexts.at(static_cast<std::size_t>(of)).text; }
std::span<const TLockRow> LockRows() { return kRows; }

ELockClass ClassOf(ELockChange change, const TLockTraits& table, const TServerTraits& server) {
  if (table.versioned) return Unknown;
  if (table.other_engine) return AsCopied(InTable(change), change, table, server);
  ELockClass is = OfRow(change, server);
  if (is == Instant && ReordersRows(change) && (table.fulltext || table.compressed)) is = Rebuild;
  const bool free_rows = table.redundant && !server.mysql && server.version >= kMeasured;
  if (free_rows && OneOf(change, {EChange::AllowNull, EChange::GrowLettersAcross})) is = Instant;
  is = server.mysql ? BesideFunctional(change, table, is) : BesideComputed(change, table, is);
  if (is == Rebuild) is = RebuiltAs(table, server);
  return AsCopied(is, change, table, server);
}

// --- Together

namespace {

bool OfVirtual(EChange change) { return OneOf(change, {EChange::AddVirtual, EChange::DropVirtual}); }

bool MakesKey(EChange change) {
  return OneOf(change, {EChange::AddKey, EChange::AddComputedKey, EChange::AddFulltext, EChange::AddSpatial,
                        EChange::AddPrimary, EChange::ReplacePrimary});
}

class TCompany {
 public:
  TCompany(const std::vector<EChange>& changes, const TLockTraits& table, const TServerTraits& server)
      : changes_(changes), table_(table), server_(server) {}

  ELockClass Class() const {
    ELockClass most = None;
    for (const EChange change : changes_) most = std::max(most, ClassOf(change, table_, server_));
    if (changes_.size() < 2 || most == Unknown) return most;
    if (MovesAlong()) return Instant;
    if (VirtualInTheWay(most)) return std::max(most, AsCopied(Copy, changes_.front(), table_, server_));
    if (InstantInTheWay(most)) return std::max(most, RebuiltAs(table_, server_));
    const bool letters = Has({EChange::HandDownCharset}) && Has({EChange::GrowLetters});
    return letters ? std::max(most, InPlace) : most;
  }

 private:
  template <class Which>
  bool Any(Which which) const {
    return std::ranges::any_of(changes_, which);
  }
  bool Has(std::initializer_list<EChange> list) const {
    return Any([list](EChange change) { return OneOf(change, list); });
  }

  // Whether columns that come or go at an instant alone do not do so beside the others.
  bool InstantInTheWay(ELockClass most) const {
    const bool reorders = Any([](EChange change) { return ReordersRows(change) || change == EChange::DropKeyColumn; });
    return reorders && (server_.mysql ? most > Instant : Any(MakesKey));
  }

  // MySQL writes down a new order of columns at an instant with a column that comes, but not alone.
  bool MovesAlong() const {
    const bool others = Any([this](EChange change) {
      return change != EChange::MoveColumn && ClassOf(change, table_, server_) != Instant;
    });
    return server_.mysql && server_.version >= kMeasuredMySql && !others && Has({EChange::MoveColumn}) &&
           Has({EChange::AddColumn, EChange::AddColumnBetween}) && !Any(OfVirtual);
  }

  // Virtual columns come and go at an instant with each other and with plain ones that go, and beside keys.
  bool VirtualInTheWay(ELockClass most) const {
    if (!Any(OfVirtual)) return false;
    const bool drops = Has({EChange::DropVirtual});
    const bool instant = most == Instant || !server_.mysql;
    const bool alone = !Any([drops, instant](EChange change) {
      const bool beside =
          OneOf(change, {EChange::DropKey, EChange::AddKey}) || (instant && change == EChange::DropColumn);
      return !OfVirtual(change) && !beside && (drops || !MakesKey(change));
    });
    if (alone) return false;
    const bool refused = drops ? Has({EChange::AddColumn, EChange::AddColumnBetween}) : Has({EChange::RenameColumn});
    return !server_.mysql || most > Instant || refused;
  }

  const std::vector<EChange>& changes_;
  const TLockTraits& table_;
  const TServerTraits& server_;
};

}  // namespace

ELockClass ClassTogether(const std::vector<ELockChange>& changes, const TLockTraits& table,
                         const TServerTraits& server) {
  return TCompany(changes, table, server).Class();
}

}  // namespace velmora

#include "exact/PairReader.h"

#include <cstdint>
#include <unordered_map>
#include <utility>

#include "core/CreationTexts.h"
#include "core/Host.h"
#include "core/Meta.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kNoTexts[] = "%s gives no creation texts, which the exact dialect compares";
constexpr char kLeftAlone[] = "Left alone: %s %s of the %s";
constexpr char kVersionedAlone[] = "Left alone: system-versioned table %s";
constexpr char kIsVersioned[] = "it is system-versioned, and differs";
constexpr char kIsOther[] = "there is a %s of this name";

enum class EState { Listed, Read, Failed };

struct TSideReader {
  TSideReader(const char* side, TDBConn& connection, TReadSide& result) : name(side), conn(connection), read(result) {
    texts = dynamic_cast<TCreationTexts*>(&conn);
    if (texts != nullptr) return;
    std::string shown;
    conn.GetDisplayName(shown);
    RaiseError(Format(kNoTexts, shown));
  }
  bool Lists(const std::string& table) const { return states.contains(table); }
  bool AtEnd() const { return next == tables.size(); }

  const char* name;
  TDBConn& conn;
  TCreationTexts* texts;
  TReadSide& read;
  std::unordered_map<std::string, std::string> others;  // kinds of views and sequences, by name
  TStringList tables;                                   // to be read, in order
  std::size_t next = 0;
  std::unordered_map<std::string, EState> states;  // of these
};

// Whether the text has `word` around the place of its letter number `letter`.
bool HasWordAt(std::string_view text, std::size_t place, std::size_t letter, std::string_view word) {
  return place >= letter && SameText(text.substr(place - letter, word.size()), word);
}

// Whether a text that is the same on both sides matters all the same: its foreign keys may stand in the way of changes
// of other tables. Most texts of a comparison come here and do not, so the rarest letters of the words lead.
bool MattersToOthers(std::string_view text) {
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char letter = LowerChar(text[i]);
    if (letter == 'f' && HasWordAt(text, i, 2, "references")) return true;
    if (letter == 'g' && HasWordAt(text, i, 9, "versioning")) return true;
    if (letter == 'w' && HasWordAt(text, i, 2, "row start")) return true;
  }
  return false;
}

class TPairReader {
 public:
  TPairReader(TDBConn& reference, TDBConn& target, TProgress& progress, std::string& table_under_way, TReadPair& pair)
      : pair_(pair),
        reference_("reference", reference, pair.reference),
        target_("target", target, pair.target),
        progress_(progress),
        table_under_way_(table_under_way) {}

  void Read() {
    ListOthers(reference_);
    ListOthers(target_);
    ListTables(reference_, target_);
    ListTables(target_, reference_);
    RunGuarded([this] { ReadTables(); },
               [this] {
                 reference_.texts->ExpectCreationTexts({});
                 target_.texts->ExpectCreationTexts({});
               });
  }

 private:
  void ListOthers(TSideReader& side) {
    for (const TOtherObject& object : side.texts->OtherObjects()) {
      pair_.left_alone.push_back(Format(kLeftAlone, object.kind, object.name, side.name));
      if (object.kind == "view" || object.kind == "sequence") side.others.emplace(object.name, object.kind);
    }
  }

  void ListTables(TSideReader& side, const TSideReader& other) {
    TStringList listed;
    side.conn.meta().TableNames(listed);
    for (std::string& table : listed) {
      if (side.others.contains(table)) continue;
      if (const auto object = other.others.find(table); object != other.others.end()) {
        Skip(other, table, Format(kIsOther, object->second));
        continue;
      }
      side.states.emplace(table, EState::Listed);
      side.tables.push_back(std::move(table));
    }
  }

  void ReadTables() {
    reference_.texts->ExpectCreationTexts(reference_.tables);
    target_.texts->ExpectCreationTexts(target_.tables);
    const auto count = static_cast<std::int64_t>(reference_.tables.size() + target_.tables.size());
    progress_.ShowTwoBars("Analyzing structure...", count);
    progress_.StartDetail("Reading tables", count);
    while (!reference_.AtEnd() || !target_.AtEnd()) {
      ReadNext(reference_);
      ReadNext(target_);
    }
  }

  void ReadNext(TSideReader& side) {
    if (side.AtEnd()) return;
    const std::string& table = side.tables[side.next++];
    progress_.StepDetail();
    Host().ProcessMessages();
    table_under_way_ = table;
    side.states[table] = ReadText(side, table) ? EState::Read : EState::Failed;
    Take(table);
  }

  bool ReadText(TSideReader& side, const std::string& table) {
    try {
      side.texts->ShowCreateTable(table, side.read.texts[table]);
      return true;
    } catch (const EAbort&) {
      throw;
    } catch (const EVelmora& error) {
      side.read.texts.erase(table);
      if (!side.conn.GetConnected()) throw;
      Skip(side, table, error.what());
      return false;
    }
  }

  // Once all is read that there is of a table.
  void Take(const std::string& table) {
    TReading reading[] = {{reference_}, {target_}};
    for (TReading& of : reading) {
      const auto state = of.side.states.find(table);
      if (state == of.side.states.end()) continue;
      if (state->second != EState::Read) return;
      of.text = &of.side.read.texts.find(table)->second;
    }
    const bool same = reading[0].text != nullptr && reading[1].text != nullptr && *reading[0].text == *reading[1].text;
    if (same && !MattersToOthers(*reading[0].text)) return;
    for (TReading& of : reading)
      if (of.text != nullptr && !TakeApart(of, table, same)) return;
    if (LeftAlone(reading[0].table, reading[1].table, table)) return;
    for (TReading& of : reading)
      if (of.text != nullptr) of.side.read.schema.Add(std::move(of.table));
  }

  struct TReading {
    TSideReader& side;
    const std::string* text = nullptr;  // null where the side does not have the table
    TTableText table{};
  };

  // Of texts that are the same it does not matter what they say.
  bool TakeApart(TReading& of, const std::string& table, bool same) {
    try {
      of.table = ReadTableText(*of.text);
      return true;
    } catch (const EVelmora& error) {
      if (!same) Skip(of.side, table, error.what());
      return false;
    }
  }

  bool LeftAlone(const TTableText& reference, const TTableText& target, const std::string& table) {
    if (!reference.system_versioned && !target.system_versioned) return false;
    pair_.left_alone.push_back(Format(kVersionedAlone, table));
    TEquivalenceUse use;
    const bool both = reference.system_versioned && target.system_versioned;
    if (!both || !CompareTableTexts(reference, target, use).empty())
      Skip(reference.system_versioned ? reference_ : target_, table, kIsVersioned);
    return true;
  }

  void Skip(const TSideReader& side, const std::string& table, const std::string& reason) {
    pair_.skipped.push_back({side.name, table, reason});
  }

  TReadPair& pair_;
  TSideReader reference_;
  TSideReader target_;
  TProgress& progress_;
  std::string& table_under_way_;
};

TChange WholeTable(TSyncAction action, const TTableText& table) {
  TChange change;
  change.action = action;
  change.table = table.name;
  (action == saDropTable ? change.old_text : change.new_text) = CreationTextOf(table);
  return change;
}

}  // namespace

void ReadPair(TDBConn& reference, TDBConn& target, TProgress& progress, std::string& table_under_way, TReadPair& pair) {
  TPairReader(reference, target, progress, table_under_way, pair).Read();
}

std::vector<TChange> SchemaChanges(const TSchema& reference, const TSchema& target, TEquivalenceUse& use) {
  std::vector<TChange> changes;
  for (const TTableText& table : target.Tables()) {
    if (reference.Find(table.name) != nullptr) continue;
    changes.push_back(WholeTable(saDropTable, table));
    changes.back().unsafe = UnsafeChange(changes.back(), table, {});
  }
  for (const TTableText& table : reference.Tables()) {
    const TTableText* former = target.Find(table.name);
    if (former == nullptr) continue;
    for (TChange& change : CompareTableTexts(table, *former, use)) changes.push_back(std::move(change));
  }
  for (const TTableText& table : reference.Tables())
    if (target.Find(table.name) == nullptr) changes.push_back(WholeTable(saCreateTable, table));
  return changes;
}

}  // namespace velmora

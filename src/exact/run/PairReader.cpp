// SPDX-License-Identifier: GPL-3.0-or-later
#include "exact/run/PairReader.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <deque>
#include <exception>
#include <initializer_list>
#include <memory>
#include <optional>
#include <set>
#include <unordered_map>
#include <utility>

#include "core/CreationTexts.h"
#include "core/Host.h"
#include "core/Meta.h"
#include "exact/compare/Dependence.h"
#include "exact/compare/PrintedTable.h"
#include "exact/compare/Safety.h"
#include "exact/compare/ServerCompletion.h"
#include "exact/compare/ServerLanguage.h"
#include "exact/compare/Translation.h"
#include "exact/objects/FoldedNames.h"
#include "exact/plan/FileSchema.h"
#include "exact/run/MissingSequences.h"
#include "mysqltext/ElementText.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kNoTexts[] = "%s gives no creation texts, which the exact dialect compares";
constexpr char kLeftAlone[] = "Left alone: %s %s of the %s";
constexpr char kObsoleteAlone[] = "Left alone: table %s, which the target alone has";
constexpr char kVersionedAlone[] = "Left alone: system-versioned table %s";
constexpr char kIsVersioned[] = "it is system-versioned, and differs";
constexpr char kMissing[] = "%s does not have: %s";
constexpr char kBeside[] = "it refers to table %s, which is skipped";
constexpr char kBelow[] = "table %s, which is skipped, refers to what changes of it";
constexpr char kNoTablesCompared[] = "Tables are not compared: the reference has none, but views, triggers or routines";
constexpr char kIsOther[] = "there is a %s of this name";
constexpr char kTableMayBeHidden[] = "not read: the %s may have it, and its login may not see all tables";
constexpr char kSameName[] = "to the target's server %s are the same name";
constexpr char kNotSeen[] = "Not read: %s of the %s, as its login may not see all of them";

// Tables whose texts are taken of one side before those of the other: its server answers meanwhile.
constexpr std::size_t kTurn = 32;

enum class EState { Listed, Read, Failed };

struct TListedTable {
  EState state = EState::Listed;
  const std::string* text = nullptr;  // once it is read
};

// What a server said when it was asked for a table.
struct TFetched {
  std::string text;
  std::exception_ptr error;
  bool lost = false;  // there was no connection any more
};

struct TSideReader {
  // `made` gives the texts of a side that has none.
  TSideReader(const char* side, TDBConn& connection, TTextMaker* made, TReadSide& result)
      : name(side), conn(connection), maker(made), read(result) {
    texts = dynamic_cast<TCreationTexts*>(&conn);
    if (texts != nullptr) not_followed = texts->NotFollowed();
    if (texts != nullptr || maker != nullptr) return;
    std::string shown;
    conn.GetDisplayName(shown);
    RaiseError(Format(kNoTexts, shown));
  }
  bool AtEnd() const { return next == tables.size(); }
  const TStructureScript* Script() const { return texts == nullptr ? nullptr : texts->StructureScript(); }
  std::string Database() const {
    if (texts == nullptr) return {};
    const TStructureScript* script = Script();
    return script == nullptr ? texts->TextsDatabase() : script->database;
  }
  void Expect(const TStringList& names) const {
    if (texts != nullptr) texts->ExpectCreationTexts(names);
  }
  void ReadFile(const TServerTraits& server) {
    const TStructureScript* script = Script();
    if (script == nullptr) return;
    file = std::make_unique<TFileSchema>(*script, server);
    not_followed = file->Unknown();
  }
  // Whether the side may have more than it shows.
  // The name that the side itself has for the table.
  const std::string& Own(const std::string& table) const {
    const auto found = own_names.find(table);
    return found == own_names.end() ? table : found->second;
  }
  bool MayHideMore() const { return !not_followed.empty(); }
  // Empty, or why the side may have a table that it does not show.
  std::string WhyTableMayBeThere() const {
    return MayHideMore() ? not_followed.front() : hides_tables ? Format(kTableMayBeHidden, name) : "";
  }

  const char* name;
  TDBConn& conn;
  TTextMaker* maker;      // null for a side with texts of its own
  TCreationTexts* texts;  // null for one without
  TReadSide& read;
  std::unique_ptr<TFileSchema> file;                    // of a side that is a script
  TStringList not_followed;                             // statements that may have made or changed tables unseen
  bool hides_tables = false;                            // its login may not see all
  std::unordered_map<std::string, std::string> others;  // kinds of views and sequences, by name
  std::map<std::string, std::string> own_names;         // of tables and views that are spelt as the target has them
  TStringList tables;                                   // to be read, in order
  std::size_t next = 0;
  std::deque<TFetched> fetched;                          // those from `next` on that were asked for
  std::unordered_map<std::string, TListedTable> listed;  // these by name
};

constexpr char UpperChar(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }

// In what the server differs; the newest MariaDB where neither side is one.
TServerTraits TraitsOf(TDBConn& conn) {
  auto* texts = dynamic_cast<TCreationTexts*>(&conn);
  if (texts == nullptr || texts->StructureScript() != nullptr) return {};
  TServerTraits traits = ReadServerTraits(texts->ServerVersion());
  TVariant value;
  // What it is for whoever runs the file: our own session has every timestamp spelt out.
  conn.GetResultSQL("select @@global.explicit_defaults_for_timestamp", value);
  traits.explicit_timestamps = VarToText(value) != "0";
  conn.GetResultSQL("select length(localtime)", value);
  traits.local_time_of_day = VarToText(value) == std::to_string(std::string_view("00:00:00").size());
  return traits;
}

// Whether `holds` is true of the place after an occurrence of the word, which is in lower case. Texts that are the
// same on both sides are most of a comparison, so that this looks for one letter of the word that is rare in them.
template <class THolds>
bool AnyOccurrence(std::string_view text, std::string_view word, std::size_t rare, THolds holds) {
  for (const char letter : {word[rare], UpperChar(word[rare])}) {
    for (std::size_t at = text.find(letter, rare); at != std::string_view::npos; at = text.find(letter, at + 1))
      if (SameText(text.substr(at - rare, word.size()), word) && holds(at - rare + word.size())) return true;
  }
  return false;
}

// Versioned tables are named in the log, even if they are the same.
bool SpeaksOfVersioning(std::string_view text) {
  return AnyOccurrence(text, "versioning", 0, [](std::size_t) { return true; });
}

// Whether a foreign key of the text may refer to one of the tables, which are in lower case. Takes for a foreign key
// whatever looks like one, and for a reference to any table what does not stand as servers print it.
bool MayReferTo(std::string_view text, const TTableNames& tables) {
  return AnyOccurrence(text, "references", 2, [&](std::size_t after) {
    constexpr std::string_view kOpen = " `";
    const std::size_t name = after + kOpen.size();
    const std::size_t end = text.find('`', name);
    if (text.substr(after, kOpen.size()) != kOpen || end == std::string_view::npos) return true;
    return text.substr(end + 1, 2) != " (" || tables.contains(LowerText(text.substr(name, end - name)));
  });
}

// By how a server prints it: "CREATE TABLE `name` (". True where that is not certain.
bool MayBeOneOf(std::string_view text, const TTableNames& tables) {
  constexpr std::string_view kHead = "CREATE TABLE `";
  if (!text.starts_with(kHead)) return true;
  const std::size_t end = text.find('`', kHead.size());
  if (end == std::string_view::npos || text.substr(end + 1, 2) != " (") return true;
  return tables.contains(LowerText(text.substr(kHead.size(), end - kHead.size())));
}

void AddParents(const TTableText* table, TTableNames& parents) {
  if (table == nullptr) return;
  for (const TElement& element : table->elements)
    if (element.kind == EElement::ForeignKey) parents.insert(LowerText(element.text.ForeignKey().table));
}

class TPairReader {
 public:
  TPairReader(TDBConn& reference, TDBConn& target, const TReadWishes& wishes, TProgress& progress,
              std::string& table_under_way, TTextMaker* maker, TReadPair& pair)
      : pair_(pair),
        reference_(kReferenceSide, reference, maker, pair.reference),
        target_(kTargetSide, target, nullptr, pair.target),
        collations_(wishes.collations),
        selection_(wishes.selection),
        reference_version_(wishes.reference_version),
        target_version_(wishes.target_version),
        progress_(progress),
        table_under_way_(table_under_way) {}

  void Read() {
    ReadFiles();
    AskLanguages();
    pair_.servers = {reference_server_, server_, across_};
    AskForCase();
    TDatabaseObjects wanted = ListOthers(reference_);
    TDatabaseObjects there = ListOthers(target_);
    LeaveTwins(wanted, there);
    LeaveTables(wanted);
    AskWhatIsHidden(reference_, wanted);
    AskWhatIsHidden(target_, there);
    LookForLeftOut(reference_, wanted, there);
    LookForLeftOut(target_, there, wanted);
    AskClientsMode(wanted, there);
    if (reference_.maker == nullptr) {
      pair_.wanted_objects = std::move(wanted);
      pair_.target_objects = std::move(there);
    }
    if (reference_.maker != nullptr) ReadReference(*reference_.maker);
    ListTables(reference_, target_);
    ListTables(target_, reference_);
    RunGuarded([this] { ReadTables(); },
               [this] {
                 reference_.Expect({});
                 target_.Expect({});
               });
  }

 private:
  void ReadFiles() {
    ReadScripts();
    for (const TSideReader* side : {&reference_, &target_})
      pair_.not_followed.insert(pair_.not_followed.end(), side->not_followed.begin(), side->not_followed.end());
  }

  // A script is read as the server would that it is of: the one that the wishes name, or else the other side's.
  void ReadScripts() {
    const bool reference = reference_.Script() != nullptr;
    const bool target = target_.Script() != nullptr;
    if (!reference && !target) return;
    const auto told = [](const std::string& version) -> std::optional<TServerTraits> {
      return version.empty() ? std::nullopt : std::optional(ReadServerTraits(version));
    };
    const auto ours = reference ? told(reference_version_) : std::optional(TraitsOf(reference_.conn));
    const auto theirs = target ? told(target_version_) : std::optional(TraitsOf(target_.conn));
    server_ = theirs ? *theirs : ours ? *ours : TraitsOf(target_.conn);
    reference_server_ = ours ? *ours : server_;
    across_ = ours && theirs && !SpeakAlike(reference_server_, server_);
    reference_.ReadFile(across_ ? reference_server_ : server_);
    target_.ReadFile(server_);
  }

  // The whole of it, before its tables are made: they hang together.
  void ReadReference(TTextMaker& maker) {
    TStringList there = TablesOf(target_);
    std::erase_if(there, [this](const std::string& table) { return target_.others.contains(table); });
    bool first = true;
    maker.Read(target_.conn, there, [&](const std::string& table, std::size_t count) {
      if (first) progress_.ShowOneBar("Reading the reference...", static_cast<std::int64_t>(count));
      first = false;
      progress_.StepTotal();
      Host().ProcessMessages();
      table_under_way_ = table;
    });
    table_under_way_.clear();
  }

  // Servers of two products or releases do not have the same things.
  void AskLanguages() {
    if (reference_.file != nullptr || target_.file != nullptr || reference_.maker != nullptr) return;
    const std::string versions[] = {reference_.texts->ServerVersion(), target_.texts->ServerVersion()};
    if (versions[0].empty() || versions[1].empty()) return;  // the target's server has read the file
    reference_server_ = ReadServerTraits(versions[0]);
    server_ = ReadServerTraits(versions[1]);
    across_ = !SpeakAlike(reference_server_, server_);
  }

  // Where letter case in names of tables is nothing to the target's server, the reference's are spelt as it has them.
  void AskForCase() {
    if (target_.texts == nullptr || target_.Script() != nullptr) return;
    TVariant rule;
    target_.conn.GetResultSQL("select @@lower_case_table_names", rule);
    pair_.case_counts = VarToText(rule) == "0";
    if (pair_.case_counts || reference_.maker != nullptr) return;
    TStringList given;
    if (VarToText(rule) != "1")
      for (const TSideReader* side : {&target_, &reference_})
        for (std::string& name : NamesOf(*side)) given.push_back(std::move(name));
    names_ = TFoldedNames([this](const std::string& name) { return SmallLetters(name); }, given);
  }

  // The server knows more letters than these.
  std::string SmallLetters(const std::string& name) {
    if (std::ranges::all_of(name, [](char c) { return static_cast<unsigned char>(c) < 0x80; })) return LowerText(name);
    const auto [known, added] = small_letters_.try_emplace(name);
    if (!added) return known->second;
    TVariant small;
    target_.conn.GetResultSQL("select lower(convert(" + QuotedText(name) + " using utf8))", small);
    return known->second = VarToText(small);
  }

  // Names that are two to the reference and one to the target's server.
  void LeaveTwins(TDatabaseObjects& wanted, TDatabaseObjects& there) {
    if (!names_.Folds()) return;
    for (const std::string& table : NamesOf(reference_)) NoteOwn(table);
    for (const auto& [name, twins] : twins_) {
      if (!selection_.ReadsTable(name) && !selection_.TakesObject("view", name, {})) continue;
      const TStringList known = NamesOf(target_);
      const TSideReader& side = IndexOf(known, name) == kNotInList ? reference_ : target_;
      Skip(side, name, Format(kSameName, JoinList({twins.begin(), twins.end()}, " and ")), true);
      for (TDatabaseObjects* objects : {&wanted, &there})
        if (std::erase_if(objects->objects,
                          [&, &twin = name](const TOtherObject& of) { return OfTables(of) && of.name == twin; }))
          pair_.put_aside = true;
    }
  }
  void NoteOwn(const std::string& own) {
    const auto [known, added] = reference_.own_names.try_emplace(names_.Spelled(own), own);
    if (!added && known->second != own) twins_[known->first].insert({known->second, own});
  }
  static bool OfTables(const TOtherObject& object) { return object.kind == "view" || object.kind == "sequence"; }

  TDatabaseObjects ListOthers(TSideReader& side) {
    if (side.texts == nullptr) return {};
    TDatabaseObjects others{side.Database(), side.texts->OtherObjects()};
    if (names_.Folds() && &side == &reference_)
      for (const TOtherObject& object : others.objects)
        if (OfTables(object)) NoteOwn(object.name);
    SpellNames(names_, others);
    for (const TOtherObject& object : others.objects)
      if (OfTables(object)) side.others.emplace(object.name, object.kind);
    LeaveOut(selection_, others, pair_.left_out);
    for (const TOtherObject& object : others.objects)
      if (reference_.maker != nullptr || !IsScriptedKind(object.kind))
        pair_.left_alone.push_back(Format(kLeftAlone, object.kind, object.name, side.name));
    return others;
  }

  // Objects of a script that says no mode are made as a client of the server would make them.
  void AskClientsMode(TDatabaseObjects& wanted, TDatabaseObjects& there) {
    const auto of_client = [](const TOtherObject& object) { return object.context.of_client; };
    if (std::ranges::none_of(wanted.objects, of_client) && std::ranges::none_of(there.objects, of_client)) return;
    for (const auto& [side, objects] : {std::pair(&reference_, &wanted), std::pair(&target_, &there)}) {
      if (side->texts == nullptr || side->Script() != nullptr || side->texts->ServerVersion().empty()) continue;
      TVariant mode;
      side->conn.GetResultSQL("select @@global.sql_mode", mode);
      objects->clients_mode = VarToText(mode);
    }
  }

  // A script of views or routines says nothing of tables. The target's are read all the same: views name their columns.
  void LeaveTables(const TDatabaseObjects& wanted) {
    const bool any =
        std::ranges::any_of(wanted.objects, [](const auto& object) { return IsScriptedKind(object.kind); });
    pair_.objects_alone =
        any && reference_.file != nullptr && !reference_.MayHideMore() && TablesOf(reference_).empty();
    if (pair_.objects_alone) pair_.left_alone.emplace_back(kNoTablesCompared);
  }

  // What a login does not see is hidden whatever the other side has.
  void AskWhatIsHidden(TSideReader& side, TDatabaseObjects& here) {
    if (side.texts == nullptr) return;
    here.not_all_seen = side.texts->KindsHidden();
    side.hides_tables = IndexOf(here.not_all_seen, "table") != kNotInList;
    TStringList compared = here.not_all_seen;
    std::erase_if(compared, [this](const std::string& kind) {
      return kind == "table" ? pair_.objects_alone : reference_.maker != nullptr;
    });
    if (compared.empty()) return;
    TStringList missed = MissedKinds(selection_, compared, here.objects, TablesOf(side));
    if (!missed.empty()) pair_.not_seen.push_back({side.name, std::move(missed)});
  }

  // What a script leaves out it says nothing of, which matters where the other side has something more.
  static void LookForLeftOut(const TSideReader& side, TDatabaseObjects& here, const TDatabaseObjects& other) {
    std::set<std::pair<std::string, std::string>> seen;
    for (const TOtherObject& object : here.objects) seen.emplace(object.kind, LowerText(object.name));
    const bool matters = std::ranges::any_of(other.objects, [&](const TOtherObject& object) {
      return IsScriptedKind(object.kind) && !seen.contains({object.kind, LowerText(object.name)});
    });
    if (!matters || side.texts == nullptr) return;
    const TStringList kinds = side.MayHideMore() ? ScriptedKinds() : side.texts->KindsLeftOut();
    here.not_all_seen.insert(here.not_all_seen.end(), kinds.begin(), kinds.end());
  }

  // A view in the place of a table is dropped for no table that is left out of the comparison.
  void LeaveAlone(const TSideReader& side, const std::string& name, const std::string& kind) {
    auto& objects = (&side == &reference_ ? pair_.wanted_objects : pair_.target_objects).objects;
    const auto is_it = [&](const TOtherObject& object) { return object.kind == kind && object.name == name; };
    if (!IsScriptedKind(kind) || std::erase_if(objects, is_it) == 0) return;
    pair_.left_alone.push_back(Format(kLeftAlone, kind, name, side.name));
    pair_.put_aside = true;
  }

  // Without those that are left alone together.
  TStringList TablesOf(const TSideReader& side) const {
    TStringList names = NamesOf(side);
    if (!names_.Folds()) return names;
    for (std::string& name : names) name = names_.Spelled(name);
    std::erase_if(names, [this](const std::string& name) { return twins_.contains(name); });
    return names;
  }

  static TStringList NamesOf(const TSideReader& side) {
    if (side.file != nullptr) return side.file->TableNames();
    if (side.maker != nullptr) return side.maker->Tables();
    TStringList names;
    side.conn.meta().TableNames(names);
    return names;
  }

  void ListTables(TSideReader& side, const TSideReader& other) {
    TTableNames theirs;
    const std::string hidden = other.WhyTableMayBeThere();
    if (!hidden.empty())
      for (std::string& table : TablesOf(other)) theirs.insert(std::move(table));
    for (std::string& table : TablesOf(side)) {
      if (side.others.contains(table) || LeftOut(side, table)) continue;
      if (const auto object = other.others.find(table); object != other.others.end()) {
        Skip(other, table, Format(kIsOther, object->second));
        LeaveAlone(other, table, object->second);
        continue;
      }
      if (!hidden.empty() && !theirs.contains(table)) {
        Skip(other, table, hidden);
        continue;
      }
      side.listed.emplace(table, TListedTable());
      side.tables.push_back(std::move(table));
    }
  }

  bool LeftOut(const TSideReader& side, const std::string& table) {
    if (selection_.ReadsTable(table)) return false;
    if (&side == &target_) pair_.left_out.target.push_back(table);
    if (&side == &reference_) pair_.reference_left_out = true;
    if (&side == &reference_ || !reference_tables_.contains(table)) pair_.left_out.tables.push_back(table);
    if (&side == &reference_) reference_tables_.insert(table);
    return true;
  }

  void ReadTables() {
    TStringList own;
    for (const std::string& table : reference_.tables) own.push_back(reference_.Own(table));
    reference_.Expect(own);
    target_.Expect(target_.tables);
    const auto count = static_cast<std::int64_t>(reference_.tables.size() + target_.tables.size());
    progress_.ShowTwoBars("Analyzing structure...", count);
    progress_.StartDetail("Reading tables", count);
    // What is made takes from the target.
    while (reference_.maker != nullptr && !target_.AtEnd()) ReadTurn({&target_});
    while (!reference_.AtEnd() || !target_.AtEnd()) ReadTurn({&reference_, &target_});
    FillSchemas();
  }

  void ReadTurn(std::initializer_list<TSideReader*> sides) {
    for (TSideReader* side : sides) Fetch(*side);
    for (std::size_t i = 0; i < kTurn; ++i)
      for (TSideReader* side : sides) ReadNext(*side);
  }

  void Fetch(TSideReader& side) {
    if (side.file != nullptr || side.maker != nullptr) return;
    const std::size_t end = std::min(side.next + kTurn, side.tables.size());
    for (std::size_t i = side.next; i < end && (side.fetched.empty() || !side.fetched.back().lost); ++i) {
      TFetched& answer = side.fetched.emplace_back();
      try {
        side.texts->ShowCreateTable(side.Own(side.tables[i]), answer.text);
      } catch (const EAbort&) {
        throw;
      } catch (const EVelmora&) {
        answer.error = std::current_exception();
        answer.lost = !side.conn.GetConnected();
      }
    }
  }

  void ReadNext(TSideReader& side) {
    if (side.AtEnd()) return;
    const std::string& table = side.tables[side.next++];
    progress_.StepDetail();
    Host().ProcessMessages();
    table_under_way_ = table;
    ReadText(side, table, side.listed[table]);
    Take(table);
  }

  void ReadText(TSideReader& side, const std::string& table, TListedTable& listed) {
    // Lists are in order, so that the end is the place of almost every table.
    const auto text = side.read.texts.try_emplace(side.read.texts.end(), table);
    bool lost = false;
    try {
      if (side.file != nullptr)
        text->second = FileText(*side.file, side.Own(table));
      else if (side.maker == nullptr)
        text->second = TakeFetched(side, lost);
      if (&side == &reference_) MapCollations(collations_, text->second);
      listed = {EState::Read, &text->second};
    } catch (const EAbort&) {
      throw;
    } catch (const EVelmora& error) {
      side.read.texts.erase(text);
      if (lost) throw;
      Skip(side, table, error.what(), true);
      listed.state = EState::Failed;
    }
  }

  static std::string TakeFetched(TSideReader& side, bool& lost) {
    TFetched answer = std::move(side.fetched.front());
    side.fetched.pop_front();
    lost = answer.lost;
    if (answer.error) std::rethrow_exception(answer.error);
    return std::move(answer.text);
  }

  // What the script says may be all that it takes to see that both sides are the same.
  static std::string FileText(TFileSchema& file, const std::string& table) {
    const std::string_view* plain = file.PlainText(table);
    return plain != nullptr ? std::string(*plain) : CreationTextOf(file.Table(table));
  }

  // Otherwise what it makes is looked at: null for a table that has no such script, or more of it.
  const TTableText* Settle(TSideReader& side, const std::string& table) {
    if (side.file == nullptr || side.file->PlainText(side.Own(table)) == nullptr) return nullptr;
    const TTableText& made = side.file->Table(side.Own(table));
    std::string& text = side.read.texts.at(table);
    text = CreationTextOf(made);
    if (&side == &reference_) MapCollations(collations_, text);
    return &made;
  }

  // Once all is read that there is of a table.
  void Take(const std::string& table) {
    if (pair_.objects_alone) {  // which the target has, as the reference has none
      pair_.left_out.tables.push_back(table);
      return pair_.left_out.target.push_back(table);
    }
    TReading reading[] = {{reference_}, {target_}};
    for (TReading& of : reading) {
      const auto listed = of.side.listed.find(table);
      if (listed == of.side.listed.end()) continue;
      if (listed->second.state != EState::Read) return;
      of.text = listed->second.text;
    }
    if (reference_.maker != nullptr) return TakeMade(reading[0], reading[1], table);
    const bool same = reading[0].text != nullptr && reading[1].text != nullptr && *reading[0].text == *reading[1].text;
    // A sequence of the reference's database is to be the target's there, and another one here.
    if (same && !SpeaksOfVersioning(*reading[0].text) && !MayNameSequence(*reading[0].text)) {
      taken_.push_back({reading[0].text, nullptr, nullptr});
      return;
    }
    for (TReading& of : reading)
      if (of.text != nullptr && !TakeApart(of, table, same)) return;
    if (reading[0].text != nullptr)
      SpellNames(names_, server_, reading[1].text == nullptr ? nullptr : &reading[1].table, reading[0].table);
    if (!Complete(reading[0], reading[1]) || !Complete(reading[1], reading[0])) return;
    if (MayDifferUnseen(reading[0], reading[1], table)) return;
    if (LeftAlone(reading[0].table, reading[1].table, table)) return;
    if (across_ && !TakeAcross(reading[0], reading[1])) return;
    TTaken& taken = taken_.emplace_back();
    taken.reference = reading[0].Give();
    taken.target = reading[1].Give();
  }

  struct TReading {
    TSideReader& side;
    const std::string* text = nullptr;  // null where the side does not have the table
    const TTableText* made = nullptr;   // by a script
    TTableText table{};

    // The table once all is done that this is read for; null for none.
    std::unique_ptr<TTableText> Give() {
      if (text == nullptr) return nullptr;
      table.ForgetReadings();
      if (made != nullptr) made->ForgetReadings();
      return std::make_unique<TTableText>(std::move(table));
    }
  };

  // A table that the target alone has is the reference's, too, where it is left alone.
  void TakeMade(TReading& reference, TReading& target, const std::string& table) {
    if (target.text != nullptr && (!TakeApart(target, table, false) || !Complete(target, {reference_}))) return;
    if (reference.text != nullptr && !MakeTable(reference, target, table)) return;
    const bool kept = reference.text == nullptr && !reference_.maker->DropsObsolete();
    if (kept) pair_.left_alone.push_back(Format(kObsoleteAlone, table));
    if (LeftAlone(kept ? target.table : reference.table, target.table, table)) return;
    TTaken& taken = taken_.emplace_back();
    taken.target = target.Give();
    taken.reference = kept ? std::make_unique<TTableText>(*taken.target) : reference.Give();
  }

  bool MakeTable(TReading& of, const TReading& there, const std::string& table) {
    try {
      TMadeTable made = of.side.maker->Make(table, there.text == nullptr ? nullptr : &there.table);
      of.table = std::move(made.table);
      of.side.read.texts.at(table) = std::move(made.shown);
      return true;
    } catch (const EVelmora& error) {
      Skip(of.side, table, error.what(), true);
      of.side.read.texts.erase(table);
      return false;
    }
  }

  // The reference's table as the target's server would have it. False where that has no words for it.
  bool TakeAcross(TReading& reference, const TReading& target) {
    if (reference.text == nullptr) return true;
    TTableText& table = reference.table;
    try {
      TranslateTable(table, reference_server_, server_);
      const TStringList missing = MissingOn(server_, table, reference_server_.mysql != server_.mysql);
      if (!missing.empty()) RaiseError(Format(kMissing, ServerName(server_), JoinList(missing, "; ")));
      if (reference_server_.mysql != server_.mysql)
        CompleteTable(table, target.text == nullptr ? nullptr : &target.table, server_);
      return true;
    } catch (const EVelmora& error) {
      Skip(reference.side, table.name, error.what());
      return false;
    }
  }

  // A script leaves to its server what the other side tells. False where the table cannot be followed.
  bool Complete(TReading& of, const TReading& other) {
    const bool elsewhere = across_ && reference_server_.mysql != server_.mysql;  // then that comes later
    if (of.side.file == nullptr || of.text == nullptr || elsewhere) return true;
    try {
      CompleteTable(of.table, other.text == nullptr ? nullptr : &other.table, server_);
      return true;
    } catch (const EVelmora& error) {
      Skip(of.side, of.table.name, of.side.file->NotFollowed(of.side.Own(of.table.name), error.what()));
      return false;
    }
  }

  // What a statement of a script may have changed unseen is not changed back.
  bool MayDifferUnseen(const TReading& reference, const TReading& target, const std::string& table) {
    if (reference.text == nullptr || target.text == nullptr) return false;
    TEquivalenceUse use;
    for (const TReading* of : {&reference, &target}) {
      if (!of->side.MayHideMore() || CompareTableTexts(reference.table, target.table, use).empty()) continue;
      Skip(of->side, table, of->side.not_followed.front());
      return true;
    }
    return false;
  }

  // Of texts that are the same it does not matter what they say.
  bool TakeApart(TReading& of, const std::string& table, bool same) {
    try {
      of.made = Settle(of.side, table);
    } catch (const EVelmora& error) {
      Skip(of.side, table, error.what(), true);
      return false;
    }
    try {
      const bool maps = &of.side == &reference_ && !collations_.empty();
      if (of.side.file == nullptr || across_)
        of.table = ReadPrintedTable(*of.text, !across_);
      else
        of.table = of.made != nullptr && !maps ? *of.made : ReadTableWithoutRawLineEnds(*of.text, Tokens(*of.text));
      // The reference's own sequences are to be the target's.
      if (&of.side == &reference_) MoveSequences(of.table, reference_.Database(), target_.Database());
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

  // A table of which all is read.
  struct TTaken {
    const std::string* shared_text = nullptr;  // of both sides, as long as it is not taken apart
    std::unique_ptr<TTableText> reference;
    std::unique_ptr<TTableText> target;
  };

  void FillSchemas() {
    if (across_) LeaveTogether();
    LeaveWithoutSequences();
    while (!pair_.skipped.empty() && LeaveDependents()) {
    }
    TTableNames changing, parents;  // in lower case
    for (const TTaken& taken : taken_) {
      AddParents(taken.reference.get(), parents);
      AddParents(taken.target.get(), parents);
      if (taken.reference != nullptr) changing.insert(LowerText(taken.reference->name));
      if (taken.target != nullptr) changing.insert(LowerText(taken.target->name));
    }
    if (changing.empty()) return;
    for (TTaken& taken : taken_) {
      const bool hangs_on =
          taken.shared_text != nullptr &&
          (MayReferTo(*taken.shared_text, changing) || (!parents.empty() && MayBeOneOf(*taken.shared_text, parents)));
      if (hangs_on) TakeApartShared(taken);
      if (taken.reference != nullptr) pair_.reference.schema.Add(std::move(*taken.reference));
      if (taken.target != nullptr) pair_.target.schema.Add(std::move(*taken.target));
    }
  }

  // Leaves what the reference's tables cannot have together on the target's server, and names that this does not know.
  void LeaveTogether() {
    std::vector<const TTableText*> tables;
    for (const TTaken& taken : taken_)
      if (taken.reference != nullptr) tables.push_back(taken.reference.get());
    std::map<std::string, std::string> reasons = MissingTogether(server_, tables);
    TKnownSets known(target_.conn);
    for (const TTableText* table : tables)
      if (std::string unknown = known.UnknownIn(reference_.read.texts.at(table->name)); !unknown.empty())
        reasons[table->name] = std::move(unknown);
    LeaveWhere([&](const TTaken& taken) {
      const auto reason = reasons.find(taken.reference == nullptr ? "" : taken.reference->name);
      return reason == reasons.end() ? "" : Format(kMissing, ServerName(server_), reason->second);
    });
  }

  // A server that has a sequence to look for does so when the table is made.
  void LeaveWithoutSequences() {
    if (target_.texts == nullptr || target_.Script() != nullptr || target_.texts->ServerVersion().empty()) return;
    if (ReadServerTraits(target_.texts->ServerVersion()).mysql) return;
    TMissingSequences missing(target_.conn);
    LeaveWhere([&](const TTaken& taken) {
      return taken.reference == nullptr ? "" : missing.WhyNot(*taken.reference, taken.target.get());
    });
  }

  // Tables whose changes need what a skipped table may not have, or what it refers to. False when there is none.
  bool LeaveDependents() {
    TTableNames skipped;
    for (const TSkippedTable& table : pair_.skipped) skipped.insert(table.table);
    std::vector<TStayingTable> stay;
    for (const std::string& name : skipped)
      if (const auto text = target_.read.texts.find(name); text != target_.read.texts.end())
        stay.push_back({name, text->second, ReadIfPossible(text->second)});
    return LeaveWhere([&](const TTaken& taken) {
      const std::string parent = ChangesBeside(taken.reference.get(), taken.target.get(), skipped);
      if (!parent.empty()) return Format(kBeside, parent);
      const std::string child = ChangesBelow(taken.reference.get(), taken.target.get(), stay);
      return child.empty() ? "" : Format(kBelow, child);
    });
  }
  static std::optional<TTableText> ReadIfPossible(const std::string& text) {
    try {
      return ReadPrintedTable(text);
    } catch (const EVelmora&) {
      return std::nullopt;
    }
  }

  // Skips tables for which there is a reason.
  template <class Reason>
  bool LeaveWhere(Reason reason) {
    const auto left = std::erase_if(taken_, [&](const TTaken& taken) {
      const std::string why = reason(taken);
      if (!why.empty()) Skip(reference_, taken.reference->name, why);
      return !why.empty();
    });
    return left > 0;
  }

  // Two scripts may both leave to the server what it makes of the table.
  TTableText SharedTable(const std::string& text) {
    TTableText table = ReadTableWithoutRawLineEnds(text, Tokens(text));
    if (reference_.file == nullptr || target_.file == nullptr) return table;
    Settle(reference_, table.name);
    table = ReadTableText(reference_.read.texts.at(table.name));
    CompleteTable(table, nullptr, server_);
    return table;
  }

  void TakeApartShared(TTaken& taken) {
    try {
      taken.reference = std::make_unique<TTableText>(SharedTable(*taken.shared_text));
      taken.reference->ForgetReadings();
      taken.target = std::make_unique<TTableText>(*taken.reference);
    } catch (const EVelmora&) {
      // As above: nothing is lost with it.
    }
  }

  void Skip(const TSideReader& side, const std::string& table, const std::string& reason, bool unread = false) {
    pair_.skipped.push_back({side.name, table, reason, unread});
  }

  TReadPair& pair_;
  TSideReader reference_;
  TSideReader target_;
  const TCollationMap& collations_;
  const TSelection& selection_;
  const std::string& reference_version_;  // of a file, as the next
  const std::string& target_version_;
  TProgress& progress_;
  std::string& table_under_way_;
  TServerTraits server_;                                // the target's, or of a script's other side
  TServerTraits reference_server_;                      // where both sides are servers
  bool across_ = false;                                 // and do not speak alike
  TTableNames reference_tables_;                        // of those that are left out
  TFoldedNames names_;                                  // as the target's server spells them
  std::map<std::string, std::string> small_letters_;    // of names with others than A to Z
  std::map<std::string, std::set<std::string>> twins_;  // what the reference calls one of them
  std::vector<TTaken> taken_;                           // in the order in which they were read
};

TChange WholeTable(TSyncAction action, const TTableText& table) {
  TChange change;
  change.action = action;
  change.table = table.name;
  (action == saDropTable ? change.old_text : change.new_text) = CreationTextOf(table);
  return change;
}

}  // namespace

std::string TKindsNotSeen::Text() const {
  TStringList titles;
  for (const std::string& kind : kinds)
    titles.push_back(kind == "table" ? "tables" : LowerText(std::string(KindsTitle(kind))));
  return Format(kNotSeen, JoinList(titles, ", "), side);
}

void ReadPair(TDBConn& reference, TDBConn& target, const TReadWishes& wishes, TProgress& progress,
              std::string& table_under_way, TTextMaker* maker, TReadPair& pair) {
  TPairReader(reference, target, wishes, progress, table_under_way, maker, pair).Read();
  if (maker == nullptr) return;
  pair.unmade = maker->Unmade();
  std::erase_if(pair.unmade, [&](const TUnmadeElement& of) { return !wishes.selection.ReadsTable(of.table); });
  pair.accepted = maker->Accepted();
  pair.made = maker->Columns();
  pair.made_log = maker->Log();
}

std::vector<TChange> SchemaChanges(const TSchema& reference, const TSchema& target, TEquivalenceUse& use,
                                   const TTableNames* only) {
  std::vector<TChange> changes;
  const auto looked_at = [only](const TTableText& table) { return only == nullptr || only->contains(table.name); };
  for (const TTableText& table : target.Tables()) {
    if (!looked_at(table) || reference.Find(table.name) != nullptr) continue;
    changes.push_back(WholeTable(saDropTable, table));
    changes.back().unsafe = UnsafeChange(changes.back(), table, {});
  }
  std::vector<const TTableText*> added;
  for (const TTableText& table : reference.Tables()) {
    if (!looked_at(table)) continue;
    const TTableText* former = target.Find(table.name);
    if (former == nullptr) {
      added.push_back(&table);
      continue;
    }
    for (TChange& change : CompareTableTexts(table, *former, use)) changes.push_back(std::move(change));
  }
  for (const TTableText* table : added) {
    changes.push_back(WholeTable(saCreateTable, *table));
    changes.back().unsafe = UnsafeChange(changes.back(), {}, *table);
  }
  return changes;
}

TStringList DroppedTables(const std::vector<TChange>& changes) {
  TStringList tables;
  for (const TChange& change : changes)
    if (change.action == saDropTable) tables.push_back(change.table);
  return tables;
}

}  // namespace velmora

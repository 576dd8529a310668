// SPDX-License-Identifier: GPL-3.0-or-later
#include "mysqltext/CreationScript.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <optional>
#include <set>
#include <unordered_set>
#include <utility>

#include "mysqltext/AlteredObject.h"
#include "mysqltext/ConcatBars.h"
#include "mysqltext/KeyText.h"
#include "mysqltext/Lexer.h"
#include "mysqltext/LexicalRules.h"
#include "mysqltext/ScriptFolder.h"
#include "mysqltext/SessionSettings.h"
#include "mysqltext/StatementHead.h"
#include "mysqltext/StatementReader.h"
#include "mysqltext/StatementStream.h"
#include "mysqltext/TriggerText.h"
#include "util/Errors.h"
#include "util/Files.h"
#include "util/Format.h"

namespace velmora {

namespace {

constexpr char kNoTables[] = "no create table statement: taken as an empty database";
constexpr char kCreatedTwice[] = "%s %s is created in two files of the folder, %s and %s: one of them has to go";
constexpr char kCreatedAgain[] = "table %s is created again, in place of the one of line %d";
constexpr char kStructurePassedOver[] = "statements passed over that may change the structure: %s";
constexpr char kPassedOver[] = "passed over: %s";
constexpr char kPassedOverMany[] = "passed over: %s (and %d more like it)";
constexpr char kCutOff[] =
    "cut off: this dump lacks its closing line \"%s\"; make it anew, or read what there is with --allow-incomplete";
constexpr char kManyDatabases[] = "holds several databases: %s; name one as in FILE.sql#%s";
constexpr char kNoSuchDatabase[] = "holds no database %s; there is: %s";
constexpr char kBars[] = "\"||\" means something else in the SQL mode PIPES_AS_CONCAT";
constexpr std::size_t kShownChars = 60;

// Programs that write a last line always, and how their dumps begin. The mark of the sandbox stands before some.
struct TDumpProgram {
  std::string_view opening;
  std::string_view closing;
};
constexpr TDumpProgram kDumpPrograms[] = {{"-- MySQL dump ", "-- Dump completed"},
                                          {"-- MariaDB dump ", "-- Dump completed"},
                                          {"-- mysqldump", "-- Dump completed"},
                                          {"/*M!999999\\- enable the sandbox mode */", "-- Dump completed"}};
// Others save settings of the session, and put them back in their last lines.
constexpr TDumpProgram kSavedSettings = {"-- phpMyAdmin SQL Dump",
                                         "SET COLLATION_CONNECTION=@OLD_COLLATION_CONNECTION"};
constexpr std::string_view kSaving = "@OLD_COLLATION_CONNECTION=@@COLLATION_CONNECTION";

// Follows a script as it comes: does a dump have its closing line?
class TDumpEnd {
 public:
  void Take(std::string_view part) {
    if (head_.size() < kHead) head_ += part.substr(0, kHead - head_.size());
    if (program_ == nullptr) program_ = ProgramOf(Head());
    if (program_ == nullptr && !Saves()) return;
    const bool first = base_ == 0 && tail_.empty();
    const std::string text = tail_ + std::string(part);
    if (program_ != nullptr) {
      FindLast(text, first, program_->closing, closing_);
      FindLast(text, first, program_->opening, opening_);
    }
    saves_ = saves_ || text.find(kSaving) != std::string::npos;
    puts_back_ = puts_back_ || text.find(kSavedSettings.closing) != std::string::npos;
    const std::size_t kept = std::min(text.size(), kTail);
    base_ += text.size() - kept;
    tail_ = text.substr(text.size() - kept);
  }

  // Whether such a program has written it, as far as is known by now.
  bool OfProgram() const { return program_ != nullptr || Saves(); }

  // The closing line that the dump lacks; empty for a whole one, and for what no such program has written.
  std::string_view Missing() const {
    if (program_ != nullptr && (!closing_ || (opening_ && *opening_ > *closing_))) return program_->closing;
    return Saves() && saves_ && !puts_back_ ? kSavedSettings.closing : "";
  }

 private:
  static constexpr std::size_t kHead = 4096;
  static constexpr std::size_t kTail = 128;  // longer than any line that is looked for

  // Without what may stand before a script.
  std::string_view Head() const {
    std::string_view head = head_;
    if (head.starts_with("\xEF\xBB\xBF")) head.remove_prefix(3);
    return TrimView(head);
  }

  bool Saves() const { return Head().starts_with(kSavedSettings.opening); }

  // The beginning of an opening alone is a dump, too.
  static const TDumpProgram* ProgramOf(std::string_view head) {
    for (const TDumpProgram& program : kDumpPrograms) {
      const std::string_view opening = TrimView(program.opening);
      if (!head.empty() && (head.starts_with(opening) || opening.starts_with(head))) return &program;
    }
    return nullptr;
  }

  void FindLast(const std::string& text, bool first, std::string_view line, std::optional<std::size_t>& place) const {
    if (first && text.starts_with(line)) place = 0;
    const std::string sought = "\n" + std::string(line);
    const char* from = text.data();
    const char* const end = from + text.size();
    while (const void* found = memmem(from, static_cast<std::size_t>(end - from), sought.data(), sought.size())) {
      from = static_cast<const char*>(found) + 1;
      place = base_ + static_cast<std::size_t>(from - text.data());
    }
  }

  std::string head_;
  std::string tail_;
  std::size_t base_ = 0;  // of the tail, in the script
  const TDumpProgram* program_ = nullptr;
  std::optional<std::size_t> closing_, opening_;  // the last of each
  bool saves_ = false;
  bool puts_back_ = false;
};

struct TCountedKind {
  EStatementKind kind;
  std::string_view words;
};
constexpr TCountedKind kCountedKinds[] = {{EStatementKind::ReplaceTable, "create or replace table"},
                                          {EStatementKind::AlterTable, "alter table"},
                                          {EStatementKind::CreateIndex, "create index"},
                                          {EStatementKind::Rename, "rename"},
                                          {EStatementKind::Drop, "drop"}};

std::string_view FirstWord(std::string_view statement) {
  return statement.substr(0, statement.find_first_of(" \t\r\n(/`"));
}

// The database in front of a name; empty for none.
std::string Qualifier(std::string_view text, const TStatementHead& head) {
  if (head.name <= head.qualifier) return {};
  const std::string_view written = TrimView(text.substr(head.qualifier, head.name - head.qualifier));
  return BareName(TrimView(written.substr(0, written.rfind('.'))));
}

std::string Beginning(std::string_view statement) {
  const std::string_view line = TrimView(statement.substr(0, statement.find('\n')));
  const std::string shown = CutChars(line.substr(0, 4 * kShownChars), kShownChars);  // no character is longer
  return shown.size() < statement.size() ? shown + "..." : shown;
}

}  // namespace

// Where a statement on tables stands in the buffer.
struct TCreationScript::TSpan {
  std::size_t start, end;
  TStatementHead head;
  std::size_t line;
  std::string database;   // that `use` has chosen
  bool versioned;         // in a comment for servers of a version: not among the recorded tables
  std::string_view file;  // of a folder

  bool IsTable() const { return head.kind == EStatementKind::CreateTable && !versioned; }
};

// Goes through the statements of a script and sorts them into spans, other objects and warnings. Statements passed over
// are told one by one; a run of the same first word that does not concern the structure, such as the rows of a dump, is
// told once.
class TCreationScript::TCollector {
 public:
  // What the files before this one have made.
  struct TEarlier {
    std::vector<TOtherObject>& objects;
    std::multimap<std::string, std::string>& triggers_on;  // names of triggers, by their tables; of this file, too
  };

  // `texts` takes the statements that spans are of.
  TCollector(std::string& texts, std::vector<TSpan>& spans, std::vector<TOtherObject>& others,
             std::vector<TScriptWarning>& warnings, const std::string& database, const TPartName& name,
             const TDumpEnd& dump, TEarlier& earlier)
      : texts_(texts),
        spans_(spans),
        others_(others),
        warnings_(warnings),
        chosen_(database),
        file_(name.recorded),
        shown_(name.shown),
        dump_(dump),
        earlier_(earlier) {}

  const std::set<std::string>& Databases() const { return databases_; }  // of the objects

  void Read(TStatementStream& script) {
    TStatement statement;
    while (script.Next(statement))
      for (TStatement rest = statement; !rest.text.empty(); rest = AfterClientLine(rest)) ReadOne(ClientLine(rest));
    EndRun();
    WarnOfStructure();
  }

 private:
  // "use d" and "source f" end with their line, whatever follows.
  static bool IsClientLine(std::string_view text) {
    constexpr std::string_view kCommands[] = {"use", "source", "\\.", "\\u"};
    return std::any_of(std::begin(kCommands), std::end(kCommands),
                       [&](std::string_view word) { return SameText(FirstWord(text), word); });
  }
  static TStatement ClientLine(const TStatement& statement) {
    if (!IsClientLine(statement.text)) return statement;
    return {TrimView(statement.text.substr(0, statement.text.find('\n'))), statement.line};
  }
  static TStatement AfterClientLine(const TStatement& statement) {
    const std::size_t end = IsClientLine(statement.text) ? statement.text.find('\n') : std::string_view::npos;
    if (end == std::string_view::npos) return {};
    const std::string_view rest = TrimView(statement.text.substr(end));
    const auto passed = statement.text.substr(0, static_cast<std::size_t>(rest.data() - statement.text.data()));
    return {rest, statement.line + static_cast<std::size_t>(std::count(passed.begin(), passed.end(), '\n'))};
  }

  void ReadOne(const TStatement& statement) {
    const TStatement plain = WithoutComments(statement);
    const bool versioned = plain.text.empty();
    const TStatementHead head = ReadStatementHead(versioned ? statement.text : plain.text, versioned);
    const TStatement line = WithoutDashes(plain);
    if (line.text.size() < plain.text.size())
      Take(line, ReadStatementHead(line.text), true);
    else
      Take(versioned ? statement : plain, head, versioned);
    if (!versioned) Tell(plain, head);
  }

  // What is left of a statement to who knows no versions.
  static TStatement WithoutComments(TStatement statement) {
    while (VersionMark(statement.text, 0) > 0) {
      const std::size_t end = CommentEnd(statement.text, 0);
      if (end == std::string_view::npos) return {{}, statement.line};
      const std::string_view rest = TrimView(statement.text.substr(end));
      const auto passed = statement.text.substr(0, static_cast<std::size_t>(rest.data() - statement.text.data()));
      statement.line += static_cast<std::size_t>(std::count(passed.begin(), passed.end(), '\n'));
      statement.text = rest;
    }
    return statement;
  }

  // A line of dashes before a statement is a comment to the command line client.
  static TStatement WithoutDashes(TStatement statement) {
    while (statement.text.starts_with("--") || CommentEnd(statement.text, 0) > 0) {
      const std::size_t line = std::min(statement.text.find('\n'), statement.text.size());
      const std::size_t end = statement.text.starts_with("--") ? line : CommentEnd(statement.text, 0);
      if (end >= statement.text.size()) return statement;
      const std::string_view rest = TrimView(statement.text.substr(end));
      const auto passed = statement.text.substr(0, static_cast<std::size_t>(rest.data() - statement.text.data()));
      statement.line += static_cast<std::size_t>(std::count(passed.begin(), passed.end(), '\n'));
      statement.text = rest;
    }
    return statement;
  }

  static std::string NameIn(std::string_view text, const TStatementHead& head) {
    return BareName(text.substr(head.name, head.name_end - head.name));
  }

  void Take(const TStatement& statement, const TStatementHead& head, bool versioned) {
    switch (head.kind) {
      case EStatementKind::Use:
        database_ = NameIn(statement.text, head);
        return;
      case EStatementKind::Object:
        dropped_.erase(LowerText(NameIn(statement.text, head)));  // dumps drop a view's stand-in as a table
        if (IsMeant(DatabaseOf(statement, head))) MakeObject(statement, head, versioned);
        return;
      case EStatementKind::AlterObject:
        if (IsMeant(DatabaseOf(statement, head))) AlterObject(statement, head, versioned);
        return;
      case EStatementKind::Other:
        TakeSetting(statement, versioned);
        return;
      case EStatementKind::Drop:
        if (!head.object.empty()) Forget(head.object, NameIn(statement.text, head));
        [[fallthrough]];
      default:
        if (head.kind == EStatementKind::Setting) TakeSetting(statement, versioned);
        MoveTriggers(statement);
        const std::size_t start = texts_.size();
        texts_ += statement.text;
        spans_.push_back({start, texts_.size(), head, statement.line, database_, versioned, file_});
    }
  }

  std::string DatabaseOf(const TStatement& statement, const TStatementHead& head) const {
    const std::string qualifier = Qualifier(statement.text, head);
    return qualifier.empty() ? database_ : qualifier;
  }

  bool IsByHand(bool versioned) const { return !versioned && !dump_.OfProgram(); }

  std::string PlaceOf(const TStatement& statement) const {
    return (shown_.empty() ? "" : shown_ + ": ") + Format("line %d", statement.line);
  }

  void TakeSetting(const TStatement& statement, bool versioned) {
    settings_.Take(statement.text, IsByHand(versioned), PlaceOf(statement));
  }

  bool IsMeant(const std::string& database) const { return chosen_.empty() || database.empty() || database == chosen_; }

  static TOtherObject* Find(std::vector<TOtherObject>& objects, std::string_view kind, const std::string& name) {
    const bool case_counts = kind == "view" || kind == "trigger";
    const auto found = std::ranges::find_if(objects, [&](const TOtherObject& other) {
      return other.kind == kind && (case_counts ? other.name == name : SameText(other.name, name));
    });
    return found == objects.end() ? nullptr : &*found;
  }
  TOtherObject* Find(std::string_view kind, const std::string& name) {
    TOtherObject* own = Find(others_, kind, name);
    return own != nullptr ? own : Find(earlier_.objects, kind, name);
  }

  void MakeObject(const TStatement& statement, const TStatementHead& head, bool versioned) {
    const std::string name = NameIn(statement.text, head);
    databases_.insert(DatabaseOf(statement, head));
    if (head.if_exists && Find(others_, head.object, name) != nullptr) return;
    Forget(head.object, name);
    others_.push_back(Object(statement, head, versioned, WithoutMarks(statement.text)));
  }

  void AlterObject(const TStatement& statement, const TStatementHead& head, bool versioned) {
    databases_.insert(DatabaseOf(statement, head));
    const std::string text = WithoutMarks(statement.text);
    TOtherObject* there = Find(head.object, NameIn(statement.text, head));
    if (there != nullptr && head.object == "view" && there->unread.empty())
      *there = Object(statement, head, versioned, AlteredView(there->text, text));
    else if (there == nullptr || !velmora::AlterObject(text, *there))
      NotFollowed(statement, there == nullptr ? others_.emplace_back(Named(statement, head)) : *there);
  }

  TOtherObject Named(const TStatement& statement, const TStatementHead& head) const {
    TOtherObject object{std::string(head.object), NameIn(statement.text, head)};
    object.place = {std::string(file_), statement.line};
    return object;
  }

  // What made it unknown first is what is told.
  void NotFollowed(const TStatement& statement, TOtherObject& object) const {
    if (!object.unread.empty()) return;
    object.text.clear();
    object.unread = Beginning(statement.text);
    object.place = {std::string(file_), statement.line};
  }

  // Triggers go with their tables. Files that drop a table before they make it drop none of another file's triggers.
  void MoveTriggers(const TStatement& statement) {
    auto& on = earlier_.triggers_on;
    if (on.empty()) return;
    for (const TTableFate& fate : FatesOfTables(statement.text)) {
      if (!IsMeant(fate.database.empty() ? database_ : fate.database)) continue;
      const auto [first, last] = on.equal_range(fate.table);
      const std::vector<std::pair<std::string, std::string>> moved(first, last);
      on.erase(first, last);
      for (const auto& [table, name] : moved) MoveTrigger(name, fate);
    }
  }

  void MoveTrigger(const std::string& name, const TTableFate& fate) {
    TOtherObject* trigger = Find("trigger", name);
    const std::optional<TTriggerHead> head = trigger == nullptr ? std::nullopt : ReadTriggerHead(trigger->text);
    if (!head || head->table != fate.table) return;
    const bool goes = fate.renamed.empty();
    if (goes && Find(others_, "trigger", name) != nullptr) return Forget("trigger", name);
    if (!goes) trigger->text = MovedTrigger(trigger->text, *head, fate.renamed);
    earlier_.triggers_on.emplace(goes ? fate.table : fate.renamed, name);
  }

  TOtherObject Object(const TStatement& statement, const TStatementHead& head, bool versioned, std::string text) {
    TOtherObject object = Named(statement, head);
    object.text = std::move(text);
    object.context = settings_.Context();
    object.unread = settings_.UnknownMode();
    if (object.kind == "view") SettleView(versioned, object);
    if (object.kind == "trigger")
      if (const std::optional<TTriggerHead> trigger = ReadTriggerHead(object.text))
        earlier_.triggers_on.emplace(trigger->table, object.name);
    if (!object.unread.empty()) object.text.clear();
    return object;
  }

  // Servers print views in a spelling that no mode changes, and without the mode that they were made in.
  void SettleView(bool versioned, TOtherObject& view) const {
    const std::string mode = view.context.sql_mode.value_or("");
    if (PosNoCase("ansi", mode) != 0) view.text = WithBackQuotes(view.text);
    if (!settings_.ModeIsByHand() || !IsByHand(versioned)) view.context.sql_mode.reset();
    if (PosNoCase("pipes_as_concat", view.context.sql_mode.value_or("")) != 0) JoinLetters(view);
    view.context.of_client = !view.context.sql_mode && IsByHand(versioned);
    if (IsStandIn(view.text)) view.text.clear();
  }

  // Servers print in another way what the view says in this mode.
  static void JoinLetters(TOtherObject& view) {
    const std::optional<std::string> joined = WithoutConcatBars(view.text);
    if (joined)
      view.text = *joined;
    else if (view.unread.empty())
      view.unread = kBars;
  }

  // Views are kept without the mode in which they were made, which may be one where names stand in double quotes.
  static std::string WithBackQuotes(const std::string& text) {
    std::string result;
    std::size_t from = 0;
    for (const TToken& token : Tokens(text)) {
      if (token.kind != EToken::String || !token.text.starts_with('"')) continue;
      result += text.substr(from, token.start - from) + QuotedName(ValueOf(token));
      from = token.End();
    }
    return result + text.substr(from);
  }

  // Dumps make a view of nothing in the place of each one that they make later; where that never comes, nobody knows
  // what it is: create view v as select 1 as `a`, 1 as `b`
  static bool IsStandIn(std::string_view text) {
    constexpr std::size_t kLongestHead = 200;
    const std::string head(text.substr(0, kLongestHead));
    constexpr std::string_view kAsSelect = " as select";
    const std::size_t select = PosNoCase(kAsSelect, head);
    if (select == 0 || !EndsLine(head, select - 1 + kAsSelect.size()) ||
        PosNoCase("definer", head.substr(0, select)) != 0)
      return false;
    const std::vector<TToken> tokens = Tokens(text.substr(select));
    for (std::size_t at = 2; at + 1 < tokens.size(); at += 4) {
      const bool nothing = tokens[at].Is("null") || tokens[at].text == "1";
      if (!nothing || !tokens[at + 1].Is("as")) return false;
      if (at + 3 < tokens.size() && tokens[at + 3].kind != EToken::End && !tokens[at + 3].Is(",")) return false;
    }
    return true;
  }

  static bool EndsLine(const std::string& text, std::size_t at) {
    const std::size_t end = text.find_first_not_of(" \r", at);
    return end != std::string::npos && text[end] == '\n';
  }

  void Forget(std::string_view object, const std::string& name) {
    if (const TOtherObject* there = Find(others_, object, name))
      others_.erase(others_.begin() + (there - others_.data()));
  }

  static std::string WithoutMarks(std::string_view text) {
    std::string result;
    std::size_t open = 0;
    for (std::size_t at = 0; at < text.size();) {
      if (const std::size_t mark = VersionMark(text, at)) {
        ++open;
        at += mark;
      } else if (open > 0 && ClosesComment(text, at)) {
        --open;
        at += 2;
      } else {
        result += text[at++];
      }
    }
    return Trim(result);
  }

  // Dumps drop each table before they make it, and switch its keys off around its rows.
  void Tell(const TStatement& statement, const TStatementHead& head) {
    if (head.kind == EStatementKind::CreateTable) {
      dropped_.erase(LowerText(NameIn(statement.text, head)));
      return;
    }
    const EStatementKind kind = head.kind >= EStatementKind::Use ? EStatementKind::Other : head.kind;
    if (kind == EStatementKind::Drop && head.object == "table" && head.if_exists)
      dropped_.insert(LowerText(NameIn(statement.text, head)));
    else if (!head.leaves_as_is)
      ++counts_[static_cast<std::size_t>(kind)];
    PassOver(statement, kind == EStatementKind::Other);
  }

  void PassOver(const TStatement& statement, bool may_join) {
    const std::string_view word = FirstWord(statement.text);
    if (may_join && run_length_ > 0 && SameText(word, run_word_)) {
      ++run_length_;
      return;
    }
    EndRun();
    run_word_ = word;
    run_beginning_ = Beginning(statement.text);
    run_line_ = statement.line;
    run_length_ = 1;
  }

  void EndRun() {
    if (run_length_ == 0) return;
    warnings_.push_back({run_length_ == 1 ? Format(kPassedOver, run_beginning_)
                                          : Format(kPassedOverMany, run_beginning_, run_length_ - 1),
                         run_line_, true, false, std::string(file_)});
    run_length_ = 0;
  }

  void WarnOfStructure() {
    std::string counted;
    counts_[static_cast<std::size_t>(EStatementKind::Drop)] += dropped_.size();
    for (const TCountedKind& row : kCountedKinds) {
      const std::size_t count = counts_[static_cast<std::size_t>(row.kind)];
      if (count > 0) counted += Format("%s%s (%d)", counted.empty() ? "" : ", ", std::string(row.words), count);
    }
    if (!counted.empty())
      warnings_.push_back({Format(kStructurePassedOver, counted), 0, false, true, std::string(file_)});
  }

  std::string& texts_;
  std::vector<TSpan>& spans_;
  std::vector<TOtherObject>& others_;
  std::vector<TScriptWarning>& warnings_;
  const std::string& chosen_;
  std::string_view file_;
  const std::string& shown_;
  const TDumpEnd& dump_;
  TEarlier& earlier_;
  TSessionSettings settings_;
  std::string database_;
  std::set<std::string> databases_;
  std::unordered_set<std::string> dropped_;  // tables, in lower case, that nobody has made since
  std::array<std::size_t, static_cast<std::size_t>(EStatementKind::Other) + 1> counts_{};
  std::string run_word_;  // of statements that are told once
  std::string run_beginning_;
  std::size_t run_line_ = 0;
  std::size_t run_length_ = 0;
};

std::string TScriptWarning::Message() const { return line == 0 ? text : Format("line %d: %s", line, text); }

TCreationScript::TCreationScript(std::string script, const TScriptChoice& choice) {
  std::vector<TSpan> spans;
  ReadPart(
      [&script](const TStatementStream::TWatch& watch) {
        return std::make_unique<TStatementStream>(std::move(script), watch);
      },
      TPartName(), choice, spans);
  Finish(spans, choice);
}

TCreationScript::TCreationScript(const std::vector<TFile>& files, const TScriptChoice& choice) {
  std::vector<TSpan> spans;
  for (const TFile& file : files) ReadFile(file, choice, spans);
  Finish(spans, choice);
}

void TCreationScript::ReadFile(const TFile& file, const TScriptChoice& choice, std::vector<TSpan>& spans) {
  const auto open = [&file](const TStatementStream::TWatch& watch) {
    return std::make_unique<TStatementStream>(std::make_unique<TFileParts>(file.path), watch);
  };
  const std::string_view recorded = file.of_folder ? files_.emplace_back(file.path) : std::string_view();
  ReadPart(open, {ShownPath(file.path), recorded}, choice, spans);
}

void TCreationScript::Finish(std::vector<TSpan>& spans, const TScriptChoice& choice) {
  buffer_.shrink_to_fit();
  ChooseDatabase(spans, choice.database);
  AddTables(spans);
  PlaceTriggers(others_);
  if (tables_.empty()) warnings_.push_back({kNoTables, 0, false, !others_.empty()});
  std::stable_sort(warnings_.begin(), warnings_.end(),
                   [](const TScriptWarning& a, const TScriptWarning& b) { return a.line < b.line; });
}

// A dump that was cut off may end anywhere: that is what to tell of it.
void TCreationScript::ReadPart(const TOpen& open, const TPartName& name, const TScriptChoice& choice,
                               std::vector<TSpan>& spans) {
  TDumpEnd end;
  std::vector<TOtherObject> objects;
  TCollector::TEarlier earlier{others_, triggers_on_};
  TCollector collector(buffer_, spans, objects, warnings_, choice.database, name, end, earlier);
  const auto check = [&] {
    if (const std::string_view closing = end.Missing(); !closing.empty() && !choice.allow_incomplete)
      RaiseError(Format(kCutOff, std::string(closing)));
  };
  const std::unique_ptr<TStatementStream> script = open([&end](std::string_view part) { end.Take(part); });
  buffer_.reserve(buffer_.size() + script->MostOfAll());
  const auto read = [&] {
    try {
      collector.Read(*script);
    } catch (const EVelmora&) {
      check();
      throw;
    }
    check();
  };
  try {
    read();
  } catch (const EVelmora& fault) {
    if (name.shown.empty()) throw;
    RaiseError(name.shown + ": " + fault.what());
  }
  of_objects_.insert(collector.Databases().begin(), collector.Databases().end());
  TakeObjects(std::move(objects), std::string(name.recorded));
}

void TCreationScript::TakeObjects(std::vector<TOtherObject> objects, const std::string& file) {
  for (TOtherObject& object : objects) {
    if (!file.empty()) {
      const auto [place, is_new] = files_of_objects_.emplace(std::pair(object.kind, object.name), file);
      if (!is_new) RaiseError(Format(kCreatedTwice, object.kind, object.name, place->second, file));
    }
    others_.push_back(std::move(object));
  }
}

std::shared_ptr<const TCreationScript> TCreationScript::Load(const std::string& path, const TScriptChoice& choice) {
  std::vector<TFile> files;
  if (IsFolder(path))
    for (const std::string& name : ScriptFilesIn(path)) files.push_back({JoinPath(path, name)});
  else
    files.push_back({path, false});
  auto result = std::make_shared<TCreationScript>(files, choice);
  result->structure_.file = ShownPath(path);
  return result;
}

const TCreationText* TCreationScript::Find(std::string_view name) const {
  const auto found = index_.find(name);
  return found == index_.end() ? nullptr : &tables_[found->second];
}

std::size_t TCreationScript::THash::operator()(std::string_view name) const { return NameHash(name); }

// Which database is meant; spans of tables of others are left to the structure alone, which tells by itself. Views
// and routines of another database than the tables would be taken for this one's: then somebody has to choose.
void TCreationScript::ChooseDatabase(const std::vector<TSpan>& spans, const std::string& wanted) {
  std::set<std::string> databases;
  for (const TSpan& span : spans) {
    if (!span.IsTable()) continue;
    const std::string qualifier =
        Qualifier(std::string_view(buffer_).substr(span.start, span.end - span.start), span.head);
    databases.insert(qualifier.empty() ? span.database : qualifier);
  }
  databases.insert(of_objects_.begin(), of_objects_.end());
  databases.erase("");
  std::string list;
  for (const std::string& database : databases) list += (list.empty() ? "" : ", ") + database;
  if (!wanted.empty() && !databases.contains(wanted))
    RaiseError(Format(kNoSuchDatabase, wanted, list.empty() ? "none by name" : list));
  if (wanted.empty() && databases.size() > 1) RaiseError(Format(kManyDatabases, list, *databases.begin()));
  structure_.database = !wanted.empty() ? wanted : databases.empty() ? "" : *databases.begin();
}

void TCreationScript::AddTables(const std::vector<TSpan>& spans) {
  const std::string_view buffer = buffer_;
  for (const TSpan& span : spans) {
    const std::string_view text = buffer.substr(span.start, span.end - span.start);
    const std::string_view database = *names_.insert(span.database).first;
    structure_.statements.push_back({text, span.line, database, span.file});
    if (!span.IsTable()) continue;
    const std::string qualifier = Qualifier(text, span.head);
    const std::string_view of = qualifier.empty() ? database : std::string_view(qualifier);
    if (of.empty() || structure_.database.empty() || of == structure_.database) AddTable(span, text);
  }
}

void TCreationScript::AddTable(const TSpan& span, std::string_view text) {
  const std::size_t cut = span.head.name - span.head.qualifier;
  if (cut > 0) {
    unqualified_.push_back(std::string(text.substr(0, span.head.qualifier)) + std::string(text.substr(span.head.name)));
    text = unqualified_.back();
  }
  TCreationText table{{}, text, span.line, span.file};
  table.name = text.substr(span.head.qualifier, span.head.name_end - span.head.name);
  if (table.name.size() > 1 && table.name.front() == '`') table.name = table.name.substr(1, table.name.size() - 2);
  const auto [place, added] = index_.emplace(table.name, tables_.size());
  if (added) {
    tables_.push_back(table);
    return;
  }
  TCreationText& earlier = tables_[place->second];
  if (earlier.file != table.file)
    RaiseError(
        Format(kCreatedTwice, "table", std::string(table.name), std::string(earlier.file), std::string(table.file)));
  warnings_.push_back({Format(kCreatedAgain, std::string(table.name), earlier.line), table.line, false, false,
                       std::string(table.file)});
  earlier = table;
}

}  // namespace velmora

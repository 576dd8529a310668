// SPDX-License-Identifier: GPL-3.0-or-later
#include "mysqltext/CreationScript.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <set>
#include <unordered_set>
#include <utility>

#include "mysqltext/KeyText.h"
#include "mysqltext/Lexer.h"
#include "mysqltext/LexicalRules.h"
#include "mysqltext/ScriptFolder.h"
#include "mysqltext/SessionSettings.h"
#include "mysqltext/StatementHead.h"
#include "mysqltext/StatementReader.h"
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

std::size_t LastLineWith(std::string_view script, std::string_view beginning) {
  for (std::size_t at = script.rfind(beginning); at != std::string_view::npos && at > 0;
       at = script.rfind(beginning, at - 1))
    if (script[at - 1] == '\n') return at;
  return script.starts_with(beginning) ? 0 : std::string_view::npos;
}

// The closing line that the dump lacks; empty for a whole one, and for what no such program has written. The beginning
// of an opening alone is a dump, too.
std::string_view MissingClosing(std::string_view script) {
  if (script.starts_with("\xEF\xBB\xBF")) script.remove_prefix(3);
  script = TrimView(script);
  for (const TDumpProgram& program : kDumpPrograms) {
    const std::string_view opening = TrimView(program.opening);
    if (script.empty() || !(script.starts_with(opening) || opening.starts_with(script))) continue;
    const std::size_t closing = LastLineWith(script, program.closing);
    const std::size_t reopening = LastLineWith(script, program.opening);
    const bool closed =
        closing != std::string_view::npos && (reopening == std::string_view::npos || reopening < closing);
    if (!closed) return program.closing;
  }
  const bool saves = script.starts_with(kSavedSettings.opening) && script.find(kSaving) != std::string_view::npos;
  return saves && script.find(kSavedSettings.closing) == std::string_view::npos ? kSavedSettings.closing : "";
}

// For files of old systems, whose lines end in CR alone.
void MakeLines(std::string& script) {
  if (script.find('\n') == std::string::npos) std::replace(script.begin(), script.end(), '\r', '\n');
}

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

// One file.
struct TCreationScript::TPart {
  std::size_t start, end;  // in the buffer
  std::string_view file;   // of a folder
};

// Goes through the statements of a script and sorts them into spans, other objects and warnings. Statements passed over
// are told one by one; a run of the same first word that does not concern the structure, such as the rows of a dump, is
// told once.
class TCreationScript::TCollector {
 public:
  TCollector(std::vector<TSpan>& spans, std::vector<TOtherObject>& others, std::vector<TScriptWarning>& warnings,
             const std::string& database)
      : spans_(spans), others_(others), warnings_(warnings), chosen_(database) {}

  const std::set<std::string>& Databases() const { return databases_; }  // of the objects

  // A part of the buffer.
  void Read(std::string_view buffer, const TPart& part) {
    part_ = part;
    const std::string_view script = buffer.substr(part.start, part.end - part.start);
    TStatementReader reader(script, true);
    TStatement statement;
    while (reader.Next(statement))
      for (TStatement rest = statement; !rest.text.empty(); rest = AfterClientLine(rest))
        ReadOne(ClientLine(rest), script);
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

  void ReadOne(const TStatement& statement, std::string_view script) {
    const TStatement plain = WithoutComments(statement);
    const bool versioned = plain.text.empty();
    const TStatementHead head = ReadStatementHead(versioned ? statement.text : plain.text, versioned);
    const TStatement line = WithoutDashes(plain);
    if (line.text.size() < plain.text.size())
      Take(line, ReadStatementHead(line.text), true, script);
    else
      Take(versioned ? statement : plain, head, versioned, script);
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

  void Take(const TStatement& statement, const TStatementHead& head, bool versioned, std::string_view script) {
    switch (head.kind) {
      case EStatementKind::Use:
        database_ = NameIn(statement.text, head);
        return;
      case EStatementKind::Object:
        Forget(head.object, NameIn(statement.text, head));
        dropped_.erase(LowerText(NameIn(statement.text, head)));  // dumps drop a view's stand-in as a table
        if (const std::string database = DatabaseOf(statement, head);
            chosen_.empty() || database.empty() || database == chosen_) {
          databases_.insert(database);
          TakeObject(statement, head);
        }
        return;
      case EStatementKind::Other:
        settings_.Take(statement.text);
        return;
      case EStatementKind::Drop:
        if (!head.object.empty()) Forget(head.object, NameIn(statement.text, head));
        [[fallthrough]];
      default:
        if (head.kind == EStatementKind::Setting) settings_.Take(statement.text);
        const auto start = static_cast<std::size_t>(statement.text.data() - script.data());
        spans_.push_back({part_.start + start, part_.start + start + statement.text.size(), head, statement.line,
                          database_, versioned, part_.file});
    }
  }

  std::string DatabaseOf(const TStatement& statement, const TStatementHead& head) const {
    const std::string qualifier = Qualifier(statement.text, head);
    return qualifier.empty() ? database_ : qualifier;
  }

  void TakeObject(const TStatement& statement, const TStatementHead& head) {
    TOtherObject object{std::string(head.object), NameIn(statement.text, head), WithoutMarks(statement.text)};
    if (object.kind != "view")
      object.context = settings_.Context();
    else if (PosNoCase("ansi", settings_.Context().sql_mode.value_or("")) != 0)
      object.text = WithBackQuotes(object.text);
    if (object.kind == "view" && IsStandIn(object.text)) object.text.clear();
    others_.push_back(std::move(object));
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
    std::erase_if(others_, [&](const TOtherObject& other) { return other.kind == object && other.name == name; });
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
    if (may_join && run_length_ > 0 && SameText(FirstWord(statement.text), FirstWord(run_.text))) {
      ++run_length_;
      return;
    }
    EndRun();
    run_ = statement;
    run_length_ = 1;
  }

  void EndRun() {
    if (run_length_ == 0) return;
    const std::string beginning = Beginning(run_.text);
    warnings_.push_back(
        {run_length_ == 1 ? Format(kPassedOver, beginning) : Format(kPassedOverMany, beginning, run_length_ - 1),
         run_.line, true, false, std::string(part_.file)});
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
      warnings_.push_back({Format(kStructurePassedOver, counted), 0, false, true, std::string(part_.file)});
  }

  std::vector<TSpan>& spans_;
  std::vector<TOtherObject>& others_;
  std::vector<TScriptWarning>& warnings_;
  const std::string& chosen_;
  TPart part_{};
  TSessionSettings settings_;
  std::string database_;
  std::set<std::string> databases_;
  std::unordered_set<std::string> dropped_;  // tables, in lower case, that nobody has made since
  std::array<std::size_t, static_cast<std::size_t>(EStatementKind::Other) + 1> counts_{};
  TStatement run_;
  std::size_t run_length_ = 0;
};

std::string TScriptWarning::Message() const { return line == 0 ? text : Format("line %d: %s", line, text); }

TCreationScript::TCreationScript(std::string script, const TScriptChoice& choice) {
  std::vector<TScriptFile> files;
  files.push_back({{}, std::move(script)});
  Read(std::move(files), choice);
}

TCreationScript::TCreationScript(std::vector<TScriptFile> files, const TScriptChoice& choice) {
  Read(std::move(files), choice);
}

void TCreationScript::Read(std::vector<TScriptFile> files, const TScriptChoice& choice) {
  std::vector<TPart> parts;
  for (TScriptFile& file : files) {
    MakeLines(file.text);
    const std::size_t start = buffer_.size();
    if (buffer_.empty())
      buffer_ = std::move(file.text);
    else
      buffer_ += file.text;
    parts.push_back({start, buffer_.size(), files_.emplace_back(std::move(file.path))});
    file = {};
  }
  std::vector<TSpan> spans;
  for (const TPart& part : parts) ReadPart(part, choice, spans);
  Pack(spans);
  ChooseDatabase(spans, choice.database);
  AddTables(spans);
  if (tables_.empty()) warnings_.push_back({kNoTables, 0, false, !others_.empty()});
  std::stable_sort(warnings_.begin(), warnings_.end(),
                   [](const TScriptWarning& a, const TScriptWarning& b) { return a.line < b.line; });
}

void TCreationScript::ReadPart(const TPart& part, const TScriptChoice& choice, std::vector<TSpan>& spans) {
  std::vector<TOtherObject> objects;
  TCollector collector(spans, objects, warnings_, choice.database);
  const auto read = [&] {
    const auto script = std::string_view(buffer_).substr(part.start, part.end - part.start);
    if (const std::string_view closing = MissingClosing(script); !closing.empty() && !choice.allow_incomplete)
      RaiseError(Format(kCutOff, std::string(closing)));
    collector.Read(buffer_, part);
  };
  if (part.file.empty()) {
    read();
  } else {
    try {
      read();
    } catch (const EVelmora& fault) {
      RaiseError(std::string(part.file) + ": " + fault.what());
    }
  }
  of_objects_.insert(collector.Databases().begin(), collector.Databases().end());
  TakeObjects(std::move(objects), std::string(part.file));
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
  if (IsFolder(path)) {
    auto result = std::make_shared<TCreationScript>(ReadScriptFolder(path), choice);
    result->structure_.file = path;
    return result;
  }
  std::string script = ReadFileText(path);
  try {
    auto result = std::make_shared<TCreationScript>(std::move(script), choice);
    result->structure_.file = path;
    return result;
  } catch (const EVelmora& fault) {
    RaiseError(path + ": " + fault.what());
  }
}

const TCreationText* TCreationScript::Find(std::string_view name) const {
  const auto found = index_.find(name);
  return found == index_.end() ? nullptr : &tables_[found->second];
}

std::size_t TCreationScript::THash::operator()(std::string_view name) const { return NameHash(name); }

// Moves the recorded texts to the front of the buffer, and gives the rest of its memory back.
void TCreationScript::Pack(std::vector<TSpan>& spans) {
  std::size_t used = 0;
  for (TSpan& span : spans) {
    const std::size_t size = span.end - span.start;
    std::memmove(buffer_.data() + used, buffer_.data() + span.start, size);
    span.start = used;
    used += size;
    span.end = used;
  }
  buffer_.resize(used);
  buffer_.shrink_to_fit();
}

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

// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/FolderExport.h"

#include <algorithm>
#include <array>
#include <map>
#include <memory>
#include <set>
#include <tuple>
#include <utility>

#include "core/CreationTexts.h"
#include "core/Host.h"
#include "core/Meta.h"
#include "exact/objects/ObjectChanges.h"
#include "exact/objects/ObjectContext.h"
#include "exact/objects/ShownView.h"
#include "exact/plan/FileSchema.h"
#include "exact/run/PairReader.h"
#include "exact/run/StructureDigest.h"
#include "mysqltext/ScriptFolder.h"
#include "mysqltext/StatementReader.h"
#include "mysqltext/TableText.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kNoTexts[] =
    "%s cannot be exported: a source is needed that has creation texts, as a MySQL server or a file that ends in .sql";
constexpr char kNotWritten[] = "%s %s is not written: %s";
constexpr char kNoForm[] = "an export has no form for it";
constexpr char kNoText[] = "its text is not to be seen";
constexpr char kStays[] = "%s stays: what it makes is not to be seen, which does not mean that it is gone";
constexpr char kUnknown[] = "%s: tables that this makes or changes may be missing";
constexpr char kListHead[] =
    "# Files that velmora-cli export wrote here. It removes those whose table or object is gone.\n";
constexpr std::string_view kEnding = ".sql";

struct TKindFolder {
  std::string_view kind;
  std::string_view folder;
};
constexpr std::array<TKindFolder, 6> kFolders = {{{"table", "tables"},
                                                  {"view", "views"},
                                                  {"trigger", "triggers"},
                                                  {"procedure", "routines"},
                                                  {"function", "routines"},
                                                  {"event", "events"}}};

std::string_view FolderOf(std::string_view kind) {
  return std::ranges::find(kFolders, kind, &TKindFolder::kind)->folder;
}

// What a text is written as: a line for each, LF at their ends.
std::string FileText(const TStringList& lines) {
  std::string text;
  for (const std::string& line : lines) text += StrReplace(line, "\r\n", "\n") + "\n";
  return text;
}

struct TSetting {
  std::string_view variable;
  std::string value;
};

// What it was made under: set around it, and put back. A view is read under the collation that sessions have here,
// where nothing is said.
std::vector<TSetting> SettingsOf(const TOtherObject& object) {
  constexpr std::string_view kOwnCollation = "utf8mb4_general_ci";
  std::vector<TSetting> settings;
  const TObjectContext& context = object.context;
  if (object.kind == "view" && context.collation == kOwnCollation) return settings;
  if (context.sql_mode) settings.push_back({"sql_mode", *context.sql_mode});
  if (!context.collation.empty()) settings.push_back({"collation_connection", context.collation});
  if (object.kind == "event" && !context.time_zone.empty()) settings.push_back({"time_zone", context.time_zone});
  return settings;
}

// A view's query begins a line, whether it has lines already or comes from a server, which prints it on one.
std::string Laid(std::string text, const TObjectText& read) {
  if (read.kind != "view") return text;
  const bool has_lines = read.body.find('\n') != std::string::npos;
  if (has_lines && text.ends_with(" " + read.body)) text[text.size() - read.body.size() - 1] = '\n';
  return ShownView(text);
}

// --- What there is

class TSourceTexts {
 public:
  TSourceTexts(TDBConn& source, const TExportWishes& wishes, TExportReport& report)
      : source_(source), wishes_(wishes), report_(report), texts_(dynamic_cast<TCreationTexts*>(&source)) {
    std::string shown;
    source.GetDisplayName(shown);
    if (texts_ == nullptr) RaiseError(Format(kNoTexts, shown));
  }

  void Read() {
    const TStructureScript* script = texts_->StructureScript();
    database_ = script == nullptr ? texts_->TextsDatabase() : script->database;
    objects_ = texts_->OtherObjects();
    for (const TOtherObject& object : objects_) {
      if (object.kind == "view" || object.kind == "sequence") no_tables_.insert(object.name);
      if (object.kind == "procedure") procedures_.insert(object.name);
    }
    ReadTables(script);
    ReadObjects();
    const TStringList hidden = texts_->KindsHidden();
    for (const TStringList& kinds : {hidden, texts_->KindsLeftOut()})
      for (const std::string& kind : kinds) hidden_.insert(std::string(FolderOf(kind)));
    const TStringList missed = MissedKinds(wishes_.selection, hidden, objects_, tables_);
    if (!missed.empty()) report_.warnings.push_back(TKindsNotSeen{"source", missed}.Text());
  }

  const std::map<std::string, std::string>& Files() const { return files_; }  // their texts by name
  // Of a file that an export wrote before: whether what it makes is there, written now or not.
  bool IsThere(const std::string& file) const { return there_.contains(file); }
  // Whether there may be more of its kind than is to be seen.
  bool MayBeHidden(const std::string& file) const { return hidden_.contains(file.substr(0, file.find('/'))); }

 private:
  void Leave(const std::string& kind, const std::string& name, const std::string& reason, bool failed) {
    report_.warnings.push_back(Format(kNotWritten, kind, name, reason));
    if (failed) report_.whole = false;
  }

  void ReadTables(const TStructureScript* script) {
    std::unique_ptr<TFileSchema> file;
    if (script != nullptr) file = std::make_unique<TFileSchema>(*script, TServerTraits());
    TStringList tables;
    if (file != nullptr) {
      tables = file->TableNames();
      for (const std::string& statement : file->Unknown()) report_.warnings.push_back(Format(kUnknown, statement));
      report_.whole = report_.whole && file->Unknown().empty();
    } else {
      source_.meta().TableNames(tables);
      std::erase_if(tables, [this](const std::string& table) { return no_tables_.contains(table); });
    }
    for (const std::string& table : tables) there_.insert(ExportFileOf("table", table));
    tables_ = tables;
    std::erase_if(tables, [this](const std::string& table) { return !wishes_.selection.ReadsTable(table); });
    texts_->ExpectCreationTexts(tables);
    for (const std::string& table : tables) {
      Host().ProcessMessages();
      ReadTable(table, file.get());
    }
    texts_->ExpectCreationTexts({});
  }

  void ReadTable(const std::string& table, TFileSchema* file) {
    std::string text;
    try {
      if (file != nullptr)
        text = CreationTextOf(file->Table(table));
      else
        texts_->ShowCreateTable(table, text);
    } catch (const EAbort&) {
      throw;
    } catch (const EVelmora& error) {
      if (!source_.GetConnected()) throw;
      return Leave("table", table, error.what(), true);
    }
    files_[ExportFileOf("table", table)] = FileText({WithoutCounter(text) + ";"});
  }

  // --- Views, triggers, routines, events

  // Of a function that a procedure has the name of.
  std::string FileOf(const TOtherObject& object) const {
    const std::string file = ExportFileOf(object.kind, object.name);
    const bool shares = object.kind == "function" && procedures_.contains(object.name);
    return shares ? file.substr(0, file.size() - kEnding.size()) + ".function" + std::string(kEnding) : file;
  }

  void ReadObjects() {
    std::vector<TOtherObject> wanted;
    for (const TOtherObject& object : objects_) {
      if (!IsScriptedKind(object.kind)) {
        Leave(object.kind, object.name, kNoForm, false);
        continue;
      }
      there_.insert(FileOf(object));
      wanted.push_back(object);
    }
    if (texts_->StructureScript() == nullptr) texts_->ReadObjectTexts(wanted);
    std::vector<std::pair<const TOtherObject*, TObjectText>> read;
    for (const TOtherObject& object : wanted) {
      Host().ProcessMessages();
      try {
        if (object.text.empty()) RaiseError(object.unread.empty() ? kNoText : object.unread);
        const TObjectText& text = read.emplace_back(&object, ReadObject(object, database_)).second;
        if (object.order > 0 && wishes_.selection.TakesObject(object.kind, object.name, text.table))
          triggers_[{text.table, text.moment, object.order}] = object.name;
      } catch (const EAbort&) {
        throw;
      } catch (const EVelmora& error) {
        Leave(object.kind, object.name, error.what(), true);
      }
    }
    for (const auto& [object, text] : read)
      if (wishes_.selection.TakesObject(object->kind, object->name, text.table))
        files_[FileOf(*object)] = TextOf(*object, text);
  }

  std::string TextOf(const TOtherObject& object, const TObjectText& read) const {
    const bool strips = wishes_.definers.policy == EDefiners::Strip;
    const std::string definer = strips ? std::string() : MappedAccount(read.definer, wishes_.definers);
    TObjectText said = read;
    if (object.servers_start) said.starts.clear();  // another one wherever the file is run
    const std::string text = Laid(said.Creation({definer, false, OrderOf(object, read)}), read);
    TStringList lines;
    const std::vector<TSetting> settings = SettingsOf(object);
    for (const TSetting& setting : settings) {
      const std::string variable(setting.variable);
      lines.push_back(Format("set @saved_%s = @@%s;", variable, variable));
      lines.push_back(Format("set %s = %s;", variable, QuotedText(setting.value)));
    }
    const TStringList statement = Delimited(text);
    lines.insert(lines.end(), statement.begin(), statement.end());
    for (const TSetting& setting : settings)
      lines.push_back(Format("set %s = @saved_%s;", std::string(setting.variable), std::string(setting.variable)));
    return FileText(lines);
  }

  // Of triggers that fire together, the one before it of those that are written.
  std::string OrderOf(const TOtherObject& object, const TObjectText& read) const {
    if (object.order == 0) return read.order;
    const auto place = triggers_.lower_bound({read.table, read.moment, object.order});
    if (place == triggers_.begin()) return {};
    const auto& [moment, before] = *std::prev(place);
    const bool fires_with_it = std::get<0>(moment) == read.table && std::get<1>(moment) == read.moment;
    return fires_with_it ? "follows " + QuotedName(before) : std::string();
  }

  TDBConn& source_;
  const TExportWishes& wishes_;
  TExportReport& report_;
  TCreationTexts* texts_;
  std::string database_;
  std::vector<TOtherObject> objects_;
  TStringList tables_;  // all that are seen
  std::map<std::string, std::string> files_;
  std::set<std::string> no_tables_;  // views and sequences, which servers list with tables
  std::set<std::string> procedures_;
  std::map<std::tuple<std::string, std::string, int>, std::string> triggers_;  // written; by table, moment, place
  std::set<std::string> there_;                                                // files of all that there is
  std::set<std::string> hidden_;                                               // folders of what is not seen whole
};

// --- The folder

bool IsExportFile(const std::string& line) {
  const std::size_t slash = line.find('/');
  if (slash == std::string::npos || !line.ends_with(kEnding)) return false;
  const bool known = std::ranges::find(kFolders, line.substr(0, slash), &TKindFolder::folder) != kFolders.end();
  return known && line.find('/', slash + 1) == std::string::npos && line[slash + 1] != '.';
}

constexpr TFolderWriter kWriter = {kExportList, kListHead, "an export", "no export", IsExportFile};

// Writes what there is. What was written before stays where its object is there or may be hidden.
void WriteTo(TOwnFolder& folder, const TSourceTexts& source, TExportReport& report) {
  std::set<std::string> kept;
  for (const std::string& file : folder.Written()) {
    if (!source.IsThere(file) && !source.MayBeHidden(file)) continue;
    kept.insert(file);
    if (!source.IsThere(file)) report.warnings.push_back(Format(kStays, file));
  }
  folder.Write(source.Files(), kept, report);
}

}  // namespace

std::string ExportFileOf(const std::string& kind, const std::string& name) {
  return std::string(FolderOf(kind)) + "/" + SafeFileName(name) + std::string(kEnding);
}

TExportReport ExportToFolder(TDBConn& source, const TExportWishes& wishes, const std::string& folder) {
  TExportReport report;
  TOwnFolder target(folder, kWriter);
  TSourceTexts texts(source, wishes, report);
  texts.Read();
  WriteTo(target, texts, report);
  return report;
}

}  // namespace velmora

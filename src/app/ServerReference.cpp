// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/ServerReference.h"

#include <cstdint>
#include <map>
#include <utility>

#include "app/FileStatements.h"
#include "core/Meta.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kRefused[] = "%s: %s";
constexpr char kFollows[] = "%s: table %s, which this statement takes, could not be read";
constexpr char kNoTable[] = "Table '%s' doesn't exist";
constexpr int kUnknownTable = 1051;

// A creation text, or why there is none.
struct TServerText {
  std::string text;
  std::string fault;
};
using TServerTexts = std::map<std::string, TServerText>;

// The file's engine, with texts of a server in place of its own.
class TServerTextsEngine final : public TDBConnMySQLOffline {
 public:
  TServerTextsEngine(std::unique_ptr<TOfflineConnection> connection, std::shared_ptr<const TServerTexts> texts,
                     TStringList not_run)
      : TDBConnMySQLOffline(std::move(connection)),
        file_(GetConnectionObject()),
        texts_(std::move(texts)),
        not_run_(std::move(not_run)) {}

  void ListTables(TStringList& list) override {
    list.clear();
    for (const auto& [table, text] : *texts_) list.push_back(table);
  }

  void ShowCreateTable(const std::string& table, std::string& ddl) override {
    const auto found = texts_->find(table);
    if (found == texts_->end()) RaiseError(Format(kNoTable, table));
    if (!found->second.fault.empty()) RaiseError(found->second.fault);
    ddl = found->second.text;
  }

  const TStructureScript* StructureScript() const override { return nullptr; }  // it was read
  void ExpectCreationTexts(const TStringList& /*tables*/) override {}
  TStringList NotFollowed() const override { return not_run_; }

 private:
  std::unique_ptr<TDBConnMySQL> NewEngine() const override {
    return std::make_unique<TServerTextsEngine>(file_.NewOfflineConnection(), texts_, not_run_);
  }

  TOfflineConnection& file_;
  std::shared_ptr<const TServerTexts> texts_;
  TStringList not_run_;
};

class TServerReader {
 public:
  TServerReader(const TStructureScript& script, TDBConn& target, TProgress& progress, const TScratchPorts& ports)
      : script_(script), target_(target), progress_(progress), ports_(ports) {}

  TServerTexts Read() {
    const TFileStatements file = ReadFileStatements(script_);
    for (const std::string& warning : file.warnings) not_run_.push_back(warning);
    TVariant folds;
    target_.GetResultSQL("select @@lower_case_table_names", folds);
    folds_case_ = VarToText(folds) != "0";
    TScratchDatabase scratch(target_, ports_);
    progress_.ShowOneBar("Reading the reference on the server...", static_cast<std::int64_t>(file.statements.size()));
    RunGuarded(
        [&] {
          scratch.RunWithin([&] {
            scratch.TakeServersDefaults();
            for (const TLocatedStatement& statement : file.statements) {
              progress_.StepTotal();
              Run(statement, scratch);
            }
            ReadTexts(scratch);
          });
        },
        [this] { progress_.Finish(); });
    return std::move(texts_);
  }
  const TStringList& NotRun() const { return not_run_; }

 private:
  std::string Key(const std::string& table) const { return folds_case_ ? LowerText(table) : table; }

  // A table one of whose statements failed stays as unknown as it is then, until it is dropped or made anew.
  void Run(const TLocatedStatement& statement, TScratchDatabase& scratch) {
    const TTableStatement& about = statement.about;
    const bool starts_anew = about.kind == ETableStatement::DropTable || about.kind == ETableStatement::ReplaceTable;
    if (!starts_anew && FollowsFault(statement)) return;
    try {
      RunInAnyOrder(statement, scratch);
      if (starts_anew)
        for (const TTableName& name : about.changes) faults_.erase(Key(name.table));
    } catch (const EMySqlException& error) {
      const std::string fault = Format(kRefused, statement.place, error.what());
      if (!scratch.Connected()) RaiseError(fault);
      const bool was_none = about.kind == ETableStatement::DropTable && error.Number() == kUnknownTable;
      if (!was_none || about.changes.size() > 1) Fail(about, fault);
    }
  }

  // Files that make a table before the one that it refers to run without checks. Others may depend on them: an index
  // that a foreign key needs cannot be dropped.
  static void RunInAnyOrder(const TLocatedStatement& statement, TScratchDatabase& scratch) {
    try {
      scratch.SwitchChecks(true);
      scratch.Run(statement.text);
    } catch (const EMySqlException&) {
      if (!scratch.Connected() || statement.about.kind == ETableStatement::DropIndex) throw;
      scratch.SwitchChecks(false);
      scratch.Run(statement.text);
    }
  }

  bool FollowsFault(const TLocatedStatement& statement) {
    for (const std::vector<TTableName>* names : {&statement.about.changes, &statement.about.reads})
      for (const TTableName& name : *names)
        if (faults_.contains(Key(name.table))) {
          Fail(statement.about, Format(kFollows, statement.place, name.table));
          return true;
        }
    return false;
  }

  // The first fault is the one to tell.
  void Fail(const TTableStatement& about, const std::string& fault) {
    for (const TTableName& name : about.changes) faults_.try_emplace(Key(name.table), name.table, fault);
  }

  void ReadTexts(TScratchDatabase& scratch) {
    for (const std::string& table : scratch.Tables()) {
      if (faults_.contains(Key(table))) continue;
      try {
        texts_[table].text = scratch.CreationText(table);
      } catch (const EMySqlException& error) {
        if (!scratch.Connected()) throw;
        texts_[table].fault = error.what();
      }
    }
    for (const auto& [key, fault] : faults_) texts_[Spelling(fault.first)].fault = fault.second;
  }

  // As the target spells it, where case does not count: nobody may take the two for different tables.
  std::string Spelling(const std::string& table) {
    TStringList names;
    target_.meta().TableNames(names);
    for (const std::string& name : names)
      if (folds_case_ && SameText(name, table)) return name;
    return table;
  }

  const TStructureScript& script_;
  TDBConn& target_;
  TProgress& progress_;
  const TScratchPorts& ports_;
  bool folds_case_ = false;
  std::map<std::string, std::pair<std::string, std::string>> faults_;  // table and fault, by what names are told by
  TServerTexts texts_;
  TStringList not_run_;
};

}  // namespace

std::unique_ptr<TDBConn> ReferenceByServer(TDBConnMySQLOffline& file, TDBConn& target, TProgress& progress,
                                           const TScratchPorts& ports) {
  TOfflineConnection& connection = file.GetConnectionObject();
  TServerReader reader(connection.Structure(), target, progress, ports);
  auto texts = std::make_shared<const TServerTexts>(reader.Read());
  auto reference =
      std::make_unique<TServerTextsEngine>(connection.NewOfflineConnection(), std::move(texts), reader.NotRun());
  reference->Connect();
  return reference;
}

}  // namespace velmora

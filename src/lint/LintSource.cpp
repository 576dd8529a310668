// SPDX-License-Identifier: GPL-3.0-or-later
#include "lint/LintSource.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <set>
#include <tuple>

#include "core/CreationTexts.h"
#include "core/Host.h"
#include "core/Meta.h"
#include "exact/compare/PrintedTable.h"
#include "exact/compare/ServerLanguage.h"
#include "exact/plan/FileSchema.h"
#include "lint/ElementPlaces.h"
#include "lint/LintSchema.h"
#include "mysqltext/ElementText.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kNoTexts[] =
    "%s cannot be looked at: a source is needed that has MySQL's creation texts, as a MySQL server, a file that ends "
    "in .sql or a folder of such files";

class TSourceLook {
 public:
  TSourceLook(TDBConn& source, const TLintSourceWishes& wishes)
      : source_(source), texts_(dynamic_cast<TCreationTexts&>(source)), wishes_(wishes) {}

  TLintResult Look() {
    AskServer();
    Read();
    schema_.Settle();
    for (const TTableText& table : schema_.Tables()) {
      if (!wishes_.selection.ReadsTable(table.name)) continue;
      Host().ProcessMessages();
      LookAtTable(table, schema_, wishes_.rules, result_.findings);
      ++result_.tables;
      table.ForgetReadings();
    }
    std::erase_if(result_.findings, [this](const TFinding& finding) { return IsLeftOut(finding); });
    Place();
    return std::move(result_);
  }

 private:
  void AskServer() {
    const TStructureScript* script = texts_.StructureScript();
    const std::string version = script == nullptr ? texts_.ServerVersion() : wishes_.version;
    if (!version.empty()) schema_.server = ReadServerTraits(version);
    schema_.live = script == nullptr;
    if (script == nullptr) {
      schema_.whole = IndexOf(texts_.KindsHidden(), "table") == kNotInList;
      return;
    }
    file_ = std::make_unique<TFileSchema>(*script, schema_.server.value_or(TServerTraits()));
    result_.not_followed = file_->Unknown();
    schema_.whole = result_.not_followed.empty();
  }

  TStringList TableNames() {
    TStringList tables;
    if (file_ != nullptr) return file_->TableNames();
    source_.meta().TableNames(tables);
    std::set<std::string> others;
    for (const TOtherObject& object : texts_.OtherObjects())
      if (object.kind == "view" || object.kind == "sequence") others.insert(object.name);
    std::erase_if(tables, [&others](const std::string& table) { return others.contains(table); });
    return tables;
  }

  // All of them: foreign keys refer to tables that are left out, too.
  void Read() {
    const TStringList tables = TableNames();
    RunGuarded(
        [&] {
          texts_.ExpectCreationTexts(tables);
          for (const std::string& table : tables) {
            Host().ProcessMessages();
            ReadTable(table);
          }
        },
        [this] { texts_.ExpectCreationTexts({}); });
  }

  void ReadTable(const std::string& table) {
    try {
      if (file_ != nullptr) return schema_.Add(file_->Table(table));
      std::string text;
      texts_.ShowCreateTable(table, text);
      schema_.Add(ReadPrintedTable(text));
    } catch (const EAbort&) {
      throw;
    } catch (const EVelmora& error) {
      if (!source_.GetConnected()) throw;
      schema_.unread.insert(LowerText(table));
      if (wishes_.selection.ReadsTable(table)) result_.unread.push_back({table, error.what()});
    }
  }

  bool IsLeftOut(const TFinding& finding) const {
    if (!wishes_.selection.Any()) return false;
    const TNamed what{finding.kind == EElement::Other        ? "table"
                      : finding.kind == EElement::ForeignKey ? "foreign-key"
                                                             : ElementWord(finding.kind),
                      finding.table, finding.element};
    const auto names = [&what](const TPattern& pattern) { return Names(pattern, what); };
    const TSelection& selection = wishes_.selection;
    const bool named = selection.only.empty() || std::ranges::any_of(selection.only, names);
    return !named || std::ranges::any_of(selection.except, names);
  }

  void Place() {
    const TStructureScript* script = texts_.StructureScript();
    if (script == nullptr || result_.findings.empty()) return;
    const TElementPlaces places(*script);
    for (TFinding& finding : result_.findings) finding.place = places.PlaceOf(finding);
    std::ranges::stable_sort(result_.findings, {},
                             [](const TFinding& finding) { return std::tie(finding.place.file, finding.place.line); });
  }

  TDBConn& source_;
  TCreationTexts& texts_;
  const TLintSourceWishes& wishes_;
  std::unique_ptr<TFileSchema> file_;  // of a script
  TLintSchema schema_;
  TLintResult result_;
};

}  // namespace

void CheckLintable(TDBConn& source) {
  if (dynamic_cast<TCreationTexts*>(&source) != nullptr) return;
  std::string shown;
  source.GetDisplayName(shown);
  RaiseError(Format(kNoTexts, shown));
}

TLintResult LintSource(TDBConn& source, const TLintSourceWishes& wishes) {
  CheckLintable(source);
  return TSourceLook(source, wishes).Look();
}

std::vector<TFinding> NewFindings(const std::vector<TFinding>& after, const std::vector<TFinding>& before) {
  const auto key = [](const TFinding& finding) {
    return std::tuple(finding.rule, LowerText(finding.table), finding.kind, LowerText(finding.element));
  };
  std::set<decltype(key(TFinding()))> had;
  for (const TFinding& finding : before) had.insert(key(finding));
  std::vector<TFinding> added;
  for (const TFinding& finding : after)
    if (!FindLintRule(finding.rule)->of_rows && !had.contains(key(finding))) added.push_back(finding);
  return added;
}

}  // namespace velmora

// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/ExportCommand.h"

#include <CLI/CLI.hpp>
#include <ostream>

#include "app/FolderExport.h"
#include "app/Sources.h"
#include "cli/Json.h"
#include "cli/SourceRun.h"
#include "core/CreationTexts.h"
#include "util/Counted.h"
#include "util/Errors.h"
#include "util/Format.h"

namespace velmora {

namespace {

void PrintText(const TExportReport& report, TConsole& console) {
  const std::pair<char, const TStringList*> lists[] = {
      {'+', &report.added}, {'~', &report.changed}, {'-', &report.removed}};
  for (const auto& [sign, files] : lists)
    for (const std::string& file : *files) console.out << sign << ' ' << file << '\n';
  console.out << Format("%s added, %d changed, %d removed, %d as they were\n", Counted(report.added.size(), "file"),
                        report.changed.size(), report.removed.size(), report.unchanged);
}

void Print(const TExportReport& report, const std::optional<std::string>& error, EFormat format, TConsole& console) {
  for (const std::string& warning : report.warnings) console.Warn(warning);
  if (error) console.Error(*error);
  if (format == EFormat::Text) {
    if (!error) PrintText(report, console);
    return;
  }
  console.out << TextOf({{"added", report.added},
                         {"changed", report.changed},
                         {"removed", report.removed},
                         {"unchanged", report.unchanged},
                         {"warnings", report.warnings},
                         {"whole", report.whole && !error},
                         {"error", JsonOf(error ? std::optional(console.Without(*error)) : std::nullopt)}});
}

}  // namespace

void TExportCommand::Declare(CLI::App& app) {
  app.add_option("SOURCE", source_, "The database: a MySQL server, a file of creation texts or a folder of them")
      ->required();
  app.add_option("-o,--output", folder_,
                 "The folder, made where it is not there; only files that an export wrote are removed from it")
      ->type_name("FOLDER")
      ->required();
  DeclareExact(app, {"only", "except", "definer"}, exact_);
  DeclareFormat(app, format_);
  options_.DeclareOne(app);
}

int TExportCommand::Execute(TConsole& console) {
  TExportReport report;
  std::optional<std::string> error;
  try {
    const std::unique_ptr<TDBConn> conn = MakeSource(source_, options_.ForOne(console));
    SettleSocket({conn.get()});
    if (auto* texts = dynamic_cast<TCreationTexts*>(conn.get())) texts->PrepareExactTexts();
    ConnectNamed(*conn);
    WarnOfSource(*conn, options_.verbose(), console, true);
    report = ExportToFolder(*conn, {exact_.selection, exact_.definers}, folder_);
  } catch (const EAbort&) {
    throw;
  } catch (const EVelmora& fault) {
    error = fault.what();
  }
  Print(report, error, format_, console);
  return error || !report.whole ? kExitFailure : kExitSuccess;
}

}  // namespace velmora

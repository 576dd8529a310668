// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/ReportOption.h"

#include <CLI/CLI.hpp>
#include <filesystem>
#include <map>

#include "cli/PairRun.h"
#include "report/ReportFile.h"
#include "util/Errors.h"
#include "util/Format.h"

namespace velmora {

namespace {

constexpr char kHelp[] =
    "Write %s to FILE: a page (.html), a comment on a change (.md), results for programs (.sarif); may be given "
    "several times";

constexpr char kOneFile[] = "%s and %s name one file, %s: give each its own";

std::string PlaceOf(const std::string& file) {
  std::error_code error;
  const std::filesystem::path place = std::filesystem::weakly_canonical(std::filesystem::absolute(file, error), error);
  return error ? file : place.string();
}

}  // namespace

CLI::Option* DeclareReports(CLI::App& app, const std::string& what, TStringList& files) {
  return app.add_option("--report", files, Format(kHelp, what))
      ->type_name("FILE")
      ->allow_extra_args(false)
      ->check([](const std::string& name) {
        return IsReportFile(name) ? std::string() : name + " has to end in .html, .md or .sarif";
      });
}

void CheckFilesApart(TNamedFiles files, const TStringList& reports) {
  for (const std::string& report : reports) files.emplace_back("--report", report);
  std::map<std::string, std::string_view> seen;
  for (const auto& [option, file] : files) {
    if (file.empty() || file == "-") continue;
    const auto [place, fresh] = seen.emplace(PlaceOf(file), option);
    if (!fresh) RaiseError(Format(kOneFile, place->second, option, file));
  }
}

std::optional<std::string> WriteReports(TPairRun& run, const TStringList& files) {
  TReport report;
  if (files.empty()) return std::nullopt;
  if (std::optional<std::string> error = run.GatherReport(report)) return error;
  for (const std::string& file : files) WriteReport(report, file);
  return std::nullopt;
}

}  // namespace velmora

// SPDX-License-Identifier: GPL-3.0-or-later
#include "report/ReportFile.h"

#include <algorithm>
#include <array>

#include "report/HtmlReport.h"
#include "report/MarkdownReport.h"
#include "report/SarifReport.h"
#include "util/Errors.h"
#include "util/Files.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kUnknownForm[] = "%s: a report's name has to end in .html, .md or .sarif";

struct TForm {
  std::string_view ending;
  std::string (*write)(const TReport& report);
};
constexpr std::array<TForm, 4> kForms = {{{".html", HtmlReport},
                                          {".htm", HtmlReport},
                                          {".md", [](const TReport& report) { return MarkdownReport(report); }},
                                          {".sarif", SarifReport}}};

const TForm* FormOf(const std::string& path) {
  const auto form = std::ranges::find_if(kForms, [&path](const TForm& row) {
    return path.size() > row.ending.size() && SameText(path.substr(path.size() - row.ending.size()), row.ending);
  });
  return form == kForms.end() ? nullptr : &*form;
}

}  // namespace

bool IsReportFile(const std::string& path) { return FormOf(path) != nullptr; }

void WriteReport(const TReport& report, const std::string& path) {
  const TForm* form = FormOf(path);
  if (form == nullptr) RaiseError(Format(kUnknownForm, path));
  WriteFileText(path, form->write(report));
}

}  // namespace velmora

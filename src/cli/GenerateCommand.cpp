// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/GenerateCommand.h"

#include <CLI/CLI.hpp>

#include "cli/CommandTables.h"
#include "cli/Completions.h"
#include "cli/ManualText.h"

namespace velmora {

namespace {

struct TForm {
  const char* word;
  std::string (*text)(const TCommandTable& program);
};
constexpr TForm kForms[] = {
    {"bash", BashCompletions}, {"zsh", ZshCompletions}, {"fish", FishCompletions}, {"scdoc", ManualText}};

}  // namespace

void TGenerateCommand::Declare(CLI::App& app) {
  TStringList words;
  for (const TForm& form : kForms) words.emplace_back(form.word);
  DeclareChoice(app, "FORM", words,
                "A shell, as in source <(velmora-cli generate bash); scdoc: the middle of the manual page",
                [this](std::size_t choice) { form_ = choice; });
  app.get_option("FORM")->required();
}

int TGenerateCommand::Execute(TConsole& console) {
  console.WriteExact(kForms[form_].text(ProgramTable()));
  return kExitSuccess;
}

}  // namespace velmora

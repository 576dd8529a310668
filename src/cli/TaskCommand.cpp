// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/TaskCommand.h"

#include <CLI/CLI.hpp>
#include <iterator>
#include <ostream>

#include "app/Sources.h"
#include "app/Tasks.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kHiddenValue[] = "(hidden)";

// A value as it can be given in a source: control characters would forge lines, and a tab would not be seen.
std::string Shown(const std::string& value) {
  std::string shown;
  for (std::size_t i = 0; i < value.size(); ++i) {
    const auto byte = static_cast<unsigned char>(value[i]);
    const bool c1 = byte == 0xC2 && i + 1 < value.size() && static_cast<unsigned char>(value[i + 1]) < 0xA0;
    if (byte < ' ' || byte == 0x7F || byte == '%' || c1)
      shown += Format("%%%02X", byte);
    else
      shown += value[i];
  }
  return shown;
}

void PrintSide(const char* name, const TTaskSide& side, bool show_passwords, std::ostream& out) {
  out << name << ": " << EngineName(*side.engine) << '\n';
  const auto print = [&](const TEngineKey& key) {
    const std::string value = side.values.Text(key.name);
    const bool hidden = key.kind == EKeyKind::Secret && !show_passwords && !value.empty();
    out << "  " << key.name << ": " << (hidden ? kHiddenValue : Shown(value)) << '\n';
  };
  for (const TEngineKey& key : side.engine->keys) print(key);
  for (const TEngineKey& key : side.engine->further)
    if (side.values.Has(key.name)) print(key);
}

void PrintWishes(const char* what, const std::string& wishes, std::ostream& out) {
  TStringList lines;
  SplitText("\n", wishes, lines);
  for (const std::string& wish : lines) out << what << ": " << ShownText(wish) << '\n';
}

}  // namespace

void TTaskCommand::Declare(CLI::App& app) {
  app.require_subcommand(1);
  CLI::App* create = app.add_subcommand("new", "Write a task file; nothing is connected");
  create->add_option("FILE", file_, "The file, ending in .vlt")->required();
  create->add_option("REFERENCE", reference_, "The database as it should be")->required();
  create->add_option("TARGET", target_, "The database that a script changes")->required();
  DeclareDialect(*create, "The dialect that the task is compared in (auto)",
                 [this](EDialect dialect) { dialect_ = dialect; });
  DeclareChoice(*create, "--colour", TStringList(std::begin(kTaskColours), std::end(kTaskColours)),
                "Mark the task with a colour, which the window shows at its top",
                [this](std::size_t choice) { marks_.colour = static_cast<ETaskColour>(choice); });
  create->add_flag("--ask-for-database", marks_.confirm_database,
                   "Have the target database's name typed before a script runs on it");
  DeclareExact(*create, exact_);
  DeclareExactOfRun(*create, exact_);
  DeclareForeign(*create, foreign_);
  options_.DeclarePair(*create);
  CLI::App* show = app.add_subcommand("show", "Show what a task file holds; nothing is connected");
  show->add_option("FILE", file_, "The file")->required();
  show->add_flag("--show-passwords", show_passwords_, "Show passwords too");
  show->callback([this] { show_ = true; });
}

int TTaskCommand::Execute(TConsole& console) { return show_ ? Show(console) : WriteNew(console); }

int TTaskCommand::WriteNew(TConsole& console) {
  CheckTaskName(file_);  // before anything is asked for
  const std::unique_ptr<TDBConn> reference = MakeSource(reference_, options_.ForStoredReference(console));
  const std::unique_ptr<TDBConn> target = MakeTarget(target_, options_.ForStoredTarget(console));
  SettleSocket({reference.get(), target.get()});
  NewTaskFile(file_, *reference, *target, dialect_, marks_, foreign_, exact_);
  return kExitSuccess;
}

int TTaskCommand::Show(TConsole& console) {
  const TTaskValues task = ShowTaskFile(file_);
  PrintSide("reference", task.reference, show_passwords_, console.out);
  PrintSide("target", task.target, show_passwords_, console.out);
  if (task.dialect) console.out << "dialect: " << *task.dialect << '\n';
  if (task.marks.colour != ETaskColour::None) console.out << "colour: " << ColourWord(task.marks.colour) << '\n';
  if (task.marks.confirm_database) console.out << "asks for the database's name before a run\n";
  PrintWishes("foreign", task.foreign, console.out);
  PrintWishes("exact", task.exact, console.out);
  return kExitSuccess;
}

}  // namespace velmora

// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/SplitCommand.h"

#include <CLI/CLI.hpp>
#include <ostream>

#include "app/ScriptSplitter.h"
#include "cli/Json.h"
#include "cli/SourceRun.h"
#include "sync/ScriptEditor.h"
#include "util/Errors.h"
#include "util/Format.h"

namespace velmora {

namespace {

std::string AsEdited(const std::string& text) {
  TLineEditor editor;
  editor.SetText(text);
  return editor.Text();
}

TJson Document(const TScriptPieces& pieces) {
  TJson statements = TJson::array();
  for (const TScriptStatement& statement : pieces.statements)
    statements.push_back({{"text", statement.text}, {"position", statement.position}});
  return {{"statements", std::move(statements)}, {"pieces", pieces.pieces}};
}

std::string PlainText(const TScriptPieces& pieces) {
  std::string text;
  for (const TScriptStatement& statement : pieces.statements)
    text += Format("-- at %d\n%s\n", statement.position, statement.text);
  return text + "-- " + Counted(pieces.statements.size(), "statement") + " in " + Counted(pieces.pieces, "piece") +
         '\n';
}

}  // namespace

void TSplitCommand::Declare(CLI::App& app) {
  app.add_option("FILE", file_, "A script; - is standard input")->required();
  app.add_flag("--raw", raw_, "Take the bytes as they are, instead of as lines that each end in CR LF");
  DeclareFormat(app, format_);
}

int TSplitCommand::Execute(TConsole& console) {
  const std::string text = ReadTextFile(file_);
  const TScriptPieces pieces = SplitScript(raw_ ? text : AsEdited(text));
  if (format_ == EFormat::Json)
    console.out << TextOf(Document(pieces));
  else
    console.WriteExact(PlainText(pieces));
  return kExitSuccess;
}

}  // namespace velmora

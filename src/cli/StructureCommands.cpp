// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/StructureCommands.h"

// The commands that show a structure: of a database, of a text alone, and of a database with a text applied to it.

#include <CLI/CLI.hpp>
#include <map>

#include "app/FaultPlace.h"
#include "app/ParsedStore.h"
#include "app/Sources.h"
#include "cli/SourceRun.h"
#include "util/Errors.h"
#include "util/Files.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

void Identify(TDBConn& conn, TStructure& structure) {
  structure.engine = conn.GetEngine();
  conn.GetDisplayName(structure.display_name);
}

// Runs `fetch`. Some engines know their name only when they have tried to connect.
template <class Fetch>
void FetchIdentified(TDBConn& conn, TStructure& structure, Fetch&& fetch) {
  Identify(conn, structure);
  RunGuarded(fetch, [&] { Identify(conn, structure); });
}

// The errors of tables that could not be fetched, by the ids of their rows.
using TUnread = std::map<int, std::string>;

// A table that could not be read shows why, unless the text has put a new one in its place.
void MarkUnread(const TMeta& meta, const TUnread& unread, std::vector<TTableView>& views) {
  auto view = views.begin();
  for (const TTableRow& row : meta.tTables.Rows()) {
    if (const auto found = unread.find(row.id); found != unread.end()) {
      *view = TTableView();
      view->name = row.name;
      view->error = found->second;
    }
    ++view;
  }
}

// The text of `file` through the engine's parser, and the rows as they then stand, whether it raised or not.
void ParseAndView(TDBConn& conn, const std::string& file, TConsole& console, TStructure& structure) {
  const std::string text = ReadTextFile(file);
  TMeta before;
  before.CopyFrom(conn.meta());
  try {
    conn.ParseDDL(Trim(text));
  } catch (const EVelmora& error) {
    structure.error = error.what();
    const std::size_t line = FaultLine(text, *structure.error, before);
    console.Error(Placed(line > 0 ? Format("%s: line %d", ShownPath(file), line) : ShownPath(file), *structure.error));
  }
  structure.tables = ViewTables(conn);
}

}  // namespace

void TSchemaCommand::Declare(CLI::App& app) {
  app.add_option("SOURCE", source_, "The database")->required();
  app.add_option("TABLE", tables_, "Tables to show; all when none is named");
  DeclareFormat(app, format_);
  options_.DeclareOne(app);
}

int TSchemaCommand::Execute(TConsole& console) {
  return ShowStructure(console, format_, [&](TStructure& structure) {
    const std::unique_ptr<TDBConn> conn = MakeSource(source_, options_.ForOne(console));
    SettleSocket({conn.get()});
    FetchIdentified(*conn, structure, [&] {
      FetchTables(*conn, tables_, options_.verbose(), console,
                  [&](TTableView view) { structure.tables.push_back(std::move(view)); });
    });
  });
}

void TParseCommand::Declare(CLI::App& app) {
  app.add_option("FILE", file_, "A text of MySQL statements; - is standard input")->required();
  DeclareFormat(app, format_);
}

int TParseCommand::Execute(TConsole& console) {
  return ShowStructure(console, format_, [&](TStructure& structure) {
    TParsedStore conn(ShownPath(file_));
    Identify(conn, structure);
    ParseAndView(conn, file_, console, structure);
  });
}

void TReplayCommand::Declare(CLI::App& app) {
  app.add_option("SOURCE", source_, "The database")->required();
  app.add_option("FILE", file_, "A text of MySQL statements; - is standard input")->required();
  DeclareFormat(app, format_);
  options_.DeclareOne(app);
}

int TReplayCommand::Execute(TConsole& console) {
  return ShowStructure(console, format_, [&](TStructure& structure) {
    const std::unique_ptr<TDBConn> conn = MakeTarget(source_, options_.ForOne(console));
    SettleSocket({conn.get()});
    TUnread unread;
    FetchIdentified(*conn, structure, [&] {
      FetchTables(*conn, {}, options_.verbose(), console, [&](const TTableView& view) {
        if (view.error && conn->meta().FindTable(view.name)) unread[conn->meta().tTables.CurrentId()] = *view.error;
      });
    });
    ParseAndView(*conn, file_, console, structure);
    MarkUnread(conn->meta(), unread, structure.tables);
  });
}

}  // namespace velmora

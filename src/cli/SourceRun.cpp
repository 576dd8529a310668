// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/SourceRun.h"

#include <algorithm>
#include <new>
#include <ostream>

#include "app/FaultPlace.h"
#include "cli/Json.h"
#include "cli/PairRun.h"
#include "cli/StructureText.h"
#include "engines/mysql/OfflineEngine.h"
#include "engines/oledb/DBConnOLEDB.h"
#include "util/Errors.h"
#include "util/Files.h"
#include "util/Format.h"

namespace velmora {

namespace {

// A folder that is not there lists nothing, too. Of script files the reader tells it.
void WarnOfNoTables(TDBConn& conn, TConsole& console) {
  if (!conn.meta().tTables.Empty() || dynamic_cast<TDBConnMySQLOffline*>(&conn) != nullptr) return;
  std::string name;
  conn.GetDisplayName(name);
  console.Warn(Placed(name, "no table was found"));
}

}  // namespace

void TellWarnings(TDBConn& conn, TConsole& console) {
  auto* source = dynamic_cast<TDBConnOLEDB*>(&conn);
  if (source == nullptr) return;
  for (const std::string& warning : source->TakeWarnings()) console.Warn(warning);
}

void WarnOfSource(TDBConn& conn, bool verbose, TConsole& console, bool applies_statements) {
  TellWarnings(conn, console);
  auto* offline = dynamic_cast<TDBConnMySQLOffline*>(&conn);
  if (offline == nullptr) return;
  const TOfflineConnection& file = offline->GetConnectionObject();
  for (const TScriptWarning& warning : file.Warnings()) {
    if (warning.passed_over && applies_statements) continue;
    const std::string text = Placed(warning.file.empty() ? file.Name() : warning.file, warning.Message());
    if (!warning.verbose_only)
      console.Warn(text);
    else if (verbose)
      console.Note(text);
  }
}

void ConnectNamed(TDBConn& conn) {
  try {
    conn.Connect();
  } catch (const EAbort&) {
    throw;
  } catch (const EVelmora& error) {
    RaiseError(Placed(SourcePlace(conn, error.what()), error.what()));
  }
}

std::string Placed(const std::string& place, const std::string& message) {
  return place.empty() ? message : place + ": " + message;
}

std::string ReadTextFile(const std::string& path) {
  std::string text = ReadFileText(path);
  const std::size_t nul = text.find('\0');
  if (nul != std::string::npos) {
    const auto line = 1 + std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(nul), '\n');
    RaiseError(Format("%s: line %d: NUL byte: this is no text file", ShownPath(path), line));
  }
  return text;
}

namespace {

// What there is takes the memory that is wanting.
void LeaveOutTables(TStructure& structure, TConsole& console) {
  structure.tables = {};
  structure.error = kOutOfMemory;
  console.Error(*structure.error);
}

TJson DocumentOf(const TStructure& structure) {
  return StructureDocument(structure.engine, structure.display_name, structure.tables, structure.error);
}

void PrintStructure(TStructure& structure, EFormat format, TConsole& console) {
  const auto least = [&] {
    LeaveOutTables(structure, console);
    return DocumentOf(structure);
  };
  if (format == EFormat::Json)
    PrintDocument(
        console.out, [&] { return DocumentOf(structure); }, least);
  else
    PrintTables(structure.tables, console.out);
}

}  // namespace

int ShowStructure(TConsole& console, EFormat format, const std::function<void(TStructure&)>& fill) {
  TStructure structure;
  try {
    fill(structure);
  } catch (const EAbort&) {
    throw;
  } catch (const EVelmora& error) {
    structure.error = console.Without(error.what());
    console.Error(*structure.error);
  } catch (const std::bad_alloc&) {
    LeaveOutTables(structure, console);
  }
  PrintStructure(structure, format, console);
  const bool table_failed = std::any_of(structure.tables.begin(), structure.tables.end(),
                                        [](const TTableView& table) { return table.error.has_value(); });
  return structure.error || table_failed ? kExitFailure : kExitSuccess;
}

void FetchTables(TDBConn& conn, const TStringList& tables, bool verbose, TConsole& console,
                 const std::function<void(TTableView)>& take) {
  ConnectNamed(conn);
  WarnOfSource(conn, verbose, console);
  TStringList names = tables;
  if (names.empty()) conn.meta().TableNames(names);
  WarnOfNoTables(conn, console);
  const std::unique_ptr<TProgress> progress = MakeProgress(console);
  progress->ShowOneBar("Reading tables", static_cast<std::int64_t>(names.size()));
  for (const std::string& name : names) {
    progress->StepTotal();
    TTableView view = FetchAndView(conn, name);
    if (view.error) {
      progress->Finish();
      view.name = console.Without(view.name);  // one that is not there may be a source in a wrong place
      view.error = console.Without(*view.error);
      console.Error(Placed(TablePlace(conn, name), *view.error));
    }
    const bool failed = view.error.has_value();
    take(std::move(view));
    if (failed && !StandsConnected(conn))
      RaiseError(Format("The connection is lost: what follows table %s was not read", name));
  }
  progress->Finish();
  TellWarnings(conn, console);
}

}  // namespace velmora

// SPDX-License-Identifier: GPL-3.0-or-later
#include "sync/ScriptGenerator.h"

#include <cstdint>

#include "core/Engines.h"
#include "core/Host.h"
#include "sync/SyncActions.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/MySqlFacts.h"
#include "util/Text.h"
#include "util/Version.h"

namespace velmora {

namespace {

constexpr char kOrigin[] = "Script created by Orvanex Velmora %s on %s.";
constexpr char kPurpose[] = "Modifying %s database %s to be equal to %s reference database %s.";
constexpr char kComment[] = "--";

constexpr std::size_t kLongestWithoutEnd = 2;  // texts up to this length get no ";"

std::string EngineName(TDBConn& conn) {
  std::string name;
  StrEngine(conn.GetEngine(), name);
  return name;
}

std::string DisplayName(TDBConn& conn) {
  std::string name;
  conn.GetDisplayName(name);
  return name;
}

}  // namespace

std::string ScriptOrigin(const TClock& clock) { return Format(kOrigin, VersionText(), ShortDateTimeText(clock.Now())); }

std::string ScriptPurpose(TTaskConnections& connections) {
  const std::string target = EngineName(*connections.target);
  const std::string targetName = DisplayName(*connections.target);
  const std::string reference = EngineName(*connections.reference);
  return Format(kPurpose, target, targetName, reference, DisplayName(*connections.reference));
}

TScriptGenerator::TScriptGenerator(TTaskConnections& connections, TdmData& data, TScriptEditor& editor,
                                   TProgress& progress, const TClock& clock)
    : connections_(connections), data_(data), editor_(editor), progress_(progress), clock_(clock) {}

void TScriptGenerator::AddScriptLine(const std::string& text) {
  std::string line = Trim(text);
  if (line.size() > kLongestWithoutEnd && !line.starts_with(kComment) && !line.ends_with(';')) line += ';';
  data_.AppendScript(line);
  editor_.AddLine(line);
}

void TScriptGenerator::GenerateScript() {
  editor_.Clear();
  AddHeader();
  RunGuarded(
      [this] {
        AddActions();
        editor_.Show();
      },
      [this] { AddClosing(); });
}

void TScriptGenerator::AddHeader() {
  AddScriptLine(kComment + ScriptOrigin(clock_));
  AddScriptLine(kComment + ScriptPurpose(connections_));
  if (!Note.empty()) AddScriptLine(kComment + Note);
  AddScriptLine({});
  AddScriptLine(std::string(kForeignKeyChecksOff) + ";");
  AddScriptLine({});
}

void TScriptGenerator::AddActions() {
  const TActionTable& actions = data_.mtActions;
  progress_.SetDetailMax(static_cast<std::int64_t>(actions.Count()));
  progress_.SetDetailPosition(1);
  std::int64_t number = 0;
  for (const TActionRow* next = actions.First(); next != nullptr;) {
    const TActionRow row = *next;  // the pump may run code that deletes it
    progress_.SetDetailPosition(++number);
    Host().ProcessMessages();
    AddScriptLine(SyncAction(row.action_id).statement(*connections_.reference, *connections_.target, row));
    next = actions.After(row.id);
  }
}

// Also after a script that ended early. The empty line that may come first only sets the closing line apart: it is no
// line of `mtScript`.
void TScriptGenerator::AddClosing() {
  if (!editor_.LastLine().empty()) editor_.AddLine({});
  AddScriptLine(std::string(kForeignKeyChecksOn) + ";");
}

}  // namespace velmora

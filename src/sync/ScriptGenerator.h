// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Turns the sync actions into the text of the script.

#include <string>

#include "sync/Data.h"
#include "sync/Progress.h"
#include "sync/ScriptEditor.h"
#include "sync/TaskConnections.h"
#include "util/Clock.h"

namespace velmora {

// What the first lines of a script say, without the marks of a comment. The second one raises "StrEngine error" for an
// engine without a name.
std::string ScriptOrigin(const TClock& clock);
std::string ScriptPurpose(TTaskConnections& connections);

// Reads table, item and id of each action and composes every statement anew from the stores. Composing the drop of a
// column takes that column out of the target's store, so a second generation fails there until the next comparison.
class TScriptGenerator {
 public:
  // All outlive this object. Both connections must be there whenever GenerateScript is called.
  TScriptGenerator(TTaskConnections& connections, TdmData& data, TScriptEditor& editor, TProgress& progress,
                   const TClock& clock);

  std::string Note;  // a further line of the header; empty for none

  // Replaces the editor's text. An error of a store ends it and passes on; the closing line stands after what there
  // is. An engine without a name raises "StrEngine error" with the first line alone in the editor.
  void GenerateScript();
  // Adds `text`, trimmed, to the editor and to `mtScript`. What is longer than two characters, no comment and without
  // ";" at its end gets one.
  void AddScriptLine(const std::string& text);

 private:
  void AddHeader();
  void AddActions();
  void AddClosing();

  TTaskConnections& connections_;
  TdmData& data_;
  TScriptEditor& editor_;
  TProgress& progress_;
  const TClock& clock_;
};

}  // namespace velmora

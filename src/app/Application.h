#pragma once

// The open task and what a user can do with it, without windows: the windows and the companion both drive this.

#include <memory>
#include <string>

#include "app/ScriptRunner.h"
#include "sync/ActionTree.h"
#include "sync/Data.h"
#include "sync/MessageLog.h"
#include "sync/Progress.h"
#include "sync/ScriptEditor.h"
#include "sync/ScriptGenerator.h"
#include "sync/Sync.h"
#include "sync/TaskConnections.h"
#include "util/Clock.h"

namespace velmora {

class TApplication {
 public:
  // All outlive this object.
  TApplication(TProgress& progress, TScriptEditor& editor, TMessageLog& log, const TClock& clock);

  TTaskConnections connections;
  TdmData data;
  TActionTree tree;
  TDBSync sync;

  // Takes the pair and connects both, the reference first.
  void OpenTask(std::unique_ptr<TDBConn> reference, std::unique_ptr<TDBConn> target);
  // Takes the pair as it is. That is enough for a comparison, which connects both sides anew by itself; a script needs
  // a target that was connected before.
  void TakeTask(TTaskConnections pair);
  // Compares the pair; the actions are in `data` and `tree` afterwards, the log in `sync.ActionLog`. On an error those
  // found so far stay.
  void Compare();
  bool Identical() const { return data.mtActions.Empty(); }
  void GenerateScript() { generator_.GenerateScript(); }
  // Runs a text on the target in one transaction; see TScriptRunner. `RunReport` tells how far it came.
  void RunScript(const std::string& text) { runner_.RunScript(text, true); }
  const TRunReport& RunReport() const { return runner_.Report(); }

 private:
  TScriptGenerator generator_;
  TScriptRunner runner_;
};

}  // namespace velmora

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// All that a comparison and its script need, around two connections.

#include <memory>
#include <string>

#include "engines/mysql/OfflineEngine.h"
#include "support/RecordingPorts.h"
#include "support/ScratchFolder.h"
#include "sync/ScriptGenerator.h"
#include "sync/Sync.h"
#include "util/Files.h"

namespace velmora::testing {

// A file of creation texts that lives as long as this object.
class TScriptFile {
 public:
  explicit TScriptFile(const std::string& text) { WriteFileText(path_, text); }
  const std::string& Path() const { return path_; }

 private:
  TScratchFolder folder_;
  const std::string path_ = folder_ / "script.sql";
};

struct TSyncRig {
  // Both sides are connected, as they are when a task is open.
  TSyncRig(std::unique_ptr<TDBConn> reference, std::unique_ptr<TDBConn> target);
  TSyncRig(const std::string& referencePath, const std::string& targetPath);

  TTaskConnections connections;
  TdmData data;
  TActionTree tree;
  TRecordingProgress progress;
  TRecordingLog log;
  TLineEditor editor;
  TFixedClock clock{EncodeDate(2005, 1, 31) + EncodeTime(9, 5, 30)};
  TDBSync sync{connections, data, tree, progress, log};
  TScriptGenerator generator{connections, data, editor, progress, clock};

  void Compare();
  void GenerateScript() { generator.GenerateScript(); }
};

}  // namespace velmora::testing

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What a task file holds, as values and as engines. Reading and writing go by way of the shared document.

#include <memory>
#include <optional>
#include <string>

#include "persist/EngineTable.h"
#include "persist/TaskMarks.h"

namespace velmora {

// One connection of a task as the file has it.
struct TTaskSide {
  const TEngineRow* engine = nullptr;
  TEngineValues values;
};

// A task file, read side by side, so that what was read stays when the other side fails.
class TTaskReader {
 public:
  // Reads the file up to the target's engine name. Raises "Cannot read %s: %s", "Invalid session file" for a file
  // without the magic, the errors of UnpackTask and of the path store, "Incompatible task version", and
  // "StrToEngine error" for an unknown target.
  explicit TTaskReader(const std::string& path);

  // Both raise "OpenTask: Unhandled engine " and the engine's name where a task cannot hold it on this side, and the
  // path store's error for a key that is missing or stands twice. To be called before anybody else uses the shared
  // document.
  TTaskSide Reference() const;  // also "StrToEngine error"
  TTaskSide Target() const;
  std::optional<std::string> Dialect() const;  // the word that stands for it; what it means is not this file's affair
  TTaskMarks Marks() const;                    // raises for a colour that there is not
  std::string Foreign() const;  // what is asked for a reference that is not MySQL; likewise not its affair
  std::string Exact() const;    // what is asked of the exact dialect; likewise
};

// The engine of a side, not connected. Raises as MakeEngine does.
std::unique_ptr<TDBConn> MakeTaskEngine(const TTaskSide& side, const TEngineClients& clients = {});

struct TTaskValues {
  TTaskSide reference;
  TTaskSide target;
  std::optional<std::string> dialect{};
  TTaskMarks marks{};
  std::string foreign{};
  std::string exact{};
};

// A whole file as values, for showing it: nothing is made of them.
TTaskValues ReadTaskValues(const std::string& path);

// Writes both connections, the word of the dialect where there is one, the marks that are set and of `foreign` and
// `exact` what is not empty to the file, in one step and readable for its owner alone. Raises "StrEngine error" for the
// script engine, "SaveTask: Unhandled engine " and the name for an engine that a task cannot hold on its side, the path
// store's error for a value that XML cannot hold, and "Cannot write %s: %s". The old file is then as it was.
void WriteTask(const std::string& path, TDBConn& reference, TDBConn& target,
               const std::optional<std::string>& dialect = {}, const TTaskMarks& marks = {},
               const std::string& foreign = {}, const std::string& exact = {});

}  // namespace velmora

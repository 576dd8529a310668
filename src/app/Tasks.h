// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Task files as the companion uses them. Every error has the file's name in front.

#include <string>

#include "app/Dialects.h"
#include "app/Sources.h"
#include "exact/run/ExactWishes.h"
#include "foreign/ForeignWishes.h"
#include "persist/TaskDocument.h"
#include "sync/TaskConnections.h"

namespace velmora {

bool IsTaskFile(const std::string& source);  // ends in .vlt

struct TMadeTask {
  TTaskConnections connections;  // neither is connected
  EDialect dialect = kDefaultDialect;
  TTaskMarks marks;
  TForeignWishes foreign;
  TExactWishes exact;
};

// Both sides of a task file; passwords are those of the file, unless the settings have one. Raises for a side that
// cannot be made, and for a target that a script cannot change.
TMadeTask MakeTask(const std::string& path, const TSourceSettings& reference = {}, const TSourceSettings& target = {});

void CheckTaskName(const std::string& path);  // raises for a name that does not end in .vlt

// Writes a task file, an old one being replaced in one step. Raises for a name that does not end in .vlt and for a file
// of creation texts, which cannot be part of a task.
void NewTaskFile(const std::string& path, TDBConn& reference, TDBConn& target, EDialect dialect = kDefaultDialect,
                 const TTaskMarks& marks = {}, const TForeignWishes& foreign = {}, const TExactWishes& exact = {});

TTaskValues ShowTaskFile(const std::string& path);

}  // namespace velmora

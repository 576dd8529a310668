// SPDX-License-Identifier: GPL-3.0-or-later
#include "persist/TaskFile.h"

#include "core/Host.h"
#include "util/Errors.h"
#include "util/Format.h"

namespace velmora {

namespace {

constexpr char kCloseQuestion[] =
    "You did not save current task. Saving task enables you to instantly run synchronization process later. Are you "
    "sure you want to close the program without saving it?";
constexpr char kCloseCancelled[] = "Cancelled task closing";
constexpr char kNothingToSave[] = "There is no open task to save";
constexpr char kSideFailed[] = "%s %s: %s";

// The clients' messages do not say which of the two it was.
void ConnectSide(const char* side, TDBConn& conn) {
  try {
    conn.Connect();
  } catch (const EAbort&) {
    throw;
  } catch (const EVelmora& error) {
    std::string name;
    conn.GetDisplayName(name);
    RaiseError(Format(kSideFailed, side, name, error.what()));
  }
}

}  // namespace

bool TTaskFile::MayClose() const { return !TaskIsUnsaved || ConfirmYes(kCloseQuestion); }

void TTaskFile::Reset() {
  TaskIsUnsaved = false;
  Dialect.reset();
  Marks = {};
  Foreign.clear();
  Exact.clear();
}

void TTaskFile::CloseTask() {
  if (!MayClose()) RaiseError(kCloseCancelled);
  Reset();
  connections_.reference.reset();
  connections_.target.reset();
  host_.ShowTask(false);
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): the path may be that of the task, which is closed
void TTaskFile::OpenTask(std::string path) {
  CloseTask();
  Host().ProcessMessages();
  TaskFileName = path;
  TaskIsUntitled = false;
  OpenRead(path, TTaskReader(path));
}

void TTaskFile::OpenRead(const std::string& path, const TTaskReader& reader) {
  TaskFileName = path;
  TaskIsUntitled = false;
  host_.CheckDialect(reader.Dialect());
  host_.CheckForeign(reader.Foreign());
  host_.CheckExact(reader.Exact());
  Dialect = reader.Dialect();
  Marks = reader.Marks();
  Foreign = reader.Foreign();
  Exact = reader.Exact();
  connections_.reference = MakeTaskEngine(reader.Reference(), clients_);
  connections_.target = MakeTaskEngine(reader.Target(), clients_);
  ConnectSide("Reference", *connections_.reference);
  ConnectSide("Target", *connections_.target);
  host_.ShowTask(true);
  host_.RecentAdd(path);
}

void TTaskFile::SaveTask(const std::string& path) {
  if (!connections_.reference || !connections_.target) RaiseError(kNothingToSave);
  WriteTask(path, *connections_.reference, *connections_.target, Dialect, Marks, Foreign, Exact);
  TaskIsUnsaved = false;
  TaskFileName = path;
  host_.RecentAdd(path);
  host_.ShowTask(true);
}

}  // namespace velmora

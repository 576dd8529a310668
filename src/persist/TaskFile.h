// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The file of the open task: opening, saving, closing.

#include <optional>
#include <string>
#include <utility>

#include "persist/TaskDocument.h"
#include "sync/TaskConnections.h"

namespace velmora {

inline constexpr char kTaskExtension[] = ".vlt";
inline constexpr char kTaskFilter[] = "Velmora tasks|*.vlt";
inline constexpr char kUntitledTask[] = "Untitled.vlt";

// The port to whoever shows the open task.
class TTaskHost {
 public:
  virtual ~TTaskHost() = default;
  // Shows or hides the work area; to show it connects both connections. May raise.
  virtual void ShowTask(bool active) = 0;
  virtual void RecentAdd(const std::string& path) = 0;  // the path goes to the head of the recent list
  // Raises for the word of a dialect that nobody knows.
  virtual void CheckDialect(const std::optional<std::string>& word) = 0;
  // Likewise for what is asked for a reference that is not MySQL.
  virtual void CheckForeign(const std::string& text) = 0;
  virtual void CheckExact(const std::string& text) = 0;  // and of the exact dialect
};

// Nothing is rolled back when an operation raises: see each.
class TTaskFile {
 public:
  // Both outlive this object.
  TTaskFile(TTaskConnections& connections, TTaskHost& host, TEngineClients clients = {})
      : connections_(connections), host_(host), clients_(std::move(clients)) {}

  std::string TaskFileName;
  bool TaskIsUntitled = false;         // the next save asks for a name. Deliberate: only OpenTask clears it
  bool TaskIsUnsaved = false;          // Deliberate: a changed mapping alone sets it, or closing asks nothing
  std::optional<std::string> Dialect;  // of the open task, by its word: read with it, saved with it
  TTaskMarks Marks;                    // likewise
  std::string Foreign;                 // likewise: what is asked for a reference that is not MySQL, as text
  std::string Exact;                   // likewise: what is asked of the exact dialect

  // What a task asks for is as nobody has touched it; there is nothing to save.
  void Reset();

  // With TaskIsUnsaved the user is asked, and the answer is given.
  bool MayClose() const;

  // Frees both connections and hides the task; it counts as saved then. Where MayClose says no it raises "Cancelled
  // task closing" beforehand.
  void CloseTask();

  // Closes the open task, reads the file, connects both sides, shows the task and enters the path in the recent list.
  // Raises as TTaskReader, MakeTaskEngine, Connect and the port do. The former task is gone then, TaskFileName is the
  // new path, and the connections made so far stay.
  void OpenTask(std::string path);
  // The same where no task is open, of a file that was just read.
  void OpenRead(const std::string& path, const TTaskReader& reader);

  // Writes the file as WriteTask does, makes `path` the task's name, enters it in the recent list and shows the task.
  // An error of writing leaves everything as it was. Deliberate: TaskIsUntitled stays set.
  void SaveTask(const std::string& path);

 private:
  TTaskConnections& connections_;
  TTaskHost& host_;
  TEngineClients clients_;
};

}  // namespace velmora

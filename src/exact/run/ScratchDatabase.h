// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// A database of its own beside the target's, on a connection of its own, so that the target's never leaves its
// database.

#include <functional>
#include <memory>
#include <string>

#include "core/CreationTexts.h"
#include "core/DBConn.h"
#include "exact/objects/ObjectChanges.h"
#include "util/Lists.h"

namespace velmora {

// Whoever is told of the work. Both calls may be empty.
struct TScratchPorts {
  std::function<void(const std::string& warning)> warn;  // before anything is made on the server
  // The connection that statements run on from here, any of which may be broken off; null when that must not be.
  std::function<void(TDBConn* conn)> runs_on;
};

// Statements run without foreign key checks until they are switched on, and without the binary log where the login may
// switch that off. Errors of the server pass through, but that one which a "Cancelled" of the message pump explains
// makes way for it.
class TScratchDatabase {
 public:
  // Connects; nothing is made yet. `target`, which outlives this object, is connected and gives creation texts; raises
  // where it is not.
  TScratchDatabase(TDBConn& target, TScratchPorts ports);

  // Runs `body` on the new database, which has the character set of the target's, and removes it, however `body` ends.
  // Warns before of what an earlier run has left, and of a binary log that cannot be switched off.
  void RunWithin(const std::function<void()>& body);

  // From here on statements without strictness, or of a timestamp that says nothing of itself, mean what they mean to
  // any client of this server. Exact texts need neither.
  void TakeServersDefaults();
  void SwitchChecks(bool on);  // of foreign keys
  // Whether the server wants primary keys, or makes them, as it is told to: copies of tables that are there need
  // neither.
  void SwitchKeyRules(bool on);
  void Run(const std::string& statement);
  TStringList Tables();
  std::string CreationText(const std::string& table);
  TDatabaseObjects Objects();  // what stands beside the tables
  const std::string& Name() const { return name_; }
  bool Connected() const { return conn_->GetConnected(); }

 private:
  void Create();
  void Remove();
  void LeaveOutOfBinaryLog();
  void NameLeftovers();
  void Warn(const std::string& text) const;
  void RunOn(TDBConn* conn) const;

  TDBConn& target_;
  TScratchPorts ports_;
  std::unique_ptr<TDBConn> conn_;
  TCreationTexts* texts_ = nullptr;
  std::string name_;
  bool made_ = false;
  bool checks_ = true;
};

}  // namespace velmora

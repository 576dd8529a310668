// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What a user should know of the connections of the open pair, for the log.

#include <map>
#include <memory>

#include "persist/EngineTable.h"
#include "sync/TaskConnections.h"

namespace velmora {

class TWaiting;

class TConnectionNotes {
 public:
  // The same clients, whose connections to MySQL servers leave here what they have to say, and wait by `waiting`, if it
  // is any. They may outlive this object.
  TEngineClients Watched(const TEngineClients& clients, std::shared_ptr<TWaiting> waiting) const;

  // A line for each thing said of a side, and for each socket that nobody has named.
  TStringList Of(const TTaskConnections& pair) const;

 private:
  using TSaid = std::map<const TMyConnection*, std::string>;

  TStringList OfSide(const char* side, TDBConn* conn) const;

  std::shared_ptr<TSaid> said_ = std::make_shared<TSaid>();
};

}  // namespace velmora

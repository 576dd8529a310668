// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The reference of a fleet, which is read once, whatever the number of its targets.

#include <functional>
#include <memory>
#include <string>

#include "core/DBConn.h"

namespace velmora {

class TFleetReference {
 public:
  // Connects a MySQL server, a file or a folder, reads all that comparisons look at, and takes leave of the server.
  // Raises what that raises, and for a reference that is not MySQL.
  explicit TFleetReference(std::unique_ptr<TDBConn> source);

  // An engine for one comparison that answers out of what was read. Any thread may call it; what the engines share
  // does not change any more.
  std::unique_ptr<TDBConn> Engine() const { return engine_(); }
  TDBConn& Source() { return *source_; }  // for messages; of a file it holds the warnings of reading
  bool HasTables() const { return has_tables_; }

 private:
  std::unique_ptr<TDBConn> source_;
  std::function<std::unique_ptr<TDBConn>()> engine_;
  bool has_tables_ = false;
};

}  // namespace velmora

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The quick way to know that a target is identical: all that a comparison looks at of it is, byte by byte, what it was
// of a target that was compared and found identical, on a server of the same product and version. Nothing is taken
// apart then. Whatever is in doubt is compared.

#include <cstddef>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>

#include "app/ExactDialect.h"
#include "engines/mysql/DBConnMySQL.h"
#include "mysqltext/GrantText.h"

namespace velmora {

// What is known to be identical with the reference of a run. Every operation is for any thread.
class TIdenticalTargets {
 public:
  // `counters`: where the next rows' numbers (AUTO_INCREMENT) are to differ, they are among the facts.
  explicit TIdenticalTargets(bool counters) : counters_(counters) {}

  bool Any() const;
  bool Contains(const std::string& facts) const;
  // Takes what a comparison has read of a target that it found identical, and that is still connected. Nothing happens
  // for one whose outcome also hangs on what is not among the facts.
  void Learn(const TExactDialect& compared, TDBConn& target);

 private:
  mutable std::mutex mutex_;
  std::set<std::string> facts_;  // a digest of each; guarded by it
  bool counters_;
};

// A session on a server that looks at one database after the other. For one thread at a time.
class TFleetProbe {
 public:
  // Logs in; raises what that raises. `counters` as above.
  TFleetProbe(std::unique_ptr<TDBConnMySQL> server, bool counters);

  // Whether it has the login that this engine would take.
  bool IsFor(const TDBConnMySQL& other) const;
  // A digest of what a comparison would look at. Raises what the server raises, after which the probe is of no use;
  // gives nothing where something cannot be read, or may be there unseen.
  std::optional<std::string> Facts(const std::string& database);

 private:
  std::unique_ptr<TDBConnMySQL> server_;
  bool counters_;
  std::string traits_;
  std::optional<TGrants> grants_;
};

}  // namespace velmora

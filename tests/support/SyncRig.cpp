// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/SyncRig.h"

#include <utility>

namespace velmora::testing {

TSyncRig::TSyncRig(std::unique_ptr<TDBConn> reference, std::unique_ptr<TDBConn> target) {
  connections.reference = std::move(reference);
  connections.target = std::move(target);
  connections.reference->Connect();
  connections.target->Connect();
}

TSyncRig::TSyncRig(const std::string& referencePath, const std::string& targetPath)
    : TSyncRig(std::make_unique<TDBConnMySQLOffline>(referencePath),
               std::make_unique<TDBConnMySQLOffline>(targetPath)) {}

void TSyncRig::Compare() {
  sync.SetDatabases(connections.reference.get(), connections.target.get());
  sync.Compare();
}

}  // namespace velmora::testing

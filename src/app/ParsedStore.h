// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

#include "engines/mysql/OfflineEngine.h"

namespace velmora {

// A store that texts alone fill: no file or server stands behind it, so that there is nothing to fetch.
class TParsedStore final : public TDBConnMySQLOffline {
 public:
  explicit TParsedStore(const std::string& name) : TDBConnMySQLOffline(name) {}  // shown by this name
  void FetchTableStructure(const std::string& /*table*/) override {}
};

}  // namespace velmora

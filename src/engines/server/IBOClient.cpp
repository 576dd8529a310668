// SPDX-License-Identifier: GPL-3.0-or-later
#include "engines/server/IBOClient.h"

namespace velmora {

std::string TIBODatabase::Param(std::string_view name) const {
  const auto found = params_.find(name);
  return found == params_.end() ? std::string() : found->second;
}

void TIBOQuery::Open() {
  Close();
  Show(IB_Connection.Read(SQL));
}

void TIBOQuery::ExecuteDirect(const std::string& sql) {
  Close();
  rows_affected_ = IB_Connection.Execute(sql);
}

}  // namespace velmora

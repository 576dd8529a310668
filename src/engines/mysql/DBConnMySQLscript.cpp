// SPDX-License-Identifier: GPL-3.0-or-later
#include "engines/mysql/DBConnMySQLscript.h"

#include "xml/XMLAccess.h"

namespace velmora {

void TDBConnMySQLscript::SaveParams(const std::string& path, TXMLAccess& store) {
  store.xmlSetVal(path + "/filename", filename_);
}

}  // namespace velmora

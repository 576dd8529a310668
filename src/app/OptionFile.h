// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Option files of the programs of MySQL and MariaDB, as far as they say how a server is reached.

#include <map>
#include <string>

#include "util/Lists.h"

namespace velmora {

struct TOptionFile {
  // By the keys of a source: server, port, username, password, socket, tls, tls_ca, tls_cert, tls_key.
  std::map<std::string, std::string> values;
  TStringList warnings;
};

// Reads the groups [client], [client-server], [client-mariadb] and [velmora], with !include and !includedir; what
// stands last counts. Groups and options that are none of ours are passed over. Nothing here asks for encryption
// without a look at the certificate: ssl-mode=REQUIRED is taken as VERIFY_CA. Warns of a password that every user of
// the machine can read. Raises "Cannot read %s: %s"; with file and line for what is no option file; for one that
// everybody may write, and for files that include each other without an end. No message shows what stands in the file.
TOptionFile ReadOptionFile(const std::string& path);

}  // namespace velmora

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The two databases of a task in messages and questions.

#include <string>

#include "core/DBConn.h"

namespace velmora {

// "database shop of server db.example.org:3307"; of a file of creation texts its path; of other engines "Paradox
// database /data". Works without a connection;
// a socket is named with one.
std::string SideName(TDBConn& conn);

// "shop": what a user types who is to confirm that this database is the one to change; of other engines the name that
// they show.
std::string DatabaseName(TDBConn& conn);

// " (/run/mysqld/mysqld.sock)" of a server that was reached by this socket without being told so, as there may be
// several servers; otherwise empty.
std::string SocketOf(TDBConn& conn);

// Raises for a reference that no comparison can read truthfully: one that gives no creation texts, unless the dialect
// `maps_foreign` ones and their facts can be read.
void CheckComparable(TDBConn& reference, bool maps_foreign);

// Why the two sides cannot change places; empty where they can.
std::string SwapObstacle(TDBConn& reference);

// "MariaDB 10.11.4"; of engines without a server to ask their name. Empty for a server that does not answer.
std::string ServerText(TDBConn& conn);

// What to say of a reference without tables, before anything is made of it.
std::string EmptyReferenceText(TDBConn& reference);

}  // namespace velmora

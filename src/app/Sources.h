#pragma once

// What may stand for a database on a command line, and the engines made of it.

#include <memory>
#include <string>

#include "core/DBConn.h"

namespace velmora {

// Help for users, one line per form.
inline constexpr char kSourceForms[] =
    "SOURCE is a file ending in .sql: creation texts as a dump or \"show create table\" gives them.";

// The engine for `source`, not connected. Raises for a text of no known form.
std::unique_ptr<TDBConn> MakeSource(const std::string& source);
// The same for the side that a script will change: raises for an engine that cannot be a target.
std::unique_ptr<TDBConn> MakeTarget(const std::string& source);

}  // namespace velmora

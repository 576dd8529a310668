// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// How the MySQL dialect spells values, names and objects. Pure texts: no connection, no store.

#include <string>
#include <string_view>

#include "core/MetaRecords.h"
#include "util/Dates.h"

namespace velmora {

std::string MySQLDateTimeLiteral(TDateTime value);   // in single quotes; at midnight the date alone
std::string MySQLEscaped(std::string_view text);     // for use within single or double quotes
std::string MySQLNormalName(std::string_view name);  // . , # : ' become _
std::string MySQLColumnAttributes(const TMetaColumn& column, bool no_defaults);  // what follows the type
std::string MySQLForeignKey(const TMetaConstraint& constraint);                  // the whole clause, without its rules

// The column with a type that the MySQL type table can spell, where its own needs a stand-in.
TMetaColumn MySQLStandIn(const TMetaColumn& source);

}  // namespace velmora

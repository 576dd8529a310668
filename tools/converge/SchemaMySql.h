// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What MySQL 8 and 9 have for tables and MariaDB has not, on top of what the generator makes for MariaDB.

#include "converge/SchemaModel.h"

namespace velmora::testing {

// Says what the schema says in MySQL's words: a type, engine or option that only MariaDB has becomes one of MySQL's.
// What is MySQL's already stays.
void SpeakMySql(TSchemaModel& schema);

// Gives most tables something of MySQL's own, or changes or takes away what they have of it: keys over expressions and
// over members of JSON, other parsers of fulltext keys, checks that are not enforced, vectors, reference systems,
// defaults that are computed, collations of today, table options and kinds of partitions.
void VaryMySql(TSchemaModel& schema, TRandom& random);

}  // namespace velmora::testing

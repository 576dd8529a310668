// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "converge/SchemaModel.h"

namespace velmora::testing {

// A type with its attributes, any of MariaDB's, or one of a family.
TTypeModel AnyType(TRandom& random);
TTypeModel TypeOf(EFamily family, TRandom& random);

// What can be computed from a column, and in which type, and conditions that every value of it meets; empty where there
// is nothing.
struct TComputation {
  std::string expression;
  TTypeModel type;
};
TComputation AnyComputation(const TTypeModel& base, TRandom& random);
std::string AnyCondition(const TTypeModel& type, TRandom& random);

std::string AnyCharset(TRandom& random);       // of a column
std::string AnyTableCharset(TRandom& random);  // of a table: without those that are not for fulltext keys
// Whether literals in the character set can be read back from the text of a check.
bool CanBeRead(const std::string& charset);

}  // namespace velmora::testing

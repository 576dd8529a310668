// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/DBConn.h"
#include "core/Meta.h"
#include "engines/mysql/DDLParser.h"
#include "engines/mysql/MySQLTypes.h"

namespace velmora::testing {

// An engine with nothing behind it but the type table and the parser of MySQL. A table that is asked for counts as
// fetched with the rows that it has.
class TParserHost : public TDBConn {
 public:
  int GetEngine() override { return kEngineMySQL; }
  void ParseDDL(const std::string& sql) override { TDDLParser(*this).Parse(sql); }
  void GetColumnTypes(TColumnTypeInfoArray& table) override { table = MySQLColumnTypes(); }
  void FetchTableStructure(const std::string& /*table*/) override {}
};

}  // namespace velmora::testing

#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "engines/oledb/DBConnSQLServer.h"
#include "support/MessageOf.h"
#include "support/MetaDump.h"
#include "support/tds/DriverFolder.h"
#include "support/tds/FakeTdsServer.h"

namespace velmora::testing {

// A server, and connections to it by the real driver.
class TSqlServerTest : public ::testing::Test {
 protected:
  TSqlServerTest() { UseSqlServerDriver(); }

  TDBConnSQLServer Conn() const { return {Place(), "shop", server_.user, server_.password, false}; }
  std::string Place() const { return "127.0.0.1," + std::to_string(server_.Port()); }

  // What the server has received since the login.
  std::vector<std::string> Statements() const {
    std::vector<std::string> all = server_.Received();
    std::erase_if(all, [](const std::string& text) {
      return text.starts_with("(login") || text.find("sp_tables") != std::string::npos;
    });
    return all;
  }

  TFakeTdsServer server_;
};

// "field=text|field=text\n" per row; null as "-".
inline std::string RowsText(TDataset& rows) {
  std::string text;
  for (rows.First(); !rows.Eof(); rows.Next()) {
    for (std::size_t i = 0; i < rows.Fields().size(); ++i)
      text += (i == 0 ? "" : "|") + (VarIsNull(rows.Value(i)) ? "-" : VarToText(rows.Value(i)));
    text += "\n";
  }
  return text;
}

}  // namespace velmora::testing

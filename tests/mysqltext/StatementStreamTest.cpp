// SPDX-License-Identifier: GPL-3.0-or-later
#include "mysqltext/StatementStream.h"

#include <gtest/gtest.h>

#include "support/ScratchFolder.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Lists.h"

namespace velmora {
namespace {

// "3: statement" each, and the error at the end.
template <class Reader>
TStringList Read(Reader& reader) {
  TStringList read;
  TStatement statement;
  try {
    while (reader.Next(statement)) read.push_back(Format("%d: %s", statement.line, std::string(statement.text)));
  } catch (const EVelmora& error) {
    read.emplace_back(error.what());
  }
  return read;
}

TEST(StatementStream, ReadsInPartsWhatStandsInTheWhole) {
  const std::string kScripts[] = {
      "create table `a;b` (x int); -- one; two\n\n/* three;\n four */ insert into t values ('x;\\'y', \"a''b;\");;\n",
      "delimiter $$\ncreate procedure p() begin select 1; select '$$'; end$$\n$$ delimiter ;\ndrop table t;select 2",
      "/*!50003 create trigger t; */;\n/*!40101 set names utf8 */;\n# rest\nselect -1 --2\n;select 3 -- end",
      "select 1;\nselect 'not closed;\n;select 2;\n",
      "select 1;\n/* not closed;\nselect 2;\n",
      "   \n\n",
      "",
      "one;\ntwo;\nthree"};
  const testing::TScratchFolder folder;
  const std::string path = folder / "script.sql";
  for (const std::string& script : kScripts) {
    WriteFileText(path, script);
    TStatementReader whole(script, true);
    const TStringList expected = Read(whole);
    for (std::size_t part = 1; part < script.size() + 2; ++part) {
      std::string came;
      TStatementStream stream(
          std::make_unique<TFileParts>(path), [&came](std::string_view text) { came += text; }, part, 0);
      EXPECT_EQ(Read(stream), expected) << script << " in parts of " << part;
      EXPECT_EQ(came, script);
    }
  }
}

}  // namespace
}  // namespace velmora

// SPDX-License-Identifier: GPL-3.0-or-later

// A text file as a table: delimited, with several separators, or with columns of fixed width.

#include <memory>
#include <string>

#include "Harnesses.h"
#include "Input.h"
#include "core/Meta.h"
#include "engines/file/DBConnTextDelim.h"
#include "engines/file/DBConnTextFixed.h"
#include "foreign/TextFacts.h"

namespace velmora::fuzzing {
namespace {

void ReadText(TDBConn& conn) {
  conn.Connect();
  Try([&] {
    conn.meta().GotoTable("t.txt");
    conn.FetchIfNeeded();
    conn.GetRecordCount("t.txt");
  });
  Try([&] {
    TTableGuard rows(conn, "t.txt");
    for (; !rows->Eof(); rows->Next())
      for (std::size_t i = 0; i < rows->Fields().size(); ++i) VarToText(rows->Value(i));
  });
  Try([&] { MakeTextFacts(conn)->Table("t.txt"); });
}

}  // namespace

void FuzzText(std::string_view input) {
  constexpr const char* kSeparators[] = {",", ";", "\t", "||"};
  const std::size_t way = Choose(input, 10);
  const bool names = way % 2 == 0;
  const std::string& folder = PutFiles({{"t.txt", input}});
  if (input.empty()) return;
  if (way < 8) {
    TDBConnTextDelim conn(folder, kSeparators[way / 2], names);
    ReadText(conn);
  } else {
    TDBConnTextFixed conn(folder, names);
    ReadText(conn);
  }
}

}  // namespace velmora::fuzzing

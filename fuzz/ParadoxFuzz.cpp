// SPDX-License-Identifier: GPL-3.0-or-later

// A Paradox table, and its memos as a second part.

#include <cstdint>
#include <stdexcept>

#include "Harnesses.h"
#include "Input.h"
#include "core/Meta.h"
#include "engines/file/DBConnParadox.h"
#include "foreign/ParadoxFacts.h"

namespace velmora::fuzzing {

void FuzzParadox(std::string_view input) {
  const auto parts = Parts(input, 2);
  TDBConnParadox conn(PutFiles({{"t.db", parts[0]}, {"t.mb", parts[1]}}));
  conn.Connect();
  if (!conn.meta().FindTable("t")) return;
  Try([&] { conn.FetchIfNeeded(); });
  Try([&] { MakeParadoxFacts(conn)->Table("t"); });
  TTableGuard rows(conn, "t");
  std::int64_t count = 0;
  for (; !rows->Eof(); rows->Next(), ++count)
    for (std::size_t i = 0; i < rows->Fields().size(); ++i) VarToText(rows->Value(i));
  if (count != conn.GetRecordCount("t")) throw std::logic_error("another count of rows");
}

}  // namespace velmora::fuzzing

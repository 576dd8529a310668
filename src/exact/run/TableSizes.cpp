// SPDX-License-Identifier: GPL-3.0-or-later
#include "exact/run/TableSizes.h"

#include <array>

#include "mysqltext/Lexer.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Text.h"
#include "util/Variant.h"

namespace velmora {

namespace {

constexpr char kSizes[] =
    "select table_name, coalesce(table_rows, 0), coalesce(data_length, 0) + coalesce(index_length, 0) from "
    "information_schema.tables where table_schema = database() and table_name in (%s)";

// MySQL of today tells what it knew at the last time when it was asked, for up to a day; other servers have no such
// setting.
class TAskedAnew {
 public:
  explicit TAskedAnew(TDBConn& server) : server_(server) {
    try {
      TVariant before;
      server.GetResultSQL("select @@information_schema_stats_expiry", before);
      server.ExecSQL("set information_schema_stats_expiry = 0");
      before_ = VarToText(before);
    } catch (const EMySqlException&) {
      if (!server.GetConnected()) throw;
    }
  }
  void PutBack() {
    if (!before_.empty()) server_.ExecSQL("set information_schema_stats_expiry = " + before_);
  }

 private:
  TDBConn& server_;
  std::string before_;
};

std::string BytesText(std::int64_t bytes) {
  constexpr std::array<const char*, 4> kUnits = {"KB", "MB", "GB", "TB"};
  constexpr std::int64_t kStep = 1024;
  if (bytes < kStep) return Format("%d bytes", bytes);
  std::size_t unit = 0;
  std::int64_t scale = kStep;
  while (unit + 1 < kUnits.size() && bytes / scale >= kStep) {
    scale *= kStep;
    ++unit;
  }
  return Format("%d.%d %s", bytes / scale, bytes % scale * 10 / scale, kUnits.at(unit));
}

}  // namespace

std::string TTableSize::Text() const {
  return Format("about %d row%s, %s", rows, rows == 1 ? "" : "s", BytesText(bytes));
}

TTableSizes AskTableSizes(TDBConn& server, const TStringList& tables) {
  TTableSizes sizes;
  if (tables.empty()) return sizes;
  TStringList names;
  for (const std::string& table : tables) names.push_back(QuotedText(table));
  TAskedAnew anew(server);
  RunGuarded(
      [&] {
        const std::unique_ptr<TDataset> rows = server.OpenQuery(Format(kSizes, JoinList(names, ", ")));
        for (; !rows->Eof(); rows->Next())
          sizes[LowerText(VarToText(rows->Value(0)))] = {VarToInt(rows->Value(1)), VarToInt(rows->Value(2))};
        rows->Close();
      },
      [&anew] { anew.PutBack(); });
  return sizes;
}

}  // namespace velmora

// SPDX-License-Identifier: GPL-3.0-or-later
#include "converge/KeyRules.h"

#include "util/Format.h"

namespace velmora::testing {

namespace {

constexpr char kRules[] = "set global sql_generate_invisible_primary_key = %d, global sql_require_primary_key = %d";

bool IsMySql(TLiveDatabase& database) {
  return Answer(database.Connection(), "select version()").find("MariaDB") == std::string::npos;
}

}  // namespace

TKeyRules::TKeyRules(std::uint64_t seed, TLiveDatabase& reference, TLiveDatabase& target)
    : target_(target), mysql_(IsMySql(target)), random_(seed) {
  for (TLiveDatabase* side : {&reference, &target})
    if (IsMySql(*side) && random_.Chance(20)) side->Run("set sql_generate_invisible_primary_key = 1");
}

void TKeyRules::Set() {
  if (mysql_) target_.Run(Format(kRules, random_.Chance(15) ? 1 : 0, random_.Chance(25) ? 1 : 0));
}

void TKeyRules::Lift() {
  if (mysql_) target_.Run(Format(kRules, 0, 0));
}

bool THistogram::IsThere(TLiveDatabase& database) const {
  return Answer(database.Connection(),
                "select count(*) from information_schema.column_statistics where schema_name = database() and "
                "table_name = " +
                    SqlText(table) + " and column_name = " + SqlText(column)) != "0";
}

std::vector<THistogram> MakeHistograms(TLiveDatabase& database, const TSchemaModel& schema, TRandom random) {
  std::vector<THistogram> made;
  if (!IsMySql(database)) return made;
  for (const TTableModel& table : schema.tables) {
    for (const TColumnModel& column : table.columns) {
      if (!random.Chance(10)) continue;
      Answer(database.Connection(), "analyze table " + SqlName(table.name) + " update histogram on " +
                                        SqlName(column.name) + " with 4 buckets");
      const THistogram histogram{table.name, column.name};
      if (histogram.IsThere(database)) made.push_back(histogram);
    }
  }
  return made;
}

}  // namespace velmora::testing

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What MySQL servers do about tables without a primary key, and about histograms.

#include <string>
#include <vector>

#include "converge/SchemaModel.h"
#include "support/LiveDatabase.h"

namespace velmora::testing {

// Of some seeds: one side's tables were made while the server made primary keys by itself, or it does so, or wants
// some, while the plan runs. Nothing on other servers.
class TKeyRules {
 public:
  TKeyRules(std::uint64_t seed, TLiveDatabase& reference, TLiveDatabase& target);
  ~TKeyRules() { Lift(); }
  TKeyRules(const TKeyRules&) = delete;
  TKeyRules& operator=(const TKeyRules&) = delete;

  void Set();   // for sessions from here on
  void Lift();  // for these, too

 private:
  TLiveDatabase& target_;
  bool mysql_;
  TRandom random_;
};

struct THistogram {
  std::string table;
  std::string column;

  bool IsThere(TLiveDatabase& database) const;
};
// Makes some for columns of the tables.
std::vector<THistogram> MakeHistograms(TLiveDatabase& database, const TSchemaModel& schema, TRandom random);

}  // namespace velmora::testing

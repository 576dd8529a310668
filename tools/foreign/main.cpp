// SPDX-License-Identifier: GPL-3.0-or-later

// Runs seeds of sources that are not MySQL, as many as are asked for: see scripts/converge.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <map>

#include "foreign/Road.h"
#include "support/PrivateServer.h"
#include "util/Text.h"

namespace velmora::testing {
namespace {

constexpr char kUsage[] = "usage: velmora-foreign-converge [--damaged] ENGINE|all COUNT [FIRST_SEED]\nengines:";

struct TCounts {
  std::size_t misses = 0, tables = 0, statements = 0, unmade = 0;
  std::map<std::string, std::size_t> reasons;  // why there is no form, without what is quoted or counted
};

void Run(const TSourceKind& kind, TSourceMaker& maker, unsigned long long seed, bool damaged, TCounts& counts) {
  const TRoadResult result = damaged ? TravelDamaged(maker, seed) : Travel(maker, seed);
  counts.tables += result.tables;
  counts.statements += result.statements;
  counts.unmade += result.unmade.size();
  for (const std::string& element : result.unmade) ++counts.reasons[element];
  if (result.fault.empty()) return;
  ++counts.misses;
  const std::string server = ChosenServer().empty() ? "" : "--server " + ChosenServer() + " ";
  std::printf("seed %llu missed: %s\nrepeat it with: scripts/converge %s--foreign %s%s 1 %llu\n\n", seed,
              result.fault.c_str(), server.c_str(), damaged ? "--damaged " : "", kind.name, seed);
  std::fflush(stdout);
}

// Whether all went well; sources of which nothing is made, damaged or not, prove nothing.
bool RunAll(const TSourceKind& kind, unsigned long long count, unsigned long long first, bool damaged) {
  const std::unique_ptr<TSourceMaker> maker = kind.make();
  TCounts counts;
  for (unsigned long long seed = first; seed < first + count; ++seed) Run(kind, *maker, seed, damaged, counts);
  std::printf("%s: %llu seeds, %zu missed, %zu tables, %zu statements, %zu without a form\n", kind.name, count,
              counts.misses, counts.tables, counts.statements, counts.unmade);
  if (std::getenv("VELMORA_TELL_UNMADE") != nullptr)
    for (const auto& [reason, times] : counts.reasons) std::printf("  %zu: %s\n", times, reason.c_str());
  return counts.misses == 0 && counts.statements > 0;
}

int Main(std::vector<std::string> words) {
  const bool damaged = !words.empty() && words[0] == "--damaged";
  if (damaged) words.erase(words.begin());
  bool found = false, well = true;
  for (const TSourceKind& kind : SourceKinds()) {
    if (words.size() < 2 || (words[0] != "all" && words[0] != kind.name)) continue;
    found = true;
    well = RunAll(kind, std::strtoull(words[1].c_str(), nullptr, 10),
                  words.size() > 2 ? std::strtoull(words[2].c_str(), nullptr, 10) : 1, damaged) &&
           well;
  }
  if (found) return well ? 0 : 1;
  std::fputs(kUsage, stderr);
  for (const TSourceKind& kind : SourceKinds()) std::fprintf(stderr, " %s", kind.name);
  std::fputs("\n", stderr);
  return 2;
}

}  // namespace
}  // namespace velmora::testing

int main(int argc, char** argv) { return velmora::testing::Main({argv + 1, argv + argc}); }

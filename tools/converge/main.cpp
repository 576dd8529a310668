// Runs seeds of the convergence test, as many as are asked for: see scripts/converge.

#include <cstdio>
#include <cstdlib>
#include <string>

#include "converge/Convergence.h"

namespace {

constexpr char kUsage[] =
    "usage: velmora-converge COUNT [FIRST_SEED]\n"
    "       velmora-converge --tables TABLES SEED\n";

struct TCounts {
  std::size_t seeds = 0;
  std::size_t misses = 0;
  std::size_t statements = 0;
  std::size_t rows = 0;
  std::size_t parts = 0;
  std::size_t dropped = 0;
};

void Run(unsigned long long seed, std::size_t tables, TCounts& counts) {
  const auto result = velmora::testing::Converge(seed, tables);
  ++counts.seeds;
  counts.statements += result.statements;
  counts.rows += result.rows;
  counts.parts += result.parts;
  counts.dropped += result.dropped;
  if (result.fault.empty()) return;
  ++counts.misses;
  const char* server = std::getenv("VELMORA_TEST_SERVER");
  const std::string on = server == nullptr ? "" : "--server " + std::string(server) + " ";
  const std::string again = on + (tables > 0 ? "--tables " + std::to_string(tables) + " " : "1 ");
  std::printf("seed %llu missed: %s\nrepeat it with: scripts/converge %s%llu\n\n", seed, result.fault.c_str(),
              again.c_str(), seed);
  std::fflush(stdout);
}

}  // namespace

int main(int argc, char** argv) {
  const bool large = argc == 4 && std::string(argv[1]) == "--tables";
  if (!large && argc != 2 && argc != 3) {
    std::fputs(kUsage, stderr);
    return 2;
  }
  const auto number = [&](int at) { return std::strtoull(argv[at], nullptr, 10); };
  TCounts counts;
  if (large) {
    Run(number(3), number(2), counts);
  } else {
    const unsigned long long first = argc == 3 ? number(2) : 1;
    for (unsigned long long i = 0; i < number(1); ++i) Run(first + i, 0, counts);
  }
  std::printf("%zu seeds, %zu missed, %zu statements, %zu rows; the server refused %zu of %zu parts\n", counts.seeds,
              counts.misses, counts.statements, counts.rows, counts.dropped, counts.parts);
  // Schemas that hardly differ would prove nothing.
  const bool differ = large || counts.statements >= counts.seeds;
  if (!differ) std::puts("the schemas hardly differ");
  return counts.misses == 0 && differ ? 0 : 1;
}

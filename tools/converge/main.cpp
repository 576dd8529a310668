// SPDX-License-Identifier: GPL-3.0-or-later

// Runs seeds of the convergence test, as many as are asked for: see scripts/converge.

#include <cstdio>
#include <cstdlib>
#include <string>

#include "converge/Convergence.h"

namespace {

using velmora::testing::TPrivateServer;

constexpr char kUsage[] =
    "usage: velmora-converge [--reference-server NAME] [--objects] [--renames] [--look] COUNT [FIRST_SEED]\n"
    "       velmora-converge [--reference-server NAME] [--objects] [--renames] [--look] --tables TABLES SEED\n";
constexpr char kSystemsOwn[] = "system";

struct TCounts {
  std::size_t seeds = 0;
  std::size_t misses = 0;
  std::size_t statements = 0;
  std::size_t rows = 0;
  std::size_t parts = 0;
  std::size_t dropped = 0;
  std::size_t tables = 0;
  std::size_t skipped = 0;
  std::size_t objects = 0;
  std::size_t left_alone = 0;
  std::size_t settled = 0;
  std::size_t renames = 0;
};

struct TSettings {
  std::string reference_server;  // empty where one server has both sides
  bool objects = false;
  bool renames = false;
  bool look = false;
  bool large = false;
  unsigned long long numbers[2] = {0, 1};
};

bool ReadSettings(int argc, char** argv, TSettings& settings) {
  int at = 1;
  const auto is = [&](const char* word) { return at + 1 < argc && std::string(argv[at]) == word; };
  if (is("--reference-server")) {
    settings.reference_server = argv[at + 1];
    at += 2;
  }
  const auto take = [&](const char* word) {
    const bool there = is(word);
    if (there) ++at;
    return there;
  };
  settings.objects = take("--objects");
  settings.renames = take("--renames");
  settings.look = take("--look");
  settings.large = take("--tables");
  const int left = argc - at;
  for (int i = 0; i < left && i < 2; ++i) settings.numbers[i] = std::strtoull(argv[at + i], nullptr, 10);
  return left == 2 || (left == 1 && !settings.large);
}

// Both are started by the first call, and end with the program.
TPrivateServer& ReferenceServer(const std::string& name) {
  if (name.empty()) return TPrivateServer::Shared();
  static TPrivateServer server({}, name == kSystemsOwn ? "" : name);
  return server;
}

void Run(unsigned long long seed, std::size_t tables, const TSettings& settings, TCounts& counts) {
  const std::string& reference_server = settings.reference_server;
  const auto result = velmora::testing::Converge(seed, {tables, settings.objects, settings.renames, settings.look},
                                                 ReferenceServer(reference_server), TPrivateServer::Shared());
  ++counts.seeds;
  counts.statements += result.statements;
  counts.rows += result.rows;
  counts.parts += result.parts;
  counts.dropped += result.dropped;
  counts.tables += result.tables;
  counts.skipped += result.skipped;
  counts.objects += result.objects;
  counts.left_alone += result.left_alone;
  counts.settled += result.settled;
  if (!result.refused.empty()) std::printf("seed %llu, refused: %s", seed, result.refused.c_str());
  counts.renames += result.renames;
  if (result.fault.empty()) return;
  ++counts.misses;
  const std::string server = velmora::testing::ChosenServer();
  const std::string from = reference_server.empty() ? "" : "--reference-server " + reference_server + " ";
  const std::string on = from + (server.empty() ? "" : "--server " + server + " ");
  const std::string again = on + (settings.objects ? "--objects " : "") + (settings.renames ? "--renames " : "") +
                            (tables > 0 ? "--tables " + std::to_string(tables) + " " : "1 ");
  std::printf("seed %llu missed: %s\nrepeat it with: scripts/converge %s%llu\n\n", seed, result.fault.c_str(),
              again.c_str(), seed);
  std::fflush(stdout);
}

}  // namespace

int main(int argc, char** argv) {
  TSettings settings;
  if (!ReadSettings(argc, argv, settings)) {
    std::fputs(kUsage, stderr);
    return 2;
  }
  const auto& [first_number, second_number] = settings.numbers;
  TCounts counts;
  if (settings.large)
    Run(second_number, first_number, settings, counts);
  else
    for (unsigned long long i = 0; i < first_number; ++i) Run(second_number + i, 0, settings, counts);
  std::printf("%zu seeds, %zu missed, %zu statements, %zu rows; the server refused %zu of %zu parts\n", counts.seeds,
              counts.misses, counts.statements, counts.rows, counts.dropped, counts.parts);
  if (counts.objects > 0)
    std::printf(
        "%zu views, triggers, routines and events on both sides, %zu left alone, %zu the same by the server alone\n",
        counts.objects, counts.left_alone, counts.settled);
  if (counts.renames > 0) std::printf("%zu tables and columns renamed\n", counts.renames);
  if (counts.skipped > 0) std::printf("%zu of %zu tables were named and left alone\n", counts.skipped, counts.tables);
  // Schemas that hardly differ would prove nothing.
  const bool differ = settings.large || counts.statements >= counts.seeds;
  if (!differ) std::puts("the schemas hardly differ");
  return counts.misses == 0 && differ ? 0 : 1;
}

// SPDX-License-Identifier: GPL-3.0-or-later

// Gives inputs that were kept to their harness: velmora-fuzz-replay HARNESS FILE|FOLDER...

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "Harnesses.h"
#include "Input.h"

namespace {

std::vector<std::string> FilesOf(const std::string& path) {
  if (!std::filesystem::is_directory(path)) return {path};
  std::vector<std::string> files;
  for (const auto& entry : std::filesystem::directory_iterator(path)) files.push_back(entry.path().string());
  std::ranges::sort(files);
  return files;
}

void Replay(velmora::fuzzing::THarness run, const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  const std::string input((std::istreambuf_iterator<char>(file)), {});
  try {
    velmora::fuzzing::Try([&] { run(input); });
  } catch (...) {
    std::fprintf(stderr, "%s:\n", path.c_str());
    throw;
  }
}

}  // namespace

int main(int count, char** arguments) {
  using velmora::fuzzing::kHarnesses;
  const std::string name = count > 2 ? arguments[1] : "";
  const auto* harness = std::ranges::find(kHarnesses, name, [](const auto& row) { return std::string(row.name); });
  if (harness == std::end(kHarnesses)) {
    std::fputs("usage: velmora-fuzz-replay HARNESS FILE|FOLDER...\n", stderr);
    return 2;
  }
  std::size_t replayed = 0;
  for (int i = 2; i < count; ++i)
    for (const std::string& path : FilesOf(arguments[i])) {
      Replay(harness->run, path);
      ++replayed;
    }
  std::printf("%zu inputs\n", replayed);
  return replayed == 0 ? 1 : 0;
}

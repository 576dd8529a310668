// SPDX-License-Identifier: GPL-3.0-or-later
#include "Footprint.h"

#include <malloc.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <sstream>

#include "util/Format.h"

namespace velmora::bench {

namespace {

int ChildrenOf(const std::filesystem::path& thread) {
  std::ifstream list(thread / "children");
  int children = 0;
  for (std::string child; list >> child;) ++children;
  return children;
}

}  // namespace

TFootprint Footprint() {
  malloc_trim(0);
  TFootprint now;
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    std::istringstream words(line);
    std::string name;
    long value = 0;
    words >> name >> value;
    if (name == "VmRSS:") now.resident = value;
    if (name == "VmHWM:") now.peak = value;
    if (name == "Threads:") now.threads = static_cast<int>(value);
  }
  using TFolder = std::filesystem::directory_iterator;
  now.files = static_cast<int>(std::distance(TFolder("/proc/self/fd"), TFolder())) - 1;  // that of the walk itself
  for (const auto& thread : TFolder("/proc/self/task")) now.children += ChildrenOf(thread.path());
  return now;
}

std::string FootprintLine(const TFootprint& now) {
  return Format("%d %d %d %d %d", now.resident, now.peak, now.files, now.threads, now.children);
}

bool TellsAfter(int done, int rounds) {
  constexpr int kStride = 100;
  return done == rounds || done % kStride == 0 || done == kStride / 10;
}

}  // namespace velmora::bench

// SPDX-License-Identifier: GPL-3.0-or-later

// What a large Paradox table costs: bench_paradox [ROWS]. Writes a table of so many rows (1000000) of 8 fields into the
// folder for temporary files and prints, for half of them and for all, the processor time per row and the peak of
// memory: of a bare read of the file, of the reader alone, and of the whole table in a dataset. Each measurement is a
// process of its own, so is the writing.

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

#include "ParadoxFile.h"
#include "engines/file/DBConnParadox.h"
#include "formats/paradox/ParadoxReader.h"
#include "util/Format.h"

namespace {

using velmora::Format;
using namespace velmora::bench;

double Seconds(const timeval& time) {
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

rusage Usage() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return usage;
}

// Runs `work` in a process of its own.
void Apart(const std::function<void()>& work) {
  std::fflush(stdout);
  const pid_t child = fork();
  if (child == 0) {
    work();
    std::fflush(stdout);
    _exit(0);
  }
  int status = 0;
  if (child < 0 || waitpid(child, &status, 0) < 0 || status != 0) std::exit(2);
}

void Measure(const char* name, std::int64_t rows, const std::function<void()>& work) {
  Apart([&] {
    const rusage before = Usage();
    work();
    const rusage after = Usage();
    const double user = Seconds(after.ru_utime) - Seconds(before.ru_utime);
    const double system = Seconds(after.ru_stime) - Seconds(before.ru_stime);
    std::printf("%9lld rows  %-8s %6.3f s user %6.3f s system %7.1f ns user a row %6ld MB peak\n",
                static_cast<long long>(rows), name, user, system, user * 1e9 / static_cast<double>(rows),
                (after.ru_maxrss - before.ru_maxrss) / 1024);
  });
}

std::string Row(std::int64_t i) {
  const auto number = static_cast<double>(i);
  return PxInteger(i, 4) + PxText(Format("Customer %d", i), 30) + PxText("Town", 20) +
         PxInteger(720000 + i % 20000, 4) + PxFloat(number * 1.25) + PxInteger(i % 100, 2) + "\x81" +
         PxFloat(6.3e13 + number * 1000);
}

void WriteTable(const std::string& path, std::int64_t rows) {
  TPxFile file{.fields = {{"id", 22, 4},
                          {"name", 1, 30},
                          {"town", 1, 20},
                          {"since", 2, 4},
                          {"balance", 6, 8},
                          {"grade", 3, 2},
                          {"active", 9, 1},
                          {"changed", 21, 8}},
               .blockKilobytes = 4,
               .keys = 1,
               .records = static_cast<std::uint32_t>(rows)};
  const std::size_t fit = (4096 - 6) / static_cast<std::size_t>(file.RecordSize());
  std::ofstream out(path, std::ios::binary);
  out << file.Header();
  TPxFileBlock block;
  for (std::int64_t i = 0; i < rows; ++i) {
    block.records.push_back(Row(i));
    if (block.records.size() < fit && i + 1 < rows) continue;
    out << file.Block(block);
    block.records.clear();
  }
}

void ReadBare(const std::string& path) {
  std::vector<char> block(4096);
  std::ifstream in(path, std::ios::binary);
  while (in.read(block.data(), static_cast<std::streamsize>(block.size()))) continue;
}

void ReadRecords(const std::string& path) {
  velmora::TPxTable table(path, false);
  for (std::int64_t i = 0; i < table.Header().numRecords; ++i) table.ReadRecord(i);
}

}  // namespace

int main(int count, char** arguments) {
  const std::int64_t rows = count > 1 ? std::atoll(arguments[1]) : 1000000;
  const std::filesystem::path folder = std::filesystem::temp_directory_path() / Format("velmora-paradox-%d", getpid());
  std::filesystem::create_directories(folder);
  for (const std::int64_t some : {rows / 2, rows}) {
    const std::string path = folder / "t.db";
    Apart([&] { WriteTable(path, some); });
    Measure("floor", some, [&] { ReadBare(path); });
    Measure("reader", some, [&] { ReadRecords(path); });
    Measure("dataset", some, [&] { velmora::TDBConnParadox(folder).OpenTable("t"); });
  }
  std::filesystem::remove_all(folder);
}

// SPDX-License-Identifier: GPL-3.0-or-later

// What a large text file costs: bench_text_files [MEGABYTES]. Writes files of that size (100) into the folder for
// temporary files and prints, for structure, rows and count of each kind, the processor time and the peak of memory as
// a multiple of the file's size. Each measurement is a process of its own.

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <string>

#include "core/Meta.h"
#include "engines/file/DBConnTextDelim.h"
#include "engines/file/DBConnTextFixed.h"
#include "util/Format.h"

namespace {

using velmora::Format;

double Seconds(const timeval& time) {
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

rusage Usage(int who) {
  rusage usage{};
  getrusage(who, &usage);
  return usage;
}

// Runs `work` in a process of its own and prints a line of what it took beyond the bare process.
void Measure(const std::string& name, double megabytes, const std::function<std::int64_t()>& work) {
  std::fflush(stdout);
  const pid_t child = fork();
  if (child == 0) {
    const rusage before = Usage(RUSAGE_SELF);
    const std::int64_t count = work();
    const rusage after = Usage(RUSAGE_SELF);
    const double peak = static_cast<double>(after.ru_maxrss - before.ru_maxrss) / 1024;
    std::printf("%-22s %9lld %8.2f s user %8.0f MB peak, %.2f times the file\n", name.c_str(),
                static_cast<long long>(count), Seconds(after.ru_utime) - Seconds(before.ru_utime), peak,
                peak / megabytes);
    std::fflush(stdout);
    _exit(0);
  }
  int status = 0;
  waitpid(child, &status, 0);
  if (status != 0) std::printf("%-22s failed\n", name.c_str());
}

void WriteFile(const std::string& path, std::size_t size, const std::string& names,
               const std::function<std::string(int)>& line) {
  std::ofstream file(path, std::ios::binary);
  file << names;
  std::size_t written = names.size();
  for (int i = 0; written < size; ++i) {
    const std::string text = line(i);
    file << text;
    written += text.size();
  }
}

void MeasureEngine(const std::string& kind, double megabytes, const std::string& table,
                   const std::function<std::unique_ptr<velmora::TDBConn>()>& make) {
  Measure(kind + " structure", megabytes, [&] {
    const auto conn = make();
    conn->Connect();
    conn->FetchIfNeeded();
    return static_cast<std::int64_t>(conn->meta().tColumns.Rows().size());
  });
  Measure(kind + " rows", megabytes, [&] { return make()->OpenTable(table)->RecordCount(); });
  Measure(kind + " count", megabytes, [&] { return make()->GetRecordCount(table); });
}

}  // namespace

int main(int count, char** arguments) {
  const double megabytes = count > 1 ? std::atof(arguments[1]) : 100;
  const auto size = static_cast<std::size_t>(megabytes * 1024 * 1024);
  namespace fs = std::filesystem;
  const fs::path folder = fs::temp_directory_path() / Format("velmora-text-%d", getpid());
  for (const char* kind : {"delimited", "fixed"}) fs::create_directories(folder / kind);
  WriteFile(folder / "delimited/a.csv", size, "id,name,born,wage,code\r\n", [](int i) {
    return Format("%d,\"Name of number %d\",1980-05-%02d,%d.50,$%x\r\n", i, i, i % 28 + 1, i % 9000, i);
  });
  WriteFile(folder / "fixed/a.txt", size, "id       name                  born          wage\n",
            [](int i) { return Format("%8d Name-%-16d 1980-05-%02d %9d.50\n", i, i, i % 28 + 1, i % 9000); });
  const std::string delimited = (folder / "delimited").string(), fixed = (folder / "fixed").string();
  MeasureEngine("delimited", megabytes, "a.csv",
                [&] { return std::make_unique<velmora::TDBConnTextDelim>(delimited, ",", true); });
  MeasureEngine("fixed width", megabytes, "a.txt",
                [&] { return std::make_unique<velmora::TDBConnTextFixed>(fixed, true); });
  fs::remove_all(folder);
}

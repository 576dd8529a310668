// SPDX-License-Identifier: GPL-3.0-or-later

// The offline comparison against its floor: reading both files and comparing the texts table by table.

#include <benchmark/benchmark.h>

#include <filesystem>
#include <memory>

#include "SampleSchema.h"
#include "app/Application.h"
#include "engines/mysql/OfflineEngine.h"
#include "mysqltext/CreationScript.h"
#include "util/Files.h"

namespace velmora::bench {
namespace {

// The two files of a sample of so many tables; they go with the object.
class TSampleFiles {
 public:
  explicit TSampleFiles(int tables) {
    folder_ = std::filesystem::temp_directory_path() / ("velmora-bench-" + std::to_string(tables));
    std::filesystem::create_directories(folder_);
    WriteFileText(reference(), SampleScript({tables}, false));
    WriteFileText(target(), SampleScript({tables}, true));
    bytes_ = std::filesystem::file_size(reference()) + std::filesystem::file_size(target());
  }
  ~TSampleFiles() { std::filesystem::remove_all(folder_); }
  std::string reference() const { return folder_ / "reference.sql"; }
  std::string target() const { return folder_ / "target.sql"; }
  std::int64_t bytes() const { return static_cast<std::int64_t>(bytes_); }

 private:
  std::filesystem::path folder_;
  std::uintmax_t bytes_ = 0;
};

void Report(benchmark::State& state, std::int64_t bytes) {
  state.SetBytesProcessed(state.iterations() * bytes);
  state.counters["per_table"] = benchmark::Counter(static_cast<double>(state.iterations() * state.range(0)),
                                                   benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

void Floor(benchmark::State& state) {
  const TSampleFiles files(static_cast<int>(state.range(0)));
  for (auto _ : state) {
    const TCreationScript reference(ReadFileText(files.reference()));
    const TCreationScript target(ReadFileText(files.target()));
    int differing = 0;
    for (const TCreationText& table : reference.Tables()) {
      const TCreationText* other = target.Find(table.name);
      if (other == nullptr || other->text != table.text) ++differing;
    }
    benchmark::DoNotOptimize(differing);
  }
  Report(state, files.bytes());
}

void Comparison(benchmark::State& state) {
  const TSampleFiles files(static_cast<int>(state.range(0)));
  for (auto _ : state) {
    TNoProgress progress;
    TLineEditor editor;
    TLineLog log(SystemClock(), progress);
    TApplication app(progress, editor, log, SystemClock());
    app.Choose(EDialect::Standard);
    app.OpenTask(std::make_unique<TDBConnMySQLOffline>(files.reference()),
                 std::make_unique<TDBConnMySQLOffline>(files.target()));
    app.Compare();
    app.Dialect().GenerateScript();
    benchmark::DoNotOptimize(editor.Text());
  }
  Report(state, files.bytes());
}

void ParseDDL(benchmark::State& state) {
  const std::string script = SampleScript({static_cast<int>(state.range(0))}, false);
  const TCreationScript texts(script);
  std::int64_t bytes = 0;
  for (const TCreationText& table : texts.Tables()) bytes += static_cast<std::int64_t>(table.text.size());
  for (auto _ : state) {
    TDBConnMySQLOffline conn("");
    for (const TCreationText& table : texts.Tables()) conn.ParseDDL(std::string(table.text));
  }
  Report(state, bytes);
}

BENCHMARK(Floor)->Arg(1000)->Arg(20000)->Unit(benchmark::kMillisecond);
BENCHMARK(Comparison)->Arg(1000)->Arg(20000)->Unit(benchmark::kMillisecond);
BENCHMARK(ParseDDL)->Arg(1000)->Arg(20000)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace velmora::bench

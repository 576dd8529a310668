// SPDX-License-Identifier: GPL-3.0-or-later

// What a comparison with a reference that is not MySQL costs, part by part.
//
// bench_foreign make ENGINE TABLES FOLDER
//   makes access, dbf, firebird, or empty files for dbf, and prints the source as the companion takes it; the server
//   of Firebird runs until standard input ends
// bench_foreign dump TARGET
//   prints the creation texts of a server's database
// bench_foreign source SOURCE
//   reads all facts of the source, and nothing else
// bench_foreign target TARGET
//   reads all creation texts of the target, and nothing else
// bench_foreign compare SOURCE TARGET
//   compares them; the parts that it prints first are mapping, and making the tables that are compared
//
// The last three print milliseconds: by the clock, and of processors, with those of child processes.

#include <sys/resource.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <iostream>
#include <optional>
#include <string>

#include "ForeignSources.h"
#include "app/Application.h"
#include "app/ExactDialect.h"
#include "app/Sources.h"
#include "core/CreationTexts.h"
#include "core/Meta.h"
#include "exact/plan/FileSchema.h"
#include "foreign/FactReaders.h"
#include "foreign/ForeignTexts.h"
#include "support/PrivateFirebird.h"
#include "util/Errors.h"
#include "util/Files.h"
#include "util/Format.h"

namespace {

using namespace velmora;

double Milliseconds(const timeval& time) {
  return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_usec) / 1e3;
}

double Own(int who = RUSAGE_SELF) {
  rusage usage{};
  getrusage(who, &usage);
  return Milliseconds(usage.ru_utime) + Milliseconds(usage.ru_stime);
}

// Adds the processor time of its life, without that of child processes.
class TSpent {
 public:
  explicit TSpent(double& sum) : sum_(sum), start_(Own()) {}
  ~TSpent() { sum_ += Own() - start_; }
  TSpent(const TSpent&) = delete;
  TSpent& operator=(const TSpent&) = delete;

 private:
  double& sum_;
  double start_;
};

struct TParts {
  double reading = 0;  // the source
  double mapping = 0;  // and reading
  double making = 0;
};

class TTimedReader final : public TFactReader {
 public:
  TTimedReader(std::unique_ptr<TFactReader> reader, TParts& parts) : reader_(std::move(reader)), parts_(parts) {}
  TKnownFacts Known() const override { return reader_->Known(); }
  TStringList Tables() override {
    const TSpent spent(parts_.reading);
    return reader_->Tables();
  }
  TForeignTable Table(const std::string& name) override {
    const TSpent spent(parts_.reading);
    return reader_->Table(name);
  }
  std::string PlainName(const std::string& table) const override { return reader_->PlainName(table); }
  bool Reachable() override { return reader_->Reachable(); }

 private:
  std::unique_ptr<TFactReader> reader_;
  TParts& parts_;
};

class TTimedMaker final : public TTextMaker {
 public:
  TTimedMaker(TDBConn& reference, TParts& parts)
      : parts_(parts), texts_(std::make_unique<TTimedReader>(MakeFactReader(reference), parts), {}) {}
  void Read(TDBConn& target, const TStringList& target_tables,
            const std::function<void(const std::string& table, std::size_t count)>& step) override {
    const TSpent spent(parts_.mapping);
    texts_.Read(target, target_tables, step);
  }
  TStringList Tables() const override { return texts_.Tables(); }
  TMadeTable Make(const std::string& table, const TTableText* there) override {
    const TSpent spent(parts_.making);
    return texts_.Make(table, there);
  }
  bool DropsObsolete() const override { return texts_.DropsObsolete(); }
  std::vector<TUnmadeElement> Unmade() const override { return texts_.Unmade(); }
  std::vector<TUnmadeElement> Accepted() const override { return texts_.Accepted(); }
  std::vector<TMadeColumn> Columns() const override { return texts_.Columns(); }
  TStringList Log() const override { return texts_.Log(); }

 private:
  TParts& parts_;
  TForeignTexts texts_;
};

// --- What is measured

void ReadSource(const std::string& source) {
  const std::unique_ptr<TDBConn> conn = MakeSource(source);
  conn->Connect();
  const std::unique_ptr<TFactReader> reader = MakeFactReader(*conn);
  for (const std::string& table : reader->Tables()) reader->Table(table);
}

// Gives all texts to `take`.
void ReadTarget(const std::string& target, const std::function<void(const std::string& text)>& take) {
  const std::unique_ptr<TDBConn> conn = MakeSource(target);
  auto& texts = dynamic_cast<TCreationTexts&>(*conn);
  conn->Connect();
  if (texts.StructureScript() != nullptr) {
    const TFileSchema schema(*texts.StructureScript(), {});
    return;  // its tables are read one by one in a comparison
  }
  texts.PrepareExactTexts();
  TStringList names;
  conn->meta().TableNames(names);
  texts.ExpectCreationTexts(names);
  std::string text;
  for (const std::string& name : names) {
    texts.ShowCreateTable(name, text);
    take(text);
  }
}

void Compare(const std::string& source, const std::string& target) {
  TNoProgress progress;
  TLineEditor editor;
  TLineLog log(SystemClock(), progress);
  TApplication app(progress, editor, log, SystemClock());
  app.Choose(EDialect::Exact);
  auto& exact = dynamic_cast<TExactDialect&>(app.Dialect());
  TParts parts;
  exact.sync.MakeTexts = [&](TDBConn& reference) { return std::make_unique<TTimedMaker>(reference, parts); };
  app.TakeTask({MakeSource(source), MakeTarget(target)});
  app.Compare();
  if (!exact.sync.Identical()) RaiseError("The sample is not identical");
  std::cout << Format("%.3f %.3f ", parts.mapping - parts.reading, parts.making);
}

void Measure(const std::function<void()>& work) {
  const double before = Own();
  const auto start = std::chrono::steady_clock::now();
  work();
  const std::chrono::duration<double, std::milli> wall = std::chrono::steady_clock::now() - start;
  std::cout << Format("%.3f %.3f\n", wall.count(), Own() - before + Own(RUSAGE_CHILDREN));
}

void WaitForEnd() {
  std::string line;
  while (std::getline(std::cin, line)) continue;
}

void Make(const std::string& engine, int tables, const std::string& folder) {
  if (engine == "access") {
    bench::PutFile(JoinPath(folder, "sample.mdb"), bench::AccessSample(tables));
    std::cout << "Access:filename=" << folder << "/sample.mdb" << std::endl;
  } else if (engine == "dbf") {
    bench::WriteDbfSample(tables, folder);
    std::cout << "DBF:folder=" << folder << std::endl;
  } else if (engine == "empty") {
    for (int i = 0; i < tables; ++i) bench::PutFile(JoinPath(folder, Format("empty_%05d.dbf", i)), "");
    std::cout << "DBF:folder=" << folder << std::endl;
  } else if (engine == "firebird") {
    testing::TPrivateFirebird server;
    const std::string path = server.Folder().NewDatabaseOf("sample.fdb", bench::FirebirdSample(tables));
    std::cout << "interbase/firebird:server=" << server.Server() << ";database=" << path
              << ";username=SYSDBA;password=" << testing::TPrivateFirebird::kPassword << std::endl;
    WaitForEnd();
  } else {
    RaiseError("There is no sample of " + engine);
  }
}

int Run(const TStringList& words) {
  const std::string word = words.empty() ? "" : words[0];
  if (word == "make" && words.size() == 4) {
    Make(words[1], std::atoi(words[2].c_str()), words[3]);
  } else if (word == "source" && words.size() == 2) {
    Measure([&] { ReadSource(words[1]); });
  } else if (word == "target" && words.size() == 2) {
    Measure([&] { ReadTarget(words[1], [](const std::string&) {}); });
  } else if (word == "dump" && words.size() == 2) {
    ReadTarget(words[1], [](const std::string& text) { std::cout << text << ";\n"; });
  } else if (word == "compare" && words.size() == 3) {
    Measure([&] { Compare(words[1], words[2]); });
  } else {
    std::cerr
        << "usage: bench_foreign make ENGINE TABLES FOLDER | dump TARGET | source SOURCE | target TARGET | compare "
           "SOURCE TARGET\n";
    return 2;
  }
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return Run(TStringList(argv + 1, argv + argc));
  } catch (const std::exception& error) {
    std::cerr << error.what() << '\n';
    return 2;
  }
}

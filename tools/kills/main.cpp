// SPDX-License-Identifier: GPL-3.0-or-later

// Kills the companion, or the server under it, at random moments of a sync, and runs it again: the databases have to
// become identical, and no row may be lost. See scripts/kill-runs.

#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "support/CompanionProcess.h"
#include "support/LiveDatabase.h"
#include "support/PrivateServer.h"
#include "support/ScratchFolder.h"
#include "util/Errors.h"
#include "util/Files.h"
#include "util/Format.h"

namespace velmora::testing {
namespace {

using TClockPoint = std::chrono::steady_clock;
using TStep = std::chrono::microseconds;

constexpr int kTables = 8;
constexpr int kMostRuns = 4;  // until nothing is left to do
constexpr const char* kReference = "kills_reference";
constexpr const char* kTarget = "kills_target";

// What a table is to become, and what it is; "%d" is its number.
struct TShape {
  const char* wanted;
  const char* there;
};
constexpr TShape kShapes[] = {
    {"create table t%d (id int primary key, v varchar(300), w int default 4, key by_w (w)) engine=InnoDB",
     "create table t%d (id int primary key, v varchar(100), gone int) engine=InnoDB"},
    {"create table t%d (id bigint not null primary key, v varchar(100), key by_v (v)) engine=InnoDB comment='new'",
     "create table t%d (id int not null primary key, v varchar(100), unique key by_both (id, v)) engine=InnoDB"},
    {"create table t%d (id int primary key, a datetime(3), v varchar(100) character set utf8mb4) engine=InnoDB",
     "create table t%d (id int primary key, v varchar(100) character set latin1) engine=InnoDB"},
    {"create table t%d (id int primary key, v varchar(100), p int, key p (p), constraint fk%d foreign key (p) "
     "references parent (id)) engine=InnoDB",
     "create table t%d (id int primary key, v varchar(100), p int) engine=InnoDB row_format=compact"},
};

class TKills {
 public:
  TKills(std::uint64_t seed, TPrivateServer& server) : random_(seed), server_(server) {
    Make(kReference, true);
    Measure();
  }

  // False where something does not hold, which is told.
  bool Round(int number) {
    Make(kTarget, false);
    rows_ = Rows();
    unlink(Journal().c_str());
    const bool of_server = random_() % 2 == 0;
    Interrupt(of_server);
    int status = -1;
    for (int run = 0; run < kMostRuns && status != 0; ++run) status = RunToEnd("sync");
    if (status != 0) return Miss(number, "it does not come to its end: " + told_);
    if (RunToEnd("compare") != 0) return Miss(number, "the databases are not identical: " + told_);
    if (Rows() != rows_) return Miss(number, "rows are lost");
    return true;
  }
  // Whether any run was ended by it.
  bool PrintCounts(int rounds, int missed) const {
    std::printf(
        "%d rounds, %d missed: %d runs ended by a kill of the companion, %d by one of the server, %d of these in "
        "a statement\n",
        rounds, missed, of_companion_, of_server_, in_statement_);
    return of_companion_ + of_server_ > 0;
  }

 private:
  std::string Journal() const { return folder_ / "journal"; }
  static bool Miss(int number, const std::string& what) {
    std::printf("round %d: %s\n", number, what.c_str());
    std::fflush(stdout);
    return false;
  }

  void Make(const std::string& database, bool wanted) {
    const std::unique_ptr<TMyConnection> connection = ServerConnection(server_);
    connection->SetConnected(true);
    const auto run = [&](const std::string& sql) { Execute(*connection, sql); };
    run("drop database if exists " + database);
    run("create database " + database);
    run("use " + database);
    run("create table parent (id int primary key, v varchar(100)) engine=InnoDB");
    run("insert into parent select seq, 'p' from " + Numbers(kRows));
    for (int i = 0; i < kTables; ++i) {
      const TShape& shape = kShapes[static_cast<std::size_t>(i) % std::size(kShapes)];
      run(Format(wanted ? shape.wanted : shape.there, i, i));
      run(Format("insert into t%d (id, v) select seq, concat('row ', seq) from %s", i, Numbers(kRows)));
      run(Format("create trigger g%d before update on t%d for each row set new.v = '%s'", i, i, wanted ? "a" : "b"));
    }
    run(wanted ? "create table fresh (a int) engine=InnoDB" : "create table obsolete (a int) engine=InnoDB");
    run(Format("create procedure p() select %d", wanted ? 1 : 2));
  }

  std::vector<std::string> Rows() {
    const std::unique_ptr<TMyConnection> connection = ServerConnection(server_, kTarget);
    connection->SetConnected(true);
    std::vector<std::string> rows;
    for (int i = 0; i < kTables; ++i)
      rows.push_back(
          Answer(*connection, Format("select concat(count(*), ' ', sum(crc32(concat(id, v)))) from t%d", i)));
    return rows;
  }

  void Start(const std::string& command) {
    const auto source = [](const std::string& database) { return "mysql://root@localhost/" + database; };
    std::vector<std::string> words = {command, source(kReference), source(kTarget), "--dialect",
                                      "exact", "--socket",         server_.Socket()};
    if (command == "sync") words.insert(words.end(), {"--yes", "--allow-unsafe", "--journal", Journal()});
    companion_.Start(std::move(words));
  }
  int End() {
    TAnswer answer = companion_.End();
    told_ = std::move(answer.err);
    return answer.status;
  }
  int RunToEnd(const std::string& command) {
    Start(command);
    return End();
  }

  static TStep Since(TClockPoint::time_point start) {
    return std::chrono::duration_cast<TStep>(TClockPoint::now() - start);
  }

  void Measure() {
    Make(kTarget, false);
    unlink(Journal().c_str());
    const auto start = TClockPoint::now();
    Start("sync");
    WaitForJournal();
    to_journal_ = Since(start);
    if (End() != 0) throw std::runtime_error("the sync fails by itself: " + told_);
    full_ = Since(start);
  }

  // The run of the statements has begun, or ten seconds are over.
  void WaitForJournal() {
    struct stat file {};
    const auto begun = [&] { return stat(Journal().c_str(), &file) == 0 && file.st_size > 0; };
    for (int i = 0; i < 100'000 && !begun(); ++i) std::this_thread::sleep_for(TStep(100));
  }

  // Mostly while statements run, sometimes before.
  void WaitAMoment() {
    const bool in_run = random_() % 4 != 0;
    if (in_run) WaitForJournal();
    const TStep most = in_run ? full_ - to_journal_ : full_;
    std::this_thread::sleep_for(TStep(random_() % static_cast<std::uint64_t>(most.count())));
  }

  void Interrupt(bool of_server) {
    Start("sync");
    WaitAMoment();
    if (of_server)
      server_.Kill();
    else
      companion_.Signal(SIGKILL);
    const bool came_too_late = End() == 0;
    if (of_server) server_.Restart();
    if (came_too_late) return;
    ++(of_server ? of_server_ : of_companion_);
    const std::string journal = access(Journal().c_str(), F_OK) == 0 ? ReadFileText(Journal()) : std::string();
    const std::size_t last = journal.rfind("\"state\":\"begins\"");
    const std::size_t done = journal.rfind("\"state\":\"done\"");
    if (last != std::string::npos && (done == std::string::npos || done < last)) ++in_statement_;
  }

  static constexpr int kRows = 1000;
  std::mt19937_64 random_;
  TPrivateServer& server_;
  TScratchFolder folder_;
  TCompanionProcess companion_{folder_.Path()};
  std::string told_;    // by the last run that has ended
  TStep full_{};        // what a sync takes
  TStep to_journal_{};  // until its statements begin
  std::vector<std::string> rows_;
  int of_companion_ = 0;
  int of_server_ = 0;
  int in_statement_ = 0;
};

}  // namespace
}  // namespace velmora::testing

int main(int argc, char** argv) {
  if (argc < 2 || argc > 3) {
    std::fputs("usage: velmora-kills COUNT [SEED]\n", stderr);
    return 2;
  }
  const int rounds = std::atoi(argv[1]);
  const std::uint64_t seed = argc > 2 ? std::strtoull(argv[2], nullptr, 10) : 1;
  // What was committed is to be there after a loss of power.
  velmora::testing::TPrivateServer server({"--innodb-flush-log-at-trx-commit=1"});
  velmora::testing::TKills kills(seed, server);
  int missed = 0;
  for (int i = 1; i <= rounds; ++i)
    if (!kills.Round(i)) ++missed;
  return kills.PrintCounts(rounds, missed) && missed == 0 ? 0 : 1;
}

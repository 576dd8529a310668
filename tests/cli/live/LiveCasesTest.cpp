// SPDX-License-Identifier: GPL-3.0-or-later

// The files of tests/data/companion/live, against the shared server. Beside the steps of any case they have
//
//   on NAME            the indented statements run on this database, which is new when it is named first
//   new NAME           the same, on a new one in any case
//   load NAME FILE     so do those of a file of examples/live
//   ask NAME QUERY     the indented lines are the first column of what this gives there

#include <gtest/gtest.h>

#include <functional>
#include <map>

#include "mysqltext/StatementReader.h"
#include "support/LiveRun.h"
#include "support/Transcript.h"
#include "util/Files.h"
#include "util/Text.h"

namespace velmora::testing {
namespace {

constexpr char kCases[] = VELMORA_SOURCE_DIR "/tests/data/companion/live/";

class TCaseDatabases {
 public:
  std::string Step(const std::string& word, const std::string& rest, const std::string& below) {
    const std::string name = rest.substr(0, rest.find(' '));
    const std::string argument = rest.substr(std::min(name.size() + 1, rest.size()));
    std::unique_ptr<TLiveDatabase>& database = databases_[name];
    if (word == "new") database.reset();
    if (!database) database = std::make_unique<TLiveDatabase>(name);
    if (word == "ask") return JoinList(Answers(argument, *database), "\n") + "\n";
    Run(word == "load" ? ReadFileText(VELMORA_SOURCE_DIR "/examples/live/" + argument) : below, *database);
    return below;
  }

 private:
  static void Run(const std::string& script, TLiveDatabase& database) {
    TStatementReader reader(script);
    for (TStatement statement; reader.Next(statement);) database.Run(std::string(statement.text));
  }
  static TStringList Answers(const std::string& query, TLiveDatabase& database) {
    TStringList answers;
    MySqlQueryList(query, answers, database.Connection());
    return answers;
  }

  std::map<std::string, std::unique_ptr<TLiveDatabase>> databases_;
};

class LiveCases : public ::testing::TestWithParam<std::string> {};

TEST_P(LiveCases, PrintWhatIsWritten) {
  TCaseDatabases databases;
  EXPECT_EQ(
      TranscriptDifference(kCases + GetParam() + ".txt", {RunLive, std::bind_front(&TCaseDatabases::Step, &databases)}),
      "");
}

INSTANTIATE_TEST_SUITE_P(Companion, LiveCases, ::testing::ValuesIn(TranscriptNames(kCases)),
                         [](const auto& name) { return name.param; });

}  // namespace
}  // namespace velmora::testing

// The files of tests/data/foreign/servers: sources of servers' engines, made equal on the shared server by the
// companion. Beside the steps of any case they have
//
//   firebird NAME      a database file is made by the indented statements
//   sqlite NAME        so is one of SQLite, which is the data source of this name
//   odbc NAME DATABASE a data source of this name leads to a database of the target's server
//   on NAME            the indented statements run on this database of the target, which is new when it is named first
//   ask NAME QUERY     the indented lines are the first column of what this gives there

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <map>

#include "engines/oledb/OLEDBClient.h"
#include "engines/oledb/Providers.h"
#include "mysqltext/StatementReader.h"
#include "support/LiveRun.h"
#include "support/OdbcSources.h"
#include "support/PrivateFirebird.h"
#include "support/ScratchFolder.h"
#include "support/Transcript.h"
#include "util/Text.h"

namespace velmora::testing {
namespace {

constexpr char kCases[] = VELMORA_SOURCE_DIR "/tests/data/foreign/servers/";

class ServerCases : public ::testing::TestWithParam<std::string> {
 public:
  std::string Step(const std::string& word, const std::string& rest, const std::string& below) {
    const std::string name = rest.substr(0, rest.find(' '));
    if (word == "firebird") std::filesystem::copy_file(firebird_.NewDatabaseOf(rest, below), rest);
    if (word == "sqlite") NewSqlite(name, below);
    if (word == "odbc") NewOdbc(name, rest.substr(name.size() + 1));
    if (word != "on" && word != "ask") return below;
    const std::string query = rest.substr(std::min(name.size() + 1, rest.size()));
    std::unique_ptr<TLiveDatabase>& database = databases_[name];
    if (!database) database = std::make_unique<TLiveDatabase>(name);
    if (word == "ask") return Answers(query, *database);
    TStatementReader reader(below);
    for (TStatement statement; reader.Next(statement);) database->Run(std::string(statement.text));
    return below;
  }

 private:
  void NewSqlite(const std::string& name, const std::string& script) {
    AddOdbcSource(name, OdbcDriverFile("libsqlite3odbc.so"), "Database=" + (folder_ / (name + ".db")));
    TOLEDBDataSource source(MakeOLEDBProvider);
    source.SetInitializationString("Provider=MSDASQL;Data Source=" + name);
    source.SetConnected(true);
    TStatementReader reader(script);
    for (TStatement statement; reader.Next(statement);) source.Execute(std::string(statement.text));
  }
  static void NewOdbc(const std::string& name, const std::string& database) {
    const std::string port = std::to_string(TPrivateServer::Shared().Port());
    AddOdbcSource(name, OdbcDriverFile("libmaodbc.so"),
                  "Server=127.0.0.1\nUser=root\nPort=" + port + "\nDatabase=" + database);
  }
  static std::string Answers(const std::string& query, TLiveDatabase& database) {
    TStringList answers;
    MySqlQueryList(query, answers, database.Connection());
    return JoinList(answers, "\n") + "\n";
  }

  TFirebirdFolder firebird_;
  TScratchFolder folder_;
  std::map<std::string, std::unique_ptr<TLiveDatabase>> databases_;
};

TEST_P(ServerCases, PrintWhatIsWritten) {
  EXPECT_EQ(TranscriptDifference(kCases + GetParam() + ".txt", {RunLive, std::bind_front(&ServerCases::Step, this)}),
            "");
}

INSTANTIATE_TEST_SUITE_P(Foreign, ServerCases, ::testing::ValuesIn(TranscriptNames(kCases)),
                         [](const auto& name) { return name.param; });

}  // namespace
}  // namespace velmora::testing

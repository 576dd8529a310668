// SPDX-License-Identifier: GPL-3.0-or-later

// The files of tests/data/foreign/servers: sources of servers' engines, made equal on the shared server by the
// companion. Beside the steps of any case they have
//
//   firebird NAME      a database file is made by the indented statements
//   sqlite NAME        so is one of SQLite, which is the data source of this name
//   odbc NAME DATABASE a data source of this name leads to a database of the target's server
//   killed NAME DATABASE WORD  the same, but the server ends the connection when a statement with this word comes
//   sqlserver          the indented lines are what a SQL Server answers, at the place PLAYED, with the names that its
//                      reader has for its questions; with a name, those of a file of tests/data/foreign/played
//   served COUNT       that server closes connections after so many requests
//   oracle             the indented lines are what an Oracle server answers, likewise
//   files NAME         those of a case of tests/data/formats
//   on NAME            the indented statements run on this database of the target, which is new when it is named first
//   new NAME           the same, on a new one in any case
//   ask NAME QUERY     the indented lines are the first column of what this gives there
//
// The examples of docs/foreign.md are such cases, too: its blocks of "console", and the steps in its comments.

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <map>
#include <optional>

#include "engines/oledb/OLEDBClient.h"
#include "engines/oledb/Providers.h"
#include "foreign/OracleFacts.h"
#include "foreign/SqlServerFacts.h"
#include "mysqltext/StatementReader.h"
#include "support/FakeOracle.h"
#include "support/FormatCase.h"
#include "support/LiveRun.h"
#include "support/OdbcSources.h"
#include "support/PrivateFirebird.h"
#include "support/Relay.h"
#include "support/ScratchFolder.h"
#include "support/Transcript.h"
#include "support/tds/FakeTdsServer.h"
#include "util/Files.h"
#include "util/Text.h"

namespace velmora::testing {
namespace {

constexpr char kOracle[] = VELMORA_FAKE_CLIENTS "/oracle";
constexpr char kCases[] = VELMORA_SOURCE_DIR "/tests/data/foreign/servers/";
constexpr char kPlayed[] = VELMORA_SOURCE_DIR "/tests/data/foreign/played/";

class TServerSources {
 public:
  TStepRunner Runner() {
    return {std::bind_front(&TServerSources::Run, this), std::bind_front(&TServerSources::Step, this)};
  }

 private:
  TAnswer Run(std::vector<std::string> arguments, const TAsk& ask) const {
    const std::string address = "127.0.0.1," + std::to_string(sql_server_ ? sql_server_->Port() : 0);
    for (std::string& argument : arguments) argument = StrReplace(argument, "PLAYED", address);
    TAnswer answer = RunLive(std::move(arguments), ask);
    answer.err = StrReplace(answer.err, address, "PLAYED");
    return answer;
  }

  std::string Step(const std::string& word, const std::string& rest, const std::string& below) {
    const std::string name = rest.substr(0, rest.find(' '));
    if (word == "firebird") std::filesystem::copy_file(firebird_.NewDatabaseOf(rest, below), rest);
    if (word == "sqlite") NewSqlite(name, below);
    if (word == "odbc") NewOdbc(name, rest.substr(name.size() + 1), TPrivateServer::Shared().Port());
    if (word == "killed") NewKilled(name, rest.substr(name.size() + 1));
    if (word == "served") sql_server_->served = std::stoi(rest);
    if (word == "sqlserver") PlaySqlServer(Played(name, below));
    if (word == "oracle") PlayOracle(Played(name, below));
    if (word == "files") FormatCase(name).PutInto(std::filesystem::current_path().string());
    if (word != "on" && word != "new" && word != "ask") return below;
    const std::string query = rest.substr(std::min(name.size() + 1, rest.size()));
    std::unique_ptr<TLiveDatabase>& database = databases_[name];
    if (word == "new") database.reset();
    if (!database) database = std::make_unique<TLiveDatabase>(name);
    if (word == "ask") return Answers(query, *database);
    TStatementReader reader(below);
    for (TStatement statement; reader.Next(statement);) database->Run(std::string(statement.text));
    return below;
  }

  static std::string Played(const std::string& name, const std::string& below) {
    return name.empty() ? below : ReadFileText(kPlayed + name + ".txt");
  }
  void NewSqlite(const std::string& name, const std::string& script) {
    AddOdbcSource(name, OdbcDriverFile("libsqlite3odbc.so"), "Database=" + (folder_ / (name + ".db")));
    TOLEDBDataSource source(MakeOLEDBProvider);
    source.SetInitializationString("Provider=MSDASQL;Data Source=" + name);
    source.SetConnected(true);
    TStatementReader reader(script);
    for (TStatement statement; reader.Next(statement);) source.Execute(std::string(statement.text));
  }
  static void NewOdbc(const std::string& name, const std::string& database, int port) {
    AddOdbcSource(name, OdbcDriverFile("libmaodbc.so"),
                  "Server=127.0.0.1\nUser=root\nPort=" + std::to_string(port) + "\nDatabase=" + database);
  }
  void NewKilled(const std::string& name, std::string database) {
    const std::string word = database.substr(database.find(' ') + 1);
    database.resize(database.find(' '));
    relay_.emplace(TPrivateServer::Shared().Port(), [=](const std::string& statement) {
      if (statement.find(word) == std::string::npos) return EFate::Pass;
      const auto connection = ServerConnection(TPrivateServer::Shared());
      connection->SetConnected(true);
      const std::string of_source =
          "select max(id) from information_schema.processlist where db = '" + database + "' and user = 'root'";
      Execute(*connection, "kill " + testing::Answer(*connection, of_source));
      return EFate::Pass;
    });
    NewOdbc(name, database, relay_->Port());
  }
  void PlaySqlServer(const std::string& text) {
    AddOdbcSource("nobody", "/nowhere");  // leads the driver manager to files of the test's
    WriteFileText(getenv("ODBCSYSINI") + std::string("/odbcinst.ini"), "[FreeTDS]\nDriver=libtdsodbc.so\n");
    WriteFileText(folder_ / "freetds.conf", "[global]\n");
    setenv("FREETDSCONF", (folder_ / "freetds.conf").c_str(), 1);
    WriteFileText(folder_ / "answers", text);
    sql_server_.emplace();
    sql_server_->password = "sesam";
    sql_server_->answers = ReadPlayedAnswers(folder_ / "answers");
    for (const TCatalogQuery& query : SqlServerQueries())
      sql_server_->answers[query.sql] = sql_server_->answers[query.name];
  }
  static void PlayOracle(const std::string& text) {
    setenv("ORACLE_HOME", kOracle, 1);
    TFakeOracle& server = FakeOracleOf(kOracle);
    AddOracleAnswers(server, text);
    for (const TCatalogQuery& query : OracleQueries()) server.answers[query.sql] = server.answers[query.name];
  }
  static std::string Answers(const std::string& query, TLiveDatabase& database) {
    TStringList answers;
    MySqlQueryList(query, answers, database.Connection());
    return JoinList(answers, "\n") + "\n";
  }

  std::optional<TFakeTdsServer> sql_server_;
  std::optional<TRelay> relay_;
  TFirebirdFolder firebird_;
  TScratchFolder folder_;
  std::map<std::string, std::unique_ptr<TLiveDatabase>> databases_;
};

class ServerCases : public ::testing::TestWithParam<std::string> {};

TEST_P(ServerCases, PrintWhatIsWritten) {
  TServerSources sources;
  EXPECT_EQ(TranscriptDifference(kCases + GetParam() + ".txt", sources.Runner()), "");
}

// What users type names the program and servers of theirs.
std::string AsStep(const std::string& line) {
  const std::string step = StrReplace(StrReplace(line, "$ velmora-cli ", "$ "), "root@localhost", "root:@localhost");
  return StrReplace(step, "mssql.example.org", "PLAYED");
}

// The page as a transcript.
std::string TranscriptIn(const std::string& page) {
  TStringList lines, steps;
  SplitText("\n", page, lines);
  bool inside = false;
  for (const std::string& line : lines)
    if (line.starts_with("```")) {
      if (inside) steps.emplace_back();
      inside = line == "```console";
    } else if (inside)
      steps.push_back(AsStep(line));
    else if (std::string step; Between(line, "<!-- step ", " -->", false, step))
      steps.push_back(step);
  return JoinList(steps, "\n");
}

TEST(ForeignDocs, TheExamplesAreTrue) {
  const TScratchFolder folder;
  const std::string path = folder / "foreign.txt";
  WriteFileText(path, TranscriptIn(ReadFileText(VELMORA_SOURCE_DIR "/docs/foreign.md")));
  TServerSources sources;
  EXPECT_EQ(TranscriptDifference(path, sources.Runner()), "");
}

INSTANTIATE_TEST_SUITE_P(Foreign, ServerCases, ::testing::ValuesIn(TranscriptNames(kCases)),
                         [](const auto& name) { return name.param; });

}  // namespace
}  // namespace velmora::testing

// SPDX-License-Identifier: GPL-3.0-or-later
#include "persist/TaskFile.h"

#include <gmock/gmock.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <thread>

#include "engines/file/DBConnTextDelim.h"
#include "engines/file/DBConnTextFixed.h"
#include "engines/mysql/DBConnMySQL.h"
#include "engines/mysql/DBConnMySQLscript.h"
#include "engines/mysql/OfflineEngine.h"
#include "persist/TaskPack.h"
#include "support/CaseFile.h"
#include "support/FakeConn.h"
#include "support/FakeMyConnection.h"
#include "support/MessageOf.h"
#include "support/RecordingHost.h"
#include "support/ScratchFolder.h"
#include "support/SizeLimit.h"
#include "util/Errors.h"
#include "util/Files.h"
#include "util/Text.h"
#include "xml/XMLAccess.h"

namespace velmora {
namespace {

using ::testing::ElementsAre;
using testing::MessageOf;
using testing::ReadCaseFile;
using testing::TCaseText;
using std::string_literals::operator""s;

class TTaskHostLog : public TTaskHost {
 public:
  explicit TTaskHostLog(TStringList& list) : log(list) {}
  TStringList& log;

  void ShowTask(bool active) override { log.push_back(active ? "show" : "hide"); }
  void RecentAdd(const std::string& path) override { log.push_back("recent " + path); }
  void CheckDialect(const std::optional<std::string>& word) override {
    if (word == "other") RaiseError("unknown dialect");
  }
  void CheckExact(const std::string& /*text*/) override {}
  void CheckForeign(const std::string& text) override {
    if (text == "other") RaiseError("unknown wish");
  }
};

class TaskFileTest : public ::testing::Test {
 protected:
  std::unique_ptr<TMyConnection> NewClient() { return std::make_unique<testing::TFakeMyConnection>(server_); }
  std::unique_ptr<TDBConn> NewMySQL(const std::string& server, const std::string& password = "p") {
    return std::make_unique<TDBConnMySQL>(NewClient(), server, 3307, "data", "user", password);
  }
  void WriteXml(const std::string& xml) { WriteFileText(path_, std::string(kTaskMagic) + PackTask(xml)); }
  std::string Xml() const { return UnpackTask(ReadFileBytes(path_).substr(kTaskMagic.size())); }
  void WriteSample() { WriteTask(path_, *NewMySQL("r"), *NewMySQL("t")); }
  // Both sides, not connected.
  static TTaskConnections Read(const std::string& path) {
    const TTaskValues values = ReadTaskValues(path);
    return {MakeTaskEngine(values.reference), MakeTaskEngine(values.target)};
  }

  testing::TScratchFolder folder_;
  const std::string path_ = folder_ / "a.vlt";
  std::shared_ptr<testing::TFakeMyServer> server_ = std::make_shared<testing::TFakeMyServer>();
  TTaskConnections connections_;
  TTaskHostLog host_{server_->log};
  TTaskFile task_{connections_, host_, {[this](const TEngineValues&) { return NewClient(); }}};
};

// --- What a file holds

TEST_F(TaskFileTest, ReadsWhatOthersHaveWritten) {
  const TTaskValues task = ReadTaskValues(VELMORA_SOURCE_DIR "/tests/data/tasks/mysql.vlt");
  const TEngineValues& reference = task.reference.values;
  for (const auto& [key, value] : {std::pair("server", "db1"),
                                   {"database", "shop"},
                                   {"username", "reader"},
                                   {"password", "a<b&c \xC4\x8D\xF0\x9F\x94\x91"},
                                   {"port", "3307"}})
    EXPECT_EQ(reference.Text(key), value);
  EXPECT_EQ(task.target.values.Text("database"), "copy");
  const TTaskValues text = ReadTaskValues(VELMORA_SOURCE_DIR "/tests/data/tasks/text.vlt");
  EXPECT_EQ(text.reference.values.Text("separator"), "\t");
}

TEST_F(TaskFileTest, WhatATaskSaysComesBackAsItWas) {
  for (const TCaseText& one : ReadCaseFile("tasks/engines.txt").cases) {
    const std::string xml = "<?xml version=\"1.0\"?>\r\n" + JoinList(one.lines, "");
    WriteXml(xml);
    const TTaskConnections task = Read(path_);
    WriteTask(path_, *task.reference, *task.target);
    EXPECT_EQ(Xml(), xml) << one.name;
  }
}

TEST_F(TaskFileTest, MarksAreThereWhereTheyAreSet) {
  WriteSample();
  const std::string plain = Xml();
  for (const auto& [marks, added] :
       {std::pair(TTaskMarks{}, ""),
        {TTaskMarks{ETaskColour::Red, true}, "<colour>red</colour><confirm_database>Y</confirm_database>"},
        {TTaskMarks{ETaskColour::Purple, false}, "<colour>purple</colour>"}}) {
    WriteTask(path_, *NewMySQL("r"), *NewMySQL("t"), {}, marks);
    EXPECT_EQ(Xml(), std::string(plain).insert(plain.find("</root>"), added));
    EXPECT_EQ(ReadTaskValues(path_).marks, marks);
  }
  server_->AddColumn("show tables", {});
  WriteTask(path_, *NewMySQL("r"), *NewMySQL("t"), {}, {ETaskColour::Blue, true});
  task_.OpenTask(path_);
  task_.SaveTask(path_);
  EXPECT_EQ(ReadTaskValues(path_).marks, (TTaskMarks{ETaskColour::Blue, true}));
  task_.CloseTask();
  EXPECT_FALSE(task_.Marks.Any());
}

// Deliberate: what tells the two kinds of text apart is the separator alone, so a delimited source without one comes
// back as one of fixed width.
TEST_F(TaskFileTest, TextWithoutASeparatorIsOfFixedWidth) {
  TDBConnTextDelim delimited("/a b", "", true);
  WriteTask(path_, delimited, *NewMySQL("t"));
  EXPECT_NE(dynamic_cast<TDBConnTextFixed*>(Read(path_).reference.get()), nullptr);
  TXMLAccess store;
  EXPECT_EQ(MessageOf([&] { TDBConnTextFixed("/data", true).SaveParams("/root/x", store); }), "Abstract Error");
}

TEST_F(TaskFileTest, RefusesWithOneMessage) {
  for (const TCaseText& one : ReadCaseFile("tasks/refused.txt").cases) {
    WriteXml(one.Parts().front());
    EXPECT_EQ(MessageOf([&] { Read(path_); }), one.Parts().back()) << one.name;
  }
}

TEST_F(TaskFileTest, RefusesFilesWithoutTheMagic) {
  for (const std::string& bytes : {""s, "VL1"s, "vl10"s, " VL10"s, "xxVL10xxVL10"s}) {
    WriteFileText(path_, bytes);
    EXPECT_EQ(MessageOf([&] { Read(path_); }), "Invalid session file") << bytes;
  }
  WriteFileText(path_, "VL10");
  EXPECT_EQ(MessageOf([&] { Read(path_); }), "Document.DocumentElement=nil");
  EXPECT_EQ(MessageOf([&] { Read(folder_ / "none"); }),
            "Cannot read " + folder_ / "none" + ": No such file or directory");
}

// --- The open task

TEST_F(TaskFileTest, OpeningConnectsShowsAndRemembers) {
  server_->AddTable("x", "");
  WriteSample();
  task_.TaskIsUntitled = true;
  testing::TRecordingHost pump;
  const THostGuard guard(pump);
  task_.OpenTask(path_);
  EXPECT_THAT(server_->TakeLog(),
              ElementsAre("hide", "connect r:3307 data user p", "open show tables", "connect t:3307 data user p",
                          "open show tables", "show", "recent " + path_));
  EXPECT_EQ(task_.TaskFileName, path_);
  EXPECT_FALSE(task_.TaskIsUntitled);
  EXPECT_EQ(pump.pumped, 1);
}

TEST_F(TaskFileTest, AFailedOpenLeavesWhatWasMade) {
  connections_ = {NewMySQL("old"), NewMySQL("old")};
  WriteXml(
      "<root><version>1.0</version><reference_engine>DBF</reference_engine><reference><folder/></reference>"
      "<target_engine>Text</target_engine></root>");
  EXPECT_EQ(MessageOf([&] { task_.OpenTask(path_); }), "OpenTask: Unhandled engine Text");
  EXPECT_TRUE(connections_.reference != nullptr && connections_.target == nullptr);
  EXPECT_EQ(task_.TaskFileName, path_);

  WriteSample();
  server_->connect_error = "no way in";
  server_->TakeLog();
  EXPECT_EQ(MessageOf([&] { task_.OpenTask(path_); }), "Reference r:3307.data: no way in");
  EXPECT_TRUE(connections_.reference != nullptr && connections_.target != nullptr);
  EXPECT_THAT(server_->TakeLog(), ElementsAre("hide", "connect r:3307 data user p")) << "neither shown nor remembered";
}

TEST_F(TaskFileTest, SavingNamesTheTask) {
  connections_ = {NewMySQL("r"), NewMySQL("t")};
  task_.TaskFileName = kUntitledTask;
  task_.TaskIsUntitled = task_.TaskIsUnsaved = true;
  task_.SaveTask(path_);
  EXPECT_EQ(task_.TaskFileName, path_);
  EXPECT_TRUE(task_.TaskIsUntitled) << "only opening clears it";
  EXPECT_FALSE(task_.TaskIsUnsaved);
  EXPECT_THAT(server_->TakeLog(), ElementsAre("recent " + path_, "show"));
}

TEST_F(TaskFileTest, TheWordOfADialectIsWrittenOnlyWhereThereIsOne) {
  server_->AddTable("x", "");
  WriteSample();
  EXPECT_EQ(Xml().find("dialect"), std::string::npos);
  task_.OpenTask(path_);
  EXPECT_FALSE(task_.Dialect);
  task_.Dialect = "exact";
  task_.SaveTask(path_);
  std::string xml = Xml();
  EXPECT_TRUE(xml.ends_with("</target><dialect>exact</dialect></root>")) << xml;
  task_.CloseTask();
  EXPECT_FALSE(task_.Dialect);
  task_.OpenTask(path_);
  EXPECT_EQ(task_.Dialect, "exact");

  WriteXml(StrReplace(xml, ">exact<", ">other<"));
  EXPECT_EQ(MessageOf([&] { task_.OpenTask(path_); }), "unknown dialect");
  EXPECT_FALSE(task_.Dialect);
  WriteXml(StrReplace(xml, "</dialect>", "</dialect><foreign>other</foreign>"));
  EXPECT_EQ(MessageOf([&] { task_.OpenTask(path_); }), "unknown wish");
}

TEST_F(TaskFileTest, ClosingAsksOnlyForAnUnsavedTask) {
  testing::TRecordingHost user;
  const THostGuard guard(user);
  connections_ = {NewMySQL("r"), NewMySQL("t")};
  task_.TaskIsUnsaved = true;
  EXPECT_EQ(MessageOf([&] { task_.CloseTask(); }), "Cancelled task closing");
  EXPECT_NE(connections_.target, nullptr);
  user.yes_answer = true;
  task_.CloseTask();
  EXPECT_FALSE(task_.TaskIsUnsaved) << "the next task would be asked about";
  EXPECT_TRUE(connections_.reference == nullptr && connections_.target == nullptr);
  EXPECT_EQ(user.calls.size(), 2U);
  EXPECT_THAT(server_->TakeLog(), ElementsAre("hide"));
}

// --- The file itself

TEST_F(TaskFileTest, AFailedSaveTouchesNothing) {
  WriteFileText(path_, "old");
  const auto fake = [](int engine) {
    auto conn = std::make_unique<testing::TFakeConn>();
    conn->engine = engine;
    return conn;
  };
  struct TCase {
    std::unique_ptr<TDBConn> reference, target;
    std::string message;
  } cases[] = {
      {std::make_unique<TDBConnMySQLscript>("x.sql"), NewMySQL("t"), "StrEngine error"},
      {fake(kEngineLotus), NewMySQL("t"), "SaveTask: Unhandled engine Lotus 1-2-3"},
      {fake(kEngineNone), NewMySQL("t"), "SaveTask: Unhandled engine "},
      {NewMySQL("r"), fake(kEngineParadox), "SaveTask: Unhandled engine Paradox"},
      {NewMySQL("r"), std::make_unique<TDBConnMySQLOffline>("x.sql"),
       "x.sql is a script file, which cannot be part of a task file"},
      {NewMySQL("r", "a\1b"), NewMySQL("t"), "/root/reference/password"},
      {NewMySQL("r"), NewMySQL("\xFF"), "/root/target/server"},
      {nullptr, NewMySQL("t"), "There is no open task to save"},
  };
  for (TCase& c : cases) {
    connections_ = {std::move(c.reference), std::move(c.target)};
    EXPECT_THAT(MessageOf([&] { task_.SaveTask(path_); }), ::testing::HasSubstr(c.message));
    EXPECT_EQ(ReadFileText(path_), "old");
    EXPECT_EQ(task_.TaskFileName, "");
    EXPECT_TRUE(server_->TakeLog().empty());
  }
}

TEST_F(TaskFileTest, IsForItsOwnerAlone) {
  WriteFileText(path_, "a copy that is open to others");
  chmod(path_.c_str(), 0644);
  WriteSample();
  EXPECT_EQ(std::filesystem::status(path_).permissions(), std::filesystem::perms(0600));
}

TEST_F(TaskFileTest, AFullDiskLeavesTheOldFile) {
  WriteSample();
  const std::string old = ReadFileBytes(path_);
  {
    const testing::TSizeLimit limit(64);
    EXPECT_EQ(MessageOf([&] { WriteTask(path_, *NewMySQL("other"), *NewMySQL("t")); }),
              "Cannot write " + path_ + ": File too large");
  }
  EXPECT_EQ(ReadFileBytes(path_), old);
}

// A process that saves in a loop is killed at any moment: the file is always a whole one of the two.
TEST_F(TaskFileTest, AKilledSaveLeavesAWholeFile) {
  const auto reference = NewMySQL("r"), first = NewMySQL("first"), second = NewMySQL("second");
  WriteTask(path_, *reference, *first);
  for (int round = 0; round < 20; ++round) {
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    while (child == 0) {
      WriteTask(path_, *reference, *first);
      WriteTask(path_, *reference, *second);
    }
    std::this_thread::sleep_for(std::chrono::microseconds(2000 + 977 * round));
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    const std::string server = ReadTaskValues(path_).target.values.Text("server");
    EXPECT_TRUE(server == "first" || server == "second") << server;
  }
}

}  // namespace
}  // namespace velmora

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
#include "persist/TaskDocument.h"
#include "persist/TaskPack.h"
#include "support/FakeConn.h"
#include "support/FakeMyConnection.h"
#include "support/MessageOf.h"
#include "support/RecordingHost.h"
#include "support/ScratchFolder.h"
#include "support/SizeLimit.h"
#include "util/Files.h"
#include "util/Format.h"
#include "xml/XMLAccess.h"

namespace velmora {
namespace {

using ::testing::ElementsAre;
using testing::MessageOf;
using std::string_literals::operator""s;

constexpr char kSample[] = VELMORA_SOURCE_DIR "/tests/data/tasks/mysql.vlt";
constexpr char kMySQLKeys[] = "<server/><database>d</database><username/><password/><port>3306</port>";

std::string TaskXml(const std::string& reference, const std::string& reference_keys, const std::string& target,
                    const std::string& target_keys, const std::string& version = "1.0") {
  return "<root><version>" + version + "</version><reference_engine>" + reference + "</reference_engine><reference>" +
         reference_keys + "</reference><target_engine>" + target + "</target_engine><target>" + target_keys +
         "</target></root>";
}

class TTaskHostLog : public TTaskHost {
 public:
  explicit TTaskHostLog(TStringList& list) : log(list) {}
  TStringList& log;

  void ShowTask(bool active) override { log.push_back(active ? "show" : "hide"); }
  void RecentAdd(const std::string& path) override { log.push_back("recent " + path); }
  void CheckDialect(const std::optional<std::string>& word) override {
    if (word == "other") RaiseError("unknown dialect");
  }
};

class TaskFileTest : public ::testing::Test {
 protected:
  std::unique_ptr<TMyConnection> NewClient() { return std::make_unique<testing::TFakeMyConnection>(server_); }
  TEngineClients Clients() {
    return {[this](const TEngineValues&) { return NewClient(); }};
  }
  std::unique_ptr<TDBConn> NewMySQL(const std::string& server, const std::string& password = "p") {
    return std::make_unique<TDBConnMySQL>(NewClient(), server, 3307, "data", "user", password);
  }
  struct TTask {
    TTaskValues values;
    std::unique_ptr<TDBConn> reference, target;
  };
  TTask ReadTask(const std::string& path) {
    TTaskValues values = ReadTaskValues(path);
    auto reference = MakeTaskEngine(values.reference, Clients());
    auto target = MakeTaskEngine(values.target, Clients());
    return {std::move(values), std::move(reference), std::move(target)};
  }
  std::string WriteXml(const std::string& xml) {
    WriteFileText(path_, std::string(kTaskMagic) + PackTask(xml));
    return path_;
  }

  testing::TScratchFolder folder_;
  const std::string path_ = folder_ / "a.vlt";
  std::shared_ptr<testing::TFakeMyServer> server_ = std::make_shared<testing::TFakeMyServer>();
  TTaskConnections connections_;
  TTaskHostLog host_{server_->log};
  TTaskFile task_{connections_, host_, Clients()};
};

TEST_F(TaskFileTest, ReadsWhatOthersHaveWritten) {
  const TTask task = ReadTask(kSample);
  const auto& reference = dynamic_cast<TDBConnMySQL&>(*task.reference);
  EXPECT_EQ(reference.server(), "db1");
  EXPECT_EQ(reference.database(), "shop");
  EXPECT_EQ(reference.username(), "reader");
  EXPECT_EQ(reference.password(), "a<b&c \xC4\x8D\xF0\x9F\x94\x91");
  EXPECT_EQ(reference.port(), 3307);
  const auto& target = dynamic_cast<TDBConnMySQL&>(*task.target);
  EXPECT_EQ(target.server(), "");
  EXPECT_EQ(target.database(), "copy");
  EXPECT_EQ(task.values.target.values.Text("username"), "root");
  EXPECT_TRUE(server_->log.empty()) << "nothing is connected";

  const TTaskValues text = ReadTaskValues(VELMORA_SOURCE_DIR "/tests/data/tasks/text.vlt");
  EXPECT_EQ(text.reference.values.Text("separator"), "\t");
  EXPECT_TRUE(text.reference.values.Boolean("HDR"));
}

TEST_F(TaskFileTest, WritesTheKeysInOrderAndReadsThemBack) {
  const auto reference = NewMySQL("host", "&<>\"'\t x \r\n\xF0\x9F\x94\x91 ");
  WriteTask(path_, *reference, *NewMySQL("", ""));
  const std::string bytes = ReadFileBytes(path_);
  ASSERT_TRUE(bytes.starts_with(kTaskMagic));
  const std::string xml = UnpackTask(bytes.substr(4));
  std::size_t at = 0;
  for (const char* key : {"<root>", "version", "reference_engine", "reference>", "server", "database", "username",
                          "password", "port", "target_engine", "target>", "server"}) {
    const std::size_t next = xml.find(key, at);
    ASSERT_NE(next, std::string::npos) << key << " in " << xml;
    at = next;
  }
  const TTask task = ReadTask(path_);
  EXPECT_EQ(dynamic_cast<TDBConnMySQL&>(*task.reference).password(), "&<>\"'\t x \r\n\xF0\x9F\x94\x91 ");
  EXPECT_EQ(dynamic_cast<TDBConnMySQL&>(*task.target).password(), "");
}

// Deliberate: what tells the two kinds of text apart is the separator alone, so a delimited source without one comes
// back as one of fixed width.
TEST_F(TaskFileTest, BothKindsOfTextComeBack) {
  const auto target = NewMySQL("t");
  for (const char* separator : {"\t", ",", " ", ""}) {
    for (const bool hdr : {true, false}) {
      TDBConnTextDelim delimited("/a b", separator, hdr);
      WriteTask(path_, delimited, *target);
      const TTask task = ReadTask(path_);
      if (*separator == '\0') {
        EXPECT_NE(dynamic_cast<TDBConnTextFixed*>(task.reference.get()), nullptr);
        continue;
      }
      const auto& text = dynamic_cast<TDBConnTextDelim&>(*task.reference);
      EXPECT_EQ(text.folder() + text.separator(), std::string("/a b") + separator);
      EXPECT_EQ(text.hdr(), hdr);
    }
  }
  for (const bool hdr : {true, false}) {
    TDBConnTextFixed fixed("/data", hdr);
    WriteTask(path_, fixed, *target);
    const TTask task = ReadTask(path_);
    EXPECT_EQ(dynamic_cast<TDBConnTextFixed&>(*task.reference).folder(), "/data");
    EXPECT_EQ(dynamic_cast<TDBConnTextFixed&>(*task.reference).hdr(), hdr);
    const TEngineValues& values = task.values.reference.values;
    EXPECT_EQ(values.Text("HDR"), hdr ? "Y" : "N");
    EXPECT_TRUE(values.Has("separator") && values.Text("separator").empty());
    TXMLAccess store;
    EXPECT_EQ(MessageOf([&] { fixed.SaveParams("/root/x", store); }), "Abstract Error");
  }
}

TEST_F(TaskFileTest, RefusesWithOneMessage) {
  const std::string nothing = "xmlGetVal: no item with path /root/";
  const struct {
    std::string xml, message;
  } kCases[] = {
      {"", "Document.DocumentElement=nil"},
      {"<root>", "Document.DocumentElement=nil"},
      {"<root/>", nothing + "version"},
      {TaskXml("MySQL", kMySQLKeys, "MySQL", kMySQLKeys, "1.00"), "Incompatible task version"},
      {TaskXml("MySQL", kMySQLKeys, "MySQL", kMySQLKeys, " 1.0"), "Incompatible task version"},
      {"<root><version>1.0</version></root>", nothing + "target_engine"},
      {TaskXml("Lotus 1-2-3", "", "mysql", ""), "StrToEngine error"},
      {TaskXml("Lotus 1-2-3", "", "MySQL", kMySQLKeys), "OpenTask: Unhandled engine Lotus 1-2-3"},
      {TaskXml("MySQL script", "", "MySQL", kMySQLKeys), "StrToEngine error"},
      {TaskXml("", "", "MySQL", kMySQLKeys), "StrToEngine error"},
      {TaskXml("MySQL", kMySQLKeys, "Paradox", "<folder/>"), "OpenTask: Unhandled engine Paradox"},
      {TaskXml("Text", "", "MySQL", kMySQLKeys), nothing + "reference/separator"},
      {TaskXml("MySQL", kMySQLKeys, "MySQL", "<server/>"), nothing + "target/database"},
      {TaskXml("MySQL", "<server/>"s + kMySQLKeys, "MySQL", ""),
       "xmlGetVal: more than one item with path /root/reference/server"},
      {TaskXml("MySQL", kMySQLKeys, "MySQL", "<server/><database/><username/><password/><port>x</port>"),
       "'x' is not a valid integer value"},
  };
  for (const auto& c : kCases) {
    WriteXml(c.xml);
    EXPECT_EQ(MessageOf([&] { ReadTask(path_); }), c.message) << c.xml;
  }
}

// Both ways, on either side: what a task of an engine says comes back as it was.
TEST_F(TaskFileTest, EveryEngineThatATaskHoldsComesBack) {
  for (const TEngineRow& row : EngineTable()) {
    if (!row.reference || row.engine == kEngineMySQLScript) continue;
    std::string keys;
    for (const TEngineKey& key : row.keys)
      keys += Format("<%s>%s</%s>", key.name, key.kind == EKeyKind::Port ? "1" : "Y", key.name);
    WriteXml(row.target ? TaskXml("MySQL", kMySQLKeys, EngineName(row), keys)
                        : TaskXml(EngineName(row), keys, "MySQL", kMySQLKeys));
    const TTask task = ReadTask(path_);
    EXPECT_EQ((row.target ? task.target : task.reference)->GetEngine(), row.engine);
    WriteTask(path_, row.target ? *task.target : *task.reference, *task.target);
    const TTaskValues values = ReadTaskValues(path_);
    EXPECT_EQ(values.reference.engine, &row);
    for (const TEngineKey& key : row.keys)
      EXPECT_EQ(values.reference.values.Text(key.name), key.kind == EKeyKind::Port ? "1" : "Y") << key.name;
    EXPECT_EQ(values.target.engine, row.target ? &row : FindEngine(kEngineMySQL));
  }
}

TEST_F(TaskFileTest, RefusesFilesWithoutTheMagic) {
  for (const std::string& bytes : {""s, "VL1"s, "vl10"s, " VL10"s, "\xEF\xBB\xBFVL10"s, "xxVL10xxVL10"s}) {
    WriteFileText(path_, bytes);
    EXPECT_EQ(MessageOf([&] { ReadTask(path_); }), "Invalid session file") << bytes;
  }
  WriteFileText(path_, "VL10");
  EXPECT_EQ(MessageOf([&] { ReadTask(path_); }), "Document.DocumentElement=nil");
  EXPECT_EQ(MessageOf([&] { ReadTask(folder_ / "none"); }),
            "Cannot read " + folder_ / "none" + ": No such file or directory");
}

TEST_F(TaskFileTest, OpeningConnectsShowsAndRemembers) {
  server_->AddTable("x", "");
  WriteTask(path_, *NewMySQL("r"), *NewMySQL("t"));
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
  WriteXml(TaskXml("MySQL", kMySQLKeys, "Text", ""));
  EXPECT_EQ(MessageOf([&] { task_.OpenTask(path_); }), "OpenTask: Unhandled engine Text");
  EXPECT_TRUE(connections_.reference != nullptr && connections_.target == nullptr);
  EXPECT_EQ(task_.TaskFileName, path_);

  WriteTask(path_, *NewMySQL("r"), *NewMySQL("t"));
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
  WriteTask(path_, *NewMySQL("r"), *NewMySQL("t"));
  EXPECT_EQ(cfgText().find("dialect"), std::string::npos);
  task_.OpenTask(path_);
  EXPECT_FALSE(task_.Dialect);
  task_.Dialect = "exact";
  task_.SaveTask(path_);
  EXPECT_TRUE(cfgText().ends_with("</target><dialect>exact</dialect></root>")) << cfgText();
  task_.CloseTask();
  EXPECT_FALSE(task_.Dialect);
  task_.OpenTask(path_);
  EXPECT_EQ(task_.Dialect, "exact");

  std::string xml = TaskXml("MySQL", kMySQLKeys, "MySQL", kMySQLKeys);
  xml.insert(xml.find("</root>"), "<dialect>other</dialect>");
  WriteXml(xml);
  EXPECT_EQ(MessageOf([&] { task_.OpenTask(path_); }), "unknown dialect");
  EXPECT_FALSE(task_.Dialect);
}

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

TEST_F(TaskFileTest, ClosingAsksOnlyForAnUnsavedTask) {
  testing::TRecordingHost user;
  const THostGuard guard(user);
  connections_ = {NewMySQL("r"), NewMySQL("t")};
  task_.TaskIsUnsaved = true;
  EXPECT_EQ(MessageOf([&] { task_.CloseTask(); }), "Cancelled task closing");
  EXPECT_NE(connections_.target, nullptr);
  EXPECT_EQ(user.calls.size(), 1U);
  task_.TaskIsUnsaved = false;
  task_.CloseTask();
  EXPECT_TRUE(connections_.reference == nullptr && connections_.target == nullptr);
  EXPECT_EQ(user.calls.size(), 1U);
  EXPECT_THAT(server_->TakeLog(), ElementsAre("hide"));
}

TEST_F(TaskFileTest, IsForItsOwnerAlone) {
  const auto mode = [&] {
    struct stat info {};
    return stat(path_.c_str(), &info) == 0 ? info.st_mode & 0777U : 0U;
  };
  WriteTask(path_, *NewMySQL("r"), *NewMySQL("t"));
  EXPECT_EQ(mode(), 0600U);
  chmod(path_.c_str(), 0644);
  WriteTask(path_, *NewMySQL("r"), *NewMySQL("t"));
  EXPECT_EQ(mode(), 0600U) << "a copied file was open to others";
}

TEST_F(TaskFileTest, AFullDiskLeavesTheOldFile) {
  WriteTask(path_, *NewMySQL("r"), *NewMySQL("t"));
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
  const auto reference = NewMySQL("r");
  const auto first = NewMySQL("first");
  const auto second = NewMySQL("second");
  WriteTask(path_, *reference, *first);
  for (int round = 0; round < 20; ++round) {
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
      while (true) {
        WriteTask(path_, *reference, *first);
        WriteTask(path_, *reference, *second);
      }
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

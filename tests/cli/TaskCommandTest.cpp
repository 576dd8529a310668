// SPDX-License-Identifier: GPL-3.0-or-later

// What a task file holds, beyond what the companion shows of it.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "app/Tasks.h"
#include "engines/mysql/DBConnMySQL.h"
#include "mysqlclient/ClientLibrary.h"
#include "support/CompanionRun.h"
#include "support/ScratchFolder.h"
#include "util/Files.h"

namespace velmora {
namespace {

using ::testing::HasSubstr;
using testing::RunInProcess;

class TaskCommandTest : public ::testing::Test {
 protected:
  // The bytes of the file that these arguments make.
  std::string Written(const std::vector<std::string>& more) {
    std::vector<std::string> arguments = {"task", "new", file_, "mysql://reader:s3cret@h/shop", "mysql://u:p@h/t"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    EXPECT_EQ(RunInProcess(arguments).status, 0);
    return ReadFileText(file_);
  }

  testing::TScratchFolder folder_;
  const std::string file_ = folder_ / "shop.vlt";
};

TEST_F(TaskCommandTest, TheFileIsTheUsersAloneAndWhatIsStandardIsNotWritten) {
  const std::string plain = Written({});
  struct stat status {};
  ASSERT_EQ(stat(file_.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0600u);
  EXPECT_THAT(plain, ::testing::Not(HasSubstr("s3cret")));
  EXPECT_EQ(Written({"--tls", "preferred", "--client", "native", "--dialect", "auto"}), plain);
  EXPECT_NE(Written({"--dialect", "exact"}), plain);
  EXPECT_NE(Written({"--dialect", "standard"}), plain);
}

TEST_F(TaskCommandTest, OptionsCountBeforeTheFile) {
  Written({"--tls-ca", "/ca.pem", "--read-timeout", "7"});
  TSourceSettings settings;  // as of "--tls verify-ca --read-timeout 600"
  settings.Client.Tls = ETls::VerifyCa;
  settings.Given = {"tls", "read_timeout"};
  const TMadeTask task = MakeTask(file_, settings);
  const auto& client = dynamic_cast<TMyConnection&>(task.connections.reference->GetConnectionObject()).Options;
  EXPECT_EQ(client.Tls, ETls::VerifyCa);
  EXPECT_EQ(client.CaFile, "/ca.pem");
  EXPECT_EQ(client.ReadTimeout, 600);
}

// Nothing of the file is served by halves: the port it shows is the one that is used.
TEST_F(TaskCommandTest, APortBeyondTheLastIsRefusedAtTheConnection) {
  TDBConnMySQL wrong(std::make_unique<TLibraryConnection>(), "127.0.0.1", 70000, "d", "u", "");
  NewTaskFile(file_, wrong, wrong);
  EXPECT_THAT(RunInProcess({"compare", file_}).err, HasSubstr("70000 is no port: it must be a number from 1 to 65535"));
}

TEST_F(TaskCommandTest, ADialectThatNobodyKnowsIsNamed) {
  Written({});
  const TMadeTask task = MakeTask(file_);
  WriteTask(file_, *task.connections.reference, *task.connections.target, "other");
  for (const auto& arguments : {std::vector<std::string>{"task", "show", file_}, {"compare", file_}})
    EXPECT_THAT(RunInProcess(arguments).err, HasSubstr("OpenTask: Unhandled dialect other"));
}

}  // namespace
}  // namespace velmora

// SPDX-License-Identifier: GPL-3.0-or-later
#include "persist/RecentConnections.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include "support/ScratchFolder.h"
#include "util/Files.h"
#include "util/Format.h"

namespace velmora {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

class RecentConnectionsTest : public ::testing::Test {
 protected:
  static TEngineValues Values(const std::string& database, const std::string& password = "s3cret") {
    TEngineValues values;
    for (const auto& [key, value] : {std::pair("server", "db.example.org"), {"username", "me"}, {"port", "3307"}})
      values.Set(key, value);
    values.Set("database", database);
    values.Set("password", password);
    return values;
  }
  TStringList Kept() const {
    TStringList lines;
    const TRecentConnections recent(file_);
    for (const TRecentConnection& one : recent.All())
      lines.push_back(ConnectionCaption(one) + " " + one.values.Text("password"));
    return lines;
  }

  const TEngineRow& mysql_ = *FindEngine(kEngineMySQL);
  testing::TScratchFolder folder_;
  const std::string file_ = folder_ / "recent";
};

TEST_F(RecentConnectionsTest, TheLatestIsFirstAndPasswordsAreKeptOnRequestAlone) {
  TRecentConnections recent(file_);
  recent.Add(mysql_, Values("a"), true);
  recent.Add(mysql_, Values("b"), false);
  EXPECT_THAT(Kept(), ElementsAre("b on db.example.org:3307 (me) ", "a on db.example.org:3307 (me) s3cret"));
  recent.Add(mysql_, Values("a", "new"), false);
  EXPECT_THAT(Kept(), ElementsAre("a on db.example.org:3307 (me) ", "b on db.example.org:3307 (me) "))
      << "what is no longer to be kept goes";
  recent.Add(mysql_, Values("c\x01"), false);
  EXPECT_EQ(Kept().size(), 2U) << "what cannot be kept costs the others nothing";
  for (int i = 0; i < 20; ++i) recent.Add(mysql_, Values(Format("d%d", i)), false);
  EXPECT_EQ(Kept().size(), kRecentConnections);
  recent.Forget(0);
  EXPECT_THAT(Kept().front(), HasSubstr("d18"));
}

TEST_F(RecentConnectionsTest, TheFileIsItsOwnersAndShowsNothing) {
  TRecentConnections(file_).Add(mysql_, Values("shop"), true);
  struct stat status {};
  ASSERT_EQ(stat(file_.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0600U);
  for (const char* text : {"s3cret", "shop", "example"}) EXPECT_THAT(ReadFileBytes(file_), Not(HasSubstr(text)));
}

TEST_F(RecentConnectionsTest, AFileThatIsNoneIsPassedOver) {
  TRecentConnections(file_).Add(mysql_, Values("shop"), true);
  const std::string whole = ReadFileBytes(file_);
  for (const std::string& bytes : {std::string(), std::string("VC10"), "VL10" + whole.substr(4), whole.substr(0, 20)}) {
    WriteFileText(file_, bytes);
    EXPECT_THAT(Kept(), IsEmpty());
  }
  TRecentConnections nowhere(folder_ / "recent/below/a/file");
  nowhere.Add(mysql_, Values("shop"), false);
  EXPECT_EQ(nowhere.All().size(), 1U) << "for as long as the program runs";
}

}  // namespace
}  // namespace velmora

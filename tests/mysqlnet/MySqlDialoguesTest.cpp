// SPDX-License-Identifier: GPL-3.0-or-later

// Whole dialogues with servers of every age, as tests/data/dialogues has them.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "mysqlnet/SessionRig.h"
#include "support/ScratchFolder.h"
#include "util/Files.h"

namespace velmora {
namespace {

using namespace velmora::testing;
using ::testing::HasSubstr;

constexpr char kLost[] = ", lost";

// Who is lost need not have heard all.
void ExpectSaid(const TSessionRig& rig, const TDialogueCase& one) {
  EXPECT_EQ(rig.dialogue.Fault(), "");
  EXPECT_TRUE(rig.dialogue.Done() || one.outcome.back().ends_with(kLost));
}

TEST(MySqlDialogues, Logins) {
  for (const TDialogueCase& one : DialogueCases("logins.txt")) {
    SCOPED_TRACE(one.name);
    TSessionRig rig(one.Dialogue());
    one.SetUp(rig);
    EXPECT_EQ(one.Play(rig), one.outcome);
    ExpectSaid(rig, one);
    const bool in = one.outcome.front().starts_with("in:");
    EXPECT_EQ(rig.session.net.vio != nullptr, in);
    if (!in) rig.session.SimpleCommand(kQuery, "select 1", false, 8);  // does nothing at all
    if (in && rig.session.UsesProtocol41()) EXPECT_EQ(rig.session.scramble, "abcdefghijklmnopqrst");
  }
}

// What can be turned back into the password leaves only where nobody else hears it, or where the user says so.
TEST(MySqlDialogues, GuardedLogins) {
  for (const TDialogueCase& one : DialogueCases("logins.txt")) {
    if (one.guard.empty()) continue;
    for (const bool is_private : {false, true}) {
      for (const bool old : {false, true}) {
        SCOPED_TRACE(one.name + (is_private ? ", private" : "") + (old ? ", old logins" : ""));
        TSessionRig rig(one.Dialogue());
        one.SetUp(rig);
        rig.dialogue.OnPrivateLine(is_private);
        rig.session.login_rules = {.guarded = true, .old_logins = old};
        const std::string option = one.guard.substr(0, one.guard.find(','));
        const bool passes = option == "nothing" || (is_private && one.guard.ends_with("a private line")) ||
                            (old && option == "--allow-old-login");
        const TStringList told = one.Play(rig);
        EXPECT_EQ(told == one.outcome, passes);
        EXPECT_EQ(rig.dialogue.Done(), passes);
        EXPECT_EQ(rig.dialogue.Fault(), "");
        if (!passes) EXPECT_THAT(told.front(), HasSubstr(option));
      }
    }
  }
}

class Queries : public ::testing::Test {
 protected:
  Queries() { WriteFileText(names_.at("file"), std::string(8192, 'a') + "bc"); }

  // Of a result that ends in an error, who reads all rows at once sees none.
  static TStringList WithoutRowsBeforeErrors(TStringList outcome) {
    bool ended = false;
    for (std::size_t i = outcome.size(); i-- > 0;)
      if (!outcome[i].starts_with("row "))
        ended = outcome[i].starts_with("end: ");
      else if (!ended)
        outcome.erase(outcome.begin() + static_cast<std::ptrdiff_t>(i));
    return outcome;
  }

  TScratchFolder folder_;
  const TWireNames names_ = {{"file", folder_ / "rows.txt"}, {"missing file", folder_ / "none"}};
};

TEST_F(Queries, OneByOneOrAllAtOnce) {
  for (const TDialogueCase& one : DialogueCases("queries.txt", names_)) {
    for (const bool whole : {false, true}) {
      SCOPED_TRACE(one.name);
      TSessionRig rig(one.Dialogue());
      one.SetUp(rig);
      EXPECT_EQ(one.Play(rig, whole), whole ? WithoutRowsBeforeErrors(one.outcome) : one.outcome);
      ExpectSaid(rig, one);
    }
  }
}

// The connection ends after each byte of a whole dialogue: always the same clear error, never anything else.
TEST_F(Queries, CutAtEveryByte) {
  for (const char* file : {"logins.txt", "queries.txt"}) {
    for (const TDialogueCase& one : DialogueCases(file, names_)) {
      const std::string& last = one.outcome.back();
      if (!last.starts_with("in:") && !last.starts_with("end:") && !last.starts_with("done:")) continue;
      for (std::size_t cut = 0; cut < one.Dialogue().ServerBytes(); ++cut) {
        TSessionRig rig(one.Dialogue().CutAt(cut));
        one.SetUp(rig);
        EXPECT_EQ(one.Play(rig).back(), "2013 Lost connection to MySQL server during query, lost")
            << one.name << " " << cut;
        EXPECT_EQ(rig.dialogue.Fault(), "");
      }
    }
  }
}

}  // namespace
}  // namespace velmora

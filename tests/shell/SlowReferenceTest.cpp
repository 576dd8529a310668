// SPDX-License-Identifier: GPL-3.0-or-later

// References whose server hangs or whose files are large: the window lives on, and the user gets out.

#include <QElapsedTimer>
#include <QPushButton>
#include <QTimer>
#include <filesystem>

#include "app/Sources.h"
#include "persist/TaskDocument.h"
#include "shell/DesktopRig.h"
#include "support/PrivateFirebird.h"
#include "util/Files.h"

namespace velmora {
namespace {

using velmora::testing::TDesktopRig;
using velmora::testing::TLiveDatabase;
using velmora::testing::TPrivateFirebird;

constexpr int kBeatMs = 20;

class SlowReferenceTest : public ::testing::Test {
 protected:
  SlowReferenceTest() : target_("slow_tgt") {
    QObject::connect(&timer_, &QTimer::timeout, &timer_, [this] { Beat(); });
    timer_.start(kBeatMs);
  }

  void Open(const std::string& reference) {
    const std::string path = rig_.folder / "slow.vlt";
    WriteTask(path, *MakeSource(reference), *MakeSource("MySQL:server=localhost;database=slow_tgt;username=root"));
    rig_.Start(path);
  }

  std::size_t Differences() { return rig_.Main().App().data.mtActions.Count(); }

  // Between two looks at the messages; the user cancels what is shown for some moments.
  void Beat() {
    if (clock_.isValid()) longest_ = std::max(longest_, clock_.restart());
    if (!cancels_ || !rig_.Progress().isVisible()) return;
    EXPECT_FALSE(rig_.Main().isEnabled());
    ++cancelled_;
    Click(rig_.Progress(), "bnCancel");
  }

  TLiveDatabase target_;
  TDesktopRig rig_;
  QTimer timer_;
  QElapsedTimer clock_;
  qint64 longest_ = 0;  // ms between two beats
  bool cancels_ = false;
  int cancelled_ = 0;
};

TEST_F(SlowReferenceTest, AFirebirdServerThatHangsIsCancelledAndComparedWhenItGoesOn) {
  TPrivateFirebird server;
  const std::string database = server.Folder().NewDatabase(
      "slow.fdb", {"create table ONE (A integer not null primary key)", "create table TWO (A integer)"});
  Open("Interbase/Firebird:server=" + server.Server() + ";database=" + database +
       ";username=SYSDBA;password=" + TPrivateFirebird::kPassword);
  for (const char* at : {"the login", "a statement"}) {
    server.Freeze(true);
    cancels_ = true;
    clock_.start();
    cancelled_ = 0;
    rig_.Trigger("acAnalyze");
    EXPECT_GE(cancelled_, 1) << at;
    EXPECT_LT(longest_, 2000) << at;
    EXPECT_TRUE(rig_.Main().isEnabled()) << at;
    cancels_ = false;
    server.Freeze(false);
    rig_.Trigger("acAnalyze");
    EXPECT_EQ(Differences(), 2U) << at;
  }
}

TEST_F(SlowReferenceTest, TheWindowLivesOnWhileALargeTextIsRead) {
  std::string text = "id,name,price\n";
  for (int i = 0; i < 300000; ++i) text += std::to_string(i) + ",a name of some length,1.50\n";
  const std::string folder = rig_.folder / "texts";
  std::filesystem::create_directory(folder);
  WriteFileText(folder + "/large.csv", text);
  Open("Text:HDR=Y;separator=%2C;folder=" + folder);
  QElapsedTimer whole;
  whole.start();
  clock_.start();
  rig_.Trigger("acAnalyze");
  EXPECT_EQ(Differences(), 1U);
  EXPECT_LT(longest_ * 2, whole.elapsed()) << longest_;
}

}  // namespace
}  // namespace velmora

// SPDX-License-Identifier: GPL-3.0-or-later
#include <gmock/gmock.h>

#include <QApplication>
#include <QClipboard>
#include <QPlainTextEdit>
#include <QPointer>

#include "crash/CrashReports.h"
#include "shell/QtEnvironment.h"
#include "shell/widgets/QtText.h"
#include "shell/windows/CrashDialog.h"
#include "support/RecordingHost.h"
#include "support/ScratchFolder.h"
#include "util/Files.h"

namespace velmora {

namespace {

TEST(CrashDialogTest, OffersNewReportsOnceToCopyAndSave) {
  const testing::TScratchFolder folder;
  testing::TRecordingHost host;
  const THostGuard guard(host);
  host.chosen = folder / "saved.txt";
  WriteFileText(folder / "velmora-20261122-120000-7.crash.txt", "the older");
  WriteFileText(folder / "velmora-cli-20261122-130000-7.crash.txt", "the newer");

  QWidget window;
  OfferCrashReports(folder.Path(), &window);
  const QPointer<TfmCrash> dialog = window.findChild<TfmCrash*>();
  ASSERT_TRUE(dialog != nullptr && dialog->isVisible());
  const QString shown = Child<QPlainTextEdit>(*dialog, "meReport")->toPlainText();
  EXPECT_TRUE(shown.startsWith(QStringLiteral("the newer"))) << FromQt(shown);
  EXPECT_TRUE(shown.endsWith(QStringLiteral("the older")));
  Click(*dialog, "butCopy");
  EXPECT_EQ(QApplication::clipboard()->text(), shown);
  Click(*dialog, "butSave");
  EXPECT_EQ(ReadFileText(folder / "saved.txt"), FromQt(shown) + "\n");
  EXPECT_EQ(NewCrashReports(folder.Path()).size(), 2u);  // as long as it was not closed

  Click(*dialog, "butClose");
  OfferCrashReports(folder.Path(), &window);
  OfferCrashReports("", &window);
  QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  EXPECT_EQ(window.findChild<TfmCrash*>(), nullptr);
}

}  // namespace

}  // namespace velmora

// SPDX-License-Identifier: GPL-3.0-or-later

// The two databases of the open task beside their comparison: marks, servers, and which of them is which.

#include <QLabel>
#include <QStatusBar>

#include "app/SideNames.h"
#include "shell/widgets/MarkBar.h"
#include "shell/widgets/QtText.h"
#include "shell/widgets/Text.h"
#include "shell/windows/Main.h"
#include "shell/windows/TaskMarksDialog.h"

namespace velmora {

namespace {

QString Upper(QString text) {
  if (!text.isEmpty()) text[0] = text[0].toUpper();
  return text;
}

}  // namespace

void TfmMain::ShowSides(bool active) {
  ShowMarks(active);
  QAction* swap = Command("acSwapSides");
  const std::string obstacle = active ? SwapObstacle(*app_->connections.reference) : std::string();
  swap->setEnabled(active && obstacle.empty());
  swap->setToolTip(obstacle.empty() ? TText::tr("The target becomes the reference, and the reference the target")
                                    : ToQt(obstacle));
  ShowServers(active);
}

void TfmMain::ShowServers(bool active) {
  if (!active) servers_.clear();
  const auto tell = [active](QLabel* label, const QString& pattern, const QString& text) {
    label->setText(pattern.arg(text));
    label->setVisible(active && !text.isEmpty());
  };
  const auto server = [this, active](const std::unique_ptr<TDBConn>& conn) {
    if (!active) return QString();
    if (!servers_.contains(conn.get())) servers_[conn.get()] = ServerText(*conn);
    return ToQt(servers_[conn.get()]);
  };
  tell(sbReference_, TText::tr("Reference: %1"), server(app_->connections.reference));
  tell(sbTarget_, TText::tr("Target: %1"), server(app_->connections.target));
  ShowDialect();
}

// The bar names the target: its colour is meant for that.
void TfmMain::ShowMarks(bool active) {
  const ETaskColour colour = active ? task_->Marks.colour : ETaskColour::None;
  const QString target = active ? Upper(ToQt(SideName(*app_->connections.target))) : QString();
  barMark_->Mark(colour, TText::tr("Target: %1").arg(target));
}

void TfmMain::acTaskMarks() {
  if (!TfmTaskMarks(this).Edit(task_->Marks)) return;
  ShowMarks(true);
  statusBar()->showMessage(TText::tr("The marks are kept when the task is saved."));
}

// Marks stay: nobody is to reach a database unasked because the sides have changed places.
void TfmMain::acSwapSides() {
  if (!MayLoseScript()) return;
  ClearWork();
  said_.clear();
  TTaskConnections& pair = app_->connections;
  std::swap(pair.reference, pair.target);
  ShowTask(true);
}

}  // namespace velmora

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QMainWindow>

class QListWidget;
class QTextBrowser;

namespace velmora {

// The help that is built into the program: a window with a list of pages beside the page that is read. It needs no
// file and no browser, and stands beside the main window without keeping the program alive.
class TfmHelp final : public QMainWindow {
 public:
  explicit TfmHelp(QWidget* parent = nullptr);

 private:
  void AddCommands();
  void ShowRow(int row);
  void FollowPage();

  QListWidget* pages_;
  QTextBrowser* text_;
};

}  // namespace velmora

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLabel>
#include <QWidget>
#include <vector>

class QAction;
class QPushButton;
class QVBoxLayout;

namespace velmora {

// What stands in the window while no task is open: a heading, what to do, and buttons for it.
class TEmptyState final : public QWidget {
 public:
  // The commands behind the buttons, all of which outlive this widget; those of recent tasks are shown as far as they
  // are visible.
  struct TCommands {
    QAction* create;
    QAction* open;
    std::vector<QAction*> recent;
  };

  TEmptyState(QLabel* heading, const TCommands& commands);

  // A recent task's whole path, as its command's caption has no room for it.
  void ShowRecent(std::size_t index, const QString& path);

 private:
  QWidget* MakeButtons(const TCommands& commands);
  void MakeRecent(QVBoxLayout& column, const TCommands& commands);

  QLabel* recent_heading_ = nullptr;
  std::vector<QPushButton*> recent_;
};

}  // namespace velmora

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>
#include <string>

#include "persist/TaskMarks.h"

class QPushButton;

namespace velmora {

// What is asked before a script runs.
struct TRunQuestion {
  std::string text;      // what would run, and where
  std::string details;   // what of it can lose data or should be known, a line each; may be empty
  TTaskMarks marks;      // of the task
  std::string database;  // the name to type where the marks ask for it
};

// The question before a run: yes only if it is said and, where the task asks for it, the database's name was typed
// exactly. Enter says no.
class TfmRunQuestion final : public QDialog {
 public:
  explicit TfmRunQuestion(const TRunQuestion& question, QWidget* parent = nullptr);

 private:
  QWidget* MakeText(const TRunQuestion& question);
  QWidget* MakeEntry(const TRunQuestion& question);
  QWidget* MakeButtons();

  QPushButton* yes_ = nullptr;
  QWidget* first_ = nullptr;  // what has the focus at first
};

bool MayRunAfter(const TRunQuestion& question, QWidget* parent);

}  // namespace velmora

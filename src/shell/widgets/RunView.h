// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLabel>
#include <QPlainTextEdit>
#include <QTimer>
#include <QTreeView>
#include <QWidget>
#include <functional>
#include <string>

#include "app/ScriptRunner.h"
#include "util/Lists.h"

namespace velmora {

class TRunModel;

// What became of a run, statement by statement: state, duration, rows, place, what is in force, the server's words.
// It keeps all that it shows.
class TRunView final : public QWidget {
 public:
  explicit TRunView(QWidget* parent = nullptr);

  std::function<void(std::size_t start)> OnGoTo;         // a double click, or Enter, on a statement of the script
  std::function<void(const std::string& text)> OnSave;   // the report goes to a file
  void Begin(const std::string& script);                 // a run of this text; what was shown is gone
  void Show(const TRunReport& report);                   // as it goes on; it lives until it has ended
  void SetHeading(const std::string& heading);           // in place of how far it has come
  void Tell(const TStringList& lines);                   // what there is to say of its end
  const std::string& Script() const { return script_; }  // of the run; empty before the first
  std::string Text() const;                              // all of it

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  QWidget* MakeHead();
  QWidget* MakeList();
  void ShowDetails();
  void ShowNow(const TRunReport& report);
  void Copy() const;
  void GoTo(const QModelIndex& index) const;

  std::string script_;
  TStringList lines_;
  TRunReport report_;                 // once it has ended
  const TRunReport* told_ = nullptr;  // of a run that goes on, not yet shown
  QTimer later_;
  TRunModel* model_;
  QLabel* lbRun_;
  QLabel* lbRunMore_;
  QTreeView* lvRun_;
  QPlainTextEdit* mRunDetails_;
};

}  // namespace velmora

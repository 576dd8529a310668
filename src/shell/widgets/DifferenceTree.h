// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QTreeView>
#include <QWidget>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "app/DifferenceList.h"
#include "shell/widgets/DifferenceModel.h"

namespace velmora {

// The lines of the tree: Space ticks or unticks all that are selected, Delete and Enter are told.
class TDifferenceView final : public QTreeView {
 public:
  explicit TDifferenceView(QWidget* parent = nullptr);

  std::function<void()> OnSpaceKey;
  std::function<void()> OnDeleteKey;
  std::function<void()> OnEnter;  // or a double click on an action

  void SetHint(const QString& hint);  // what an empty tree says

 protected:
  void keyPressEvent(QKeyEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  void paintEvent(QPaintEvent* event) override;

 private:
  void Enter(const QModelIndex& line);  // folds and unfolds a group
  bool OnBox(const QModelIndex& line, const QPoint& place) const;

  QString hint_;
};

// The differences to work in: counts, a filter, how they are grouped and sorted, and a tree whose lines are ticked.
// What is ticked or deleted is decided by whoever has set the handlers; `Reload` or `Refresh` shows it.
class TDifferenceTree final : public QWidget {
 public:
  explicit TDifferenceTree(QWidget* parent = nullptr);

  std::function<void(const std::vector<std::size_t>& places, bool on)> OnTick;
  std::function<void()> OnCurrent;  // another line is the current one
  std::function<void()> OnDelete;   // of what is selected
  std::function<void()> OnFollow;   // the current action's statement is asked for

  void Show(TDifferenceList* list);  // not owned, null for none
  void Reload();                     // other differences are shown than before; what was current stays that
  void Refresh();                    // other ones are ticked
  void SetHint(const QString& hint) { view_->SetHint(hint); }
  void Arrange(bool by_kind, bool by_running);  // else by table, by name
  bool ByKind() const { return cGrouping_->currentIndex() == 1; }
  bool ByRunning() const { return cSorting_->currentIndex() == 1; }

  TDifferenceView& View() { return *view_; }
  std::vector<std::size_t> Selected() const;   // places; those of a selected group are all that it shows
  std::optional<std::size_t> Current() const;  // of an action
  std::string CurrentTable() const;            // empty where the current line is about several or none
  bool Step(bool forward);                     // to the next action that is shown; false at the end
  void Select(const std::vector<std::size_t>& places);
  void SelectFirst();
  std::optional<std::size_t> AfterSelected() const;  // what is current once the selected ones are gone
  void FocusFilter();
  void ClearFilter() { edFilter_->clear(); }

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void ConnectView();
  void Arrange();
  void ShowCounts();
  void Unfold();
  void TickSelected();
  QModelIndex NextLine(const QModelIndex& from, bool forward) const;
  QString GroupName(const QModelIndex& line) const;

  TDifferenceList* list_ = nullptr;
  TDifferenceModel* model_;
  TDifferenceView* view_;
  QLabel* lbCounts_;
  QLabel* lbTicked_;  // below the tree, which must not move under the mouse when something is ticked
  QLineEdit* edFilter_;
  QComboBox* cGrouping_;
  QComboBox* cSorting_;
  std::set<QString> folded_;  // groups that the user has closed
  bool reloading_ = false;
};

}  // namespace velmora

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QCheckBox>
#include <QLabel>
#include <QScrollBar>
#include <QWidget>
#include <array>
#include <string>

#include "app/AlignedTexts.h"
#include "shell/widgets/DiffPanel.h"

namespace velmora {

// Two creation texts side by side: reference and target, with a heading over each, one pair of scroll bars for both,
// and below them where one goes from difference to difference and folds what is equal.
class TDiffView final : public QWidget {
 public:
  explicit TDiffView(QWidget* parent = nullptr);

  void Show(const std::string& reference, const std::string& target, TAlignedRows rows);  // from the first difference
  void Clear() { Show({}, {}, {}); }
  void GoToPlace(int step);                // 1 for the next one, -1 for the one before; after the last comes the first
  void GoToItem(const std::string& item);  // an element that differs, "options", "partitioning", if it is there

  QLabel& Heading(ESide side) { return *headings_[side]; }
  TDiffPanel& Panel(ESide side) { return *panels_[side]; }

 private:
  void MakePanels();
  QWidget* MakeBar();
  void ConnectPanel(ESide side);
  void ConnectBars();

  void Fold();
  void Unfold(std::size_t row);
  void Arrange();
  void ScrollTo(int line);
  void ScrollToLetters(std::size_t row);
  void FollowVertical(int line);
  void FollowHorizontal(int place);
  void ShareRanges();
  void ShareWidth();
  void ShareZoom(ESide side);
  void CaretMoved(ESide side);
  void ShowPlace(const TRowStretch& place);
  void TellPlaces();
  std::size_t LineOf(std::size_t row) const;  // of the model
  QString NoteOf(const TDiffLine& line) const;
  QString Summary() const;

  TDiffModel model_;
  std::vector<TRowStretch> stretches_;  // of all rows
  std::vector<TRowStretch> places_;     // where rows differ
  bool following_ = false;              // one part scrolls because another one did

  std::array<QLabel*, 2> headings_{};
  std::array<TDiffPanel*, 2> panels_{};
  QScrollBar* vertical_;
  QScrollBar* horizontal_;
  QLabel* lbPlaces_;
  QLabel* lbNote_;
  QCheckBox* cbOnlyDifferences_;
};

}  // namespace velmora

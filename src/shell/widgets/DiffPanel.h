// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "app/FoldedRows.h"
#include "shell/widgets/SqlColours.h"
#include "shell/widgets/SqlEdit.h"

namespace velmora {

// One line of both panels: a row, or what stands in place of `folded` rows from there.
struct TDiffLine {
  std::size_t row = 0;
  std::size_t folded = 0;
};

// What both panels of a diff show.
struct TDiffModel {
  TAlignedRows rows;
  std::vector<TDiffLine> lines;
  std::optional<TRowStretch> place;  // that one has gone to, in rows
};

// One of two texts side by side, to be read. It holds the text and nothing else: lines that stand for nothing are
// painted between its own, so whatever is found, selected or copied is the text. Folded lines are copied too.
class TDiffPanel final : public TSqlEdit {
 public:
  TDiffPanel(ESide side, const TDiffModel& model);  // which outlives the panel

  std::function<QString(std::size_t line)> NoteOf;  // what to know of a line of the model
  std::function<void(std::size_t line)> OnFoldClick;

  void SetText(const std::string& text);  // that of the model's rows, with marks
  void Arrange();                         // by the model's lines

  int TopLine() const;  // of the model, in view
  int LineHeight() const;
  std::optional<int> LettersAt(
      std::size_t row) const;  // how far right the first letters are that count, with all scrolled left
  long TextWidth() const;      // of the longest line, with some room
  std::size_t CaretRow() const;
  std::size_t RowWithLine(std::size_t row) const;  // that one, or the nearest above that has a line of this text
  void SetCaretRow(std::size_t row);

 protected:
  bool viewportEvent(QEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void paintEvent(QPaintEvent* event) override;
  void ColoursChanged(const TSqlColours& colours) override;

 private:
  const TAlignedSide& SideOf(std::size_t row) const { return model_.rows[row].sides[side_]; }
  void MarkRow(std::size_t row);
  void MarkLetters(int indicator, std::size_t line, const std::vector<TLetters>& letters);
  void HideFolded(const TDiffLine& shown);
  void PutBelow(std::size_t line, std::size_t count);
  std::optional<std::size_t> LineAt(int y) const;
  void PaintLine(QPainter& painter, const TDiffLine& shown, const QRect& place) const;
  void PaintSign(QPainter& painter, const TAlignedRow& row, const QRect& place) const;
  void PaintPlace(QPainter& painter) const;

  ESide side_;
  const TDiffModel& model_;
  std::vector<std::size_t> row_of_line_;
  TSqlColours colours_;
};

}  // namespace velmora

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <Qsci/qsciscintilla.h>

#include <string>

namespace velmora {

struct TSqlColours;

// An SQL editor: MySQL highlighting, line numbers, the current line, matching brackets, line marks. Its text is bytes:
// what is loaded comes back unchanged even where it is no UTF-8. Colours follow the palette, light or dark.
class TSqlEdit : public QsciScintilla {
 public:
  explicit TSqlEdit(QWidget* parent = nullptr);

  std::string Bytes() const;
  void SetBytes(const std::string& text);     // forgets what could be undone; the caret goes to the start
  void AppendBytes(const std::string& text);  // at the end, wherever the caret is
  std::string LineBytes(int line) const;      // without its end
  void SetTextFont(const QFont& font);
  QFont TextFont() const { return font_; }
  void DetachParser();  // no highlighting from here on

  void SetCaret(int line, int byte);  // both from 0, the byte within the line; nothing is selected afterwards
  void MarkLine(int line);
  void ClearMarks();
  bool IsMarked(int line) const;

 protected:
  void changeEvent(QEvent* event) override;
  virtual void ColoursChanged(const TSqlColours& /*colours*/) {}  // those that it is painted with from here on

 private:
  void ApplyColours();
  void FitLineNumbers();

  QFont font_;
  bool applying_ = false;
  qsizetype digits_ = 0;  // that the margin of line numbers has room for
};

}  // namespace velmora

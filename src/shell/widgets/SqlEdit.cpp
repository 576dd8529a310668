// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/widgets/SqlEdit.h"

#include <Qsci/qscilexersql.h>

#include <QEvent>
#include <QFontDatabase>
#include <utility>

#include "shell/widgets/SqlColours.h"

namespace velmora {

namespace {

constexpr int kNumberMargin = 0;
constexpr int kMarkMargin = 1;
constexpr int kMarkMarginWidth = 16;
constexpr int kArrowMark = 0;
constexpr int kLineMark = 1;
constexpr unsigned kBothMarks = (1U << kArrowMark) | (1U << kLineMark);

}  // namespace

TSqlEdit::TSqlEdit(QWidget* parent)
    : QsciScintilla(parent), font_(QFontDatabase::systemFont(QFontDatabase::FixedFont)) {
  setUtf8(true);
  setEolMode(EolWindows);
  setTabWidth(2);
  setIndentationsUseTabs(false);
  setBraceMatching(SloppyBraceMatch);
  setCaretLineVisible(true);
  setMarginType(kNumberMargin, NumberMargin);
  setMarginType(kMarkMargin, SymbolMargin);
  setMarginMarkerMask(kMarkMargin, 1 << kArrowMark);
  setMarginWidth(kMarkMargin, kMarkMarginWidth);
  setMarginWidth(2, 0);
  markerDefine(RightArrow, kArrowMark);
  markerDefine(Background, kLineMark);
  SendScintilla(SCI_SETSCROLLWIDTHTRACKING, 1UL);
  SendScintilla(SCI_SETSCROLLWIDTH, 1UL);
  setLexer(MakeSqlLexer(this));
  connect(this, &QsciScintilla::linesChanged, this, [this] { FitLineNumbers(); });
  ApplyColours();
}

std::string TSqlEdit::Bytes() const {
  const auto length = static_cast<unsigned long>(SendScintilla(SCI_GETLENGTH));
  std::string text(length + 1, '\0');
  SendScintilla(SCI_GETTEXT, length + 1, static_cast<void*>(text.data()));
  text.resize(length);
  return text;
}

void TSqlEdit::SetBytes(const std::string& text) {
  SendScintilla(SCI_CLEARALL);
  SendScintilla(SCI_ADDTEXT, static_cast<unsigned long>(text.size()), text.data());
  SendScintilla(SCI_EMPTYUNDOBUFFER);
  SendScintilla(SCI_GOTOPOS, 0UL);
  FitLineNumbers();
}

void TSqlEdit::AppendBytes(const std::string& text) {
  SendScintilla(SCI_APPENDTEXT, static_cast<unsigned long>(text.size()), text.data());
}

std::string TSqlEdit::LineBytes(int line) const {
  const auto number = static_cast<unsigned long>(line);
  std::string text(static_cast<std::size_t>(SendScintilla(SCI_LINELENGTH, number)), '\0');
  SendScintilla(SCI_GETLINE, number, static_cast<void*>(text.data()));
  while (!text.empty() && (text.back() == '\n' || text.back() == '\r')) text.pop_back();
  return text;
}

void TSqlEdit::SetTextFont(const QFont& font) {
  font_ = font;
  ApplyColours();
}

void TSqlEdit::DetachParser() { setLexer(nullptr); }

void TSqlEdit::SetCaret(int line, int byte) {
  const long start = SendScintilla(SCI_POSITIONFROMLINE, static_cast<unsigned long>(line));
  const long end = SendScintilla(SCI_GETLINEENDPOSITION, static_cast<unsigned long>(line));
  SendScintilla(SCI_GOTOPOS, static_cast<unsigned long>(std::min(start + byte, end)));
}

void TSqlEdit::MarkLine(int line) {
  if (IsMarked(line)) return;
  markerAdd(line, kArrowMark);
  markerAdd(line, kLineMark);
}

void TSqlEdit::ClearMarks() {
  markerDeleteAll(kArrowMark);
  markerDeleteAll(kLineMark);
}

bool TSqlEdit::IsMarked(int line) const { return (markersAtLine(line) & kBothMarks) != 0; }

void TSqlEdit::changeEvent(QEvent* event) {
  QsciScintilla::changeEvent(event);
  if (event->type() == QEvent::PaletteChange && !applying_) ApplyColours();
}

void TSqlEdit::ApplyColours() {
  applying_ = true;
  const TSqlColours colours = SqlColours(palette());
  if (QsciLexer* lexer = this->lexer()) ColourLexer(*lexer, colours, font_);
  setFont(font_);
  setColor(colours.text);
  setPaper(colours.paper);
  setCaretForegroundColor(colours.text);
  setCaretLineBackgroundColor(colours.current_line);  // lets the colour of a mark through
  setMarginsFont(font_);
  setMarginsForegroundColor(colours.margin_text);
  setMarginsBackgroundColor(colours.margin);
  setMatchedBraceForegroundColor(colours.keyword);
  setMatchedBraceBackgroundColor(colours.brace);
  setMarkerForegroundColor(colours.fault, kArrowMark);
  setMarkerBackgroundColor(colours.fault, kArrowMark);
  setMarkerBackgroundColor(colours.fault_line, kLineMark);
  ColoursChanged(colours);
  applying_ = false;
  digits_ = 0;
  FitLineNumbers();
}

// Measuring text is slow, so it is done when there is one digit more or less.
void TSqlEdit::FitLineNumbers() {
  const qsizetype digits = QString::number(lines()).size();
  if (std::exchange(digits_, digits) == digits) return;
  setMarginWidth(kNumberMargin, QString(digits + 1, QLatin1Char('9')));
}

}  // namespace velmora

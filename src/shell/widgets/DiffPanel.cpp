// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/widgets/DiffPanel.h"

#include <QHelpEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QToolTip>
#include <algorithm>

#include "shell/widgets/QtText.h"
#include "shell/widgets/Text.h"

namespace velmora {

namespace {

constexpr int kSignMargin = 1;
constexpr int kCountingLetters = 8;  // indicators
constexpr int kIgnoredLetters = 9;
constexpr long kOpaque = 255;

// How a row is marked: the colour of its line, and a sign for those who cannot tell the colours.
struct TRowMark {
  EAlignedRow kind;
  bool moved;
  int marker;
  const char* sign;
  QColor TSqlColours::*colour;
};
constexpr TRowMark kRowMarks[] = {
    {EAlignedRow::Changed, false, 3, "\u2260", &TSqlColours::difference_line},
    {EAlignedRow::OnlyLeft, false, 4, "+", &TSqlColours::new_line},
    {EAlignedRow::OnlyRight, false, 5, "\u2212", &TSqlColours::obsolete_line},
    {EAlignedRow::OnlyLeft, true, 6, "\u2195", &TSqlColours::difference_line},
    {EAlignedRow::OnlyRight, true, 6, "\u2195", &TSqlColours::difference_line},
};

const TRowMark* MarkOf(const TAlignedRow& row) {
  const auto found = std::ranges::find_if(
      kRowMarks, [&row](const TRowMark& mark) { return mark.kind == row.kind && mark.moved == row.moved; });
  return found == std::end(kRowMarks) ? nullptr : found;
}

}  // namespace

TDiffPanel::TDiffPanel(ESide side, const TDiffModel& model)
    : side_(side), model_(model), colours_(SqlColours(palette())) {
  for (const TRowMark& mark : kRowMarks) markerDefine(Background, mark.marker);
  indicatorDefine(FullBoxIndicator, kCountingLetters);
  indicatorDefine(TextColorIndicator, kIgnoredLetters);
  setIndicatorDrawUnder(true, kCountingLetters);
  SendScintilla(SCI_ANNOTATIONSETVISIBLE, static_cast<int>(ANNOTATION_STANDARD));
  setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Ignored);
  setMinimumSize(1, 1);
  setReadOnly(true);
  // Measuring what is painted would measure all the room below a line, for each of its lines.
  SendScintilla(SCI_SETSCROLLWIDTHTRACKING, 0UL);
  TDiffPanel::ColoursChanged(colours_);
}

void TDiffPanel::SetText(const std::string& text) {
  setReadOnly(false);
  SetBytes(text);
  setReadOnly(true);
  row_of_line_.assign(static_cast<std::size_t>(lines()), 0);
  for (std::size_t row = 0; row < model_.rows.size(); ++row)
    if (SideOf(row).line) MarkRow(row);
}

void TDiffPanel::MarkRow(std::size_t row) {
  const TAlignedSide& side = SideOf(row);
  row_of_line_[*side.line] = row;
  if (const TRowMark* mark = MarkOf(model_.rows[row])) markerAdd(static_cast<int>(*side.line), mark->marker);
  MarkLetters(kCountingLetters, *side.line, side.counts);
  MarkLetters(kIgnoredLetters, *side.line, side.ignored);
}

void TDiffPanel::MarkLetters(int indicator, std::size_t line, const std::vector<TLetters>& letters) {
  if (letters.empty()) return;
  const auto start = static_cast<std::size_t>(SendScintilla(SCI_POSITIONFROMLINE, line));
  SendScintilla(SCI_SETINDICATORCURRENT, indicator);
  for (const TLetters& part : letters)
    SendScintilla(SCI_INDICATORFILLRANGE, start + part.first, static_cast<long>(part.last - part.first));
}

// What has no line of this text becomes room below the line before it. Of an empty text the editor shows one line.
void TDiffPanel::Arrange() {
  SendScintilla(SCI_ANNOTATIONCLEARALL);
  SendScintilla(SCI_SHOWLINES, 0UL, static_cast<long>(lines() - 1));
  std::size_t line = 0;
  std::size_t below = 0;
  bool begun = false;
  for (const TDiffLine& shown : model_.lines) {
    if (shown.folded > 0) HideFolded(shown);
    const bool has_line = shown.folded == 0 && SideOf(shown.row).line;
    if (!has_line && begun) ++below;
    begun = true;
    if (!has_line) continue;
    PutBelow(line, below);
    below = 0;
    line = *SideOf(shown.row).line;
  }
  PutBelow(line, below);
  viewport()->update();
}

void TDiffPanel::HideFolded(const TDiffLine& shown) {
  std::optional<std::size_t> first;
  std::size_t last = 0;
  for (std::size_t row = shown.row; row < shown.row + shown.folded; ++row) {
    if (!SideOf(row).line) continue;
    last = *SideOf(row).line;
    if (!first) first = last;
  }
  if (first) SendScintilla(SCI_HIDELINES, *first, static_cast<long>(last));
}

void TDiffPanel::PutBelow(std::size_t line, std::size_t count) {
  if (count == 0) return;
  std::string room = " ";
  for (std::size_t i = 1; i < count; ++i) room += "\n ";
  SendScintilla(SCI_ANNOTATIONSETTEXT, line, room.c_str());
}

// --- Places

int TDiffPanel::TopLine() const { return static_cast<int>(SendScintilla(SCI_GETFIRSTVISIBLELINE)); }

int TDiffPanel::LineHeight() const { return static_cast<int>(SendScintilla(SCI_TEXTHEIGHT, 0UL)); }

std::optional<int> TDiffPanel::LettersAt(std::size_t row) const {
  const TAlignedSide& side = SideOf(row);
  if (!side.line || side.counts.empty()) return std::nullopt;
  const long start = SendScintilla(SCI_POSITIONFROMLINE, *side.line);
  const auto end = start + static_cast<long>(side.counts.front().last);
  return static_cast<int>(SendScintilla(SCI_POINTXFROMPOSITION, 0UL, end) + SendScintilla(SCI_GETXOFFSET));
}

long TDiffPanel::TextWidth() const {
  int longest = 0;
  for (int line = 1; line < lines(); ++line)
    if (SendScintilla(SCI_LINELENGTH, line) > SendScintilla(SCI_LINELENGTH, longest)) longest = line;
  const std::string text = LineBytes(longest) + "  ";
  return SendScintilla(SCI_TEXTWIDTH, static_cast<unsigned long>(STYLE_DEFAULT), text.c_str());
}

std::optional<std::size_t> TDiffPanel::LineAt(int y) const {
  if (y < 0) return std::nullopt;
  const auto line = static_cast<std::size_t>(TopLine() + y / std::max(1, LineHeight()));
  return line < model_.lines.size() ? std::optional(line) : std::nullopt;
}

std::size_t TDiffPanel::CaretRow() const {
  int line = 0;
  int index = 0;
  getCursorPosition(&line, &index);
  const auto place = static_cast<std::size_t>(line);
  return place < row_of_line_.size() ? row_of_line_[place] : 0;
}

std::size_t TDiffPanel::RowWithLine(std::size_t row) const {
  while (row > 0 && !SideOf(row).line) --row;
  return row;
}

void TDiffPanel::SetCaretRow(std::size_t row) {
  SetCaret(static_cast<int>(SideOf(RowWithLine(row)).line.value_or(0)), 0);
}

// --- Events

bool TDiffPanel::viewportEvent(QEvent* event) {
  if (event->type() != QEvent::ToolTip) return TSqlEdit::viewportEvent(event);
  const auto* help = dynamic_cast<QHelpEvent*>(event);
  const std::optional<std::size_t> line = LineAt(help->y());
  const QString note = line && NoteOf ? NoteOf(*line) : QString();
  QToolTip::showText(help->globalPos(), note, this);
  return true;
}

void TDiffPanel::mouseReleaseEvent(QMouseEvent* event) {
  TSqlEdit::mouseReleaseEvent(event);
  const std::optional<std::size_t> line = LineAt(static_cast<int>(event->position().y()));
  if (event->button() == Qt::LeftButton && line && model_.lines[*line].folded > 0 && !hasSelectedText() && OnFoldClick)
    OnFoldClick(*line);
}

void TDiffPanel::ColoursChanged(const TSqlColours& colours) {
  colours_ = colours;
  for (const TRowMark& mark : kRowMarks) setMarkerBackgroundColor(colours.*mark.colour, mark.marker);
  setIndicatorForegroundColor(colours.difference_letters, kCountingLetters);
  setIndicatorForegroundColor(colours.margin_text, kIgnoredLetters);
  for (const unsigned message : {SCI_INDICSETALPHA, SCI_INDICSETOUTLINEALPHA})
    SendScintilla(message, static_cast<unsigned long>(kCountingLetters), kOpaque);
}

void TDiffPanel::paintEvent(QPaintEvent* event) {
  TSqlEdit::paintEvent(event);
  QPainter painter(viewport());
  const int height = std::max(1, LineHeight());
  const int top = TopLine();
  const int last = std::min(static_cast<int>(model_.lines.size()), top + viewport()->height() / height + 1);
  for (int line = top; line < last; ++line)
    PaintLine(painter, model_.lines[static_cast<std::size_t>(line)],
              QRect(0, (line - top) * height, viewport()->width(), height));
  PaintPlace(painter);
}

void TDiffPanel::PaintLine(QPainter& painter, const TDiffLine& shown, const QRect& place) const {
  if (shown.folded == 0 && SideOf(shown.row).line) return PaintSign(painter, model_.rows[shown.row], place);
  painter.fillRect(place, shown.folded == 0 ? colours_.paper : colours_.fold);
  if (shown.folded == 0) return painter.fillRect(place, QBrush(colours_.gap, Qt::BDiagPattern));
  painter.setPen(colours_.margin_text);
  painter.setFont(TextFont());
  painter.drawText(place, Qt::AlignCenter,
                   QStringLiteral("\u22EF %1 \u22EF").arg(TText::Counted("%n equal line(s)", nullptr, shown.folded)));
}

void TDiffPanel::PaintSign(QPainter& painter, const TAlignedRow& row, const QRect& place) const {
  const TRowMark* mark = MarkOf(row);
  if (mark == nullptr) return;
  painter.setPen(colours_.text);
  painter.setFont(TextFont());
  painter.drawText(QRect(marginWidth(0), place.y(), marginWidth(kSignMargin), place.height()), Qt::AlignCenter,
                   QString::fromUtf8(mark->sign));
}

// A line above and one below the place that one has gone to.
void TDiffPanel::PaintPlace(QPainter& painter) const {
  if (!model_.place) return;
  const auto y = [this](std::size_t row) {
    const auto line = std::ranges::lower_bound(model_.lines, row, {}, &TDiffLine::row) - model_.lines.begin();
    return (static_cast<int>(line) - TopLine()) * LineHeight();
  };
  painter.setPen(colours_.keyword);
  for (const int edge : {y(model_.place->first), y(model_.place->last) - 1}) painter.drawLine(0, edge, width(), edge);
}

}  // namespace velmora

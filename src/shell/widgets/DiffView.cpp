// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/widgets/DiffView.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QToolButton>
#include <algorithm>
#include <utility>

#include "shell/widgets/Headings.h"
#include "shell/widgets/Icons.h"
#include "shell/widgets/QtText.h"
#include "shell/widgets/Text.h"
#include "shell/widgets/TopLevel.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr ESide kSides[] = {kLeft, kRight};
constexpr std::size_t kContext = 3;  // rows on either side of a difference that stay

struct TKindWords {
  EAlignedRow kind;
  TText note;                           // of one row
  QString (*count)(std::size_t count);  // of all
};
constexpr TKindWords kKindWords[] = {
    {EAlignedRow::Changed, TText::Later("Changed."),
     [](std::size_t count) { return TText::Counted("%n line(s) changed", nullptr, count); }},
    {EAlignedRow::OnlyLeft, TText::Later("Only in the reference."),
     [](std::size_t count) { return TText::Counted("%n line(s) only in the reference", nullptr, count); }},
    {EAlignedRow::OnlyRight, TText::Later("Only in the target."),
     [](std::size_t count) { return TText::Counted("%n line(s) only in the target", nullptr, count); }}};

ESide OtherOf(ESide side) { return side == kLeft ? kRight : kLeft; }

QToolButton* StepButton(const char* name, const char* icon, const QString& tip) {
  auto* button = Named(new QToolButton, name);
  button->setIcon(Icon(QLatin1String(icon)));
  button->setToolTip(tip);
  button->setAccessibleName(tip);
  button->setAutoRaise(true);
  button->setFocusPolicy(Qt::TabFocus);
  return button;
}

}  // namespace

TDiffView::TDiffView(QWidget* parent)
    : QWidget(parent),
      vertical_(Named(new QScrollBar(Qt::Vertical), "sbDiffVertical")),
      horizontal_(Named(new QScrollBar(Qt::Horizontal), "sbDiffHorizontal")),
      lbPlaces_(Named(new QLabel, "lbPlaces")),
      lbNote_(Named(new QLabel, "lbDiffNote")),
      cbOnlyDifferences_(Named(new QCheckBox(TText::tr("Only &differences")), "cbOnlyDifferences")) {
  setObjectName(QStringLiteral("diffView"));
  MakePanels();
  auto* grid = new QGridLayout(this);
  grid->setContentsMargins(0, 0, 0, 0);
  grid->setSpacing(2);
  for (const ESide side : kSides) {
    grid->addWidget(headings_[side], 0, side);
    grid->addWidget(panels_[side], 1, side);
    grid->setColumnStretch(side, 1);
  }
  grid->addWidget(vertical_, 1, 2);
  grid->addWidget(horizontal_, 2, 0, 1, 2);
  grid->addWidget(MakeBar(), 3, 0, 1, 3);
  grid->setRowStretch(1, 1);
  for (const ESide side : kSides) ConnectPanel(side);
  ConnectBars();
}

void TDiffView::MakePanels() {
  panels_ = {Named(new TDiffPanel(kLeft, model_), "mDiffRef"), Named(new TDiffPanel(kRight, model_), "mDiffTgt")};
  headings_ = {NewHeading("pnDiffRefH", Fixed(" &Reference: "), panels_[kLeft]),
               NewHeading("pnDiffTgtH", Fixed(" Tar&get: "), panels_[kRight])};
  panels_[kLeft]->setAccessibleName(TText::tr("Creation text of the reference"));
  panels_[kRight]->setAccessibleName(TText::tr("Creation text of the target"));
  vertical_->setAccessibleName(TText::tr("Both texts, up and down"));
  horizontal_->setAccessibleName(TText::tr("Both texts, left and right"));
}

QWidget* TDiffView::MakeBar() {
  auto* bar = new QWidget;
  QToolButton* previous =
      StepButton("bnPreviousPlace", "find-previous", TText::tr("Previous place that differs (Shift+F7)"));
  QToolButton* next = StepButton("bnNextPlace", "find-next", TText::tr("Next place that differs (F7)"));
  lbNote_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
  lbNote_->setTextFormat(Qt::PlainText);
  cbOnlyDifferences_->setToolTip(TText::tr("Fold the lines that are equal"));
  auto* row = new QHBoxLayout(bar);
  row->setContentsMargins(2, 0, 2, 0);
  row->addWidget(previous);
  row->addWidget(next);
  row->addWidget(lbPlaces_);
  row->addWidget(lbNote_, 1);
  row->addWidget(cbOnlyDifferences_);
  Handle(previous, &QToolButton::clicked, this, [this] { GoToPlace(-1); });
  Handle(next, &QToolButton::clicked, this, [this] { GoToPlace(1); });
  Handle(cbOnlyDifferences_, &QCheckBox::toggled, this, [this] {
    Fold();
    Arrange();
    ScrollTo(model_.place ? static_cast<int>(LineOf(model_.place->first)) : 0);
  });
  return bar;
}

void TDiffView::ConnectPanel(ESide side) {
  TDiffPanel* panel = panels_[side];
  panel->NoteOf = [this](std::size_t line) { return NoteOf(model_.lines[line]); };
  panel->OnFoldClick = [this](std::size_t line) { Unfold(model_.lines[line].row); };
  connect(panel->verticalScrollBar(), &QScrollBar::valueChanged, this, [this](int value) { FollowVertical(value); });
  connect(panel->horizontalScrollBar(), &QScrollBar::valueChanged, this,
          [this](int value) { FollowHorizontal(value); });
  for (QScrollBar* bar : {panel->verticalScrollBar(), panel->horizontalScrollBar()})
    connect(bar, &QScrollBar::rangeChanged, this, [this] { ShareRanges(); });
  connect(panel, &QsciScintillaBase::SCN_ZOOM, this, [this, side] { ShareZoom(side); });
  // The editor says so while it is painted.
  connect(
      panel, &QsciScintilla::cursorPositionChanged, this, [this, side] { CaretMoved(side); }, Qt::QueuedConnection);
}

void TDiffView::ConnectBars() {
  connect(vertical_, &QScrollBar::valueChanged, this, [this](int value) { FollowVertical(value); });
  connect(horizontal_, &QScrollBar::valueChanged, this, [this](int value) { FollowHorizontal(value); });
}

// --- What is shown

void TDiffView::Show(const std::string& reference, const std::string& target, TAlignedRows rows) {
  model_ = {std::move(rows), {}, std::nullopt};
  places_ = DifferingStretches(model_.rows);
  panels_[kLeft]->SetText(reference);
  panels_[kRight]->SetText(target);
  ShareWidth();
  Fold();
  Arrange();
  ScrollTo(places_.empty() ? 0 : static_cast<int>(LineOf(places_.front().first)));
  for (TDiffPanel* panel : panels_) panel->setAccessibleDescription(Summary());
  TellPlaces();
}

void TDiffView::Fold() {
  if (cbOnlyDifferences_->isChecked())
    stretches_ = FoldEqualRows(model_.rows, kContext);
  else
    stretches_ = {{0, model_.rows.size()}};
}

void TDiffView::Unfold(std::size_t row) {
  for (TRowStretch& stretch : stretches_)
    if (row >= stretch.first && row < stretch.last) stretch.folded = false;
  Arrange();
}

void TDiffView::Arrange() {
  model_.lines.clear();
  for (const TRowStretch& stretch : stretches_) {
    if (stretch.folded) model_.lines.push_back({stretch.first, stretch.last - stretch.first});
    for (std::size_t row = stretch.first; row < stretch.last && !stretch.folded; ++row) model_.lines.push_back({row});
  }
  for (TDiffPanel* panel : panels_) panel->Arrange();
  ShareRanges();
}

std::size_t TDiffView::LineOf(std::size_t row) const {
  const auto after = std::ranges::upper_bound(model_.lines, row, {}, &TDiffLine::row);
  return static_cast<std::size_t>(std::max<std::ptrdiff_t>(0, after - model_.lines.begin() - 1));
}

// --- Scrolling

// With a third of the panel above it, where it is not in view.
void TDiffView::ScrollTo(int line) {
  const int page = std::max(1, vertical_->pageStep());
  const int top = panels_[kLeft]->TopLine();
  if (line < top || line >= top + page) FollowVertical(std::max(0, line - page / 3));
}

void TDiffView::FollowVertical(int line) {
  if (std::exchange(following_, true)) return;
  for (TDiffPanel* panel : panels_) panel->verticalScrollBar()->setValue(line);
  vertical_->setValue(line);
  following_ = false;
}

void TDiffView::FollowHorizontal(int place) {
  if (std::exchange(following_, true)) return;
  for (TDiffPanel* panel : panels_) panel->horizontalScrollBar()->setValue(place);
  horizontal_->setValue(place);
  following_ = false;
}

void TDiffView::ShareWidth() {
  const long width = std::max(panels_[kLeft]->TextWidth(), panels_[kRight]->TextWidth());
  for (TDiffPanel* panel : panels_)
    panel->SendScintilla(QsciScintilla::SCI_SETSCROLLWIDTH, static_cast<unsigned long>(width));
}

// Both panels have as many lines, and are as wide.
void TDiffView::ShareRanges() {
  if (std::exchange(following_, true)) return;
  const auto share = [](QScrollBar& bar, const QScrollBar& left, const QScrollBar& right) {
    bar.setRange(0, std::max(left.maximum(), right.maximum()));
    bar.setPageStep(left.pageStep());
    bar.setSingleStep(left.singleStep());
  };
  share(*vertical_, *panels_[kLeft]->verticalScrollBar(), *panels_[kRight]->verticalScrollBar());
  share(*horizontal_, *panels_[kLeft]->horizontalScrollBar(), *panels_[kRight]->horizontalScrollBar());
  following_ = false;
}

void TDiffView::ShareZoom(ESide side) {
  const auto zoom = static_cast<int>(panels_[side]->SendScintilla(QsciScintilla::SCI_GETZOOM));
  TDiffPanel* other = panels_[OtherOf(side)];
  if (static_cast<int>(other->SendScintilla(QsciScintilla::SCI_GETZOOM)) != zoom) other->zoomTo(zoom);
  ShareWidth();
}

// --- Places

void TDiffView::GoToPlace(int step) {
  if (places_.empty()) return;
  const TDiffPanel& panel = *panels_[panels_[kRight]->hasFocus() ? kRight : kLeft];
  const bool there = model_.place && panel.CaretRow() == panel.RowWithLine(model_.place->first);
  const std::size_t row = there ? model_.place->first : panel.CaretRow();
  const auto from = std::ranges::lower_bound(places_, row, {}, &TRowStretch::first);
  const auto after = std::ranges::lower_bound(places_, there ? row + 1 : row, {}, &TRowStretch::first);
  if (step < 0)
    ShowPlace(from == places_.begin() ? places_.back() : *(from - 1));
  else
    ShowPlace(after == places_.end() ? places_.front() : *after);
}

void TDiffView::GoToItem(const std::string& item) {
  const auto holds = [&item](const TAlignedRow& row) { return Differs(row) && SameText(row.item, item); };
  const auto first = std::ranges::find_if(model_.rows, holds);
  if (item.empty() || first == model_.rows.end()) return;
  const auto last = std::find_if_not(first, model_.rows.end(), holds);
  const auto place = [this](auto row) { return static_cast<std::size_t>(row - model_.rows.begin()); };
  ShowPlace({place(first), place(last)});
}

void TDiffView::ShowPlace(const TRowStretch& place) {
  model_.place = place;
  for (TDiffPanel* panel : panels_) {
    panel->SetCaretRow(model_.place->first);
    panel->viewport()->update();
  }
  ScrollTo(static_cast<int>(LineOf(model_.place->first)));
  ScrollToLetters(model_.place->first);
  TellPlaces();
}

// As far to the right as it takes to see the first letters that differ.
void TDiffView::ScrollToLetters(std::size_t row) {
  int offset = 0;
  for (const TDiffPanel* panel : panels_) {
    const int width = panel->viewport()->width();
    const int letters = panel->LettersAt(row).value_or(0);
    if (letters > width) offset = std::max(offset, letters - width * 3 / 4);
  }
  FollowHorizontal(offset);
}

// What is found in folded lines is shown with all that is folded there.
void TDiffView::CaretMoved(ESide side) {
  const std::size_t row = panels_[side]->CaretRow();
  const bool folded = std::ranges::any_of(stretches_, [row](const TRowStretch& stretch) {
    return stretch.folded && row >= stretch.first && row < stretch.last;
  });
  if (folded) Unfold(row);
  if (row < model_.rows.size()) lbNote_->setText(NoteOf({row}).replace(QLatin1Char('\n'), QLatin1Char(' ')));
}

void TDiffView::TellPlaces() {
  QString text = places_.empty() ? QString() : TText::Counted("%n place(s)", nullptr, places_.size());
  if (model_.rows.empty() || !places_.empty()) lbNote_->clear();
  if (!model_.rows.empty() && places_.empty()) text = TText::tr("Nothing differs.");
  if (model_.place) {
    const auto after = std::ranges::upper_bound(places_, model_.place->first, {}, &TRowStretch::first);
    text = TText::tr("Place %1 of %2").arg(after - places_.begin()).arg(places_.size());
  }
  lbPlaces_->setText(text);
  lbPlaces_->setToolTip(Summary());
}

// --- Words

QString TDiffView::NoteOf(const TDiffLine& line) const {
  if (line.folded > 0)
    return TText::Counted("%n equal line(s) folded: click to show what is here.", nullptr, line.folded);
  const TAlignedRow& row = model_.rows[line.row];
  if (!row.moved)
    for (const TKindWords& words : kKindWords)
      if (words.kind == row.kind)
        return words.note + (row.note.empty() ? QString() : QLatin1Char('\n') + ToQt(row.note));
  return ToQt(row.note);
}

QString TDiffView::Summary() const {
  QStringList counts;
  for (const TKindWords& words : kKindWords) {
    const auto count = std::ranges::count(model_.rows, words.kind, &TAlignedRow::kind);
    if (count > 0) counts << words.count(static_cast<std::size_t>(count));
  }
  return counts.join(QLatin1String(", "));
}

}  // namespace velmora

// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/widgets/DifferenceTree.h"

#include <QHeaderView>
#include <QKeyEvent>
#include <QPainter>
#include <QVBoxLayout>
#include <algorithm>

#include "shell/widgets/DifferenceLines.h"
#include "shell/widgets/Named.h"
#include "shell/widgets/QtText.h"
#include "shell/widgets/Text.h"
#include "shell/widgets/TopLevel.h"

namespace velmora {

namespace {

constexpr TText kFilterHint = TText::Later(
    "<p>Words of a name, a kind, of what changes; <i>new, changed, obsolete, unsafe</i>. All have to fit.</p>"
    "<p>Or patterns, one of which has to fit: <i>orders*</i> for tables, <i>view:*</i>, <i>trigger:t_*</i>, "
    "<i>column:orders.ship_*</i>, <i>index:*.ix_?</i>.</p>"
    "<p>What is hidden stays ticked, and is counted below the list.</p>");
constexpr int kHintEdge = 12;
constexpr int kComboLetters = 8;  // that a narrow panel leaves of a choice

QComboBox* Choice(const char* name, const QString& spoken, const QStringList& choices) {
  auto* combo = Named(new QComboBox, name);
  combo->setAccessibleName(spoken);
  combo->setToolTip(spoken);
  combo->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
  combo->setMinimumContentsLength(kComboLetters);
  combo->addItems(choices);
  return combo;
}

}  // namespace

// --- The lines

TDifferenceView::TDifferenceView(QWidget* parent) : QTreeView(parent) {
  setObjectName(QStringLiteral("tlDifferences"));
  setAccessibleName(Fixed("Sync actions"));
  setHeaderHidden(true);
  setUniformRowHeights(true);
  setSelectionMode(ExtendedSelection);
  setExpandsOnDoubleClick(false);
  setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);  // lines are cut to the width
  setItemDelegate(new TDifferenceLines(this));
}

void TDifferenceView::SetHint(const QString& hint) {
  hint_ = hint;
  setAccessibleDescription(hint);
  viewport()->update();
}

void TDifferenceView::keyPressEvent(QKeyEvent* event) {
  const bool plain = (event->modifiers() & ~Qt::KeypadModifier) == Qt::NoModifier;
  if (plain && event->key() == Qt::Key_Space && OnSpaceKey) return OnSpaceKey();
  if (plain && event->key() == Qt::Key_Delete && OnDeleteKey) return OnDeleteKey();
  if (plain && (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)) return Enter(currentIndex());
  QTreeView::keyPressEvent(event);
}

void TDifferenceView::mouseDoubleClickEvent(QMouseEvent* event) {
  QTreeView::mouseDoubleClickEvent(event);
  const QPoint place = event->position().toPoint();
  const QModelIndex line = indexAt(place);
  if (event->button() == Qt::LeftButton && line.isValid() && !OnBox(line, place)) Enter(line);
}

void TDifferenceView::Enter(const QModelIndex& line) {
  if (model()->rowCount(line) > 0)
    setExpanded(line, !isExpanded(line));
  else if (line.isValid() && OnEnter)
    OnEnter();
}

// Two quick clicks there are two ticks.
bool TDifferenceView::OnBox(const QModelIndex& line, const QPoint& place) const {
  QStyleOptionViewItem option;
  initViewItemOption(&option);
  option.rect = visualRect(line);
  option.features |= QStyleOptionViewItem::HasCheckIndicator;
  return place.x() <= style()->subElementRect(QStyle::SE_ItemViewItemCheckIndicator, &option, this).right();
}

void TDifferenceView::paintEvent(QPaintEvent* event) {
  QTreeView::paintEvent(event);
  if (hint_.isEmpty() || model() == nullptr || model()->rowCount() > 0) return;
  QPainter painter(viewport());
  painter.setPen(palette().color(QPalette::Text));
  painter.drawText(viewport()->rect().adjusted(kHintEdge, kHintEdge, -kHintEdge, -kHintEdge),
                   Qt::AlignHCenter | Qt::AlignTop | Qt::TextWordWrap, hint_);
}

// --- The panel

TDifferenceTree::TDifferenceTree(QWidget* parent)
    : QWidget(parent),
      model_(new TDifferenceModel(this)),
      view_(new TDifferenceView),
      lbCounts_(Named(new QLabel, "lbCounts")),
      lbTicked_(Named(new QLabel, "lbTicked")),
      edFilter_(Named(new QLineEdit, "edFilter")),
      cGrouping_(
          Choice("cGrouping", TText::tr("How the actions are grouped"), {TText::tr("By table"), TText::tr("By kind")})),
      cSorting_(Choice("cSorting", TText::tr("How the actions are sorted"),
                       {TText::tr("By name"), TText::tr("By order of running")})) {
  setObjectName(QStringLiteral("pnDifferences"));
  lbCounts_->setWordWrap(true);
  for (QLabel* label : {lbCounts_, lbTicked_}) label->setContentsMargins(4, 0, 2, 0);
  lbTicked_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
  edFilter_->setPlaceholderText(TText::tr("Filter (Ctrl+Shift+F)"));
  edFilter_->setToolTip(kFilterHint);
  edFilter_->setAccessibleName(TText::tr("Filter of the sync actions"));
  edFilter_->setClearButtonEnabled(true);
  edFilter_->installEventFilter(this);
  view_->setModel(model_);
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(0, 0, 0, 0);
  column->setSpacing(2);
  column->addWidget(lbCounts_);
  column->addWidget(edFilter_);
  auto* choices = new QHBoxLayout;
  choices->setSpacing(2);
  choices->addWidget(cGrouping_, 1);
  choices->addWidget(cSorting_, 1);
  column->addLayout(choices);
  column->addWidget(view_, 1);
  column->addWidget(lbTicked_);
  ConnectView();
}

void TDifferenceTree::ConnectView() {
  model_->OnTick = [this](const std::vector<std::size_t>& places, bool on) {
    AtTopLevel([&] {
      if (OnTick) OnTick(places, on);
    });
  };
  view_->OnSpaceKey = [this] { AtTopLevel([this] { TickSelected(); }); };
  view_->OnDeleteKey = [this] {
    if (OnDelete) OnDelete();
  };
  view_->OnEnter = [this] {
    AtTopLevel([this] {
      if (OnFollow) OnFollow();
    });
  };
  connect(view_, &QTreeView::collapsed, this, [this](const QModelIndex& line) { folded_.insert(GroupName(line)); });
  connect(view_, &QTreeView::expanded, this, [this](const QModelIndex& line) { folded_.erase(GroupName(line)); });
  Handle(view_->selectionModel(), &QItemSelectionModel::currentChanged, this, [this] {
    if (!reloading_ && OnCurrent) OnCurrent();
  });
  Handle(edFilter_, &QLineEdit::textChanged, this, [this] {
    if (list_ == nullptr) return;
    list_->SetFilter(FromQt(edFilter_->text()));
    Reload();
  });
  for (QComboBox* choice : {cGrouping_, cSorting_})
    Handle(choice, &QComboBox::currentIndexChanged, this, [this] { Arrange(); });
}

void TDifferenceTree::Show(TDifferenceList* list) {
  list_ = list;
  model_->Show(list);
  Arrange();
}

void TDifferenceTree::Arrange(bool by_kind, bool by_running) {
  cGrouping_->setCurrentIndex(by_kind ? 1 : 0);
  cSorting_->setCurrentIndex(by_running ? 1 : 0);
}

void TDifferenceTree::Arrange() {
  if (list_ == nullptr) return ShowCounts();
  list_->Arrange(ByKind() ? EGrouping::ByKind : EGrouping::ByTable,
                 ByRunning() ? ESorting::ByRunning : ESorting::ByName);
  list_->SetFilter(FromQt(edFilter_->text()));
  Reload();
}

// A current action that is no longer shown leaves none: what is beside the tree stays until another is chosen.
void TDifferenceTree::Reload() {
  const std::optional<std::size_t> current = Current();
  reloading_ = true;
  model_->Show(list_);
  Unfold();
  if (current)
    if (const QModelIndex line = model_->LineOf(*current); line.isValid()) view_->setCurrentIndex(line);
  reloading_ = false;
  ShowCounts();
}

void TDifferenceTree::Refresh() {
  model_->TicksChanged();
  ShowCounts();
}

void TDifferenceTree::Unfold() {
  view_->expandAll();
  if (folded_.empty()) return;
  const std::set<QString> folded = folded_;
  for (int row = 0; row < model_->rowCount({}); ++row)
    if (const QModelIndex line = model_->index(row, 0, {}); folded.contains(GroupName(line))) view_->collapse(line);
}

QString TDifferenceTree::GroupName(const QModelIndex& line) const { return line.data(Qt::DisplayRole).toString(); }

void TDifferenceTree::ShowCounts() {
  const auto show = [](QLabel& label, const std::string& text) {
    label.setText(ToQt(text));
    label.setVisible(!text.empty());
  };
  show(*lbCounts_, list_ == nullptr ? std::string() : list_->Heading());
  show(*lbTicked_, list_ == nullptr ? std::string() : list_->Footing());
}

// --- Selecting

std::vector<std::size_t> TDifferenceTree::Selected() const {
  std::vector<std::size_t> places;
  for (const QModelIndex& line : view_->selectionModel()->selectedIndexes())
    for (const std::size_t place : model_->PlacesOf(line)) places.push_back(place);
  std::ranges::sort(places);
  places.erase(std::unique(places.begin(), places.end()), places.end());
  return places;
}

std::optional<std::size_t> TDifferenceTree::Current() const { return model_->PlaceOf(view_->currentIndex()); }

std::string TDifferenceTree::CurrentTable() const {
  const std::vector<std::size_t> places = model_->PlacesOf(view_->currentIndex());
  if (places.empty()) return {};
  const std::string& table = list_->At(places.front()).table;
  const bool same = std::ranges::all_of(
      places, [&](std::size_t place) { return list_->At(place).table == table && OfTable(list_->At(place).kind); });
  return same ? table : std::string();
}

// All that is selected is ticked, and unticked where all of it was.
void TDifferenceTree::TickSelected() {
  const std::vector<std::size_t> places = Selected();
  if (places.empty() || !OnTick) return;
  OnTick(places, !std::ranges::all_of(places, [this](std::size_t place) { return list_->Ticked(place); }));
}

QModelIndex TDifferenceTree::NextLine(const QModelIndex& from, bool forward) const {
  const int rows = model_->rowCount({});
  if (!from.isValid()) return rows == 0 ? QModelIndex() : model_->index(forward ? 0 : rows - 1, 0, {});
  const QModelIndex top = from.parent().isValid() ? from.parent() : from;
  const int step = forward ? 1 : -1;
  const int inside = from.parent().isValid() ? from.row() + step : (forward ? 0 : -1);
  if (inside >= 0 && inside < model_->rowCount(top)) return model_->index(inside, 0, top);
  const QModelIndex next = model_->index(top.row() + step, 0, {});
  if (forward || !next.isValid() || model_->rowCount(next) == 0) return next;
  return model_->index(model_->rowCount(next) - 1, 0, next);
}

bool TDifferenceTree::Step(bool forward) {
  QModelIndex line = NextLine(view_->currentIndex(), forward);
  while (line.isValid() && !model_->PlaceOf(line)) line = NextLine(line, forward);
  if (!line.isValid()) return false;
  view_->setCurrentIndex(line);
  return true;
}

void TDifferenceTree::Select(const std::vector<std::size_t>& places) {
  QItemSelection lines;
  for (const std::size_t place : places)
    if (const QModelIndex line = model_->LineOf(place); line.isValid()) lines.select(line, line);
  if (lines.isEmpty()) return;
  const QModelIndex first = lines.indexes().constFirst();
  view_->setCurrentIndex(first);
  view_->selectionModel()->select(lines, QItemSelectionModel::ClearAndSelect);
  view_->scrollTo(first);
}

void TDifferenceTree::SelectFirst() {
  view_->setCurrentIndex({});
  if (Step(true)) view_->scrollToTop();
}

std::optional<std::size_t> TDifferenceTree::AfterSelected() const {
  const std::vector<std::size_t> selected = Selected();
  for (const bool forward : {true, false})
    for (QModelIndex line = view_->currentIndex(); line.isValid(); line = NextLine(line, forward))
      if (const auto place = model_->PlaceOf(line); place && !std::ranges::binary_search(selected, *place))
        return place;
  return std::nullopt;
}

// --- The filter

void TDifferenceTree::FocusFilter() {
  edFilter_->setFocus(Qt::ShortcutFocusReason);
  edFilter_->selectAll();
}

// Escape takes the filter away, and a second one goes to the tree, as do Down and Enter.
bool TDifferenceTree::eventFilter(QObject* watched, QEvent* event) {
  if (watched != edFilter_ || event->type() != QEvent::KeyPress) return QWidget::eventFilter(watched, event);
  const int key = dynamic_cast<QKeyEvent&>(*event).key();
  if (key == Qt::Key_Escape && !edFilter_->text().isEmpty()) {
    edFilter_->clear();
    return true;
  }
  const bool leaves = key == Qt::Key_Escape || key == Qt::Key_Down || key == Qt::Key_Return || key == Qt::Key_Enter;
  if (!leaves) return QWidget::eventFilter(watched, event);
  const bool none = !view_->currentIndex().isValid();
  view_->setFocus();  // which makes the first line the current one, a group maybe
  if (none) SelectFirst();
  return true;
}

}  // namespace velmora

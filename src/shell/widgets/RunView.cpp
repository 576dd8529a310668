// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/widgets/RunView.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QPushButton>
#include <QSplitter>
#include <QVBoxLayout>

#include "app/RunTelling.h"
#include "shell/widgets/Named.h"
#include "shell/widgets/QtText.h"
#include "shell/widgets/RunModel.h"
#include "shell/widgets/Text.h"
#include "shell/widgets/TopLevel.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr int kLetters[] = {5, 11, 44, 9, 7, 6, 12, 30};  // that a column has room for, by ERunColumn
constexpr int kDetailLines = 5;
constexpr int kLater = 50;  // milliseconds

QLabel* TextLabel(const char* name) {
  QLabel* label = Named(new QLabel, name);
  label->setTextFormat(Qt::PlainText);
  label->setWordWrap(true);
  label->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
  label->setFocusPolicy(Qt::NoFocus);
  return label;
}

QPushButton* ReportButton(const char* name, const QString& caption, const QString& hint) {
  QPushButton* button = Named(new QPushButton(caption), name);
  button->setToolTip(hint);
  button->setAutoDefault(false);
  return button;
}

}  // namespace

TRunView::TRunView(QWidget* parent)
    : QWidget(parent),
      model_(new TRunModel(this)),
      lbRun_(TextLabel("lbRun")),
      lbRunMore_(TextLabel("lbRunMore")),
      lvRun_(Named(new QTreeView, "lvRun")),
      mRunDetails_(Named(new QPlainTextEdit, "mRunDetails")) {
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(6, 6, 6, 2);
  column->addWidget(MakeHead());
  column->addWidget(lbRunMore_);
  column->addWidget(MakeList(), 1);
  later_.setSingleShot(true);
  later_.setInterval(kLater);
  connect(&later_, &QTimer::timeout, this, [this] {
    if (told_ != nullptr) ShowNow(*told_);
  });
  Tell({});
}

QWidget* TRunView::MakeHead() {
  auto* head = new QWidget;
  auto* row = new QHBoxLayout(head);
  row->setContentsMargins(0, 0, 0, 0);
  QFont bold = lbRun_->font();
  bold.setBold(true);
  lbRun_->setFont(bold);
  QPushButton* copy =
      ReportButton("bnCopyRun", TText::tr("&Copy report"), TText::tr("Copy the report of the run as text"));
  QPushButton* save =
      ReportButton("bnSaveRun", TText::tr("Save re&port..."), TText::tr("Save the report of the run as a text file"));
  row->addWidget(lbRun_, 1);
  row->addWidget(copy);
  row->addWidget(save);
  Handle(copy, &QPushButton::clicked, this, [this] { Copy(); });
  Handle(save, &QPushButton::clicked, this, [this] {
    if (OnSave) OnSave(Text());
  });
  return head;
}

QWidget* TRunView::MakeList() {
  lvRun_->setModel(model_);
  lvRun_->setAccessibleName(TText::tr("Statements of the run"));
  lvRun_->setRootIsDecorated(false);
  lvRun_->setUniformRowHeights(true);
  lvRun_->setAllColumnsShowFocus(true);
  lvRun_->setAlternatingRowColors(true);
  lvRun_->installEventFilter(this);
  QHeaderView& headings = *lvRun_->header();
  for (int i = 0; i < kRunColumns; ++i)
    headings.resizeSection(i, std::max(kLetters[i] * fontMetrics().averageCharWidth(), headings.sectionSizeHint(i)));
  lvRun_->header()->setStretchLastSection(false);
  lvRun_->header()->setSectionResizeMode(kRunStatement, QHeaderView::Stretch);
  mRunDetails_->setReadOnly(true);
  mRunDetails_->setAccessibleName(TText::tr("The chosen statement and the server's words"));
  mRunDetails_->setTabChangesFocus(true);
  connect(lvRun_->selectionModel(), &QItemSelectionModel::currentRowChanged, this, [this] { ShowDetails(); });
  connect(lvRun_, &QTreeView::doubleClicked, this, [this](const QModelIndex& index) { GoTo(index); });
  auto* parts = Named(new QSplitter(Qt::Vertical), "spRun");
  parts->addWidget(lvRun_);
  parts->addWidget(mRunDetails_);
  parts->setStretchFactor(0, 1);
  parts->setChildrenCollapsible(false);
  mRunDetails_->setMinimumHeight(fontMetrics().lineSpacing() * 2);
  parts->setSizes({QWIDGETSIZE_MAX, fontMetrics().lineSpacing() * kDetailLines});
  return parts;
}

void TRunView::Begin(const std::string& script) {
  script_ = script;
  later_.stop();
  told_ = nullptr;
  model_->Clear();
  report_ = {};
  lbRun_->clear();
  mRunDetails_->clear();
  Tell({});
}

void TRunView::SetHeading(const std::string& heading) { lbRun_->setText(ToQt(heading)); }

// Statements that are quick are shown some at a time, so that showing costs no more than running.
void TRunView::Show(const TRunReport& report) {
  told_ = &report;
  if (report.ended || report.runs.size() != model_->Runs().size()) return ShowNow(report);
  if (!later_.isActive()) later_.start();
}

void TRunView::ShowNow(const TRunReport& report) {
  later_.stop();
  model_->SetPalette(palette());
  model_->Take(report, script_);
  lbRun_->setText(ToQt(RunSentence(report)));
  if (report.ended) {
    report_ = report;
    told_ = nullptr;
  }
  if (report.statements.empty()) return;
  const bool failed = report.ended && report.failed;
  const std::size_t row = failed ? *report.failed : std::min(report.executed, report.statements.size() - 1);
  const QModelIndex index = model_->index(static_cast<int>(row), 0);
  if (failed) lvRun_->selectionModel()->setCurrentIndex(index, QItemSelectionModel::NoUpdate);  // its colour stays
  lvRun_->scrollTo(index);
}

void TRunView::Tell(const TStringList& lines) {
  lines_ = lines;
  lbRunMore_->setText(ToQt(ShownLines(JoinList(lines, "\n"))));
  lbRunMore_->setVisible(!lines.empty());
}

void TRunView::ShowDetails() {
  const auto row = static_cast<std::size_t>(lvRun_->currentIndex().row());
  if (row >= model_->Runs().size()) return;
  const std::string words = ServerWords(model_->Runs()[row]);
  mRunDetails_->setPlainText(ToQt(ShownLines((words.empty() ? "" : words + "\n\n") + model_->Statements()[row].text)));
}

std::string TRunView::Text() const {
  TStringList lines = {FromQt(lbRun_->text())};
  lines.insert(lines.end(), lines_.begin(), lines_.end());
  return RunText(report_, script_, lines);
}

void TRunView::Copy() const { QGuiApplication::clipboard()->setText(ToQt(ShownLines(Text()))); }

void TRunView::GoTo(const QModelIndex& index) const {
  const auto row = static_cast<std::size_t>(index.row());
  if (index.isValid() && OnGoTo && row < model_->Statements().size())
    AtTopLevel([&] { OnGoTo(model_->Statements()[row].start); });
}

bool TRunView::eventFilter(QObject* watched, QEvent* event) {
  if (watched != lvRun_ || event->type() != QEvent::KeyPress) return QWidget::eventFilter(watched, event);
  auto& key = dynamic_cast<QKeyEvent&>(*event);
  if (key.matches(QKeySequence::Copy)) {
    Copy();
    return true;
  }
  if (key.key() != Qt::Key_Return && key.key() != Qt::Key_Enter) return false;
  GoTo(lvRun_->currentIndex());
  return true;
}

}  // namespace velmora

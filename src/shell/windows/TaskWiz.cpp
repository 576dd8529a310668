// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/windows/TaskWiz.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QShowEvent>
#include <QStackedWidget>
#include <QStyle>
#include <QTimer>
#include <QVBoxLayout>
#include <algorithm>

#include "core/Engines.h"
#include "foreign/FactReaders.h"
#include "shell/widgets/BusyCursor.h"
#include "shell/widgets/Named.h"
#include "shell/widgets/QtText.h"
#include "shell/widgets/Text.h"
#include "shell/widgets/TopLevel.h"

namespace velmora {

namespace {

constexpr TText kNext = Fixed("Next");
constexpr TText kFinish = Fixed("Finish");
constexpr TText kMySQLEngine = Fixed("&Connection to MySQL database");
constexpr TText kKeepHint = TText::Later(
    "Enciphered as in a task file, with a key that is the same in every copy of the program: hidden from a casual look "
    "and from nobody else. Without it the list has no passwords.");
constexpr int kWidthInLetters = 86;

QFrame* NewLine() {
  auto* line = new QFrame;
  line->setFrameStyle(static_cast<int>(QFrame::HLine) | static_cast<int>(QFrame::Plain));
  line->setForegroundRole(QPalette::Mid);
  return line;
}

// What belongs to a button stands below it, from where its caption begins.
QHBoxLayout* Indented(QWidget* widget) {
  auto* row = new QHBoxLayout;
  const QStyle* style = widget->style();
  row->addSpacing(style->pixelMetric(QStyle::PM_ExclusiveIndicatorWidth) +
                  style->pixelMetric(QStyle::PM_RadioButtonLabelSpacing));
  row->addWidget(widget);
  return row;
}

void ConnectBusy(TDBConn& conn) {
  const TBusyCursor busy;
  conn.Connect();
}

// As high as its pages, and scrolled where the screen ends: the buttons below it stay in reach.
class TPagesArea final : public QScrollArea {
 public:
  explicit TPagesArea(QWidget* pages) {
    setWidget(pages);
    setWidgetResizable(true);
    setFrameShape(QFrame::NoFrame);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setFocusPolicy(Qt::NoFocus);
  }

  QSize minimumSizeHint() const override { return WithinScreen(widget()->minimumSizeHint()); }
  QSize sizeHint() const override { return WithinScreen(widget()->sizeHint()); }

 protected:
  bool eventFilter(QObject* object, QEvent* event) override {
    if (event->type() == QEvent::LayoutRequest) updateGeometry();
    return QScrollArea::eventFilter(object, event);
  }

 private:
  QSize WithinScreen(QSize size) const {
    const QRect available = screen()->availableGeometry();
    const int top = window()->isVisible() ? window()->geometry().top() : available.top();
    const int room = available.bottom() - top - kLinesOfButtons * fontMetrics().height();
    if (size.height() <= room) return size;
    return {size.width() + verticalScrollBar()->sizeHint().width(), std::max(room, kLeastHeight)};
  }

  static constexpr int kLinesOfButtons = 5;
  static constexpr int kLeastHeight = 100;
};

}  // namespace

TfmTaskWiz::TfmTaskWiz(const TEngineClients& clients, QWidget* parent, const TEnumerators& enumerators,
                       const std::string& recent_file)
    : QDialog(parent),
      pages_(Named(new QStackedWidget, "pages")),
      tsRefConn_(Named(new QWidget, "tsRefConn")),
      tsTargetConn_(Named(new QWidget, "tsTargetConn")),
      tsOptions_(Named(new QWidget, "tsOptions")),
      frRefConn_(Named(new TfrConn(clients, nullptr, enumerators), "frRefConn")),
      frTgtConn_(Named(new TfrConn(clients, nullptr, enumerators), "frTgtConn")),
      recent_(recent_file),
      bnCancel_(Named(new QPushButton(TText::tr("Cancel")), "bnCancel")),
      bnBack_(Named(new QPushButton(TText::tr("Back")), "bnBack")),
      bnNext_(Named(new QPushButton(kNext), "bnNext")),
      bnAnalyze_(Named(new QPushButton(TText::tr("Finish and A&nalyze")), "bnAnalyze")) {
  setObjectName(ToQt("fmTaskWiz"));
  setWindowTitle(Fixed("Sync Wizard"));
  setMinimumWidth(kWidthInLetters * fontMetrics().averageCharWidth());
  auto* all = new QVBoxLayout(this);
  all->setContentsMargins(0, 0, 0, 0);
  all->setSpacing(0);
  auto* area = new TPagesArea(pages_);
  all->addWidget(area, 1);
  // Which page it is stands at its top.
  connect(pages_, &QStackedWidget::currentChanged, area, [area] { area->verticalScrollBar()->setValue(0); });
  MakeRefPage();
  MakeTargetPage();
  MakeOptionsPage();
  MakeButtons();
  FormCreate();
}

// --- What it looks like

// A page under a heading; gives the layout of what it shows.
QVBoxLayout* TfmTaskWiz::NewPage(QWidget* page, const QString& step, const QString& heading, const QString& purpose) {
  const int margin = 2 * style()->pixelMetric(QStyle::PM_LayoutLeftMargin);
  auto* step_label = new QLabel(step);
  auto* heading_label = new QLabel(heading);
  auto* purpose_label = new QLabel(purpose);
  QFont font = heading_label->font();
  font.setBold(true);
  heading_label->setFont(font);
  purpose_label->setWordWrap(true);

  auto* band = new QWidget;
  band->setAutoFillBackground(true);
  band->setBackgroundRole(QPalette::Base);
  auto* headings = new QHBoxLayout;
  headings->addWidget(step_label);
  headings->addWidget(heading_label, 1);
  auto* texts = new QVBoxLayout(band);
  texts->setContentsMargins(margin, margin * 2 / 3, margin, margin * 2 / 3);
  texts->setSpacing(margin / 3);
  texts->addLayout(headings);
  texts->addWidget(purpose_label);

  auto* content = new QVBoxLayout;
  content->setContentsMargins(margin, margin, margin, margin);
  content->setSpacing(margin / 2);
  auto* rows = new QVBoxLayout(page);
  rows->setContentsMargins(0, 0, 0, 0);
  rows->setSpacing(0);
  rows->addWidget(band);
  rows->addWidget(NewLine());
  rows->addLayout(content);
  rows->addStretch();
  pages_->addWidget(page);
  return content;
}

void TfmTaskWiz::MakeRefPage() {
  QVBoxLayout* rows = NewPage(tsRefConn_, Fixed("Step 1 of 2:"), Fixed("Reference database"),
                              Fixed("Database with which work database is compared and changed to match."));
  cbLiveConn_ = Named(new QRadioButton(kMySQLEngine), "cbLiveConn");
  cbScript_ = Named(new QRadioButton(Fixed("S&QL Creation Script")), "cbScript");
  MakeRecent(*rows, "Ref", *frRefConn_, ref_extras_);
  cbOther_ = Named(new QRadioButton(TText::tr("Anot&her database or file:")), "cbOther");
  cEngine_ = Named(new QComboBox, "cEngine");
  for (const int engine : EnginesWithFacts()) {
    std::string name;
    StrEngine(engine, name);
    cEngine_->addItem(ToQt(name), engine);
  }
  auto* other = new QHBoxLayout;
  other->addWidget(cbOther_);
  other->addWidget(cEngine_, 1);
  rows->addWidget(cbLiveConn_);
  rows->addWidget(cbScript_);
  rows->addLayout(other);
  rows->addLayout(Indented(frRefConn_));
  MakeKeep(*rows, "Ref", ref_extras_);
  cbScript_->hide();
  const auto on_checked = [this](QRadioButton* button, void (TfmTaskWiz::*click)()) {
    Handle(button, &QRadioButton::toggled, this, [this, button, click] {
      if (button->isChecked()) (this->*click)();
    });
  };
  on_checked(cbLiveConn_, &TfmTaskWiz::cbLiveConnClick);
  on_checked(cbScript_, &TfmTaskWiz::cbScriptClick);
  on_checked(cbOther_, &TfmTaskWiz::cbOtherClick);
  // Whoever chooses an engine means it.
  Handle(cEngine_, &QComboBox::activated, this, [this] { cbOther_->isChecked() ? cbOtherClick() : cbOther_->click(); });
}

void TfmTaskWiz::MakeTargetPage() {
  QVBoxLayout* rows = NewPage(tsTargetConn_, Fixed("Step 2 of 2:"), Fixed("Target database"),
                              Fixed("With this database we work. It is altered to match reference database."));
  auto* live = Named(new QRadioButton(kMySQLEngine), "cbTgtLiveConn");
  live->setChecked(true);
  MakeRecent(*rows, "Tgt", *frTgtConn_, tgt_extras_);
  rows->addWidget(live);
  rows->addLayout(Indented(frTgtConn_));
  MakeKeep(*rows, "Tgt", tgt_extras_);
}

void TfmTaskWiz::MakeRecent(QVBoxLayout& rows, const char* side, TfrConn& frame, TPageExtras& extras) {
  extras.row = Named(new QWidget, (std::string("panRecent") + side).c_str());
  extras.list = Named(new QComboBox, (std::string("cRecent") + side).c_str());
  extras.list->setPlaceholderText(TText::tr("Choose one that was used before"));
  extras.list->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
  extras.list->setMinimumContentsLength(1);
  auto* label = new QLabel(TText::tr("&Recent connections"));
  label->setBuddy(extras.list);
  auto* row = new QHBoxLayout(extras.row);
  row->setContentsMargins(0, 0, 0, 0);
  row->addWidget(label);
  row->addWidget(extras.list, 1);
  auto* forget = Named(new QPushButton(TText::tr("For&get")), (std::string("bnForget") + side).c_str());
  forget->setToolTip(TText::tr("Take the chosen connection out of the list, with its password"));
  forget->setAutoDefault(false);
  row->addWidget(forget);
  rows.addWidget(extras.row);
  Handle(forget, &QPushButton::clicked, this, [this, &extras] {
    if (const int index = extras.list->currentIndex(); index >= 0) recent_.Forget(static_cast<std::size_t>(index));
    ShowRecent();
  });
  Handle(extras.list, &QComboBox::activated, this,
         [this, &extras, &frame] { TakeRecent(extras, frame, extras.list->currentIndex()); });
}

void TfmTaskWiz::MakeKeep(QVBoxLayout& rows, const char* side, TPageExtras& extras) {
  extras.keep = Named(new QCheckBox(TText::tr("Keep the password &in the list of recent connections")),
                      (std::string("chkKeep") + side).c_str());
  extras.keep->setToolTip(kKeepHint);
  rows.addLayout(Indented(extras.keep));
}

// No page leads here, and what is chosen here has no effect.
void TfmTaskWiz::MakeOptionsPage() {
  QVBoxLayout* rows = NewPage(tsOptions_, Fixed("Step 3 of 3:"), Fixed("Options"),
                              Fixed("Optionally you can customize this task here."));
  const auto add_box = [rows](const char* name, const QString& caption, bool checked) {
    auto* box = Named(new QCheckBox(caption), name);
    box->setChecked(checked);
    rows->addWidget(box);
    return box;
  };
  add_box("chkDropItems", Fixed("&Drop obsolete columns, keys and constraints"), true);
  add_box("chkDropTables", Fixed("Drop obsolete &tables"), false);
  add_box("chkBackup", Fixed("&Backup target database before sync"), false);
  rows->addLayout(Indented(add_box("chkCompressBackup", Fixed("C&ompress"), true)));
  rows->addLayout(Indented(Named(new QLineEdit, "edBackupFilename")));
}

void TfmTaskWiz::MakeButtons() {
  auto* all = qobject_cast<QVBoxLayout*>(layout());
  auto* row = new QHBoxLayout;
  const int margin = style()->pixelMetric(QStyle::PM_LayoutLeftMargin);
  row->setContentsMargins(margin, margin, margin, margin);
  row->setSpacing(margin / 2);
  row->addStretch();
  row->addWidget(bnBack_);
  row->addWidget(bnNext_);
  row->addWidget(bnAnalyze_);
  row->addSpacing(margin / 2);
  row->addWidget(bnCancel_);
  all->addWidget(NewLine());
  all->addLayout(row);
  bnNext_->setDefault(true);
  bnBack_->setShortcut(QKeySequence(Qt::ALT | Qt::Key_Left));
  bnBack_->setToolTip(bnBack_->shortcut().toString(QKeySequence::NativeText));
  Handle(bnCancel_, &QPushButton::clicked, this, [this] { reject(); });
  Handle(bnBack_, &QPushButton::clicked, this, [this] { bnBackClick(); });
  Handle(bnNext_, &QPushButton::clicked, this, [this] { bnNextClick(); });
  Handle(bnAnalyze_, &QPushButton::clicked, this, [this] { bnAnalyzeClick(); });
}

// --- What it does

void TfmTaskWiz::FormCreate() {
  cbLiveConn_->setChecked(true);
  frTgtConn_->SetEngine(kEngineMySQL);
  offered_ = frTgtConn_->Values();
}

void TfmTaskWiz::showEvent(QShowEvent* event) {
  if (!event->spontaneous()) FormShow();
  QDialog::showEvent(event);
}

void TfmTaskWiz::FormShow() {
  bnBack_->setEnabled(false);
  bnNext_->setText(kNext);
  bnAnalyze_->hide();
  AnalyzeAtOnce = false;
  ShowRecent();
  pages_->setCurrentWidget(tsRefConn_);
  frRefConn_->setFocus();
}

// An engine that does not connect stays where it is until the next click frees it.
void TfmTaskWiz::bnNextClick() {
  if (pages_->currentWidget() == tsRefConn_) {
    RefConn.reset();
    RefConn = frRefConn_->CreateConnection();
    ConnectBusy(*RefConn);
    Remember(ref_extras_, *frRefConn_);
    pages_->setCurrentWidget(tsTargetConn_);
    frTgtConn_->setFocus();
    OfferServer();
  } else if (pages_->currentWidget() == tsTargetConn_) {
    TgtConn.reset();
    TgtConn = frTgtConn_->CreateConnection();
    ConnectBusy(*TgtConn);
    Remember(tgt_extras_, *frTgtConn_);
    accept();
  } else {
    accept();
  }
  bnBack_->setEnabled(true);
  const bool last = pages_->currentWidget() == tsTargetConn_;
  bnNext_->setText(last ? kFinish : kNext);
  bnAnalyze_->setVisible(last);
}

void TfmTaskWiz::bnAnalyzeClick() {
  bnNextClick();
  AnalyzeAtOnce = !isVisible();
}

// Deliberate: the caption of bnNext stays, so that it reads "Finish" on the first page too.
void TfmTaskWiz::bnBackClick() {
  pages_->setCurrentIndex(pages_->currentIndex() - 1);
  bnBack_->setEnabled(pages_->currentIndex() > 0);
  bnAnalyze_->hide();
  frRefConn_->setFocus();
}

// --- Connections made before

void TfmTaskWiz::ShowRecent() {
  for (const TPageExtras* extras : {&ref_extras_, &tgt_extras_}) {
    extras->list->clear();
    for (const TRecentConnection& connection : recent_.All())
      extras->list->addItem(ToQt(ConnectionCaption(connection)));
    extras->list->setCurrentIndex(-1);
    extras->row->setVisible(!recent_.All().empty());
  }
}

void TfmTaskWiz::TakeRecent(const TPageExtras& extras, TfrConn& frame, int index) {
  if (index < 0) return;
  const TRecentConnection& connection = recent_.All().at(static_cast<std::size_t>(index));
  frame.TakeServer(connection.values);
  extras.keep->setChecked(!connection.values.Text("password").empty());
  frame.setFocus();
}

void TfmTaskWiz::Remember(const TPageExtras& extras, const TfrConn& frame) {
  if (frame.Engine() != kEngineMySQL) return;
  recent_.Add(*FindEngine(kEngineMySQL), frame.Values(), extras.keep->isChecked());
}

// Both databases often lie on one server: only the database is left to choose. What was typed stays.
void TfmTaskWiz::OfferServer() {
  const TEngineRow& engine = *FindEngine(kEngineMySQL);
  if (frRefConn_->Engine() != engine.engine) return;
  TEngineValues server = frRefConn_->Values();
  const auto offered = [&](const TEngineValues& values) {
    return SameConnection(engine, values, offered_, "database") && values.Text("password") == offered_.Text("password");
  };
  if (!offered(frTgtConn_->Values()) || offered(server) || server.Text("username").empty()) return;
  server.Set("database", "");
  frTgtConn_->TakeServer(server);
  offered_ = server;
  QTimer::singleShot(0, frTgtConn_, [this] { frTgtConn_->ChooseDatabase(); });
}

void TfmTaskWiz::cbLiveConnClick() { SetReference(kEngineMySQL); }

void TfmTaskWiz::cbOtherClick() { SetReference(cEngine_->currentData().toInt()); }

void TfmTaskWiz::cbScriptClick() { SetReference(kEngineMySQLScript); }

void TfmTaskWiz::SetReference(int engine) {
  if (ref_extras_.keep != nullptr) ref_extras_.keep->setVisible(engine == kEngineMySQL);  // others are in no list
  frRefConn_->SetEngine(engine);
}

}  // namespace velmora

// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/windows/Progress.h"

#include <QApplication>
#include <QCloseEvent>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QScreen>
#include <QVBoxLayout>
#include <algorithm>

#include "core/Host.h"
#include "shell/widgets/Icons.h"
#include "shell/widgets/Named.h"
#include "shell/widgets/QtText.h"
#include "shell/widgets/Text.h"
#include "shell/widgets/TopLevel.h"

namespace velmora {

namespace {

// At least; more where letters are large.
constexpr int kWidth = 460;
constexpr int kHeight = 130;
constexpr int kEdges = 60;  // beside the picture and the texts
constexpr int kLeastLetters = 64;
constexpr int kImageSize = 64;

constexpr TText kCutConnection = TText::Later("Cut connection");

int BarNumber(std::int64_t value) { return static_cast<int>(std::clamp<std::int64_t>(value, 0, 1 << 30)); }

// A bar without a maximum would be shown as one that moves for ever.
void SetBar(QProgressBar& bar, std::int64_t max, std::int64_t position = 0) {
  bar.setRange(0, std::max(1, BarNumber(max)));
  bar.setValue(BarNumber(position));
}

// The bar paints itself where that shows. Painting each step would take longer than what is waited for.
void Step(QProgressBar& bar) { bar.setValue(std::min(bar.value() + 1, bar.maximum())); }

QLabel* TitleLabel(const char* name) {
  QLabel* label = Named(new QLabel, name);
  QFont font = label->font();
  font.setBold(true);
  font.setPointSize(font.pointSize() + 2);
  label->setFont(font);
  label->setTextFormat(Qt::PlainText);
  label->setStyleSheet(QStringLiteral("color: navy"));
  return label;
}

QLabel* StatusLabel(const char* name) {
  QLabel* label = Named(new QLabel, name);
  label->setAlignment(Qt::AlignRight);
  label->setTextFormat(Qt::PlainText);
  return label;
}

QWidget* ImagePanel() {
  auto* panel = Named(new QWidget, "panImg");
  panel->setStyleSheet(QStringLiteral("#panImg { background: white }"));
  panel->setAttribute(Qt::WA_StyledBackground);
  auto* image = Named(new QLabel, "Image1");
  image->setPixmap(ProgramIcon().pixmap(kImageSize, kImageSize));
  auto* layout = new QVBoxLayout(panel);
  layout->addWidget(image, 0, Qt::AlignCenter);
  return panel;
}

}  // namespace

TfmProgress::TfmProgress()
    : QWidget(nullptr, Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint),
      lbNaslovStatic_(TitleLabel("lbNaslovStatic")),
      lbNaslovStd_(TitleLabel("lbNaslovStd")),
      bevel_(Named(new QFrame, "bevel")),
      totbar_(Named(new QProgressBar, "totbar")),
      detbar_(Named(new QProgressBar, "detbar")),
      lbDetail_(Named(new QLabel, "lbDetail")),
      lbStatus_(StatusLabel("lbStatus")),
      lbErrors_(StatusLabel("lbErrors")),
      bnCancel_(Named(new QPushButton, "bnCancel")) {
  setObjectName(QStringLiteral("fmProgress"));
  setAttribute(Qt::WA_ShowWithoutActivating);
  // Deliberate: this window keeps its own light colours, which its navy titles and white picture are made for.
  setStyleSheet(
      QStringLiteral("#fmProgress { background: #f4f6f9; border: 1px solid #8a97a8 } QLabel { color: black }"
                     "QPushButton { color: black; background: white; border: 1px solid #8a97a8;"
                     " border-radius: 3px; padding: 3px 14px }"
                     "QPushButton:hover { background: #e6eef8 } QPushButton:pressed { background: #cfe0f4 }"));
  setAttribute(Qt::WA_StyledBackground);
  lbNaslovStatic_->setAlignment(Qt::AlignCenter);
  lbNaslovStatic_->setWordWrap(true);
  static_cast<QFrame*>(bevel_)->setFrameShape(QFrame::HLine);
  lbDetail_->setTextFormat(Qt::PlainText);
  lbErrors_->setStyleSheet(QStringLiteral("color: red"));
  detbar_->setTextVisible(false);
  detbar_->setStyleSheet(
      QStringLiteral("QProgressBar { border: 1px solid #8a97a8; background: white; max-height: 8px }"
                     "QProgressBar::chunk { background: skyblue }"));

  auto* column = new QVBoxLayout;
  column->setContentsMargins(14, 10, 14, 8);
  column->setSpacing(5);
  column->addWidget(lbNaslovStatic_, 1);
  column->addWidget(lbNaslovStd_);
  column->addWidget(bevel_);
  column->addWidget(totbar_);
  column->addWidget(lbDetail_);
  column->addWidget(detbar_);
  column->addStretch();
  auto* status = new QHBoxLayout;
  status->addWidget(lbStatus_, 1);
  status->addWidget(lbErrors_);
  status->addWidget(bnCancel_);
  bnCancel_->setFocusPolicy(Qt::NoFocus);
  bnCancel_->setText(kCutConnection);  // the longer of its captions, to make room for both
  Handle(bnCancel_, &QPushButton::clicked, this, [this] { Cancel(); });
  column->addLayout(status);
  auto* row = new QHBoxLayout(this);
  row->setContentsMargins(1, 1, 1, 1);
  row->setSpacing(0);
  row->addWidget(ImagePanel());
  row->addLayout(column, 1);
  SetShape(EShape::TwoBars);  // the highest
  setFixedSize(std::max(kWidth, kLeastLetters * fontMetrics().averageCharWidth()),
               std::max(kHeight, sizeHint().height()));
  height_ = height();
}

TfmProgress::~TfmProgress() = default;

void TfmProgress::ShowSimple(const std::string& title) { Start(EShape::Simple, title, 0); }
void TfmProgress::ShowOneBar(const std::string& title, std::int64_t max) { Start(EShape::OneBar, title, max); }
void TfmProgress::ShowTwoBars(const std::string& title, std::int64_t max) { Start(EShape::TwoBars, title, max); }

void TfmProgress::Start(EShape shape, const std::string& title, std::int64_t max) {
  if (!disabled_form_) DisableActiveForm();
  Host().ProcessMessages();
  Note({});
  SetShape(shape);
  SetTitle(title);
  if (shape != EShape::Simple) SetBar(*totbar_, max);
  BringUp();
}

void TfmProgress::DisableActiveForm() {
  // Another program may be in front: then it is the window that the user will come back to.
  // Over a dialog only another one can be used.
  setWindowModality(QApplication::activeModalWidget() != nullptr ? Qt::ApplicationModal : Qt::NonModal);
  QWidget* form = WorkingForm();
  disabled_form_ = form;
  if (form == nullptr) return;
  was_active_ = form->isActiveWindow();
  focused_ = form->focusWidget();
  form->setEnabled(false);
}

void TfmProgress::SetShape(EShape shape) {
  const bool bars = shape != EShape::Simple;
  const bool detail = shape == EShape::TwoBars;
  lbNaslovStatic_->setVisible(!bars);
  lbNaslovStd_->setVisible(bars);
  bevel_->setVisible(bars);
  totbar_->setVisible(bars);
  detbar_->setVisible(detail);
  lbDetail_->setVisible(detail);
}

void TfmProgress::BringUp() {
  if (!isVisible()) {
    for (QLabel* label : {lbDetail_, lbStatus_, lbErrors_}) label->clear();
    if (const QScreen* screen = disabled_form_ ? disabled_form_->screen() : QApplication::primaryScreen()) {
      const QRect desktop = screen->availableGeometry();
      move(desktop.center() - rect().center());
    }
    OfferCancel();
    show();
    qApp->installEventFilter(this);
  }
  raise();
  Host().ProcessMessages();
}

void TfmProgress::SetTitle(const std::string& title) {
  lbNaslovStatic_->setText(ToQt(title));
  lbNaslovStd_->setText(ToQt(title));
  Host().ProcessMessages();
}

void TfmProgress::StartDetail(const std::string& text, std::int64_t max) {
  lbDetail_->show();
  SetDetailText(text);
  SetBar(*detbar_, max);
  Host().ProcessMessages();
}

void TfmProgress::StepDetail() {
  Step(*detbar_);
  StepTotal();
}

void TfmProgress::StepTotal() { Step(*totbar_); }

void TfmProgress::SetDetailMax(std::int64_t max) { SetBar(*detbar_, max, detbar_->value()); }
void TfmProgress::SetDetailPosition(std::int64_t position) { detbar_->setValue(BarNumber(position)); }

void TfmProgress::SetDetailText(const std::string& text) {
  const QFontMetrics metrics(lbDetail_->font());
  lbDetail_->setText(metrics.elidedText(ToQt(text), Qt::ElideMiddle, width() - kImageSize - kEdges));
}

void TfmProgress::Note(const std::string& text) {
  lbDetail_->setWordWrap(!text.empty());
  lbDetail_->setText(ToQt(text));
  lbDetail_->setVisible(!text.empty());
  const int lines = text.empty() ? 0 : lbDetail_->heightForWidth(width() - kImageSize - kEdges);
  setFixedHeight(height_ + std::max(0, lines - lbDetail_->fontMetrics().height()));
}

void TfmProgress::OfferCancel() {
  bnCancel_->setText(TText::tr("Cancel"));
  bnCancel_->setToolTip(TText::tr("Ends what is under way (Esc)"));
  bnCancel_->setVisible(OnCancel != nullptr);
}

void TfmProgress::Cancel() {
  if (!OnCancel) return;
  lbStatus_->setText(TText::tr("Cancelling..."));
  if (!OnCancel()) return;
  bnCancel_->setText(kCutConnection);
  bnCancel_->setToolTip(TText::tr("Ends the connection without waiting for the server (Esc)"));
}

// The window that has the keyboard is another one, and out of use.
bool TfmProgress::eventFilter(QObject* watched, QEvent* event) {
  const QWidget* modal = QApplication::activeModalWidget();
  const bool asked = modal != nullptr && modal != this && modal != disabled_form_;  // a question has Esc for itself
  if (event->type() != QEvent::KeyPress || asked || dynamic_cast<QKeyEvent&>(*event).key() != Qt::Key_Escape)
    return QWidget::eventFilter(watched, event);
  AtTopLevel([this] { Cancel(); });
  return true;
}

void TfmProgress::Finish() {
  qApp->removeEventFilter(this);
  hide();
  if (!disabled_form_) return;
  QWidget* form = disabled_form_;
  disabled_form_ = nullptr;
  form->setEnabled(true);
  if (was_active_) form->activateWindow();
  if (focused_) focused_->setFocus();
  focused_ = nullptr;
}

void TfmProgress::closeEvent(QCloseEvent* event) {
  Finish();
  event->accept();
}

}  // namespace velmora

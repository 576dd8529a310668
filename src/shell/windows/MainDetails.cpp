// SPDX-License-Identifier: GPL-3.0-or-later

// The texts of a table beside the tree: as they are, or side by side, as the dialect reads them.

#include <QStackedWidget>
#include <QVBoxLayout>

#include "shell/widgets/DiffView.h"
#include "shell/widgets/Headings.h"
#include "shell/widgets/QtText.h"
#include "shell/widgets/Text.h"
#include "shell/windows/Main.h"

namespace velmora {

namespace {

constexpr TText kReferenceCaption = Fixed(" &Reference: ");
constexpr TText kTargetCaption = Fixed(" Tar&get: ");

// Two halves side by side: the first gets half of the width, rounded down. Placed without a layout, which would not let
// the window become narrower than a width once given to the first half.
class THalves final : public QWidget {
 public:
  THalves(QWidget* first, QWidget* second) : first_(first), second_(second) {
    first->setParent(this);
    second->setParent(this);
  }

  QSize sizeHint() const override { return Doubled(first_->sizeHint().expandedTo(second_->sizeHint())); }
  QSize minimumSizeHint() const override {
    return Doubled(first_->minimumSizeHint().expandedTo(second_->minimumSizeHint()));
  }

 protected:
  void resizeEvent(QResizeEvent* /*event*/) override {
    const int half = width() / 2;
    first_->setGeometry(0, 0, half, height());
    second_->setGeometry(half, 0, width() - half, height());
  }

 private:
  static QSize Doubled(QSize half) { return {2 * half.width(), half.height()}; }

  QWidget* first_;
  QWidget* second_;
};

QWidget* Half(const char* name, TSqlEdit* edit, QLabel* heading) {
  auto* widget = Named(new QWidget, name);
  auto* column = new QVBoxLayout(widget);
  column->setContentsMargins(0, 0, 0, 0);
  column->setSpacing(2);
  column->addWidget(heading);
  column->addWidget(edit, 1);
  return widget;
}

// A "&" in the name is none that underlines what follows. A name that is too long for its half is read in the hint.
void ShowHeading(QLabel& heading, const QString& caption, TDBConn& conn) {
  std::string name;
  conn.GetDisplayName(name);
  heading.setText(caption + ToQt(name).replace(QLatin1Char('&'), QLatin1String("&&")));
  heading.setToolTip(ToQt(name).toHtmlEscaped());
}

}  // namespace

QWidget* TfmMain::MakeDetails() {
  mDDLref_ = Named(new TSqlEdit, "mDDLref");
  mDDLtgt_ = Named(new TSqlEdit, "mDDLtgt");
  pnRefH_ = NewHeading("pnRefH", kReferenceCaption, mDDLref_);
  pnTgtH_ = NewHeading("pnTgtH", kTargetCaption, mDDLtgt_);
  plainTexts_ = new THalves(Half("pnRef", mDDLref_, pnRefH_), Half("pnTgt", mDDLtgt_, pnTgtH_));
  diff_ = new TDiffView;
  pnDetails_ = Named(new QStackedWidget, "pnDetails");
  pnDetails_->addWidget(plainTexts_);
  pnDetails_->addWidget(diff_);
  return pnDetails_;
}

void TfmMain::ShowHeadings() {
  TDBConn& reference = *app_->connections.reference;
  TDBConn& target = *app_->connections.target;
  for (QLabel* heading : {pnRefH_, &diff_->Heading(kLeft)}) ShowHeading(*heading, kReferenceCaption, reference);
  for (QLabel* heading : {pnTgtH_, &diff_->Heading(kRight)}) ShowHeading(*heading, kTargetCaption, target);
  ShowDetailsOfDialect();
}

void TfmMain::ShowTableDDL(const std::string& table, const std::string& item) {
  if (!app_->connections.reference || !app_->connections.target) return;
  std::string reference;
  std::string target;
  app_->Dialect().TableTexts(table, reference, target);
  ShowTexts(reference, target);
  if (pnDetails_->currentWidget() == diff_) diff_->GoToItem(item);
}

void TfmMain::ShowObjectTexts(int action) {
  std::string reference;
  std::string target;
  app_->Dialect().ObjectTexts(action, reference, target);
  ShowTexts(reference, target);
}

void TfmMain::ShowTexts(const std::string& reference, const std::string& target) {
  ShowDetailsOfDialect();
  if (pnDetails_->currentWidget() == diff_)
    return diff_->Show(reference, target, app_->Dialect().Aligned(reference, target));
  mDDLref_->SetBytes(reference);
  mDDLtgt_->SetBytes(target);
}

void TfmMain::ClearDetails() {
  for (TSqlEdit* edit : {mDDLref_, mDDLtgt_}) edit->SetBytes({});
  diff_->Clear();
  ShowDetailsOfDialect();
}

void TfmMain::ShowDetailsOfDialect() {
  const bool aligned = app_->Dialect().Traits().aligned_texts;
  pnDetails_->setCurrentWidget(aligned ? static_cast<QWidget*>(diff_) : plainTexts_);
  for (const char* name : {"acNextPlace", "acPreviousPlace"}) Command(name)->setVisible(aligned);
}

TSqlEdit* TfmMain::DetailsEditor() const {
  TSqlEdit* first = nullptr;
  for (TSqlEdit* edit :
       std::initializer_list<TSqlEdit*>{mDDLref_, mDDLtgt_, &diff_->Panel(kLeft), &diff_->Panel(kRight)}) {
    if (edit->hasFocus()) return edit;
    if (first == nullptr && edit->isVisible()) first = edit;
  }
  return first != nullptr ? first : mDDLref_;
}

void TfmMain::acNextPlace() {
  if (diff_->isVisible()) diff_->GoToPlace(1);
}

void TfmMain::acPreviousPlace() {
  if (diff_->isVisible()) diff_->GoToPlace(-1);
}

}  // namespace velmora

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLabel>
#include <QPointer>
#include <QProgressBar>
#include <QPushButton>
#include <QWidget>
#include <functional>

#include "sync/Progress.h"

namespace velmora {

// The small borderless window that stands over the program while something long happens. The form that was active is
// out of use for as long as it stands. One instance serves the whole program.
class TfmProgress final : public QWidget, public TProgress {
 public:
  TfmProgress();
  ~TfmProgress() override;

  // The user ends what is under way, by the button or by Esc. Gives whether something is waited for that asking once
  // more cuts off. Without it there is no button.
  std::function<bool()> OnCancel;

  void ShowSimple(const std::string& title) override;
  void ShowOneBar(const std::string& title, std::int64_t max) override;
  void ShowTwoBars(const std::string& title, std::int64_t max) override;
  void SetTitle(const std::string& title) override;
  void StartDetail(const std::string& text, std::int64_t max) override;
  void StepDetail() override;
  void StepTotal() override;
  void SetDetailMax(std::int64_t max) override;
  void SetDetailPosition(std::int64_t position) override;
  void SetDetailText(const std::string& text) override;
  void Finish() override;
  void Note(const std::string& text);  // below the bar, on several lines; empty takes it away

 protected:
  void closeEvent(QCloseEvent* event) override;
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  enum class EShape { Simple, OneBar, TwoBars };

  void Start(EShape shape, const std::string& title, std::int64_t max);
  void DisableActiveForm();
  void SetShape(EShape shape);
  void BringUp();
  void OfferCancel();
  void Cancel();

  QLabel* lbNaslovStatic_;  // title of the shape without bars
  QLabel* lbNaslovStd_;     // title of the others
  QWidget* bevel_;
  QProgressBar* totbar_;
  QProgressBar* detbar_;
  QLabel* lbDetail_;
  QLabel* lbStatus_;
  QLabel* lbErrors_;
  QPushButton* bnCancel_;

  int height_ = 0;  // without a note
  QPointer<QWidget> disabled_form_;
  QPointer<QWidget> focused_;  // in that form, to get the focus back
  bool was_active_ = false;    // it was in front, and shall be again
};

}  // namespace velmora

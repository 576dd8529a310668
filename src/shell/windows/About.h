// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>
#include <functional>
#include <utility>
#include <vector>

class QLabel;

namespace velmora {

// The dialog "About Velmora": title and version, a link to the home page and one to the support. Escape closes it.
class TfmAbout final : public QDialog {
 public:
  explicit TfmAbout(QWidget* parent = nullptr);

  // What the links do, set by the owner; an error that they raise is shown and the dialog stays.
  std::function<void()> OnVisitWeb;
  std::function<void()> OnContactSupport;

 protected:
  void showEvent(QShowEvent* event) override;

 private:
  void ShowLinks();
  QLabel* Link(const QString& name, const QString& caption, std::function<void()> TfmAbout::*action);

  std::vector<std::pair<QLabel*, QString>> links_;  // and their captions
};

}  // namespace velmora

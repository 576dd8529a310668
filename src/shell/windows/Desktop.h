// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>

#include "shell/windows/Main.h"
#include "shell/windows/QtHost.h"

namespace velmora {

class TfmConfirm;

// The running desktop program: its host, the main window and the forms made once at the start. To be made after the
// QApplication and to be freed before it.
class TDesktop {
 public:
  static constexpr int kSplashTime = 2000;  // milliseconds

  explicit TDesktop(TDesktopSetup setup, std::unique_ptr<TQtHost> host = std::make_unique<TQtHost>());
  ~TDesktop();
  TDesktop(const TDesktop&) = delete;
  TDesktop& operator=(const TDesktop&) = delete;

  // Makes everything, shows the splash window for a time, then the main window.
  void Start(int splash_time = kSplashTime);

  TfmMain& Main() { return *main_; }  // these three from the start on
  TfmProgress& Progress() { return *progress_; }
  TfmTaskWiz& Wizard() { return *wizard_; }

 private:
  void MakeForms();

  TDesktopSetup setup_;
  std::unique_ptr<TQtHost> host_;
  std::unique_ptr<THostGuard> host_guard_;
  std::unique_ptr<TChildWaitGuard> child_wait_;
  std::unique_ptr<TAsideGuard> aside_;
  std::unique_ptr<TfmMain> main_;  // parent of the forms below, so it goes after them
  std::unique_ptr<TfmProgress> progress_;
  std::unique_ptr<TfmAbout> about_;
  std::unique_ptr<TfmConfirm> confirm_;
  std::unique_ptr<TfmDump> dump_;
  std::unique_ptr<TfmOptions> options_;
  std::unique_ptr<TfmTaskWiz> wizard_;
};

// Runs the program until its main window is closed; gives the exit status.
int RunDesktop(int& argc, char** argv);

}  // namespace velmora

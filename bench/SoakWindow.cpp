// SPDX-License-Identifier: GPL-3.0-or-later

// bench_soak_window ROUNDS FOLDER TASK...: the whole desktop program, painted without a screen, opens task files, one
// after the other, analyses each and works in it. FOLDER takes the program's settings. Prints what bench_soak prints,
// and with 1 round milliseconds instead: to the open task, to the analysed and painted window, and the longest that no
// message ran meanwhile; a page scrolled, an action selected, a letter of the filter, all actions unticked; then the
// actions' number and the seconds of processors.

#include <QAction>
#include <QApplication>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QScrollBar>
#include <QTimer>
#include <QTreeView>
#include <cstdlib>
#include <ctime>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "Footprint.h"
#include "shell/widgets/DifferenceTree.h"
#include "shell/widgets/QtText.h"
#include "shell/windows/Desktop.h"
#include "shell/windows/Progress.h"
#include "util/Files.h"

namespace velmora {

namespace {

// Its user picks the task that is next.
class TPickingHost final : public TQtHost {
 public:
  bool OpenFile(const std::string& /*filter*/, std::string& path) override {
    path = chosen;
    return true;
  }
  bool ConfirmOk(const std::string& message) override { return Refuse(message); }
  bool ConfirmYes(const std::string& message) override { return Refuse(message); }

  std::string chosen;

 private:
  static bool Refuse(const std::string& message) {
    std::cerr << message << '\n';
    return false;
  }
};

// Nobody is there to close a message.
void EndOnMessages() {
  auto* timer = new QTimer(qApp);  // NOLINT: of the application
  QObject::connect(timer, &QTimer::timeout, [] {
    const QWidget* box = QApplication::activeModalWidget();
    if (box == nullptr || !box->property("text").isValid()) return;
    std::cerr << FromQt(box->property("text").toString()) << '\n';
    std::_Exit(2);
  });
  constexpr int kEveryMs = 200;
  timer->start(kEveryMs);
}

// How long the window stands still.
class TPulse {
 public:
  TPulse() {
    QObject::connect(&timer_, &QTimer::timeout, [this] { Beat(); });
    timer_.start(1);
  }
  void Start() {
    longest_ = 0;
    since_.start();
  }
  double Longest() {
    Beat();
    return longest_;
  }

 private:
  void Beat() {
    longest_ = std::max(longest_, static_cast<double>(since_.nsecsElapsed()) / 1e6);
    since_.start();
  }

  QTimer timer_;
  QElapsedTimer since_;
  double longest_ = 0;  // ms
};

class TSoakWindow {
 public:
  explicit TSoakWindow(const std::string& folder) : options_(JoinPath(folder, "options.values")) {
    auto host = std::make_unique<TPickingHost>();
    host_ = host.get();
    TDesktopSetup setup;
    setup.settings_file = JoinPath(folder, "Velmora.settings");
    setup.options = &options_;
    desktop_ = std::make_unique<TDesktop>(std::move(setup), std::move(host));
    desktop_->Start(0);
    EndOnMessages();
    Settle();
  }

  double Open(const std::string& task) {
    host_->chosen = task;
    return Timed([this] { Main().Command("acOpenTask")->trigger(); });
  }
  double Analyze() {
    return Timed([this] { Main().Command("acAnalyze")->trigger(); });
  }
  double Type(QChar letter) {
    auto* filter = Main().findChild<QLineEdit*>(QStringLiteral("edFilter"));
    return Timed([&] { filter->setText(filter->text() + letter); });
  }
  double ScrollAPage() {
    constexpr int kPages = 50;
    QScrollBar* bar = List().verticalScrollBar();
    return Timed([&] {
             for (int i = 0; i < kPages; ++i) {
               bar->triggerAction(QAbstractSlider::SliderPageStepAdd);
               Settle();
             }
             bar->triggerAction(QAbstractSlider::SliderToMaximum);
           }) /
           kPages;
  }
  // Each one elsewhere in the list.
  double Select() {
    constexpr int kSelections = 20;
    const int rows = List().model()->rowCount();
    return Timed([&] {
             for (int i = 0; i < kSelections; ++i) {
               List().setCurrentIndex(List().model()->index((i * 7919) % rows, 0));
               Settle();
             }
           }) /
           kSelections;
  }
  double UntickAll(bool ticked) {
    std::vector<std::size_t> all(Count());
    for (std::size_t i = 0; i < all.size(); ++i) all[i] = i;
    return Timed([&] { Tree().OnTick(all, ticked); });
  }
  void Walk(int steps) {
    for (int i = 0; i < steps; ++i) Main().Command("acNextDifference")->trigger();
    Settle();
  }
  void Close() { Main().Command("acCloseTask")->trigger(); }
  std::size_t Count() { return Main().App().data.mtActions.Count(); }

 private:
  TfmMain& Main() { return desktop_->Main(); }
  QTreeView& List() { return *Main().findChild<QTreeView*>(QStringLiteral("tlDifferences")); }
  TDifferenceTree& Tree() {
    return dynamic_cast<TDifferenceTree&>(*Main().findChild<QWidget*>(QStringLiteral("pnDifferences")));
  }
  void Settle() {
    QCoreApplication::processEvents();
    Main().grab();
  }
  template <class Action>
  double Timed(Action action) {
    QElapsedTimer clock;
    clock.start();
    action();
    Settle();
    return static_cast<double>(clock.nsecsElapsed()) / 1e6;
  }

  TUserOptions options_;
  TPickingHost* host_ = nullptr;
  std::unique_ptr<TDesktop> desktop_;
};

void TellTimes(TSoakWindow& window, const std::string& task) {
  const double opened = window.Open(task);
  TPulse pulse;
  pulse.Start();
  const double analysed = window.Analyze();
  const double stood = pulse.Longest();
  const std::size_t actions = window.Count();
  const double scrolled = actions == 0 ? 0 : window.ScrollAPage();
  const double selected = actions == 0 ? 0 : window.Select();
  const double typed = window.Type(QLatin1Char('9'));
  const double unticked = actions == 0 ? 0 : window.UntickAll(false);
  for (const double number : {opened, analysed, stood, scrolled, selected, typed, unticked}) std::cout << number << ' ';
  std::cout << actions << ' ' << static_cast<double>(std::clock()) / CLOCKS_PER_SEC << ' '
            << FootprintLine(bench::Footprint()) << std::endl;
}

// Round after round, each one a message of its own: what a command leaves to be freed goes when it is over.
class TSoak {
 public:
  TSoak(TSoakWindow& window, int rounds, std::vector<std::string> tasks)
      : window_(window), rounds_(rounds), tasks_(std::move(tasks)), found_(tasks_.size()) {
    QObject::connect(&timer_, &QTimer::timeout, [this] { Next(); });
    timer_.start(0);
  }

 private:
  void Next() {
    const auto turn = static_cast<std::size_t>(done_) % tasks_.size();
    constexpr int kSteps = 5;
    window_.Open(tasks_[turn]);
    window_.Analyze();
    window_.Walk(kSteps);
    if (done_ < static_cast<int>(tasks_.size())) {
      found_[turn] = window_.Count();
      std::cerr << tasks_[turn] << ": " << found_[turn] << " actions\n";
    }
    if (window_.Count() != found_[turn]) {
      std::cerr << tasks_[turn] << " is compared otherwise than before\n";
      return QCoreApplication::exit(2);
    }
    window_.Close();
    ++done_;
    if (bench::TellsAfter(done_, rounds_)) std::cout << done_ << ' ' << FootprintLine(bench::Footprint()) << std::endl;
    if (done_ == rounds_) QCoreApplication::exit(0);
  }

  TSoakWindow& window_;
  int rounds_;
  std::vector<std::string> tasks_;
  std::vector<std::size_t> found_;  // actions of each
  int done_ = 0;
  QTimer timer_;
};

}  // namespace

}  // namespace velmora

int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  QApplication application(argc, argv);
  if (argc < 4) return 2;
  const int rounds = std::atoi(argv[1]);
  const std::vector<std::string> tasks(argv + 3, argv + argc);
  velmora::TSoakWindow window(argv[2]);
  if (rounds == 1) {
    velmora::TellTimes(window, tasks.front());
    return 0;
  }
  const velmora::TSoak soak(window, rounds, tasks);
  return QApplication::exec();
}

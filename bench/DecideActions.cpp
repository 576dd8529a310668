// SPDX-License-Identifier: GPL-3.0-or-later

// How long the desktop program takes in a tree of 5,000 differences: from the end of a comparison to the shown tree,
// for each letter of a filter, and from a tick to the script that was written anew. Painted without a screen.
// bench_decide_actions FOLDER [TABLES]: of five differences each; 1,000 where no number is given.

#include <QApplication>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <vector>

#include "app/Application.h"
#include "app/DifferenceList.h"
#include "app/Sources.h"
#include "shell/widgets/DifferenceTree.h"
#include "shell/widgets/ScriptPort.h"
#include "shell/widgets/WindowLog.h"
#include "util/Clock.h"
#include "util/Files.h"

namespace velmora {

namespace {

constexpr int kUsualTables = 1000;  // which the bounds are for
constexpr int kChanges = 5;         // of each table
constexpr int kRuns = 7;

std::string Schema(int tables, int length) {
  std::string text;
  for (int table = 0; table < tables; ++table) {
    text += "create table t" + std::to_string(table) + " (\n  id int(11) NOT NULL";
    for (int column = 0; column < kChanges; ++column)
      text += ",\n  column_" + std::to_string(column) + " varchar(" + std::to_string(length) + ") NOT NULL DEFAULT ''";
    text += ",\n  PRIMARY KEY (id)\n) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4;\n";
  }
  return text;
}

// Milliseconds of an action in the window, with all that it has painted anew.
double Timed(QWidget& window, const std::function<void()>& action) {
  QElapsedTimer clock;
  clock.start();
  action();
  QCoreApplication::processEvents();
  window.grab();
  return static_cast<double>(clock.nsecsElapsed()) / 1e6;
}

struct TTimes {
  std::vector<double> shown, typed, ticked, ticked_half;
};

class TDesk {
 public:
  TDesk(const std::string& reference, const std::string& target)
      : tree_(&window_),
        script_(&window_),
        port_(script_, [] {}),
        log_(SystemClock(), progress_, memo_),
        app_(progress_, port_, log_, SystemClock()),
        list_(app_.data) {
    window_.resize(1000, 700);
    tree_.setGeometry(0, 0, 400, 700);
    script_.setGeometry(400, 0, 600, 700);
    tree_.OnTick = [this](const std::vector<std::size_t>& places, bool on) {
      list_.Tick(places, on);
      tree_.Refresh();
      Write();
    };
    tree_.Show(&list_);
    window_.show();
    app_.Choose(EDialect::Exact);
    app_.OpenTask(MakeSource(reference), MakeSource(target));
    app_.Compare();
  }
  ~TDesk() { tree_.Show(nullptr); }

  void Measure(TTimes& times) {
    times.shown.push_back(Timed(window_, [this] {
      list_.Take(app_.Dialect().Differences());
      tree_.Reload();
      Write();
      tree_.SelectFirst();
    }));
    auto* filter = tree_.findChild<QLineEdit*>(QStringLiteral("edFilter"));
    for (const QChar letter : QStringLiteral("column_4 changed"))
      times.typed.push_back(Timed(window_, [&] { filter->setText(filter->text() + letter); }));
    times.typed.push_back(Timed(window_, [&] { filter->clear(); }));
    times.ticked.push_back(Timed(window_, [this] { tree_.OnTick({7}, false); }));
    std::vector<std::size_t> half;
    for (std::size_t i = 0; i < list_.Count(); i += 2) half.push_back(i);
    times.ticked_half.push_back(Timed(window_, [&] { tree_.OnTick(half, false); }));
  }

 private:
  void Write() {
    app_.Dialect().GenerateScript();
    port_.Flush();
  }

  QWidget window_;
  TDifferenceTree tree_;
  TSqlEdit script_;
  QPlainTextEdit memo_;
  TNoProgress progress_;
  TScriptPort port_;
  TWindowLog log_;
  TApplication app_;
  TDifferenceList list_;
};

void Tell(int actions, const char* what, std::vector<double> times, int bound) {
  std::sort(times.begin(), times.end());
  std::printf("%d actions, %s: median %.0f ms, slowest %.0f ms", actions, what, times[times.size() / 2], times.back());
  if (actions == kUsualTables * kChanges) std::printf(" (at most %d)", bound);
  std::puts("");
}

}  // namespace

}  // namespace velmora

int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  QApplication application(argc, argv);
  if (argc < 2) return 2;
  const int tables = argc > 2 ? std::atoi(argv[2]) : velmora::kUsualTables;
  const int actions = tables * velmora::kChanges;
  const std::string folder = argv[1];
  velmora::WriteFileText(folder + "/reference.sql", velmora::Schema(tables, 80));
  velmora::WriteFileText(folder + "/target.sql", velmora::Schema(tables, 90));
  velmora::TTimes times;
  for (int run = 0; run < (tables > velmora::kUsualTables ? 1 : velmora::kRuns); ++run)
    velmora::TDesk(folder + "/reference.sql", folder + "/target.sql").Measure(times);
  velmora::Tell(actions, "end of the comparison to the shown tree of differences", times.shown, 300);
  velmora::Tell(actions, "a letter of the filter", times.typed, 50);
  velmora::Tell(actions, "a tick and the script written anew", times.ticked, 100);
  velmora::Tell(actions, "half of them unticked and the script written anew", times.ticked_half, 100);
}

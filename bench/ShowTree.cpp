// SPDX-License-Identifier: GPL-3.0-or-later

// How long the desktop program takes from the end of a comparison to the shown tree: script, log, tree of 5,000
// actions, painted without a screen. The bound is a second.

#include <QApplication>
#include <QElapsedTimer>
#include <QPlainTextEdit>
#include <algorithm>
#include <cstdio>
#include <vector>

#include "app/Application.h"
#include "app/Sources.h"
#include "shell/widgets/ActionTreeView.h"
#include "shell/widgets/ScriptPort.h"
#include "shell/widgets/WindowLog.h"
#include "util/Clock.h"
#include "util/Files.h"

namespace velmora {

namespace {

constexpr int kTables = 1000;
constexpr int kNewColumns = 5;
constexpr int kRuns = 7;

std::string Schema(int columns) {
  std::string text;
  for (int table = 0; table < kTables; ++table) {
    text += "create table t" + std::to_string(table) + " (\n  id int(11) NOT NULL";
    for (int column = 0; column < columns; ++column)
      text += ",\n  column_" + std::to_string(column) + " varchar(80) NOT NULL DEFAULT ''";
    text += "\n) ENGINE=InnoDB;\n";
  }
  return text;
}

// Milliseconds after the comparison.
double Show(const std::string& reference, const std::string& target) {
  QWidget window;
  TActionTreeView tree(&window);
  TSqlEdit script(&window);
  QPlainTextEdit memo(&window);
  window.resize(1000, 700);
  tree.setGeometry(0, 0, 300, 700);
  script.setGeometry(300, 0, 700, 700);
  window.show();
  TNoProgress progress;
  TScriptPort port(script, [] {});
  TWindowLog log(SystemClock(), progress, memo);
  TApplication app(progress, port, log, SystemClock());
  app.Choose(EDialect::Standard);
  app.tree.SetView(&tree);
  app.OpenTask(MakeSource(reference), MakeSource(target));
  app.tree.BeginUpdate();
  app.Compare();
  QElapsedTimer clock;
  clock.start();
  app.Dialect().GenerateScript();
  port.Flush();
  log.SetLines(app.Dialect().ActionLog());
  app.tree.EndUpdate();
  QCoreApplication::processEvents();
  window.grab();
  const double time = static_cast<double>(clock.nsecsElapsed()) / 1e6;
  if (app.data.mtActions.Count() != kTables * kNewColumns) std::puts("wrong sample");
  app.tree.SetView(nullptr);
  return time;
}

}  // namespace

}  // namespace velmora

int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  QApplication application(argc, argv);
  if (argc != 2) return 2;
  const std::string folder = argv[1];
  const std::string reference = folder + "/reference.sql";
  const std::string target = folder + "/target.sql";
  velmora::WriteFileText(reference, velmora::Schema(8 + velmora::kNewColumns));
  velmora::WriteFileText(target, velmora::Schema(8));
  std::vector<double> times;
  for (int run = 0; run < velmora::kRuns; ++run) times.push_back(velmora::Show(reference, target));
  std::sort(times.begin(), times.end());
  std::printf("%d actions, end of the comparison to the shown tree: median %.0f ms (at most 1000)\n",
              velmora::kTables * velmora::kNewColumns, times[times.size() / 2]);
}

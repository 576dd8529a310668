// SPDX-License-Identifier: GPL-3.0-or-later

// How long the desktop program takes to show the two texts of a table of 4,000 columns side by side: aligned, marked,
// painted without a screen. The bound is 300 ms, whatever differs.

#include <QApplication>
#include <QElapsedTimer>
#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "shell/widgets/DiffView.h"

namespace velmora {

namespace {

constexpr int kColumns = 4000;
constexpr int kRuns = 7;

std::string Table(const char* type, bool reversed) {
  std::string text = "CREATE TABLE `wide` (\n";
  for (int i = 0; i < kColumns; ++i)
    text += "  `column_" + std::to_string(reversed ? kColumns - i : i) + "` " + type + ",\n";
  return text + "  PRIMARY KEY (`column_1`)\n) ENGINE=InnoDB";
}

struct TMilliseconds {
  double aligned = 0;
  double shown = 0;
};

double Passed(const QElapsedTimer& clock) { return static_cast<double>(clock.nsecsElapsed()) / 1e6; }

TMilliseconds Show(TDiffView& view, const std::string& reference, const std::string& target) {
  QElapsedTimer clock;
  clock.start();
  TAlignedRows rows = AlignTexts(reference, target, TEquivalenceUse());
  const double aligned = Passed(clock);
  view.Show(reference, target, std::move(rows));
  QCoreApplication::processEvents();
  view.grab();
  return {aligned, Passed(clock)};
}

void Measure(TDiffView& view, const char* name, const std::string& target) {
  const std::string reference = Table("int(11) DEFAULT NULL COMMENT 'of the reference'", false);
  std::vector<double> aligned, shown;
  for (int run = 0; run < kRuns; ++run) {
    const TMilliseconds times = Show(view, reference, target);
    aligned.push_back(times.aligned);
    shown.push_back(times.shown);
  }
  std::sort(aligned.begin(), aligned.end());
  std::sort(shown.begin(), shown.end());
  std::printf("%d columns, %s: aligned %.0f ms, shown %.0f ms (at most 300)\n", kColumns, name, aligned[kRuns / 2],
              shown[kRuns / 2]);
}

}  // namespace

}  // namespace velmora

int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  QApplication application(argc, argv);
  velmora::TDiffView view;
  view.resize(1000, 700);
  view.show();
  using velmora::Table;
  velmora::Measure(view, "equal but for their width", Table("int DEFAULT NULL COMMENT 'of the reference'", false));
  velmora::Measure(view, "all changed", Table("varchar(20) NOT NULL COMMENT 'of the target'", false));
  velmora::Measure(view, "all moved", Table("int(11) DEFAULT NULL COMMENT 'of the reference'", true));
  velmora::Measure(view, "all new", "");
}

// SPDX-License-Identifier: GPL-3.0-or-later

// bench_soak ROUNDS FILE: whole comparisons in one process, pair after pair. Each line of FILE is a dialect, a
// reference and a target, with tabs between. Prints after some rounds their number and what the process holds: KB
// resident, KB at the peak, descriptors, threads, children. A pair that is not found as it was the first time ends the
// program.

#include <cstdlib>
#include <fstream>
#include <iostream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "Footprint.h"
#include "app/Application.h"
#include "app/Sources.h"
#include "util/Errors.h"
#include "util/Format.h"

namespace velmora {

namespace {

struct TSoakPair {
  std::string dialect, reference, target;
  std::size_t actions = 0;
  std::string script;
};

std::vector<TSoakPair> ReadPairs(const std::string& path) {
  std::ifstream file(path);
  std::vector<TSoakPair> pairs;
  for (std::string line; std::getline(file, line);) {
    std::istringstream fields(line);
    TSoakPair pair;
    std::getline(fields, pair.dialect, '\t');
    std::getline(fields, pair.reference, '\t');
    std::getline(fields, pair.target, '\t');
    pairs.push_back(pair);
  }
  if (pairs.empty()) RaiseError(Format("There is no pair in %s", path));
  return pairs;
}

// What a user of the window or of the companion asks of a pair.
void CompareWholly(TSoakPair& pair, bool first) {
  TNoProgress progress;
  TLineEditor editor;
  TLineLog log(SystemClock(), progress);
  TApplication app(progress, editor, log, SystemClock());
  app.Choose(pair.dialect == "standard" ? EDialect::Standard : EDialect::Exact);
  app.TakeTask({MakeSource(pair.reference), MakeTarget(pair.target)});
  const std::unique_ptr<TDBConn> compared = app.Compare();
  const std::size_t actions = app.data.mtActions.Count();
  app.Dialect().UnsafeActions();
  std::string reference, target;
  for (const TDifference& difference : app.Dialect().Differences()) {
    app.Dialect().TableTexts(difference.table, reference, target);
    app.Dialect().Aligned(reference, target);
  }
  app.Dialect().GenerateScript();
  std::string script = editor.Text().substr(editor.Text().find('\n') + 1);  // without the time
  app.Dialect().Statements(script);
  if (first) {
    pair.actions = actions;
    pair.script = script;
    std::cerr << Format("%s, %s to %s: %d actions\n", pair.dialect, pair.reference, pair.target, actions);
  }
  if (actions != pair.actions || script != pair.script)
    RaiseError(Format("%s to %s is compared otherwise than before", pair.reference, pair.target));
}

void Soak(int rounds, std::vector<TSoakPair> pairs) {
  for (int done = 0; done < rounds;) {
    const auto turn = static_cast<std::size_t>(done);
    CompareWholly(pairs[turn % pairs.size()], turn < pairs.size());
    ++done;
    if (bench::TellsAfter(done, rounds)) std::cout << done << ' ' << FootprintLine(bench::Footprint()) << std::endl;
  }
}

}  // namespace

}  // namespace velmora

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  try {
    velmora::Soak(std::atoi(argv[1]), velmora::ReadPairs(argv[2]));
  } catch (const std::exception& error) {
    std::cerr << error.what() << '\n';
    return 2;
  }
  return 0;
}

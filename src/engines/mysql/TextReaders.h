// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Connections beside the one of an engine, which share the reading of many creation texts with it.

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "mysqlclient/MyConnection.h"
#include "util/Lists.h"

namespace velmora {

class TTextReaders {
 public:
  // Deals the statements in turn to `own` and to as many further connections as its options allow and the number of
  // statements is worth; each begins at once. `another` makes a further one, logged in and set up as `own`; where that
  // raises, the ones that are there do.
  void Start(TMyConnection& own, const std::function<std::unique_ptr<TMyConnection>()>& another,
             const TStringList& statements);
  void Stop();
  // Runs a statement that gives one row where it was dealt to; by `own` if that connection was lost, or to none.
  void QueryRow(const std::string& statement, TMyConnection& own, std::vector<TVariant>& row);

 private:
  std::vector<std::unique_ptr<TMyConnection>> others_;
  std::unordered_map<std::string, std::size_t> dealt_;  // to which of them; the own ones are not listed
};

}  // namespace velmora

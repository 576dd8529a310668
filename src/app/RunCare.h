// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What a run takes care of beyond its statements.

#include <cstdint>
#include <functional>
#include <string>

#include "exact/run/ExactWishes.h"

namespace velmora {

// A tool that changes a large table by a copy which it keeps in step meanwhile; none where the command is empty.
struct TCopyTool {
  // Words as a shell splits them; {DATABASE}, {TABLE}, {CLAUSES} and {DEFAULTS} in them are filled in.
  std::string command{};
  std::int64_t least_size = 0;  // of a table with its keys, in bytes
};

struct TRunCare {
  int lock_wait = 10;  // seconds that a statement waits for its lock; 0: as long as the server is set to
  int retries = 5;     // of a change of structure that did not get it
  TCopyTool copy_tool{};
  std::function<void(const std::string& text)> tell{};  // what the user should hear while it runs; optional
  // The process of a copy tool, once it runs, its program and the file with its login; optional.
  std::function<void(int process, const std::string& program, const std::string& login)> tool_runs{};
};

// With what is wished instead of what `care` has.
TRunCare WithWishes(TRunCare care, const TWaitWishes& wishes);

}  // namespace velmora

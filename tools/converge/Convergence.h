// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// One seed's schema against a changed one, made equal on a private server by the exact dialect.

#include <cstdint>
#include <string>

#include "support/PrivateServer.h"

namespace velmora::testing {

struct TConvergence {
  std::string fault;  // what did not hold, with what helps to see why; empty when all did
  std::size_t statements = 0;
  std::size_t parts = 0;       // of the schemas that were made
  std::size_t dropped = 0;     // of them, because the server refuses them
  std::size_t rows = 0;        // that were there before, and were looked at afterwards
  std::size_t tables = 0;      // of the reference
  std::size_t skipped = 0;     // tables that were named and left alone
  std::size_t objects = 0;     // of both sides
  std::size_t left_alone = 0;  // of them, likewise
  std::size_t settled = 0;     // views that only the target's server tells to be the same
  std::string refused;         // those that the target's server has refused, with its reason, a line each
  std::size_t renames = 0;     // that were asked for and done
};

struct TConvergenceWishes {
  std::size_t tables = 0;  // of the schema; with 0 their number is random too
  bool objects = false;    // views, triggers, routines and events stand beside them
  bool renames = false;    // some tables and columns have other names on the other side
  bool look = false;       // what misses stays until somebody presses Enter
};

// Makes both databases, compares, synchronises with all that is unsafe, and looks whether: the proof in memory finds no
// difference and has every table as the server then has it; the databases are identical; nothing is left to do; only
// tables that differ were touched; rows that were loaded before are as they were wherever no unsafe action stands.
// Objects whose mode of making lets nobody follow their text are named and left alone.
// The reference may stand on another server: then tables and objects may be named and left alone for what the target's
// server does not have, or refuses, and nothing else. On one server a table is left alone that the server prints as
// nobody can read it.
TConvergence Converge(std::uint64_t seed, const TConvergenceWishes& wishes, TPrivateServer& reference,
                      TPrivateServer& target);

}  // namespace velmora::testing

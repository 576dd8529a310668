// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Work on many servers side by side: each server is a lane with a bounded number of pieces under way, and one that
// cannot be reached costs its time-out once and nobody else's time.

#include <cstddef>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "util/Errors.h"

namespace velmora {

// What a piece of work raises where its server cannot be reached at all.
class EUnreachable : public EVelmora {
 public:
  using EVelmora::EVelmora;
};

// Lanes live on from one Run to the next: what is known of a server stays known. For one thread but for what Run calls.
class TLanes {
 public:
  explicit TLanes(std::size_t width) : width_(width) {}

  std::size_t LaneOf(const std::string& server);  // makes it if there is none

  struct TWork {
    // Does the piece of this number. What it raises but EUnreachable ends the run.
    std::function<void(std::size_t piece)> run;
    // In place of `run`: the lane's server was found to be out of reach. Called for the piece that found it, too.
    std::function<void(std::size_t piece, const std::string& reason)> give_up;
    std::function<bool()> stopped;  // asked before each piece; nothing more begins once it is true
  };
  // Runs the pieces, which are numbered by their places in `lanes`, each on its lane: those of one lane in order, first
  // one alone and then up to `width` side by side. The calls of `work` come from several threads at a time. Waits for
  // all that have begun; then passes on the first error.
  void Run(const std::vector<std::size_t>& lanes, const TWork& work);

 private:
  class TRun;

  struct TLane {
    bool reached = false;
    std::optional<std::string> lost;  // why it cannot be reached
  };

  std::size_t width_;
  std::map<std::string, std::size_t> names_;
  std::vector<TLane> lanes_;
};

}  // namespace velmora

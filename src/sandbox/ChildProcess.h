// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Libraries and drivers that were not made for damaged files or broken servers run in a process of their own: what
// crashes, hangs or eats memory there becomes an error message here.

#include <sys/types.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace velmora {

struct TChildLimits {
  std::chrono::milliseconds silence{0};  // the longest wait for an answer
  std::uint64_t memory = 0;              // bytes that the process may have beyond what this one has
};

// What to say when the child has not answered. How it ended, or how long it was waited for, follows in brackets.
struct TChildFaults {
  std::string ended;      // it died
  std::string silent;     // it gave no answer in time
  std::string no_memory;  // it had no more memory
};

// How the child leaves when its user has done with it.
enum class EChildEnd {
  AtOnce,
  WithGoodbye  // it gets a moment to end what it holds open elsewhere
};

// A child of this process, forked without a new program: `start` runs in it, with all that it captures, and gives what
// answers questions there. Questions and answers are bytes of the two sides' own making (WireFormat.h). The child has
// no open file of this process but the channel, writes nowhere, and ends with this process.
class TChildProcess {
 public:
  using TAnswerer = std::function<std::string(const std::string& question)>;

  // Does not start yet.
  TChildProcess(std::function<TAnswerer()> start, TChildFaults faults, const TChildLimits& limits,
                EChildEnd end = EChildEnd::AtOnce);
  ~TChildProcess() { End(); }
  TChildProcess(const TChildProcess&) = delete;
  TChildProcess& operator=(const TChildProcess&) = delete;

  bool Running() const { return child_ > 0; }
  void Start();  // raises what `start` raises; nothing happens when it runs
  void End();    // nothing happens when it does not run
  // Raises what the answerer raises, and the faults and what the wait (ChildWait.h) raises; after one of these it does
  // not run. Starts it when it does not.
  std::string Ask(const std::string& question);

 private:
  std::string Receive();
  [[noreturn]] void RaiseEnded();
  bool WaitForGoodbye() const;

  std::function<TAnswerer()> start_;
  TChildFaults faults_;
  TChildLimits limits_;
  EChildEnd end_;
  int channel_ = -1;
  pid_t child_ = -1;
};

}  // namespace velmora

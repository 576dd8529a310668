#pragma once

// The controlling terminal of the process, and its Ctrl+C.

#include <signal.h>

#include <string>

#include "core/Host.h"

namespace velmora {

bool HasTerminal();

// Asks on the terminal itself, whatever the standard streams are; with `secret` without echo. Ctrl+C and the end of
// input raise EAbort, the terminal being as it was before.
std::string AskOnTerminal(const std::string& question, bool secret);

// While it lives, a first Ctrl+C ends the work at its next pause, by an error from the message pump; a second one ends
// the process.
class TInterruptHost final : public THost {
 public:
  TInterruptHost();
  ~TInterruptHost() override;
  TInterruptHost(const TInterruptHost&) = delete;
  TInterruptHost& operator=(const TInterruptHost&) = delete;
  void ProcessMessages() override;  // raises "Cancelled"

 private:
  struct sigaction former_ {};
};

}  // namespace velmora

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The companion against the shared server, within this process or as the program itself.

#include <gtest/gtest.h>
#include <string>
#include <utility>
#include <vector>

#include "support/CompanionProcess.h"
#include "support/LiveRun.h"
#include "support/ScratchFolder.h"
#include "util/Files.h"

namespace velmora::testing {

class TLiveCompanion : public ::testing::Test {
 protected:
  std::string File(const std::string& name, const std::string& text) {
    WriteFileText(folder_ / name, text);
    return folder_ / name;
  }
  void Start(std::vector<std::string> arguments) {
    arguments.insert(arguments.end(), {"--socket", TPrivateServer::Shared().Socket()});
    process_.Start(std::move(arguments));
  }
  void Signal(int signal) const { process_.Signal(signal); }
  std::string Told() const { return process_.Told(); }
  TAnswer End() { return process_.End(); }
  template <class Reached>
  static void WaitUntil(const std::string& what, Reached reached) {
    for (int i = 0; i < 3000; ++i) {
      if (reached()) return;
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    FAIL() << "never: " << what;
  }

  TScratchFolder folder_;
  TCompanionProcess process_{folder_.Path()};
};

}  // namespace velmora::testing

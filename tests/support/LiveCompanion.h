#pragma once

// The companion against the shared server.

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "support/LiveRun.h"
#include "support/ScratchFolder.h"
#include "util/Files.h"

namespace velmora::testing {

class TLiveCompanion : public ::testing::Test {
 protected:
  static std::string Source(const std::string& database) { return LiveSource(database); }
  TAnswer Run(std::vector<std::string> arguments, std::function<std::string(const std::string&, bool)> ask = {}) {
    return RunLive(std::move(arguments), std::move(ask));
  }
  std::string File(const std::string& name, const std::string& text) {
    WriteFileText(folder_ / name, text);
    return folder_ / name;
  }

  TScratchFolder folder_;
};

}  // namespace velmora::testing

#pragma once

// The companion against the shared server.

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "support/CompanionRun.h"
#include "support/LiveDatabase.h"
#include "support/ScratchFolder.h"
#include "util/Files.h"

namespace velmora::testing {

class TLiveCompanion : public ::testing::Test {
 protected:
  static std::string Source(const std::string& database) { return "mysql://root:@localhost/" + database; }
  TAnswer Run(std::vector<std::string> arguments, std::function<std::string(const std::string&, bool)> ask = {}) {
    arguments.push_back("--socket");
    arguments.push_back(TPrivateServer::Shared().Socket());
    return RunInProcess(arguments, std::move(ask));
  }
  std::string File(const std::string& name, const std::string& text) {
    WriteFileText(folder_ / name, text);
    return folder_ / name;
  }

  TScratchFolder folder_;
};

}  // namespace velmora::testing

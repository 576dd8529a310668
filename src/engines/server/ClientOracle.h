// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>
#include <string>
#include <utility>

#include "engines/server/OraClient.h"

namespace velmora {

// A session by way of an Oracle client library that is loaded when it connects.
//
// Never run against a real server or client library: there was none to be had. Calls, constants and their order follow
// the library's public interface, and what is tested is tested against a stand-in for it.
class TOraLibrarySession final : public TOraSession {
 public:
  // `home` is the folder of a client, for when the environment names none; see LoadOracleLibrary.
  explicit TOraLibrarySession(std::string home = {});
  ~TOraLibrarySession() override;

  bool GetConnected() const override;
  std::unique_ptr<TOraSession> NewSession() const override;

 private:
  class TLink;

  void DoConnect() override;  // raises a fixed text in direct mode, for which there is no client
  void DoDisconnect() override;
  TOraResult DoRun(const std::string& sql) override;
  void DoCommit() override;
  void DoRollback() override;

  template <class Call>
  auto OnLink(Call call);

  std::string home_;
  std::shared_ptr<TLink> link_;  // shared with calls under way, which are done aside (util/Aside.h)
  bool waits_ = false;           // for one of these
};

}  // namespace velmora

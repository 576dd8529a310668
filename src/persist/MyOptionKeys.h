// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The options of a connection to a MySQL server as further keys of its engine, in task files and sources.

#include <array>
#include <cstddef>
#include <functional>
#include <iterator>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <variant>

#include "mysqlclient/MyConnection.h"
#include "persist/EngineValues.h"

namespace velmora {

inline constexpr const char* kNoYes[] = {"N", "Y"};
inline constexpr const char* kClients[] = {"library", "native"};

inline constexpr int kLongestReadTimeout = 1000000;  // seconds
inline constexpr int kMostConnections = 16;

// A key whose value is one of `words`, the number of which is the field's value; without words a path or a number.
struct TMyOptionKey {
  std::string_view name;
  std::variant<ETls TMyOptions::*, bool TMyOptions::*, std::string TMyOptions::*, int TMyOptions::*> field;
  std::span<const char* const> words = {};
  int least = 0;  // of a number
  int most = kLongestReadTimeout;
};

// In the order in which they are written.
inline constexpr TMyOptionKey kMyOptionKeys[] = {{"tls", &TMyOptions::Tls, kTlsModes},
                                                 {"tls_ca", &TMyOptions::CaFile},
                                                 {"tls_cert", &TMyOptions::CertFile},
                                                 {"tls_key", &TMyOptions::KeyFile},
                                                 {"socket", &TMyOptions::Socket},
                                                 {"client", &TMyOptions::Direct, kClients},
                                                 {"server_public_key", &TMyOptions::ServerPublicKey},
                                                 {"get_server_public_key", &TMyOptions::GetServerPublicKey, kNoYes},
                                                 {"allow_old_login", &TMyOptions::AllowOldLogin, kNoYes},
                                                 {"read_timeout", &TMyOptions::ReadTimeout},
                                                 {"read_ahead", &TMyOptions::ReadAhead, kNoYes},
                                                 {"connections", &TMyOptions::Connections, {}, 1, kMostConnections}};

// The same keys as the engine table lists them.
inline constexpr auto kMyEngineKeys = [] {
  std::array<TEngineKey, std::size(kMyOptionKeys)> keys;
  for (std::size_t i = 0; i < keys.size(); ++i) keys[i].name = kMyOptionKeys[i].name;
  return keys;
}();

using TGivenKeys = std::set<std::string, std::less<>>;

// `options` with what `own` has of these keys, but for the keys in `given`, which `options` has from somebody who comes
// first. Certificates to trust without a word on TLS mean "required". Raises for a value that its key cannot have.
TMyOptions MyOptionsOf(const TEngineValues& own, TMyOptions options = {}, const TGivenKeys& given = {});

// The values of these keys that are not the standard ones; paths are made absolute.
TEngineValues ValuesOfMyOptions(const TMyOptions& options);

}  // namespace velmora

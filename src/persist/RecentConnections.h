// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Connections that were made before, for choosing one again.

#include <cstddef>
#include <string>
#include <vector>

#include "persist/EngineTable.h"

namespace velmora {

inline constexpr std::size_t kRecentConnections = 10;

struct TRecentConnection {
  const TEngineRow* engine = nullptr;
  TEngineValues values;  // secrets among them where they were to be kept
};

// Whether both lead to the same place as the same user: values but for secrets and for the keys in `but`.
bool SameConnection(const TEngineRow& engine, const TEngineValues& a, const TEngineValues& b,
                    std::string_view but = {});

// "shop on db.example.org:3307 (reader)"; behind the server a socket that was named.
std::string ConnectionCaption(const TRecentConnection& connection);

// The list of them, latest first, at most kRecentConnections. It lies in a file of its own, enciphered as a task file
// is and readable for its owner alone.
class TRecentConnections {
 public:
  // Reads the file; one that is missing, damaged or not ours counts as empty. Without a name nothing is kept.
  explicit TRecentConnections(std::string file = {});

  const std::vector<TRecentConnection>& All() const { return all_; }
  // To the head; one that leads to the same place goes. Secrets are kept if `with_secrets`. Writes the file; a failure
  // of that costs the list and nothing else.
  void Add(const TEngineRow& engine, const TEngineValues& values, bool with_secrets);
  void Forget(std::size_t index);  // writes the file too

 private:
  void Read();
  void Write() const;

  std::string file_;
  std::vector<TRecentConnection> all_;
};

}  // namespace velmora

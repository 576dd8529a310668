// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

#include "core/DBConn.h"

namespace velmora {

// A reference that is a creation script on disk. Deliberate: it holds the file's name and nothing more; it does not
// read the file, and whatever needs a connection raises the abstract-call error.
class TDBConnMySQLscript : public TDBConn {
 public:
  explicit TDBConnMySQLscript(std::string filename) : filename_(std::move(filename)) {}

  const std::string& filename() const { return filename_; }

  void SaveParams(const std::string& path, TXMLAccess& store) override;
  void GetDisplayName(std::string& text) override { text = filename_; }
  int GetEngine() override { return kEngineMySQLScript; }

 private:
  std::string filename_;
};

}  // namespace velmora

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <stdlib.h>

#include <filesystem>
#include <stdexcept>
#include <string>

namespace velmora::testing {

// An empty folder of its own, gone with all it holds at the end.
class TScratchFolder {
 public:
  TScratchFolder() : path_(std::filesystem::temp_directory_path() / "velmora-XXXXXX") {
    if (mkdtemp(path_.data()) == nullptr) throw std::runtime_error("no scratch folder");
  }
  ~TScratchFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  TScratchFolder(const TScratchFolder&) = delete;
  TScratchFolder& operator=(const TScratchFolder&) = delete;

  const std::string& Path() const { return path_; }
  std::string operator/(const std::string& name) const { return path_ + "/" + name; }

 private:
  std::string path_;
};

}  // namespace velmora::testing

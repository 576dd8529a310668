// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <sys/resource.h>

#include <csignal>

namespace velmora::testing {

// Files of this process end at some size while it lives, as on a full disk.
class TSizeLimit {
 public:
  explicit TSizeLimit(rlim_t size) : handler_(std::signal(SIGXFSZ, SIG_IGN)) {
    getrlimit(RLIMIT_FSIZE, &old_);
    const rlimit limit{size, old_.rlim_max};
    setrlimit(RLIMIT_FSIZE, &limit);
  }
  ~TSizeLimit() {
    setrlimit(RLIMIT_FSIZE, &old_);
    std::signal(SIGXFSZ, handler_);
  }
  TSizeLimit(const TSizeLimit&) = delete;
  TSizeLimit& operator=(const TSizeLimit&) = delete;

 private:
  void (*handler_)(int);
  rlimit old_{};
};

}  // namespace velmora::testing

// SPDX-License-Identifier: GPL-3.0-or-later
#include "util/Clock.h"

#include <algorithm>
#include <ctime>

namespace velmora {
namespace {

class TSystemClock : public TClock {
 public:
  TDateTime Now() const override {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    return EncodeDate(local.tm_year + 1900, local.tm_mon + 1, local.tm_mday) +
           EncodeTime(local.tm_hour, local.tm_min, std::min(local.tm_sec, 59));  // a leap second is no time of ours
  }
};

}  // namespace

const TClock& SystemClock() {
  static const TSystemClock clock;
  return clock;
}

}  // namespace velmora

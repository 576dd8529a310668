// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/RunCare.h"

namespace velmora {

TRunCare WithWishes(TRunCare care, const TWaitWishes& wishes) {
  care.lock_wait = wishes.lock_wait.value_or(care.lock_wait);
  care.retries = wishes.retries.value_or(care.retries);
  return care;
}

}  // namespace velmora

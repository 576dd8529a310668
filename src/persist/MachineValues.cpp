// SPDX-License-Identifier: GPL-3.0-or-later
#include "persist/MachineValues.h"

#include "persist/ValueStore.h"
#include "util/Errors.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kBadKey[] = "ReadRegStringHKLM - neispravan key";
constexpr char kNoKey[] = "ReadRegStringHKLM - ne postoji key";

}  // namespace

std::string ReadRegStringHKLM(const std::string& path, const std::string& file) {
  const std::size_t name = LastPos("\\", path);
  if (name == 0) RaiseError(kBadKey);
  const std::string key = path.substr(0, name - 1);
  const TValueStore values(file);
  if (!values.HasKey(key)) RaiseError(kNoKey);
  return values.Text(key, path.substr(name)).value_or("");
}

}  // namespace velmora

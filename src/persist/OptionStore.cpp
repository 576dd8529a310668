// SPDX-License-Identifier: GPL-3.0-or-later
#include "persist/OptionStore.h"

#include <utility>

#include "persist/UserFolder.h"

namespace velmora {

namespace {

constexpr char kFile[] = "options.values";

}  // namespace

std::string OptGetStr(const TOptionStore& store, const std::string& name, const std::string& standard) {
  return store.ReadText(name).value_or(standard);
}

int OptGetInt(const TOptionStore& store, const std::string& name, int standard) {
  const std::optional<std::int64_t> value = store.ReadInteger(name);
  return value && std::in_range<int>(*value) ? static_cast<int>(*value) : standard;
}

bool OptGetBool(const TOptionStore& store, const std::string& name, bool standard) {
  return OptGetInt(store, name, standard ? 1 : 0) == 1;
}

void OptSetStr(TOptionStore& store, const std::string& name, const std::string& value) { store.WriteText(name, value); }

void OptSetInt(TOptionStore& store, const std::string& name, int value) { store.WriteInteger(name, value); }

void OptSetBool(TOptionStore& store, const std::string& name, bool value) { store.WriteInteger(name, value ? 1 : 0); }

TUserOptions::TUserOptions() : TUserOptions(UserConfigFile(kFile)) {}

std::optional<std::string> TUserOptions::ReadText(const std::string& name) const {
  return Current().Text(kOptionsKey, name);
}

std::optional<std::int64_t> TUserOptions::ReadInteger(const std::string& name) const {
  return Current().Integer(kOptionsKey, name);
}

void TUserOptions::WriteText(const std::string& name, const std::string& value) {
  Written().SetText(kOptionsKey, name, value);
}

void TUserOptions::WriteInteger(const std::string& name, std::int64_t value) {
  Written().SetInteger(kOptionsKey, name, value);
}

void TUserOptions::Flush() {
  if (!written_) return;
  const TValueStore store = std::move(*written_);
  written_.reset();  // one that cannot be written does not stand in for the file
  store.Save();
}

TValueStore& TUserOptions::Written() {
  if (!written_) written_.emplace(path_);
  return *written_;
}

}  // namespace velmora

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Named text and integer values that the user's options are kept in, and typed access to them.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "persist/ValueStore.h"

namespace velmora {

// The port to the store. Reads never raise: what is missing, unreadable or of the other kind is nothing. Writes raise.
class TOptionStore {
 public:
  virtual ~TOptionStore() = default;
  virtual std::optional<std::string> ReadText(const std::string& name) const = 0;
  virtual std::optional<std::int64_t> ReadInteger(const std::string& name) const = 0;
  virtual void WriteText(const std::string& name, const std::string& value) = 0;
  virtual void WriteInteger(const std::string& name, std::int64_t value) = 0;
  virtual void Flush() = 0;  // what was written since the last call lasts from here on
};

std::string OptGetStr(const TOptionStore& store, const std::string& name, const std::string& standard);
int OptGetInt(const TOptionStore& store, const std::string& name, int standard);
bool OptGetBool(const TOptionStore& store, const std::string& name, bool standard);  // true for the integer 1 alone
void OptSetStr(TOptionStore& store, const std::string& name, const std::string& value);
void OptSetInt(TOptionStore& store, const std::string& name, int value);
void OptSetBool(TOptionStore& store, const std::string& name, bool value);  // 1 or 0

inline constexpr char kOptionsKey[] = "\\SOFTWARE\\Orvanex\\Velmora\\Settings";

// The store of the user: a key in the file "options.values" of UserConfigFolder. Values of other keys, and what another
// program writes before ours starts to write, stay.
class TUserOptions : public TOptionStore {
 public:
  TUserOptions();
  explicit TUserOptions(std::string path) : path_(std::move(path)) {}

  std::optional<std::string> ReadText(const std::string& name) const override;
  std::optional<std::int64_t> ReadInteger(const std::string& name) const override;
  void WriteText(const std::string& name, const std::string& value) override;
  void WriteInteger(const std::string& name, std::int64_t value) override;
  void Flush() override;

 private:
  TValueStore Current() const { return written_ ? *written_ : TValueStore(path_); }
  TValueStore& Written();

  std::string path_;
  std::optional<TValueStore> written_;  // since the last Flush
};

}  // namespace velmora

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Small files of named values: options of the user, values of the machine.
//
// A file is text, one line each: "[KEY]" begins the values of a key, whose parts are joined by "\"; then NAME="TEXT",
// with \\, \", \n and \r for what cannot stand in it, or NAME=INTEGER. Lines that are neither are passed over, so a
// damaged file loses no more than those.

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <variant>

namespace velmora {

class TValueStore {
 public:
  // Of a file that need not exist. Reads it at once; what cannot be read counts as empty, and so does what is no
  // regular file or larger than 1 MB.
  explicit TValueStore(std::string path);

  const std::string& Path() const { return path_; }
  bool HasKey(const std::string& key) const { return keys_.contains(key); }
  std::optional<std::string> Text(const std::string& key, const std::string& name) const;  // none for an integer
  std::optional<std::int64_t> Integer(const std::string& key, const std::string& name) const;

  // Names may hold anything but "=", line ends and a "[" in front; others are refused.
  void SetText(const std::string& key, const std::string& name, const std::string& value);
  void SetInteger(const std::string& key, const std::string& name, std::int64_t value);
  // Replaces the file in one step, its folder made first. Raises with the file's name.
  void Save() const;

 private:
  using TValue = std::variant<std::string, std::int64_t>;
  using TValues = std::map<std::string, TValue>;

  void Read(const std::string& text);
  const TValue* Find(const std::string& key, const std::string& name) const;
  void Set(const std::string& key, const std::string& name, TValue value);

  std::string path_;
  std::map<std::string, TValues> keys_;
};

}  // namespace velmora

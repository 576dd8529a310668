// SPDX-License-Identifier: GPL-3.0-or-later
#include "persist/ValueStore.h"

#include <filesystem>

#include "util/Errors.h"
#include "util/Files.h"
#include "util/Format.h"
#include "util/Lists.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr std::uintmax_t kMaxSize = 1 << 20;

constexpr char kBadName[] = "A value cannot be named \"%s\"";

std::string Escaped(const std::string& text) {
  std::string escaped;
  for (char c : text) {
    if (c == '\\' || c == '"') escaped += '\\';
    if (c == '\n')
      escaped += "\\n";
    else if (c == '\r')
      escaped += "\\r";
    else
      escaped += c;
  }
  return escaped;
}

// The text between the quotes; nothing when they are not there.
std::optional<std::string> Unescaped(std::string_view quoted) {
  if (quoted.size() < 2 || quoted.front() != '"' || quoted.back() != '"') return std::nullopt;
  quoted = quoted.substr(1, quoted.size() - 2);
  std::string text;
  for (std::size_t i = 0; i < quoted.size(); ++i) {
    char c = quoted[i];
    if (c == '\\') {
      if (++i == quoted.size()) return std::nullopt;
      c = quoted[i] == 'n' ? '\n' : quoted[i] == 'r' ? '\r' : quoted[i];
    }
    text += c;
  }
  return text;
}

bool CanBeName(const std::string& name) {
  return !name.empty() && name.front() != '[' && name.find_first_of("=\r\n") == std::string::npos && Trim(name) == name;
}

}  // namespace

TValueStore::TValueStore(std::string path) : path_(std::move(path)) {
  std::error_code ignored;  // nor is anything read that has no end
  const std::filesystem::path file(path_);
  if (!std::filesystem::is_regular_file(file, ignored) || std::filesystem::file_size(file, ignored) > kMaxSize) return;
  try {
    Read(ReadFileText(path_));
  } catch (const EVelmora&) {
    keys_.clear();  // not there, or not for us: no values
  }
}

void TValueStore::Read(const std::string& text) {
  TValues* values = nullptr;
  for (const std::string& line : LinesOf(text)) {
    if (line.starts_with('[') && line.ends_with(']')) {
      values = &keys_[line.substr(1, line.size() - 2)];
      continue;
    }
    const std::size_t equals = line.find('=');
    if (values == nullptr || equals == std::string::npos) continue;
    const std::string name = line.substr(0, equals);
    const std::string_view value = std::string_view(line).substr(equals + 1);
    if (const auto unescaped = Unescaped(value))
      (*values)[name] = *unescaped;
    else if (const auto number = TryStrToInt(value))
      (*values)[name] = *number;
  }
}

const TValueStore::TValue* TValueStore::Find(const std::string& key, const std::string& name) const {
  const auto values = keys_.find(key);
  if (values == keys_.end()) return nullptr;
  const auto found = values->second.find(name);
  return found == values->second.end() ? nullptr : &found->second;
}

std::optional<std::string> TValueStore::Text(const std::string& key, const std::string& name) const {
  const TValue* value = Find(key, name);
  const std::string* text = value == nullptr ? nullptr : std::get_if<std::string>(value);
  return text == nullptr ? std::nullopt : std::optional(*text);
}

std::optional<std::int64_t> TValueStore::Integer(const std::string& key, const std::string& name) const {
  const TValue* value = Find(key, name);
  const std::int64_t* number = value == nullptr ? nullptr : std::get_if<std::int64_t>(value);
  return number == nullptr ? std::nullopt : std::optional(*number);
}

void TValueStore::Set(const std::string& key, const std::string& name, TValue value) {
  if (!CanBeName(name)) RaiseError(Format(kBadName, name));
  if (key.find_first_of("\r\n") != std::string::npos) RaiseError(Format(kBadName, key));
  keys_[key][name] = std::move(value);
}

void TValueStore::SetText(const std::string& key, const std::string& name, const std::string& value) {
  Set(key, name, value);
}

void TValueStore::SetInteger(const std::string& key, const std::string& name, std::int64_t value) {
  Set(key, name, value);
}

void TValueStore::Save() const {
  std::string text;
  for (const auto& [key, values] : keys_) {
    text += "[" + key + "]\n";
    for (const auto& [name, value] : values) {
      const std::int64_t* number = std::get_if<std::int64_t>(&value);
      text += name + "=" +
              (number != nullptr ? Format("%d", *number) : "\"" + Escaped(std::get<std::string>(value)) + "\"") + "\n";
    }
  }
  std::error_code ignored;  // what is wrong shows when the file is written
  std::filesystem::create_directories(std::filesystem::path(path_).parent_path(), ignored);
  WriteFileText(path_, text);
}

}  // namespace velmora

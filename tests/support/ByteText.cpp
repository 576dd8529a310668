// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/ByteText.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <vector>

#include "support/PlainBytes.h"

namespace velmora::testing {
namespace {

[[noreturn]] void Refuse(std::string_view word) { throw std::runtime_error("no bytes: " + std::string(word)); }

// Words, quoted texts as a whole.
std::vector<std::string_view> Words(std::string_view text) {
  std::vector<std::string_view> words;
  for (std::size_t at = 0; (at = text.find_first_not_of(" \r\n", at)) < text.size();) {
    std::size_t end = at;
    if (text[at] == '#') {
      at = text.find('\n', at);
      continue;
    }
    bool quoted = false;
    for (; end < text.size() && (quoted || (text[end] != ' ' && text[end] != '\n')); ++end)
      if (text[end] == '\\')
        ++end;
      else if (text[end] == '"')
        quoted = !quoted;
    words.push_back(text.substr(at, end - at));
    at = end;
  }
  return words;
}

char Digits(std::string_view two) {
  if (two.size() != 2 || two.find_first_not_of("0123456789ABCDEFabcdef") != two.npos) Refuse(two);
  return static_cast<char>(std::stoi(std::string(two), nullptr, 16));
}

std::string Unquoted(std::string_view text) {
  std::string bytes;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '\\' || i + 1 == text.size()) {
      bytes += text[i];
      continue;
    }
    const char letter = text[++i];
    if (letter != 'x') {
      bytes += letter == 'r' ? '\r' : letter == 'n' ? '\n' : letter;
      continue;
    }
    bytes += Digits(text.substr(i + 1, 2));
    i += 2;
  }
  return bytes;
}

std::string Widened(const std::string& letters) {
  std::string bytes;
  for (const char letter : letters) bytes += {letter, '\0'};
  return bytes;
}

std::uint64_t Whole(std::string_view digits) {
  return static_cast<std::uint64_t>(std::stoll(std::string(digits), nullptr, 0));
}

std::string Number(std::string_view word) {
  const std::string_view value = word.substr(word.find(':') + 1);
  if (word.starts_with("f8:")) return Little(std::bit_cast<std::uint64_t>(std::stod(std::string(value))), 8);
  if (word.size() < 5 || word[3] != ':') Refuse(word);
  const auto size = static_cast<std::size_t>(word[2] - '0');
  return word.starts_with("be") ? Big(Whole(value), size) : Little(Whole(value), size);
}

// A word without its "*N" or "/N", and what that makes of it.
std::string BytesOfWord(std::string_view word) {
  const bool quoted = word.ends_with('"') || word.find('"') < word.find_first_of("*/");
  const std::size_t body = quoted ? word.rfind('"') + 1 : std::min(word.find_first_of("*/"), word.size());
  const std::string_view base = word.substr(0, body), more = word.substr(body);
  std::string one = base.starts_with('"')         ? Unquoted(base.substr(1, base.size() - 2))
                    : base.starts_with("u\"")     ? Widened(Unquoted(base.substr(2, base.size() - 3)))
                    : base.find(':') != base.npos ? Number(base)
                                                  : std::string(1, Digits(base));
  if (more.empty()) return one;
  const std::uint64_t count = Whole(more.substr(1));
  if (more.front() == '/') {
    if (one.size() > count) Refuse(word);
    one.resize(count);
    return one;
  }
  std::string bytes;
  for (std::uint64_t i = 0; i < count; ++i) bytes += one;
  return bytes;
}

}  // namespace

std::string BytesOf(std::string_view text) { return BytesOver({}, text); }

std::string BytesOver(std::string bytes, std::string_view text) {
  std::size_t at = 0;
  for (const std::string_view word : Words(text)) {
    if (word.starts_with('@')) {
      at = Whole(word.substr(1));
    } else if (word.starts_with("cut:")) {
      bytes.resize(at = Whole(word.substr(4)));
    } else {
      const std::string put = BytesOfWord(word);
      bytes.resize(std::max(bytes.size(), at + put.size()));
      bytes.replace(at, put.size(), put);
      at += put.size();
    }
  }
  return bytes;
}

void PutFile(const std::string& path, const std::string& bytes) {
  std::filesystem::remove(path);  // else some file systems bring the new bytes to the disk at once
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  file.close();
  if (!file) throw std::runtime_error("cannot write " + path);
}

}  // namespace velmora::testing

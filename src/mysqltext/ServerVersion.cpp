// SPDX-License-Identifier: GPL-3.0-or-later
#include "mysqltext/ServerVersion.h"

#include <algorithm>
#include <array>
#include <charconv>

#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kMariaDb[] = "mariadb";
constexpr std::string_view kReplicationPrefix = "5.5.5-";
constexpr std::string_view kDigits = "0123456789";
constexpr int kPlace = 100;

// Up to three numbers with points between; each is less than a place.
std::array<int, 3> NumbersOf(std::string_view text) {
  std::array<int, 3> numbers{};
  const char* at = text.data();
  const char* const end = at + text.size();
  for (int& number : numbers) {
    const auto read = std::from_chars(at, end, number);
    if (read.ec != std::errc()) number = read.ptr == at ? 0 : kPlace - 1;
    number = std::clamp(number, 0, kPlace - 1);
    if (read.ptr == end || *read.ptr != '.') break;
    at = read.ptr + 1;
  }
  return numbers;
}

}  // namespace

std::string TServerVersion::Text() const { return (mariadb ? "MariaDB " : "MySQL ") + number; }

std::string_view PlainServerVersion(std::string_view version) {
  const bool prefixed = version.starts_with(kReplicationPrefix) && PosNoCase(kMariaDb, version) != 0;
  return version.substr(prefixed ? kReplicationPrefix.size() : 0);
}

TServerVersion ReadServerVersion(std::string_view version) {
  TServerVersion read;
  read.mariadb = PosNoCase(kMariaDb, version) != 0;
  std::string_view rest = PlainServerVersion(version);
  rest.remove_prefix(std::min(rest.find_first_of(kDigits), rest.size()));
  read.number = TrimChar(std::string(rest.substr(0, rest.find_first_not_of("0123456789."))), '.');
  const std::array<int, 3> numbers = NumbersOf(read.number);
  read.major = numbers[0];
  read.version = (numbers[0] * kPlace + numbers[1]) * kPlace + numbers[2];
  return read;
}

}  // namespace velmora

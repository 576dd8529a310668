#include "foreign/TargetServer.h"

#include <array>
#include <cstdlib>
#include <string_view>

#include "util/Errors.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kNoVersion[] = "%s is no version of a server: write one like \"8.4\", \"5.6.24\" or \"mariadb 10.11\"";
constexpr std::string_view kReplicationPrefix = "5.5.5-";
constexpr int kFirstMariaDb = 10;
constexpr int kPlace = 100;
constexpr long kLargestPart = 99;

// Up to three numbers with points between.
std::array<int, 3> Numbers(std::string_view text) {
  std::array<int, 3> numbers{};
  for (int& number : numbers) {
    const std::size_t digits = std::min(text.find_first_not_of("0123456789"), text.size());
    number =
        static_cast<int>(std::min(std::strtol(std::string(text.substr(0, digits)).c_str(), nullptr, 10), kLargestPart));
    text.remove_prefix(digits);
    if (!text.starts_with('.')) break;
    text.remove_prefix(1);
  }
  return numbers;
}

}  // namespace

TTargetServer ReadTargetServer(const std::string& version) {
  const bool named_mariadb = PosNoCase("mariadb", version) != 0;
  const bool named_mysql = PosNoCase("mysql", version) != 0;
  std::string_view rest = version;
  if (named_mariadb && rest.starts_with(kReplicationPrefix)) rest.remove_prefix(kReplicationPrefix.size());
  rest.remove_prefix(std::min(rest.find_first_of("0123456789"), rest.size()));
  const std::array<int, 3> numbers = Numbers(rest);
  if (numbers[0] == 0) RaiseError(Format(kNoVersion, version));
  TTargetServer server;
  server.mariadb = named_mariadb || (!named_mysql && numbers[0] >= kFirstMariaDb);
  server.version = (numbers[0] * kPlace + numbers[1]) * kPlace + numbers[2];
  return server;
}

std::string TTargetServer::Text() const {
  std::string product = mariadb ? "MariaDB" : "MySQL";
  if (version == kNewest) return product;
  return product + Format(" %d.%d.%d", version / (kPlace * kPlace), version / kPlace % kPlace, version % kPlace);
}

}  // namespace velmora

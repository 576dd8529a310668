#include "app/ServerVersion.h"

#include <cstdlib>

#include "core/CreationTexts.h"
#include "util/Text.h"
#include "util/Variant.h"

namespace velmora {

namespace {

constexpr std::string_view kReplicationPrefix = "5.5.5-";  // so that replicas of old clients took newer MariaDB servers
constexpr char kMariaDb[] = "mariadb";

}  // namespace

TServerVersion ReadServerVersion(const std::string& version) {
  TServerVersion read;
  const bool mariadb = PosNoCase(kMariaDb, version) != 0;
  read.product = mariadb ? "MariaDB" : "MySQL";
  std::string_view rest = version;
  if (mariadb && rest.starts_with(kReplicationPrefix)) rest.remove_prefix(kReplicationPrefix.size());
  read.number = rest.substr(0, rest.find_first_not_of("0123456789."));
  read.major = static_cast<int>(std::strtol(read.number.c_str(), nullptr, 10));
  return read;
}

std::optional<TServerVersion> ServerVersionOf(TDBConn& conn) {
  auto* texts = dynamic_cast<TCreationTexts*>(&conn);
  if (texts == nullptr || texts->StructureScript() != nullptr) return std::nullopt;
  return ReadServerVersion(texts->ServerVersion());
}

}  // namespace velmora

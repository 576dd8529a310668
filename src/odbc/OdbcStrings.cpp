// SPDX-License-Identifier: GPL-3.0-or-later
#include "odbc/OdbcStrings.h"

#include <cstdint>
#include <limits>

#include "util/Errors.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kNoPort[] = "\"%s\" is no port of a server";
constexpr char kNoTimeout[] = "\"Connect Timeout\" is no number of seconds";
constexpr char kNoLatin1[] = "The ODBC driver for SQL Server takes only letters of ISO 8859-1 in %s";
constexpr char kNoEnd[] = "The ODBC driver for SQL Server takes no \"};\" in %s";
constexpr char kServer[] = "the name of a server";
constexpr char kDatabase[] = "the name of a database";
constexpr char kUser[] = "a user name";
constexpr char kPassword[] = "a password";
constexpr std::int64_t kLastPort = 65535;

// The driver takes its connection string as ISO 8859-1, whatever character set that asks for.
std::string Latin1Of(std::string_view utf8, const char* what) {
  std::string text;
  for (std::size_t i = 0; i < utf8.size(); ++i) {
    const auto byte = static_cast<unsigned char>(utf8[i]);
    if (byte < 0x80)
      text += utf8[i];
    else if ((byte == 0xC2 || byte == 0xC3) && i + 1 < utf8.size())
      text += static_cast<char>(byte << 6 | (static_cast<unsigned char>(utf8[++i]) & 0x3F));
    else
      RaiseError(Format(kNoLatin1, what));
  }
  return text;
}

// A value in braces ends with the first "};"; the driver knows no doubled braces.
std::string OdbcValue(std::string_view value, const char* what) {
  constexpr std::string_view kSpecial = "[]{}(),;?*=!@ \t";
  if (value.find("};") != std::string_view::npos) RaiseError(Format(kNoEnd, what));
  if (value.find_first_of(kSpecial) == std::string_view::npos) return std::string(value);
  return "{" + std::string(value) + "}";
}

void Add(std::string& text, std::string_view key, std::string_view value, const char* what) {
  text.append(key).append("=").append(OdbcValue(Latin1Of(value, what), what)).append(";");
}

struct TServerPlace {
  std::string server;  // a host, perhaps "\" and an instance
  std::string port;    // empty: the driver's usual one, or the instance's
};

TServerPlace PlaceOf(std::string_view source) {
  TServerPlace place;
  std::string host(source);
  const std::size_t comma = host.find(',');
  if (comma != std::string::npos) {
    place.port = Trim(host.substr(comma + 1));
    const auto number = TryStrToInt(place.port);
    if (!number || *number < 1 || *number > kLastPort) RaiseError(Format(kNoPort, place.port));
    host.resize(comma);
  }
  const std::size_t slash = host.find('\\');
  const std::string instance = slash == std::string::npos || !place.port.empty() ? "" : host.substr(slash);
  host = Trim(host.substr(0, slash));
  if (host.empty() || host == "." || SameText(host, "(local)")) host = "localhost";
  place.server = host + instance;
  return place;
}

}  // namespace

std::string FreeTdsString(const TInitString& properties) {
  const TServerPlace place = PlaceOf(properties.Value("Data Source"));
  std::string text = "DRIVER={FreeTDS};";  // in capitals, since the driver manager folds letters by the user's language
  Add(text, "Server", place.server, kServer);
  if (!place.port.empty()) text += "Port=" + place.port + ";";
  if (!properties.Value("Initial Catalog").empty())
    Add(text, "Database", properties.Value("Initial Catalog"), kDatabase);
  if (IsWindowsLogin(properties)) {
    text += "Trusted_Connection=Yes;";
  } else {
    Add(text, "UID", properties.Value("User ID"), kUser);
    Add(text, "PWD", properties.Value("Password"), kPassword);
  }
  // Without a character set names come as ISO 8859-1, and letters beyond that as question marks. Without a version the
  // driver tries one after the other, down to one that sends passwords as they are, and hangs where nobody answers;
  // servers that know only an older one say so.
  return text + "ClientCharset=UTF-8;TDS_Version=7.4";
}

bool IsWindowsLogin(const TInitString& properties) { return SameText(properties.Value("Integrated Security"), "SSPI"); }

std::string FromLatin1(std::string_view text) {
  std::string utf8;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte >= 0x80) utf8 += static_cast<char>(0xC0 | byte >> 6);
    utf8 += byte < 0x80 ? c : static_cast<char>(0x80 | (byte & 0x3F));
  }
  return utf8;
}

std::optional<int> LoginTimeout(const TInitString& properties) {
  const std::string text = properties.Value("Connect Timeout");
  if (text.empty()) return std::nullopt;
  const auto seconds = TryStrToInt(text);
  if (!seconds || *seconds < 0 || *seconds > std::numeric_limits<int>::max()) RaiseError(kNoTimeout);
  return static_cast<int>(*seconds);
}

}  // namespace velmora

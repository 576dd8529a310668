// SPDX-License-Identifier: GPL-3.0-or-later
#include "mysqlnet/MySqlErrors.h"

#include <iterator>

namespace velmora {

namespace {

constexpr int kFirst = 2000;

// In numeric order, without gaps.
constexpr std::string_view kTexts[] = {
    "Unknown MySQL error",
    "Can't create UNIX socket (%d)",
    "Can't connect to local MySQL server through socket '%s' (%d)",
    "Can't connect to MySQL server on '%s' (%d)",
    "Can't create TCP/IP socket (%d)",
    "Unknown MySQL Server Host '%-.64s' (%d)",
    "MySQL server has gone away",
    "Protocol mismatch. Server Version = %d Client Version = %d",
    "MySQL client run out of memory",
    "Wrong host info",
    "Localhost via UNIX socket",
    "%-.64s via TCP/IP",
    "Error in server handshake",
    "Lost connection to MySQL server during query",
    "Commands out of sync;  You can't run this command now",
    "%-.64s via named pipe",
    "Can't wait for named pipe to host: %-.64s  pipe: %-.32s (%d)",
    "Can't open named pipe to host: %-.64s  pipe: %-.32s (%d)",
    "Can't set state of named pipe to host: %-.64s  pipe: %-.32s (%d)",
    "Can't initialize character set %-.64s (path: %-.64s)",
    "Got packet bigger than 'max_allowed_packet'",
    "Embedded server",
    "Error on SHOW SLAVE STATUS:",
    "Error on SHOW SLAVE HOSTS:",
    "Error connecting to slave:",
    "Error connecting to master:",
    "SSL connection error",
    "Malformed packet",
    "This client library is licensed only for use with MySQL servers having '%s' license",
    "Invalid use of null pointer",
    "Statement not prepared",
    "Not all parameters data supplied",
    "Data truncated",
    "No parameters exist in the statement",
    "Invalid parameter number",
    "Can't send long data for non string or binary data types (parameter: %d)",
    "Using not supported parameter type: %d (parameter: %d)",
    "Shared memory (%d)",
    "Can't open shared memory. Request event don't create  (%d)",
    "Can't open shared memory. Answer event don't create  (%d)",
    "Can't open shared memory. File mapping don't create  (%d)",
    "Can't open shared memory. Map of memory don't create  (%d)",
    "Can't open shared memory. File mapping don't create for client (%d)",
    "Can't open shared memory. Map of memory don't create for client (%d)",
    "Can't open shared memory. Don't create %s event for client (%d)",
    "Can't open shared memory. Can't send the request event to server (%d)",
    "Wrong or unknown protocol",
};

struct TText {
  int number;
  std::string_view text;
};
constexpr TText kOthers[] = {
    {kPacketsOutOfOrder, "Net packets out of order: received[%d], expected[%d]"},
    {kNotInflated, "Couldn't uncompress communication packet"},
    {kUnknownPlugin, "The server asks for a way to log in that is not known here: %s; --client library may know it"},
    {kSecondFactor,
     "The account wants a second proof besides the password, by a way to log in that is not known here: %s; use an "
     "account that needs the password alone"},
    {kLoginRefused, "The login was given up before the password left: %s"},
    {kFileRefused, "The server asked for the local file %s, which it was not offered"},
};

}  // namespace

std::string_view MySqlErrorText(int number) {
  if (number >= kFirst && number < kFirst + static_cast<int>(std::size(kTexts))) return kTexts[number - kFirst];
  for (const TText& other : kOthers)
    if (other.number == number) return other.text;
  return kTexts[0];
}

}  // namespace velmora

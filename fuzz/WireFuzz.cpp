// SPDX-License-Identifier: GPL-3.0-or-later

// A server that says anything. The first byte of a text chooses how it is spoken to, the rest is what it says: from the
// greeting on, or from the reply to a query on.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "Harnesses.h"
#include "mysqlnet/MySqlResultSet.h"
#include "mysqlnet/MySqlSession.h"
#include "support/MySqlDialogue.h"

namespace velmora::fuzzing {
namespace {

enum EChoice : std::uint8_t { kSpeakCurrent = 1, kSpeakCompressed = 2, kReadWhole = 4, kFromReply = 8, kLaterEnd = 16 };

// Greeting and consent of an old server, or of one of today, which may end rows in the later way.
std::string Login(std::uint8_t choice) {
  using velmora::testing::Packet, velmora::testing::Wire;
  const std::string greeting =
      (choice & kSpeakCurrent) == 0
          ? Wire("0A '4.1.0' 00 4D000000 'abcdefgh' 00 2CA0 08 0200 00*13 'ijklmnopqrst' 00")
          : Wire(
                "0A '8.0.33' 00 4D000000 'abcdefgh' 00 FFF7 08 0200 8E {later end} 15 00*10 'ijklmnopqrst' 00 "
                "'mysql_native_password' 00",
                {{"later end", std::string(1, (choice & kLaterEnd) != 0 ? '\x11' : '\x10')}});
  return Packet(0, greeting) + Packet(2, Wire("00*7"));
}

void ReadRows(TMySqlSession& session, bool whole) {
  TMySqlResultSet rows(session);
  if (whole) rows.FetchAll();
  while (rows.Next())
    for (std::size_t i = 0; i < rows.Columns().size(); ++i) rows.Value(i);
}

void Talk(std::uint8_t choice, const std::string& said) {
  std::string sent;
  TMySqlSession session;
  session.protocol = 2;
  session.current_protocol = (choice & kSpeakCurrent) != 0;
  session.client_flag = kMultiResults | ((choice & kSpeakCompressed) != 0 ? kCompression : 0U);
  session.max_result_size = 1 << 20;
  session.net.vio =
      std::make_unique<testing::TMemoryVio>((choice & kFromReply) != 0 ? Login(choice) + said : said, sent);
  session.Connect("host", "joe", "secret", "db", 0, 0, "");
  const std::string query = "select 1";
  session.SimpleCommand(kQuery, query, true, query.size());
  do {
    session.ReadQueryResult();
    if (session.has_result) ReadRows(session, (choice & kReadWhole) != 0);
  } while (session.HasMoreResults());
}

}  // namespace

void FuzzWire(std::string_view input) {
  if (!input.empty()) Talk(static_cast<std::uint8_t>(input[0]), std::string(input.substr(1)));
}

}  // namespace velmora::fuzzing

// SPDX-License-Identifier: GPL-3.0-or-later

// A server that says anything. The first byte of a text chooses how it is spoken to, the rest is what it says: from the
// greeting on, or from the reply to a query on.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "mysqlnet/MySqlResultSet.h"
#include "mysqlnet/MySqlSession.h"
#include "support/MySqlDialogue.h"
#include "util/Errors.h"

namespace velmora {
namespace {

enum EChoice : std::uint8_t { kSpeakCurrent = 1, kSpeakCompressed = 2, kReadWhole = 4, kFromReply = 8, kLaterEnd = 16 };

std::string Login(std::uint8_t choice) {
  using namespace testing;
  const std::uint32_t later_end = (choice & kLaterEnd) != 0 ? kDeprecateEof : 0;
  const std::string greeting =
      (choice & kSpeakCurrent) != 0 ? CurrentGreeting(kCurrent | later_end) : OldGreeting(kNewPasswords);
  return greeting + Packet(2, Zeros(7));
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
}  // namespace velmora

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  try {
    velmora::Talk(data[0], std::string(reinterpret_cast<const char*>(data) + 1, size - 1));
  } catch (const velmora::EVelmora&) {  // what everything but a right dialogue has to end in
  }
  return 0;
}

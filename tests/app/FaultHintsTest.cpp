// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/FaultHints.h"

#include <gtest/gtest.h>

#include "engines/mysql/DBConnMySQL.h"
#include "support/FakeMyConnection.h"

namespace velmora {
namespace {

TEST(FaultHintsTest, AStatementThatIsTooLargeForItsServer) {
  const char* const kSure =
      "that statement has 2000000 bytes, which is too large for the server, and was not run: "
      "max_allowed_packet, which is 2000000 bytes, must be raised";
  const char* const kUnsure =
      "that statement has 2000000 bytes; if that is too large for the server, its "
      "max_allowed_packet must be raised, and otherwise whether it took effect is not known";
  const struct {
    std::size_t size;
    const char* limit;  // null: the server can't be asked
    bool failed, lost;
    const char* hint;
  } cases[] = {
      {2000000, "2000000", true, true, kSure},
      {2000000, "2000002", true, true, ""},
      {2000000, nullptr, true, true, kUnsure},
      {2000, nullptr, true, true, ""},
      {2000, "1024", true, true,
       "that statement has 2000 bytes, which is too large for the server, and was not run: max_allowed_packet, which "
       "is "
       "1024 bytes, must be raised"},
      {1000, "1024", true, true, ""},
      {2000000, "1024", true, false, ""},
      {2000000, "1024", false, true, ""},
  };
  for (const auto& c : cases) {
    const auto server = std::make_shared<testing::TFakeMyServer>();
    if (c.limit == nullptr)
      server->connect_error = "gone";
    else
      server->AddColumn("select @@max_allowed_packet", {c.limit});
    TDBConnMySQL target(std::make_unique<testing::TFakeMyConnection>(server), "h", 3306, "d", "u", "p");
    TRunReport report;
    report.statements.resize(1);
    report.statements[0].text.assign(c.size, 'x');
    if (c.failed) report.failed = 0;
    report.lost = c.lost;
    EXPECT_EQ(PacketHint(target, report), c.hint) << c.size;
  }
}

}  // namespace
}  // namespace velmora

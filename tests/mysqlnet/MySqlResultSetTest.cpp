#include "mysqlnet/MySqlResultSet.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "mysqlnet/MySqlErrors.h"
#include "mysqlnet/SessionRig.h"
#include "support/MessageOf.h"

namespace velmora {
namespace {

using namespace velmora::testing;
using ::testing::ElementsAre;

const std::string kNull = "\xFB";
constexpr std::uint32_t kLaterEnd = 0x1000000;

std::string Column41(const std::string& name, int type) {
  return Text("def") + Text("db") + Text("t") + Text("ot") + Text(name) + Text("o" + name) + "\x0C" + Int(45, 2) +
         Int(80, 4) + Int(static_cast<std::uint64_t>(type), 1) + Int(0x1001, 2) + Int(2, 1) + Zeros(2);
}

std::string OldColumn(const std::string& name, int type) {
  return Text("t") + Text(name) + "\3" + Int(80, 3) + "\1" + Int(static_cast<std::uint64_t>(type), 1) + "\3" +
         Int(0x1001, 2) + Int(2, 1);
}

// What a server says to a query of two columns, in the three forms of results; the rows begin with packet `FirstRow`.
struct TForm {
  const char* name;
  bool current;
  std::uint32_t flags;

  TDialogue Asked() const { return LoggedIn(current, flags).Client(Command("q")); }
  std::string Head() const {
    const std::string a = current ? Column41("a", 3) : OldColumn("a", 3);
    const std::string b = current ? Column41("b", 253) : OldColumn("b", 253);
    const std::string head = Packet(1, "\2") + Packet(2, a) + Packet(3, b);
    return flags == kLaterEnd ? head : head + Packet(4, End());
  }
  int FirstRow() const { return flags == kLaterEnd ? 4 : 5; }
  std::string End(std::uint16_t status = 0x22) const {
    if (flags == kLaterEnd) return "\xFE" + Zeros(2) + Int(status, 2) + Int(7, 2);
    return current ? "\xFE" + Int(7, 2) + Int(status, 2) : "\xFE";
  }
};

const TForm kForms[] = {{"five fields", false, 0}, {"4.1", true, 0}, {"4.1, later end", true, kLaterEnd}};

std::string RowText(const TMySqlResultSet& rows) {
  std::string text;
  for (std::size_t i = 0; i < rows.Columns().size(); ++i)
    text += (i == 0 ? "" : "|") + std::string(rows.Value(i).value_or("null"));
  return text;
}

std::vector<std::string> Rows(TMySqlResultSet& rows) {
  std::vector<std::string> texts;
  while (rows.Next()) texts.push_back(RowText(rows));
  return texts;
}

TEST(MySqlResultSet, RowsOneByOneOrAllAtOnce) {
  const std::string long_text(300, 'x');
  for (const TForm& form : kForms) {
    for (const bool whole : {false, true}) {
      SCOPED_TRACE(form.name);
      const int first = form.FirstRow();
      TSessionRig rig(
          form.Asked()
              .Server(form.Head() + Packet(first, Text("1") + Text("one")) + Packet(first + 1, kNull + Text("")))
              .Server(Packet(first + 2, Text("3") + "\xFC" + Int(300, 2) + long_text))
              .Server(Packet(first + 3, Text("4") + "\xFE" + Int(4, 8) + "four"))
              .Server(Packet(first + 4, form.End())),
          form.current);
      rig.Connect();
      rig.Query("q");
      TMySqlResultSet rows(rig.session);
      ASSERT_EQ(rows.Columns().size(), 2U);
      EXPECT_EQ(rows.Columns()[0].name, "a");
      EXPECT_EQ(rows.Columns()[0].type, 3);
      EXPECT_EQ(rows.Columns()[1].type, 253);
      EXPECT_EQ(rows.Columns()[1].flags, 0x1001U);
      EXPECT_EQ(rows.Columns()[1].length, 80U);
      EXPECT_EQ(rows.Columns()[1].decimals, 2);
      EXPECT_EQ(rows.Columns()[1].org_name, form.current ? "ob" : "b");
      EXPECT_EQ(rows.Columns()[1].charset, form.current ? 45U : 0U);
      if (whole) rows.FetchAll();
      EXPECT_EQ(rows.RowCount(), whole ? 4U : 0U);
      EXPECT_THAT(Rows(rows), ElementsAre("1|one", "null|", "3|" + long_text, "4|four"));
      EXPECT_FALSE(rows.Next());
      rows.First();
      EXPECT_EQ(Rows(rows).size(), whole ? 4U : 0U);
      rig.ExpectDone();
      EXPECT_FALSE(rig.session.has_result);
      EXPECT_EQ(rig.session.server_status, form.current ? 0x22 : 2);
      EXPECT_EQ(rig.session.warning_count, form.current ? 7 : 0);
    }
  }
}

TEST(MySqlResultSet, RowsThatNobodyWants) {
  const TForm& form = kForms[1];
  const std::string rows_of_it = form.Head() + Packet(5, Text("1") + Text("one")) + Packet(6, Text("2") + Text("two"));
  TSessionRig rig(form.Asked().Server(rows_of_it + Packet(7, form.End())).Client(Command("z")).Server(CurrentOk(1)),
                  true);
  rig.Connect();
  rig.Query("q");
  {
    TMySqlResultSet rows(rig.session);
    EXPECT_TRUE(rows.Next());
    rows.Skip();
    EXPECT_THROW(rows.Value(0), EListError);
    EXPECT_FALSE(rows.Next());
  }
  rig.Query("z");
  rig.ExpectDone();
  EXPECT_THROW(TMySqlResultSet{rig.session}, EMySqlException);
}

TEST(MySqlResultSet, FurtherResults) {
  const TForm& form = kForms[1];
  TSessionRig rig(form.Asked()
                      .Server(form.Head() + Packet(5, Text("1") + Text("one")) + Packet(6, form.End(0x0A)))
                      .Server(Packet(7, Zeros(3) + Int(2, 2) + Zeros(2))),
                  true);
  rig.Connect();
  rig.Query("q");
  TMySqlResultSet rows(rig.session);
  EXPECT_EQ(Rows(rows).size(), 1U);
  EXPECT_TRUE(rig.session.HasMoreResults());
  rig.session.ReadQueryResult();
  EXPECT_FALSE(rig.session.HasMoreResults());
  rig.ExpectDone();
}

// A server's error ends the result and nothing else.
TEST(MySqlResultSet, ErrorsOfTheServer) {
  for (const TForm& form : kForms) {
    SCOPED_TRACE(form.name);
    const std::string state = form.current ? "#70100" : "";
    const std::string row = Packet(form.FirstRow(), Text("1") + Text("one"));
    TDialogue dialogue = form.Asked();
    dialogue.Server(form.Head() + row + ErrorPacket(form.FirstRow() + 1, 1317, state + "Interrupted"))
        .Client(Command("q"))
        .Server(Packet(1, "\2") + ErrorPacket(2, 1317, state + "Interrupted"))
        .Client(Command("z"))
        .Server(form.current ? CurrentOk(1) : OldOk(1));
    TSessionRig rig(dialogue, form.current);
    rig.Connect();
    rig.Query("q");
    TMySqlResultSet rows(rig.session);
    EXPECT_TRUE(rows.Next());
    EXPECT_EQ(MessageOf([&] { rows.Next(); }), "Interrupted");
    EXPECT_FALSE(rows.Next());
    rig.Query("q");
    EXPECT_EQ(MessageOf([&] { TMySqlResultSet{rig.session}; }), "Interrupted");
    rig.Query("z");
    rig.ExpectDone();
  }
}

TEST(MySqlResultSet, BrokenResults) {
  const TForm& form = kForms[1];
  struct {
    const char* name;
    std::string reply;
  } const cases[] = {
      {"too many columns", Packet(1, "\xFE" + Int(1ULL << 40, 8))},
      {"columns end early", Packet(1, "\2") + Packet(2, Column41("a", 3)) + Packet(3, form.End())},
      {"no end behind the columns", Packet(1, "\1") + Packet(2, Column41("a", 3)) + Packet(3, Text("row"))},
      {"a name beyond the packet", Packet(1, "\1") + Packet(2, "\3def\x20x")},
      {"a name of a huge length", Packet(1, "\1") + Packet(2, "\3def\xFE" + Int(~0ULL, 8))},
      {"a column without numbers", Packet(1, "\1") + Packet(2, Column41("a", 3).substr(0, 24))},
      {"a row without a value", form.Head() + Packet(5, Text("1"))},
      {"a value beyond the row", form.Head() + Packet(5, Text("1") + "\x05xxxx")},
      {"a value of a huge length", form.Head() + Packet(5, Text("1") + "\xFE" + Int(~0ULL, 8) + "x")},
      {"half a length", form.Head() + Packet(5, Text("1") + "\xFC\1")},
      {"no length", form.Head() + Packet(5, Text("1") + "\xFF\1")},
      {"an empty row", form.Head() + Packet(5, "")},
      {"an end without status", form.Head() + Packet(5, "\xFE\1")},
      {"a row out of order", form.Head() + Packet(6, Text("1") + Text("one"))},
      {"nothing more", form.Head()},
  };
  for (const auto& one : cases) {
    for (const bool whole : {false, true}) {
      SCOPED_TRACE(one.name);
      TSessionRig rig(form.Asked().Server(one.reply), true);
      rig.Connect();
      rig.Query("q");
      EXPECT_THROW(
          {
            TMySqlResultSet rows(rig.session);
            if (whole) rows.FetchAll();
            while (rows.Next()) {
            }
          },
          EMySqlException);
      EXPECT_TRUE(rig.session.net.Lost());
      EXPECT_EQ(rig.dialogue.Fault(), "");
    }
  }
}

// Rows that never end: one by one they take no memory, at once they end at the limit.
TEST(MySqlResultSet, EndlessRows) {
  const TForm& form = kForms[1];
  std::string reply = form.Head();
  for (int i = 0; i < 20000; ++i) reply += Packet((i + 5) & 0xFF, Text("1") + Text(std::string(100, 'x')));
  for (const bool whole : {false, true}) {
    TSessionRig rig(form.Asked().Server(reply), true);
    rig.session.max_result_size = 500000;
    rig.Connect();
    rig.Query("q");
    TMySqlResultSet rows(rig.session);
    EXPECT_EQ(MessageOf([&] {
                if (whole) rows.FetchAll();
                while (rows.Next()) {
                }
              }),
              whole ? "MySQL client run out of memory" : "Lost connection to MySQL server during query");
  }
}

// With the older protocol a row that takes two packets is read one by one only.
TEST(MySqlResultSet, HugeRows) {
  const std::string huge = "\xFD" + Int(0xFFFFFA, 3) + std::string(0xFFFFFA, 'h');
  for (const bool current : {false, true}) {
    for (const bool whole : {false, true}) {
      const TForm& form = kForms[current ? 1 : 0];
      const std::string row = huge + Text("two");
      TSessionRig rig(form.Asked()
                          .Server(form.Head() + Packet(5, row.substr(0, 0xFFFFFF)) + Packet(6, row.substr(0xFFFFFF)))
                          .Server(Packet(7, form.End())),
                      current);
      rig.Connect();
      rig.Query("q");
      TMySqlResultSet rows(rig.session);
      if (whole && !current) {
        EXPECT_EQ(MessageOf([&] { rows.FetchAll(); }), "Cannot retrieve huge data in FetchAll mode");
        continue;
      }
      if (whole) rows.FetchAll();
      ASSERT_TRUE(rows.Next());
      EXPECT_EQ(rows.Value(0)->size(), 0xFFFFFAU);
      EXPECT_EQ(rows.Value(1), "two");
      EXPECT_FALSE(rows.Next());
      rig.ExpectDone();
    }
  }
}

// The connection ends after each byte of a whole dialogue: always the same clear error, never anything else.
TEST(MySqlResultSet, CutAtEveryByte) {
  for (const TForm& form : kForms) {
    const int first = form.FirstRow();
    const auto script = [&] {
      return form.Asked().Server(form.Head() + Packet(first, Text("1") + Text("one")) + Packet(first + 1, form.End()));
    };
    const std::size_t size = script().ServerBytes();
    for (std::size_t cut = 0; cut < size; ++cut) {
      TSessionRig rig(script().CutAt(cut), form.current);
      EXPECT_EQ(MessageOf([&] {
                  rig.Connect();
                  rig.Query("q");
                  TMySqlResultSet rows(rig.session);
                  while (rows.Next()) {
                  }
                }),
                "Lost connection to MySQL server during query")
          << form.name << " " << cut;
      EXPECT_EQ(rig.dialogue.Fault(), "");
    }
  }
}

}  // namespace
}  // namespace velmora

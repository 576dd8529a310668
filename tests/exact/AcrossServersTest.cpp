// SPDX-License-Identifier: GPL-3.0-or-later

// Tables of one server as another one would have them.

#include <gtest/gtest.h>

#include "exact/compare/Dependence.h"
#include "exact/compare/ServerLanguage.h"
#include "exact/compare/Translation.h"
#include "exact/objects/ObjectsAcross.h"
#include "support/CaseFile.h"
#include "support/FakeConn.h"
#include "util/Text.h"

namespace velmora::testing {
namespace {

std::string Across(const TServerTraits& from, const TServerTraits& to, const std::string& table) {
  const std::size_t options = table.find(" @");
  TTableText read =
      ReadTableText(WithoutMarks("create table t (" + table.substr(0, options) + ") " + table.substr(options + 2)));
  TranslateTable(read, from, to);
  const TStringList missing = MissingOn(to, read, from.mysql != to.mysql);
  if (!missing.empty()) return "without " + JoinList(missing, "; ");
  std::string told;
  for (const TElement& element : read.elements) told += (told.empty() ? "" : ", ") + element.text.Str();
  for (const TTableOption& option : read.options) told += " " + option.name + "=" + option.value;
  return told;
}

TEST(AcrossServers, TablesAreTranslatedOrWhatIsMissingIsNamed) {
  for (TStringList& cells : CaseRows("exact/across.txt")) {
    cells.resize(4);
    EXPECT_EQ(Across(ReadServerTraits(cells[0]), ReadServerTraits(cells[1]), cells[2]), cells[3])
        << cells[0] << " | " << cells[1] << " | " << cells[2];
  }
}

TEST(AcrossServers, TablesMayNotStandTogether) {
  const TTableText tables[] = {
      ReadTableText("create table a (x int, key (x), constraint c check (x > 0))"),
      ReadTableText(
          "create table b (x int, constraint C check (x > 0), constraint f foreign key (x) references a (x))"),
      ReadTableText("create table d (x int, constraint f foreign key (x) references a (x))")};
  const std::vector<const TTableText*> all = {&tables[0], &tables[1], &tables[2]};
  const auto told = [&](const char* version) {
    std::string lines;
    for (const auto& [table, reason] : MissingTogether(ReadServerTraits(version), all))
      lines += table + ": " + reason + "\n";
    return lines;
  };
  EXPECT_EQ(told("10.11.6-MariaDB"), "");
  EXPECT_EQ(told("8.0.36"), "b: check C, a name that a check of table a has, too, which MySQL does not take\n");
  EXPECT_EQ(told("9.7.4"),
            "b: foreign key f, to columns that no unique key of table a consists of\n"
            "d: foreign key f, to columns that no unique key of table a consists of\n");
}

TEST(AcrossServers, TablesAreSkippedWithThoseOnWhichTheirChangesHang) {
  struct TCase {
    std::string there;
    std::string wanted;
    std::string told;
  };
  const std::string text = "create table s (p int, constraint f foreign key (p) references t (a))";
  const TStayingTable skipped = {"s", text, ReadTableText(text)};
  const TStayingTable unread = {"s", "FOREIGN KEY (`p`p`) REFERENCES `t` (`a`)", {}};
  const TCase cases[] = {{"a int, b int, key (a)", "a bigint, b int, key (a)", "below s"},
                         {"a int, b int, unique key k (a)", "a int, b int, key k (a)", "below s"},
                         {"a int, b int, key (a)", "a int, b bigint, key (a)", ""},
                         {"a int, b int", "a int, b int, constraint g foreign key (b) references s (p)", "beside s"},
                         {"a int, b int, constraint g foreign key (b) references s (p)",
                          "a int, b bigint, constraint g foreign key (b) references s (p)", "beside s"},
                         {"a int, b int, constraint g foreign key (b) references s (p)",
                          "a int, b int, c int, constraint g foreign key (b) references s (p)", ""},
                         {"a int, b int, constraint g foreign key (b) references s (p)", "a int, b int", ""}};
  for (const TCase& c : cases) {
    const TTableText there = ReadTableText("create table t (" + c.there + ")");
    const TTableText wanted = ReadTableText("create table t (" + c.wanted + ")");
    const std::string beside = ChangesBeside(&wanted, &there, {"s"});
    const std::string below = ChangesBelow(&wanted, &there, {skipped});
    EXPECT_EQ((beside.empty() ? "" : "beside " + beside) + (below.empty() ? "" : "below " + below), c.told)
        << c.there << " | " << c.wanted;
  }
  const TTableText there = ReadTableText("create table t (a int, b int)");
  EXPECT_EQ(ChangesBelow(&there, &there, {unread}), "");
  const TTableText wanted = ReadTableText("create table t (a int, b bigint)");
  EXPECT_EQ(ChangesBelow(&wanted, &there, {unread}), "s") << "nobody knows which column it refers to";
}

// A server without collations of Unicode 9.0.
class TOlderServer : public TFakeConn {
 public:
  TOlderServer() { GetConnectionObject().SetConnected(true); }
  std::unique_ptr<TDataset> OpenQuery(const std::string& sql) override {
    constexpr int kUnknownCollation = 1273;
    if (sql.find("_0900_") != std::string::npos) throw EMySqlException(kUnknownCollation, "");
    RaiseError("No answer");
  }
};

// "MODE: text ;; text"
TDatabaseObjects ObjectsOf(const std::string& database, const std::string& cell) {
  TDatabaseObjects objects{database, {}};
  TStringList texts;
  SplitText(" ;; ", cell, texts);
  for (std::string text : texts) {
    TObjectContext context;
    if (const std::size_t sign = text.find(": create"); sign != std::string::npos) {
      context.sql_mode = text.substr(0, sign);
      text.erase(0, sign + 2);
    }
    const std::string head = text.substr(0, text.find(" '"));
    const std::vector<TToken> tokens = Tokens(head);
    objects.objects.push_back({std::string(tokens[1].text), NameOf(tokens[2]), text, context});
  }
  return objects;
}

std::string ObjectsAcross(const TStringList& cells) {
  const TServerTraits from = ReadServerTraits(cells[0]), to = ReadServerTraits(cells[1]);
  const TServerPair servers{from, to, !SpeakAlike(from, to)};
  TDatabaseObjects reference = ObjectsOf("r", cells[3]);
  const TDatabaseObjects target = ObjectsOf("g", cells[4]);
  if (servers.differ) TranslateObjects(servers, target, reference);
  TObjectComparison found = CompareObjects(reference, target);
  const std::vector<TTableNotMade> tables = {{"gone", "is skipped"}, {"old", "is skipped", true, {"fresh"}}};
  TOlderServer server;
  TKnownSets sets(server);
  LeaveWhatCannotBe({servers, tables, sets}, reference, target, found);
  TStringList told;
  for (const TObjectDifference& object : found.differences)
    told.push_back(object.kind + " " + object.name + " " + object.difference);
  for (const TObjectChange& change : found.changes)
    told.push_back(change.Object() + " " + (change.action == saCreateObject ? "new" : JoinList(change.elements, ", ")));
  return told.empty() ? "same" : JoinList(told, "; ");
}

TEST(AcrossServers, ObjectsAreTranslatedOrLeftAlone) {
  for (TStringList& cells : CaseRows("exact/objects_across.txt")) {
    cells.resize(5);
    EXPECT_EQ(ObjectsAcross(cells), cells[2]) << cells[0] << " | " << cells[1] << " | " << cells[3];
  }
}

}  // namespace
}  // namespace velmora::testing

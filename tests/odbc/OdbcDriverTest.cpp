// SPDX-License-Identifier: GPL-3.0-or-later

// What drivers do and do not do, on one that does as it is told.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "odbc/OdbcTold.h"
#include "support/FakeOdbc.h"
#include "support/MessageOf.h"
#include "support/OdbcSources.h"
#include "util/Files.h"

namespace velmora::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

constexpr char kDriver[] = VELMORA_FAKE_DRIVERS "/odbc.so";
constexpr char kOldDriver[] = VELMORA_FAKE_DRIVERS "/odbc-old.so";

// Columns of catalog calls, as far as they are read.
constexpr std::size_t kTables = 4, kKeys = 6;
constexpr std::nullopt_t kNull = std::nullopt;

TFakeOdbc::TRow Key(const std::string& column, const std::optional<std::string>& place,
                    const std::optional<std::string>& name = kNull) {
  return {"shop", kNull, "t", column, place, name};
}

class OdbcDriverTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    AddOdbcSource("played", kDriver);
    AddOdbcSource("played-old", kOldDriver);
  }

  void SetUp() override {
    source_.Add(ReadPlayedAnswers(kOdbcCases + "played.txt"));
    provider_->Initialize();
    source_.TakeLog();
  }

  std::string Indexes() {
    std::string told;
    for (const TOLEDBIndexRow& row : provider_->Indexes("t")) told += Told(row);
    return told;
  }
  std::string OpenError(const std::string& sql = "q") {
    return MessageOf([&] {
      const TOLEDBRowset rowset = provider_->Open(sql);
      if (rowset.read_rows) rowset.read_rows();
    });
  }

  TFakeOdbc& source_ = FakeOdbcOf(kDriver);
  std::unique_ptr<TOLEDBProvider> provider_ = OdbcProviderOf("played");
};

TEST_F(OdbcDriverTest, TellsOfASchema) { EXPECT_EQ(Told(*provider_), ReadFileText(kOdbcCases + "played.golden")); }

TEST_F(OdbcDriverTest, Login) {
  TInitString properties("Data Source=played;User ID=scott;Password=tiger;Connect Timeout=5");
  NewOdbcProvider(properties)->Initialize();
  EXPECT_THAT(source_.TakeLog(), ElementsAre("login timeout 5", "connect played scott", "disconnect"));
  properties.Set("Password", "lion");
  const auto refused = NewOdbcProvider(properties);
  EXPECT_EQ(MessageOf([&] { refused->Initialize(); }), "[unixODBC]wrong password\n[unixODBC]try again")
      << "each message once";
  EXPECT_FALSE(refused->Initialized());
  EXPECT_EQ(MessageOf([&] { refused->Tables(); }), "Not connected");
}

TEST_F(OdbcDriverTest, CatalogsAndTables) {
  EXPECT_THAT(provider_->Catalogs(), ElementsAre("shop", "a"));
  TFakeOdbc::TAnswer& tables =
      source_.Add("tables", kTables,
                  {{"shop", kNull, "t", "TABLE"}, {"sXop", kNull, "other", "TABLE"}, {kNull, kNull, "v", "VIEW"}});
  const auto count_in = [&](const char* catalog) {
    source_.catalog = catalog;
    return provider_->Tables().size();
  };
  EXPECT_EQ(count_in("s_op"), 1U) << "of another catalog that fits the pattern";
  EXPECT_EQ(count_in("SHOP"), 2U) << "in other letters";
  tables.rows.push_back({"Shop", kNull, "third", "TABLE"});
  EXPECT_EQ(count_in("shop"), 2U) << "letters count where they tell catalogs apart";
  source_.TakeLog();
  for (const char* none : {"", "null"}) {
    EXPECT_EQ(count_in(none), 4U);
    EXPECT_THAT(source_.TakeLog(), ElementsAre("in -", "tables"));
  }
}

// Which of the indexes n, ub and uba is the primary key, by what the driver says of keys, and what is added after them.
TEST_F(OdbcDriverTest, PrimaryKeys) {
  const struct {
    const char* name;
    std::vector<TFakeOdbc::TRow> keys;
    const char* primary;  // index
    const char* added;
  } kCases[] = {
      {"none", {}, "", ""},
      {"named", {Key("b", "1", "ub")}, "ub", ""},
      {"by its columns, in the order of the table", {Key("a", "1"), Key("b", "2")}, "uba", ""},
      {"by its columns, with a name of its own", {Key("b", "1", "constraint")}, "ub", ""},
      {"without an index",
       {Key("c", "2", "pk"), Key("d", "1", "pk")},
       "",
       "  index pk.1 d primary unique\n  index pk.2 c primary unique\n"},
      {"without an index and a name",
       {Key("c", kNull), Key("a", kNull)},
       "",
       "  index PRIMARY.1 c primary unique\n  index PRIMARY.2 a primary unique\n"},
      {"two of them", {Key("b", "1", "ub"), Key("a", "1", "other")}, "ub", ""},
  };
  for (const auto& c : kCases) {
    source_.Add("primary keys t", kKeys, c.keys);
    const auto mark = [&](const char* index) {
      return std::string_view(index) == c.primary ? " primary unique\n" : " unique\n";
    };
    EXPECT_EQ(Indexes(), std::string("  index n.1 b\n  index ub.1 b") + mark("ub") + "  index uba.1 b" + mark("uba") +
                             "  index uba.2 a" + mark("uba") + c.added)
        << c.name;
  }
}

// Calls that a driver does not have, or not for this source, leave nothing behind; other errors pass on.
TEST_F(OdbcDriverTest, MissingCalls) {
  source_.answers["catalogs"].errors = {{"HYC00", "optional"}};
  EXPECT_THAT(provider_->Catalogs(), IsEmpty());
  source_.answers["statistics t"].errors = {{"IM001", "no such call"}};
  source_.Add("primary keys t", kKeys, {Key("a", "1", "pk")});
  EXPECT_EQ(Indexes(), "  index pk.1 a primary unique\n");
  source_.answers["primary keys t"].errors = {{"42000", "not for you"}};
  EXPECT_EQ(MessageOf([&] { provider_->Indexes("t"); }), "not for you");

  FakeOdbcOf(kOldDriver);
  provider_ = OdbcProviderOf("played-old");
  provider_->Initialize();
  EXPECT_EQ(Indexes(), "");
  EXPECT_THAT(provider_->CatalogRows(ECatalogRows::Statistics, "t").fields, IsEmpty());
}

TEST_F(OdbcDriverTest, LongValues) {
  std::string text;
  for (int i = 0; text.size() < 200000; ++i) text += i % 7 == 0 ? "😀" : i % 3 == 0 ? "ä" : "x";
  std::string bytes(200001, '\0');
  bytes.back() = '\1';
  source_.answers["q"] = {.columns = {{"t", -1}, {"b", -4}, {"e", 12}},
                          .rows = {{text, bytes, ""}, {kNull, kNull, kNull}}};
  for (const bool whole_letters : {false, true}) {
    source_.whole_letters = whole_letters;
    const TOLEDBRowset rowset = provider_->Open("q");
    ASSERT_EQ(rowset.rows.size(), 2U);
    EXPECT_EQ(rowset.rows[0], TMemDataset::TRow({text, bytes, ""}));
    EXPECT_EQ(rowset.rows[1], TMemDataset::TRow(3));
    EXPECT_EQ(rowset.fields[0].size, std::numeric_limits<std::int64_t>::max()) << "of a size that is nonsense";
  }
  source_.fault = EOdbcFault::UnknownLength;
  source_.answers["q"].columns = {{"t", -1}};
  source_.answers["q"].rows = {{text}, {"short"}};
  const TOLEDBRowset rowset = provider_->Open("q");
  EXPECT_EQ(rowset.rows[0], TMemDataset::TRow({text}));
  EXPECT_EQ(rowset.rows[1], TMemDataset::TRow({"short"}));
}

TEST_F(OdbcDriverTest, NonsenseLengths) {
  constexpr int kText = 12, kBytes = -4;
  const struct {
    EOdbcFault fault;
    std::vector<int> types;
    const char* message;
  } kCases[] = {
      {EOdbcFault::NegativeLength, {kText, kBytes}, "gave an impossible length (-77) for a value of column c"},
      {EOdbcFault::WholeTooLong, {kText, kBytes}, "gave an impossible length (65536000) for a value of column c"},
      {EOdbcFault::NoProgress, {kText}, "gave an impossible length (-4) for a value of column c"},
      {EOdbcFault::UnknownLength, {kBytes}, "gave an impossible length (-4) for a value of column c"},
      {EOdbcFault::Endless, {kText, kBytes}, "A value of column c is longer than 268435456 bytes"},
  };
  for (const auto& c : kCases)
    for (const int type : c.types) {
      source_.fault = c.fault;
      source_.answers["q"] = {.columns = {{"c", type}}, .rows = {{"value"}}};
      EXPECT_THAT(OpenError(), ::testing::EndsWith(c.message));
    }
  source_.fault = EOdbcFault::NegativeLength;
  source_.Add("tables", kTables, {{"shop", kNull, "t", "TABLE"}});
  EXPECT_THAT(MessageOf([&] { provider_->Tables(); }), HasSubstr("an impossible length (-77)"));
}

// A look at the fields of such a table still works; the engine says then which of them it does not know.
TEST_F(OdbcDriverTest, UnknownType) {
  source_.answers["q"] = {.columns = {{"a", 12}, {"place", -370}}, .rows = {{"1", "2"}}};
  const TOLEDBRowset rowset = provider_->Open("q");
  ASSERT_EQ(rowset.fields.size(), 2U);
  EXPECT_EQ(rowset.fields[1].kind, EFieldKind::Other);
  EXPECT_EQ(OpenError(), "Column place is of a type that cannot be read (-370)");
}

TEST_F(OdbcDriverTest, Errors) {
  auto& errors = source_.answers["q"].errors;
  for (int i = 0; i < 1000; ++i) errors.push_back({"42000", "fault " + std::to_string(i)});
  const std::string many = OpenError();
  EXPECT_THAT(many, HasSubstr("fault 0\nfault 1\n"));
  EXPECT_LT(many.size(), 1000U);
  errors = {{"42000", std::string(100000, 'x')}};
  EXPECT_LT(OpenError().size(), 10000U);
  errors = {{"42000", ""}};
  EXPECT_EQ(OpenError(), "The ODBC driver failed without a message (-1)");
  errors.clear();
  source_.answers["q"] = {.columns = {{"a"}}, .rows = {{"1"}}, .row_errors = {{"HY000", "broken off"}}};
  EXPECT_EQ(OpenError(), "broken off") << "in the middle of the rows";
}

TEST_F(OdbcDriverTest, SeveralResultsAndNone) {
  source_.answers["batch"] = {.affected = 2, .then = {{.columns = {{"a"}}, .rows = {{"1"}}}, {.affected = -1}}};
  EXPECT_EQ(provider_->Open("batch").rows.size(), 1U) << "of the first that has rows";
  EXPECT_EQ(provider_->Execute("batch"), 2);
  source_.answers["batch"].then.back().errors = {{"23000", "late"}};
  EXPECT_EQ(MessageOf([&] { provider_->Execute("batch"); }), "late");
  source_.answers["none"] = {};
  EXPECT_EQ(OpenError("none"), "The statement gives no rows");
}

// The driver passes over the wish for one row.
TEST_F(OdbcDriverTest, Limits) {
  source_.answers["select * from `t`"] = {.columns = {{"a"}}, .rows = {{"1"}, {"2"}, {"3"}}};
  EXPECT_EQ(provider_->Open("select top 2 * from [t]").rows.size(), 2U);
  EXPECT_THAT(source_.TakeLog(), ElementsAre("most rows 2", "select * from `t`"));
  EXPECT_EQ(provider_->Open("select top 0 * from [t]").rows.size(), 0U);
  EXPECT_THAT(source_.TakeLog(), ElementsAre("select * from `t`")) << "where 0 would mean all";
}

TEST_F(OdbcDriverTest, Transactions) {
  EXPECT_EQ(MessageOf([&] { provider_->Commit(); }), "No transaction is started");
  EXPECT_EQ(MessageOf([&] { provider_->StartTransaction(256); }),
            "No transaction of isolation level 256 can be started");
  provider_->StartTransaction(4096);
  EXPECT_EQ(MessageOf([&] { provider_->StartTransaction(4096); }), "A transaction is already started");
  provider_->Commit();
  EXPECT_THAT(source_.TakeLog(), ElementsAre("isolation 2", "autocommit 0", "commit", "autocommit 1"));
  provider_->StartTransaction(4096);
  provider_->Uninitialize();
  EXPECT_THAT(source_.TakeLog(), ElementsAre("isolation 2", "autocommit 0", "rollback", "disconnect"));
}

TEST_F(OdbcDriverTest, ALostConnectionIsClosed) {
  source_.answers["q"] = {};
  provider_->StartTransaction(4096);
  source_.gone = true;
  EXPECT_EQ(MessageOf([&] { provider_->Execute("q"); }), "the server is gone");
  EXPECT_FALSE(provider_->Initialized());
  source_.gone = false;
  provider_->Initialize();
  EXPECT_EQ(provider_->Execute("q"), 0);
}

}  // namespace
}  // namespace velmora::testing

// What drivers do and do not do, on one that does as it is told.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "odbc/OdbcProvider.h"
#include "support/FakeOdbc.h"
#include "support/MessageOf.h"
#include "support/OdbcSources.h"

namespace velmora {
namespace {

using ::testing::ElementsAre;
using testing::EOdbcFault;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using testing::MessageOf;
using testing::TFakeOdbc;

constexpr char kDriver[] = VELMORA_FAKE_DRIVERS "/odbc.so";
constexpr char kOldDriver[] = VELMORA_FAKE_DRIVERS "/odbc-old.so";

// Columns of catalog calls, as far as they are read.
const std::vector<std::string> kTables(4, "X");
const std::vector<std::string> kColumns(18, "X");
const std::vector<std::string> kStatistics(9, "X");
const std::vector<std::string> kKeys(6, "X");
constexpr std::nullopt_t kNull = std::nullopt;

TFakeOdbc::TRow Column(const std::string& name, int type, const std::string& size = "10") {
  TFakeOdbc::TRow row(18);
  row[2] = "t";
  row[3] = name;
  row[4] = std::to_string(type);
  row[6] = size;
  return row;
}

TFakeOdbc::TRow Index(const std::string& name, const std::string& column, const std::optional<std::string>& ordinal,
                      bool unique = true) {
  return {"shop", kNull, "t", unique ? "0" : "1", kNull, name, "3", ordinal, column};
}

TFakeOdbc::TRow Key(const std::string& column, const std::optional<std::string>& place,
                    const std::optional<std::string>& name = kNull) {
  return {"shop", kNull, "t", column, place, name};
}

std::string TextOf(const TOLEDBIndexRow& row) {
  return row.INDEX_NAME + "." + std::to_string(row.ORDINAL_POSITION) + " " + row.COLUMN_NAME +
         (row.PRIMARY_KEY ? " primary" : "") + (row.UNIQUE ? " unique" : "");
}

class OdbcDriverTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    testing::AddOdbcSource("played", kDriver);
    testing::AddOdbcSource("played-old", kOldDriver);
  }

  static std::unique_ptr<TOLEDBProvider> NewProvider(const std::string& source = "played") {
    TInitString properties;
    properties.Set("Data Source", source);
    return NewOdbcProvider(properties);
  }

  void SetUp() override {
    provider_->Initialize();
    source_.TakeLog();
  }

  std::vector<std::string> Indexes() {
    std::vector<std::string> texts;
    for (const TOLEDBIndexRow& row : provider_->Indexes("t")) texts.push_back(TextOf(row));
    return texts;
  }
  std::string OpenError(const std::string& sql = "q") {
    return MessageOf([&] {
      const TOLEDBRowset rowset = provider_->Open(sql);
      if (rowset.read_rows) rowset.read_rows();
    });
  }

  TFakeOdbc& source_ = testing::FakeOdbcOf(kDriver);
  std::unique_ptr<TOLEDBProvider> provider_ = NewProvider();
};

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
  source_.Add("catalogs", kTables,
              {{"shop", kNull, kNull, kNull},
               {kNull, kNull, "t", "TABLE"},
               {"", kNull, kNull, kNull},
               {"a", kNull, kNull, kNull},
               {"shop", kNull, kNull, kNull}});
  EXPECT_THAT(provider_->Catalogs(), ElementsAre("shop", "a"));
  source_.Add("tables", kTables,
              {{"shop", kNull, "t", "TABLE"}, {"sXop", kNull, "other", "TABLE"}, {kNull, kNull, "v", "VIEW"}});
  source_.catalog = "s_op";
  EXPECT_EQ(provider_->Tables().size(), 1U) << "of another catalog that fits the pattern";
  source_.catalog = "SHOP";
  EXPECT_EQ(provider_->Tables().size(), 2U) << "in other letters";
  source_.catalog = "shop";
  const auto tables = provider_->Tables();
  ASSERT_EQ(tables.size(), 2U);
  EXPECT_EQ(tables[1].TABLE_NAME + " " + tables[1].TABLE_TYPE, "v VIEW");
  source_.answers["tables"].rows.push_back({"Shop", kNull, "third", "TABLE"});
  EXPECT_EQ(provider_->Tables().size(), 2U) << "letters count where they tell catalogs apart";
  source_.TakeLog();
  for (const char* none : {"", "null"}) {
    source_.catalog = none;
    EXPECT_EQ(provider_->Tables().size(), 4U);
    EXPECT_THAT(source_.TakeLog(), ElementsAre("in -", "tables"));
  }
}

TEST_F(OdbcDriverTest, Columns) {
  const struct {
    int type;
    std::uint16_t data_type;
    std::uint32_t flags;
  } kTypes[] = {{-7, 11, 16},   {-6, 16, 16},  {5, 2, 16},    {4, 3, 16},      {-5, 20, 16},  {7, 4, 16},
                {6, 5, 16},     {8, 5, 16},    {3, 131, 16},  {2, 131, 16},    {1, 129, 16},  {12, 129, 0},
                {-1, 129, 128}, {-8, 130, 16}, {-9, 130, 0},  {-10, 130, 128}, {-2, 128, 16}, {-3, 128, 0},
                {-4, 128, 128}, {91, 133, 16}, {9, 133, 16},  {92, 134, 16},   {10, 134, 16}, {93, 135, 16},
                {11, 135, 16},  {-11, 72, 16}, {113, 113, 0}, {-152, 65384, 0}};
  TFakeOdbc::TAnswer& answer = source_.Add("columns t", kColumns);
  source_.Add("select * from `t` where 1=0", {});
  source_.answers["select * from `t` where 1=0"].columns = {{"none"}};
  for (const auto& c : kTypes) answer.rows.push_back(Column("c" + std::to_string(c.type), c.type));
  const auto columns = provider_->Columns("t");
  ASSERT_EQ(columns.size(), std::size(kTypes));
  for (std::size_t i = 0; i < columns.size(); ++i) {
    EXPECT_EQ(columns[i].DATA_TYPE, kTypes[i].data_type) << kTypes[i].type;
    EXPECT_EQ(columns[i].COLUMN_FLAGS, kTypes[i].flags) << kTypes[i].type;
    EXPECT_EQ(columns[i].ORDINAL_POSITION, i + 1) << "counted where the driver gives none";
    EXPECT_TRUE(columns[i].IS_NULLABLE);
    EXPECT_EQ(columns[i].COLUMN_DEFAULT, std::nullopt);
  }
}

TEST_F(OdbcDriverTest, WhatColumnsHave) {
  TFakeOdbc::TRow text = Column("text", 12, "17179869180"), number = Column("number", 3, "70000"),
                  count = Column("count", 4, "-10"), other = Column("other", 12);
  number[8] = "99999";
  number[10] = "0";
  number[12] = "'NULL'";
  number[16] = "7";
  count[8] = "10";
  count[10] = "2";
  count[12] = "NULL";
  count[16] = "-3";
  text[12] = "TRUNCATED";
  other[2] = "tX";
  source_.Add("columns t\\_\\%\\\\", kColumns, {text, number, count, other});
  for (TFakeOdbc::TRow& row : source_.answers["columns t\\_\\%\\\\"].rows)
    if (row[2] == "t") row[2] = "t_%\\";
  source_.answers["select * from `t_%\\` where 1=0"].columns = {
      {"text", 12, true}, {"number", 3, true}, {"count", 4, true}};
  const auto columns = provider_->Columns("t_%\\");
  ASSERT_EQ(columns.size(), 3U) << "those of a table that only fits the pattern are left out";
  EXPECT_EQ(columns[0].CHARACTER_MAXIMUM_LENGTH, 4294967295U);
  EXPECT_EQ(columns[0].NUMERIC_PRECISION, 0);
  EXPECT_EQ(columns[0].COLUMN_DEFAULT, std::nullopt);
  EXPECT_EQ(columns[0].DATA_TYPE, kDbTypeStr);
  EXPECT_EQ(columns[1].NUMERIC_PRECISION, 65535);
  EXPECT_EQ(columns[1].NUMERIC_SCALE, 32767);
  EXPECT_EQ(columns[1].COLUMN_DEFAULT, "'NULL'");
  EXPECT_EQ(columns[1].ORDINAL_POSITION, 7U);
  EXPECT_FALSE(columns[1].IS_NULLABLE);
  EXPECT_EQ(columns[2].DATA_TYPE, kDbTypeUI4) << "no sign";
  EXPECT_EQ(columns[2].NUMERIC_PRECISION, 0);
  EXPECT_EQ(columns[2].NUMERIC_SCALE, 0) << "only decimals have digits";
  EXPECT_EQ(columns[2].COLUMN_DEFAULT, std::nullopt);
  EXPECT_TRUE(columns[2].IS_NULLABLE) << "unknown";
  EXPECT_EQ(columns[2].ORDINAL_POSITION, 0U);
}

TEST_F(OdbcDriverTest, PrimaryKeys) {
  const std::vector<TFakeOdbc::TRow> kIndexRows = {
      {"shop", kNull, "t", kNull, kNull, kNull, "0", kNull, kNull},  // of the table as such
      Index("n", "b", "1", false),
      Index("ub", "b", "1"),
      Index("uba", "b", "1"),
      Index("uba", "a", "2"),
      {"shop", kNull, "other", "0", kNull, "o", "3", "1", "a"},
  };
  const std::vector<std::string> kPlain = {"n.1 b", "ub.1 b unique", "uba.1 b unique", "uba.2 a unique"};
  const auto with = [&](std::size_t from, std::size_t to, std::vector<std::string> more = {}) {
    std::vector<std::string> texts = kPlain;
    for (std::size_t i = from; i < to; ++i) texts[i].insert(texts[i].find(" unique"), " primary");
    texts.insert(texts.end(), more.begin(), more.end());
    return texts;
  };
  const struct {
    const char* name;
    std::vector<TFakeOdbc::TRow> keys;
    std::vector<std::string> indexes;
  } kCases[] = {
      {"none", {}, kPlain},
      {"named", {Key("b", "1", "ub")}, with(1, 2)},
      {"by its columns, in the order of the table", {Key("a", "1"), Key("b", "2")}, with(2, 4)},
      {"by its columns, with a name of its own", {Key("b", "1", "constraint")}, with(1, 2)},
      {"without an index",
       {Key("c", "2", "pk"), Key("d", "1", "pk")},
       with(0, 0, {"pk.1 d primary unique", "pk.2 c primary unique"})},
      {"without an index and a name",
       {Key("c", kNull), Key("a", kNull)},
       with(0, 0, {"PRIMARY.1 c primary unique", "PRIMARY.2 a primary unique"})},
      {"two of them", {Key("b", "1", "ub"), Key("a", "1", "other")}, with(1, 2)},
  };
  source_.Add("statistics t", kStatistics, kIndexRows);
  for (const auto& c : kCases) {
    source_.Add("primary keys t", kKeys, c.keys);
    EXPECT_EQ(Indexes(), c.indexes) << c.name;
  }
}

TEST_F(OdbcDriverTest, IndexesWithoutOrdinalsOrUniqueness) {
  TFakeOdbc::TRow vague = Index("v", "c", kNull);
  vague[3] = kNull;
  source_.Add("statistics t", kStatistics,
              {Index("i", "a", kNull), Index("j", "b", "junk"), Index("i", "b", kNull), vague});
  source_.Add("primary keys t", kKeys);
  EXPECT_THAT(Indexes(), ElementsAre("i.1 a unique", "j.1 b unique", "i.2 b unique", "v.1 c"));
}

// Calls that a driver does not have, or not for this source, leave nothing behind; other errors pass on.
TEST_F(OdbcDriverTest, MissingCalls) {
  source_.answers["catalogs"].errors = {{"HYC00", "optional"}};
  EXPECT_THAT(provider_->Catalogs(), IsEmpty());
  source_.answers["statistics t"].errors = {{"IM001", "no such call"}};
  source_.Add("primary keys t", kKeys, {Key("a", "1", "pk")});
  EXPECT_THAT(Indexes(), ElementsAre("pk.1 a primary unique"));
  source_.answers["primary keys t"].errors = {{"42000", "not for you"}};
  EXPECT_EQ(MessageOf([&] { provider_->Indexes("t"); }), "not for you");

  testing::FakeOdbcOf(kOldDriver);
  provider_ = NewProvider("played-old");
  provider_->Initialize();
  EXPECT_THAT(Indexes(), IsEmpty());
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
  const struct {
    EOdbcFault fault;
    int type;
    const char* message;
  } kCases[] = {
      {EOdbcFault::NegativeLength, 12, "The ODBC driver gave an impossible length (-77) for a value of column c"},
      {EOdbcFault::NegativeLength, -4, "The ODBC driver gave an impossible length (-77) for a value of column c"},
      {EOdbcFault::WholeTooLong, 12, "The ODBC driver gave an impossible length (65536000) for a value of column c"},
      {EOdbcFault::WholeTooLong, -4, "The ODBC driver gave an impossible length (65536000) for a value of column c"},
      {EOdbcFault::NoProgress, 12, "The ODBC driver gave an impossible length (-4) for a value of column c"},
      {EOdbcFault::UnknownLength, -4, "The ODBC driver gave an impossible length (-4) for a value of column c"},
      {EOdbcFault::Endless, 12, "A value of column c is longer than 268435456 bytes"},
      {EOdbcFault::Endless, -4, "A value of column c is longer than 268435456 bytes"},
  };
  for (const auto& c : kCases) {
    source_.fault = c.fault;
    source_.answers["q"] = {.columns = {{"c", c.type}}, .rows = {{"value"}}};
    EXPECT_EQ(OpenError(), c.message);
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
}  // namespace velmora

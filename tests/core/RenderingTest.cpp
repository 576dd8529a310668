// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include "core/DBConn.h"
#include "core/Dataset.h"
#include "support/FakeConn.h"
#include "support/MessageOf.h"
#include "support/MetaBuilder.h"

namespace velmora {
namespace {

using testing::Build;
using testing::MessageOf;
using testing::TFakeConn;
using namespace std::string_literals;

TEST(KeyDescriptionTest, Words) {
  TFakeConn conn;
  conn.quotes = "[]";
  const struct {
    TMetaKey key;
    const char* text;
  } cases[] = {
      {{"t", "primary key", true, true, false, "a;b"}, "primary key (a,b)"},
      {{"t", "u", false, true, false, "a"}, "unique key [u] (a)"},
      {{"t", "k", false, false, false, "a;b;c"}, "key [k] (a,b,c)"},
      {{"t", "f", false, false, true, "a"}, "key [f] (a)"},  // full-text reads like plain
      {{"t", "k", false, false, false, ""}, "key [k] ()"},
  };
  for (const auto& each : cases) {
    std::string text;
    conn.KeyDescription(each.key, true, text);
    EXPECT_EQ(text, each.text);
    conn.KeyDescription(each.key, false, text);
    EXPECT_EQ(text, each.key.name);
  }
}

TEST(EscapeStringTest, QuotesAreDoubledAndNulsBlank) {
  TDBConn conn;
  std::string text = "o'clock\0\\'"s;
  conn.EscapeString(text, text);
  EXPECT_EQ(text, "o''clock \\''");
}

std::string Literal(TDBConn& conn, EFieldKind kind, const TVariant& value) {
  const TFieldDef def{"f", kind, 0};
  std::string text = "untouched";
  conn.FieldValParam({def, value}, text);
  return text;
}

TEST(FieldValParamTest, EveryKind) {
  using K = EFieldKind;
  const struct {
    std::vector<EFieldKind> kinds;
    TVariant value;
    const char* text;
  } cases[] = {
      {{K::String, K::FixedChar, K::WideString, K::Guid}, "it's"s, "'it''s'"},
      {{K::Bytes, K::VarBytes, K::Blob, K::Memo, K::Graphic, K::FmtMemo, K::OraBlob, K::OraClob}, "\0'"s, "' '''"},
      {{K::SmallInt, K::Integer, K::Word, K::AutoInc, K::LargeInt}, std::int64_t{-9000000000}, "-9000000000"},
      {{K::Boolean}, true, "1"},
      {{K::Boolean}, false, "0"},
      {{K::Boolean}, std::int64_t{-1}, "1"},
      {{K::Float, K::Currency, K::Bcd}, 1.5, "1.5"},
      {{K::Float, K::Currency, K::Bcd}, 0.1 + 0.2, "0.3"},
      {{K::Float, K::Currency, K::Bcd}, std::int64_t{7}, "7"},
      {{K::Date, K::DateTime, K::TimeStamp}, TMoment{1000}, "NULL"},
      {{K::Date, K::DateTime, K::TimeStamp}, TMoment{0}, "NULL"},
      {{K::Date, K::DateTime, K::TimeStamp}, TMoment{1000.5}, "1902-09-26 12:00:00"},
      {{K::Date, K::DateTime, K::TimeStamp}, TMoment{1001}, "1902-09-27"},
      {{K::Time}, TMoment{0.5}, "1899-12-30 12:00:00"},
  };
  TDBConn conn;
  for (const auto& each : cases)
    for (EFieldKind kind : each.kinds) EXPECT_EQ(Literal(conn, kind, each.value), each.text) << FieldKindName(kind);
}

TEST(FieldValParamTest, NullOfAnyKindAndNoRule) {
  TDBConn conn;
  for (EFieldKind kind : {EFieldKind::String, EFieldKind::Boolean, EFieldKind::Time, EFieldKind::Other})
    EXPECT_EQ(Literal(conn, kind, {}), "NULL");
  EXPECT_EQ(MessageOf([&] { Literal(conn, EFieldKind::Other, "x"s); }),
            "TDBConn.FieldValParam: Unsupported field type for field f");
}

// An engine's own literals are what the base builds values with.
class TLiteralConn : public TDBConn {
 public:
  void DateTimeLiteral(TDateTime, std::string& text) override { text = "#date#"; }
  void EscapeString(const std::string& text, std::string& escaped) override { escaped = "<" + text + ">"; }
};

TEST(FieldValParamTest, UsesTheLiteralsOfTheEngine) {
  TLiteralConn conn;
  EXPECT_EQ(Literal(conn, EFieldKind::Date, TMoment{40000}), "#date#");
  EXPECT_EQ(Literal(conn, EFieldKind::Time, TMoment{0.5}), "#date#");
  EXPECT_EQ(Literal(conn, EFieldKind::Memo, "x"s), "'<x>'");
}

// Two columns, two keys and two constraints, fetched on demand.
void FillOrders(TMeta& meta, const std::string& /*table*/) {
  meta.tTables.Edit().type = "InnoDB";
  meta.tTables.Post();
  TColumnRow& column = meta.tColumns.Append();
  column.name = "id";
  column.datatype = ntI4;
  column.size = 11;
  meta.tColumns.Append().name = "note";
  meta.tColumns.Edit().datatype = ntVarChar;
  meta.tColumns.Edit().size = 20;
  meta.tColumns.Post();
  Build(meta, "key primary key(id,note) key ix(note) fk fk(id:id)->other fk (note:id)->other");
}

TEST(BuildCreateTableTest, ALinePerObject) {
  TFakeConn conn;
  conn.tables = {"first", "order"};
  conn.quotes = "[]";
  conn.fetch = FillOrders;
  conn.Connect();
  std::string ddl;
  conn.meta().BuildCreateTable("order", nullptr, ddl);
  EXPECT_EQ(ddl,
            "create table [order](\r\n"
            "\tid int,\r\n"
            "\tnote varchar(20),\r\n"
            "\tprimary key (id,note),\r\n"
            "\tkey [ix] (note),\r\n"
            "\tconstraint fk,\r\n"
            "\t\r\n"  // rendered as nothing, yet a line
            ") type=InnoDB");
}

// Sends the owner's cursors away, as an engine may while it renders.
class TRestlessConn : public TFakeConn {
 public:
  explicit TRestlessConn(TMeta& meta) : meta_(meta) {}
  void ColumnDescription(const TMetaColumn& column, bool, std::string& text) override {
    text = "a " + column.description;
    meta_.GotoTable("first");
  }

 private:
  TMeta& meta_;
};

TEST(BuildCreateTableTest, TheOwnerReadsAndTheOtherEngineWrites) {
  TFakeConn conn;
  conn.tables = {"first", "order"};
  conn.quotes = "[]";
  conn.fetch = FillOrders;
  conn.Connect();
  TRestlessConn writer(conn.meta());
  writer.quotes = "``";
  std::string ddl;
  conn.meta().BuildCreateTable("order", &writer, ddl);
  EXPECT_EQ(
      ddl,
      "create table [order](\r\n\tid a int,\r\n\tnote a varchar,\r\n\tprimary key (id,note),\r\n\tkey `ix` (note),"
      "\r\n\tconstraint fk,\r\n\t\r\n) type=InnoDB");
  EXPECT_EQ(conn.log, (TStringList{"on", "fetch order"}))
      << "nothing was read of the table that the cursor was sent to";
}

}  // namespace
}  // namespace velmora

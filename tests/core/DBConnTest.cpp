// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/DBConn.h"

#include <gtest/gtest.h>

#include "support/FakeConn.h"
#include "support/MessageOf.h"
#include "support/MetaBuilder.h"
#include "util/Errors.h"

namespace velmora {
namespace {

using testing::Build;
using testing::MessageOf;
using testing::Shape;
using testing::TFakeConn;
using namespace std::string_literals;

// What the base does with an operation that no engine has filled.
enum class EBase { Own, Abstract, Rests };  // Rests: a default that needs an abstract operation

constexpr char kWhole[] = "t(c,d) key k(c) fk f(c:id)->p";

struct TOperation {
  const char* name;
  EBase base;
  void (*call)(TDBConn& conn, std::string& text);
  const char* text = "";       // what it gives
  const char* shape = kWhole;  // what the store then says of table t
};

const char* Word(bool truth) { return truth ? "yes" : "no"; }

// Stands in for a store that no operation of the base may touch.
TXMLAccess& NoStore() {
  static std::max_align_t storage;
  return reinterpret_cast<TXMLAccess&>(storage);
}

void Decode(TDBConn& c, std::string& text) {
  TNeutralType type{};
  TNumber length, precision, scale;
  c.DecodeColumn("int", {}, {}, {}, type, length, precision, scale);
  text = NeutralTag(type);
}

void Parse(TDBConn& c, std::string& text) {
  TMetaColumn column;
  c.ParseColumnDescription("int", column);
  text = NeutralTag(column.datatype);
}

void Convert(TDBConn& c, std::string& text) {
  TMetaColumn column;
  c.ConvertColumn({}, column);
  text = column.description;
}

void Names(TDBConn& c, std::string& text) {
  TStringList list;
  c.GetColumnTypeNames(list);
  text = std::to_string(list.size());
}

void Types(TDBConn& c, std::string& text) {
  TColumnTypeInfoArray table;
  c.GetColumnTypes(table);
  text = Word(table.data() == GenericColumnTypes().data());
}

TStringList list;
TVariant value;

// All operations in their order, each once.
using T = std::string;
constexpr TOperation kOperations[] = {
    {"Connect", EBase::Rests, [](TDBConn& c, T&) { c.Connect(); }},
    {"Disconnect", EBase::Rests, [](TDBConn& c, T&) { c.Disconnect(); }},
    {"Reconnect", EBase::Rests, [](TDBConn& c, T&) { c.Reconnect(); }},
    {"SaveParams", EBase::Abstract, [](TDBConn& c, T&) { c.SaveParams("Source", NoStore()); }},
    {"GetConnected", EBase::Rests, [](TDBConn& c, T&) { c.GetConnected(); }},
    {"GetConnectionObject", EBase::Abstract, [](TDBConn& c, T&) { c.GetConnectionObject(); }},
    {"ApplyParams", EBase::Abstract, [](TDBConn& c, T&) { c.ApplyParams(); }},
    {"GetDisplayName", EBase::Abstract, [](TDBConn& c, T& text) { c.GetDisplayName(text); }},
    {"DateTimeLiteral", EBase::Own, [](TDBConn& c, T& text) { c.DateTimeLiteral(36526, text); }, "2000-01-01"},
    {"AutoIncKeyword", EBase::Abstract, [](TDBConn& c, T& text) { c.AutoIncKeyword(text); }},
    {"OpenTable", EBase::Rests, [](TDBConn& c, T&) { c.OpenTable("t"); }},
    {"SupportsChunks", EBase::Own, [](TDBConn& c, T& text) { text = Word(c.SupportsChunks("t")); }, "no"},
    {"OpenTableDataChunk", EBase::Abstract, [](TDBConn& c, T&) { c.OpenTableDataChunk("t", 1, 10); }},
    {"CloseTable", EBase::Own, [](TDBConn& c, T&) { c.CloseTable(nullptr); }},
    {"OpenQuery", EBase::Abstract, [](TDBConn& c, T&) { c.OpenQuery("select 1"); }},
    {"GetEngine", EBase::Abstract, [](TDBConn& c, T&) { c.GetEngine(); }},
    {"ParseDDL", EBase::Abstract, [](TDBConn& c, T&) { c.ParseDDL("drop table t"); }},
    {"ExecSQL", EBase::Own, [](TDBConn& c, T& text) { text = std::to_string(c.ExecSQL("drop table t")); }, "-1"},
    {"GetResultSQL", EBase::Rests, [](TDBConn& c, T&) { c.GetResultSQL("select 1", value); }},
    {"QuoteOpen", EBase::Own, [](TDBConn& c, T& text) { c.QuoteOpen(text = "old"); }},
    {"QuoteClose", EBase::Own, [](TDBConn& c, T& text) { c.QuoteClose(text = "old"); }},
    {"GetRecordCount", EBase::Rests, [](TDBConn& c, T&) { c.GetRecordCount("t"); }},
    {"GetColumnTypes", EBase::Own, Types, "yes"},
    {"GetColumnTypeNames", EBase::Own, Names, "28"},
    {"EscapeString", EBase::Own, [](TDBConn& c, T& text) { c.EscapeString("'", text); }, "''"},
    {"FieldValParam", EBase::Own,
     [](TDBConn& c, T& text) {
       c.FieldValParam({TFieldDef(), TVariant()}, text);
     },
     "NULL"},
    {"ListDatabases", EBase::Abstract, [](TDBConn& c, T&) { c.ListDatabases(list); }},
    {"ListTables", EBase::Abstract, [](TDBConn& c, T&) { c.ListTables(list); }},
    {"NormalizeName", EBase::Own, [](TDBConn& c, T& text) { c.NormalizeName("A b", text); }, "A b"},
    {"TableExists", EBase::Own,
     [](TDBConn& c, T& text) { text = Word(c.TableExists("T")) + T(Word(c.TableExists("tt"))); }, "yesno"},
    {"StartTransaction", EBase::Abstract, [](TDBConn& c, T&) { c.StartTransaction(); }},
    {"Commit", EBase::Abstract, [](TDBConn& c, T&) { c.Commit(); }},
    {"Rollback", EBase::Abstract, [](TDBConn& c, T&) { c.Rollback(); }},
    {"InTransaction", EBase::Abstract, [](TDBConn& c, T&) { c.InTransaction(); }},
    {"Clone", EBase::Abstract, [](TDBConn& c, T&) { c.Clone(); }},
    {"FetchTableStructure", EBase::Abstract, [](TDBConn& c, T&) { c.FetchTableStructure("t"); }},
    {"ColumnDescription", EBase::Own, [](TDBConn& c, T& text) { c.ColumnDescription({}, true, text); }, "tinyint"},
    {"ParseColumnDescription", EBase::Own, Parse, "<I4>"},
    {"KeyDescription", EBase::Own, [](TDBConn& c, T& text) { c.KeyDescription({}, true, text); }, "key  ()"},
    {"ConstraintDescription", EBase::Abstract, [](TDBConn& c, T& text) { c.ConstraintDescription({}, true, text); }},
    {"DecodeColumn", EBase::Own, Decode, "<I4>"},
    {"ConvertColumn", EBase::Own, Convert, "tinyint"},
    {"CanCreateTables", EBase::Own, [](TDBConn& c, T& text) { text = Word(c.CanCreateTables()); }, "yes"},
    {"BeforeDataLoad", EBase::Own, [](TDBConn& c, T&) { c.BeforeDataLoad("t"); }},
    {"AfterDataLoad", EBase::Own, [](TDBConn& c, T&) { c.AfterDataLoad("t"); }},
    {"CreateTable", EBase::Abstract, [](TDBConn& c, T&) { c.CreateTable("t", {"c int"}); }},
    {"DropTable", EBase::Own, [](TDBConn& c, T&) { c.DropTable("t"); }, "", "-"},
    {"RenameTable", EBase::Own, [](TDBConn& c, T&) { c.RenameTable("p", "t"); }, "", "t(c,d) key k(c)"},
    {"TruncateTable", EBase::Abstract, [](TDBConn& c, T&) { c.TruncateTable("t"); }},
    {"AddColumn", EBase::Own, [](TDBConn& c, T&) { c.AddColumn("t", "e int"); }, "", "t()"},
    {"DropColumn", EBase::Own, [](TDBConn& c, T&) { c.DropColumn("t", "d"); }, "", "t(c) key k(c) fk f(c:id)->p"},
    {"RenameColumn", EBase::Own, [](TDBConn& c, T&) { c.RenameColumn("t", "c", "e"); }, "", "t()"},
    {"ModifyColumn", EBase::Own, [](TDBConn& c, T&) { c.ModifyColumn("t", "c", "c", "int"); }, "", "t()"},
    {"DropKey", EBase::Own, [](TDBConn& c, T&) { c.DropKey("t", "k"); }, "", "t(c,d)"},
    {"DropConstraint", EBase::Own, [](TDBConn& c, T&) { c.DropConstraint("t", "f"); }, "", "t(c,d) key k(c)"},
    {"SurrogateKeyColumn", EBase::Abstract, [](TDBConn& c, T& text) { c.SurrogateKeyColumn("id", text); }},
    {"SupportsSurrogateKey", EBase::Own, [](TDBConn& c, T& text) { text = Word(c.SupportsSurrogateKey()); }, "no"},
};
static_assert(std::size(kOperations) == 57);

void FillStore(TMeta& meta) { Build(meta, "p(id) t(c,d) key k(c) fk f(c:id)->p"); }

TEST(DBConnTest, WhatTheBaseHas) {
  for (const TOperation& operation : kOperations) {
    SCOPED_TRACE(operation.name);
    TDBConn bare;
    FillStore(bare.meta());
    std::string text;
    if (operation.base != EBase::Own) {
      EXPECT_THROW(operation.call(bare, text), EAbstractError);
      continue;
    }
    EXPECT_NO_THROW(operation.call(bare, text));
    EXPECT_EQ(text, operation.text);
    EXPECT_EQ(Shape(bare.meta(), "t"), operation.shape);
  }
}

TEST(DBConnTest, ARenamedTableIsANewUnfetchedOne) {
  TDBConn conn;
  FillStore(conn.meta());
  conn.RenameTable("t", "u");
  EXPECT_EQ(Shape(conn.meta(), "t"), "-");
  EXPECT_EQ(Shape(conn.meta(), "u"), "u()");
  EXPECT_EQ(conn.CurrentTableName(), "u");
  EXPECT_FALSE(conn.meta().tTables.Current().fetched);
}

TEST(DBConnTest, ConnectListsNamesOnly) {
  TFakeConn conn;
  conn.tables = {"a", "b", "c"};
  std::vector<std::pair<double, double>> progress;
  conn.on_progress = [&](TDBConn& sender, double total, double position) {
    EXPECT_EQ(&sender, &conn);
    progress.emplace_back(total, position);
  };
  EXPECT_FALSE(conn.GetConnected());
  conn.Connect();
  EXPECT_TRUE(conn.GetConnected());
  EXPECT_EQ(progress, (std::vector<std::pair<double, double>>{{2, 0}, {2, 1}, {2, 2}}));
  EXPECT_EQ(conn.log, TStringList{"on"}) << "nothing is fetched";
  EXPECT_EQ(conn.meta().tTables.TotalCount(), 3U);
  EXPECT_EQ(conn.meta().owner(), &conn);
}

TEST(DBConnTest, ProgressOfOneTableAndOfNone) {
  TFakeConn conn;
  double total = -1, position = -1;
  conn.on_progress = [&](TDBConn&, double t, double p) { total = t, position = p; };
  conn.Connect();
  EXPECT_EQ(total, -1) << "an empty database reports nothing";
  EXPECT_TRUE(conn.meta().tTables.Empty());
  conn.tables = {"only"};
  conn.RefreshTableList();
  EXPECT_EQ(total, 0);
  EXPECT_EQ(position, 0);
}

TEST(DBConnTest, ReconnectForgetsWhatWasFetched) {
  TFakeConn conn;
  conn.tables = {"t"};
  conn.fetch = [](TMeta& meta, const std::string&) { meta.tColumns.Append().name = "c"; };
  conn.Connect();
  conn.FetchIfNeeded();
  conn.meta().tTables.Edit().cached_ddl = "create table t";
  EXPECT_EQ(Shape(conn.meta(), "t"), "t(c)");
  conn.Reconnect();
  EXPECT_EQ(Shape(conn.meta(), "t"), "t()");
  EXPECT_EQ(conn.meta().tTables.Current().cached_ddl, kNoCachedDDL);
  conn.Disconnect();
  EXPECT_TRUE(conn.meta().tTables.Empty());
  EXPECT_EQ(conn.log, (TStringList{"on", "fetch t", "off", "on", "off"}));
}

TEST(DBConnTest, FetchIfNeededFetchesOnceAndMarksTheRowThatIsCurrentThen) {
  TFakeConn conn;
  conn.FetchIfNeeded();  // no table, nothing to do
  conn.tables = {"a", "b"};
  conn.Connect();
  conn.meta().GotoTable("b");
  conn.FetchIfNeeded();
  conn.FetchIfNeeded();
  EXPECT_EQ(conn.log, (TStringList{"on", "fetch b"}));
  EXPECT_TRUE(conn.meta().tTables.Current().fetched);
  EXPECT_EQ(conn.CurrentTableName(), "b");

  // A fetch that puts a new row in place of the old.
  conn.fetch = [](TMeta& meta, const std::string& table) {
    meta.tTables.Delete();
    meta.tTables.Append().name = table + "2";
    meta.tTables.Post();
  };
  conn.meta().GotoTable("a");
  conn.FetchIfNeeded();
  EXPECT_EQ(conn.CurrentTableName(), "a2");
  EXPECT_TRUE(conn.meta().tTables.Current().fetched);
}

TEST(DBConnTest, AFailedFetchMarksNothing) {
  TFakeConn conn;
  conn.tables = {"t"};
  conn.fetch = [](TMeta&, const std::string&) { RaiseError("gone away"); };
  conn.Connect();
  EXPECT_EQ(MessageOf([&] { conn.FetchIfNeeded(); }), "gone away");
  EXPECT_FALSE(conn.meta().tTables.Current().fetched);
}

class ReadTest : public ::testing::Test {
 protected:
  ReadTest() {
    conn.tables = {"a", "t"};
    conn.fetch = [](TMeta& meta, const std::string& table) {
      if (table != "t") return;
      TColumnRow& first = meta.tColumns.Append();
      first.name = "n";
      first.datatype = ntDecimal;
      first.size = 10;
      first.precision = 2;
      first.notnull = true;
      first.default_ = "'0.00'";
      TColumnRow& second = meta.tColumns.Append();
      second.name = "c";
      second.autoinc = true;
      meta.tColumns.Post();
      meta.tColumns.First();
      Build(meta, "key primary key(n,c) fk f(n:x,c:y)->p");
      meta.tConstraints.Edit().delete_rule = "set null";
      meta.tConstraints.Edit().foreign_db = "d";
      meta.tConstraints.Post();
    };
    conn.Connect();
  }
  TFakeConn conn;
};

TEST_F(ReadTest, RecordsFromTheCurrentRowsFetchFirst) {
  conn.meta().GotoTable("t");
  TMetaColumn column;
  conn.ReadColumn(column);
  EXPECT_EQ(column.table + "." + column.name + " " + column.description, "t.n decimal");
  EXPECT_EQ(column.size, 10);
  EXPECT_EQ(column.precision, 2);
  EXPECT_TRUE(column.notnull);
  EXPECT_EQ(column.default_, "'0.00'");
  TMetaKey key;
  conn.ReadKey(key);
  EXPECT_EQ(key.table + "." + key.name + " " + key.columns, "t.primary key n;c");
  EXPECT_TRUE(key.primary && key.unique && !key.fulltext);
  TMetaConstraint constraint;
  conn.ReadConstraint(constraint);
  EXPECT_EQ(constraint.table + "." + constraint.name, "t.f");
  EXPECT_EQ(constraint.constraint_type, kForeignKeyConstraint);
  EXPECT_EQ(constraint.foreign_db + "." + constraint.foreign_table + " " + constraint.delete_rule, "d.p set null");
  EXPECT_EQ(constraint.local_columns + " " + constraint.foreign_columns, "n;c x;y");
  EXPECT_EQ(conn.log, (TStringList{"on", "fetch t"}));
}

TEST_F(ReadTest, AKeyOrConstraintReadFirstFetchesToo) {
  conn.meta().GotoTable("t");
  TMetaConstraint constraint;
  conn.ReadConstraint(constraint);
  EXPECT_EQ(constraint.name, "f");
  conn.meta().InvalidateTable("t");
  TMetaKey key;
  conn.ReadKey(key);
  EXPECT_EQ(key.columns, "n;c");
}

TEST_F(ReadTest, ByName) {
  TMetaColumn column;
  conn.ReadColumnOf("T", "C", column);
  EXPECT_EQ(column.table + "." + column.name + " " + column.description, "t.c tinyint");
  EXPECT_EQ(column.size, 0) << "a null number is 0 in a record";
  EXPECT_TRUE(column.autoinc);
  std::string description;
  conn.ColumnText("t", "n", description);
  EXPECT_EQ(description, "decimal(10,2)");
  EXPECT_EQ(MessageOf([&] { conn.ReadColumnOf("t", "x", column); }), "Can't find field x of table t in metadata");
  EXPECT_EQ(MessageOf([&] { conn.ReadColumnOf("x", "c", column); }), "Can't find table x in metadata");
}

TEST_F(ReadTest, TheColumnCursor) {
  conn.meta().GotoTable("t");
  EXPECT_EQ(conn.CurrentKeyName(), "") << "not fetched yet";
  EXPECT_TRUE(conn.ColumnsEof());
  conn.FetchIfNeeded();
  std::string names;
  for (conn.FirstColumn(); !conn.ColumnsEof(); conn.NextColumn()) names += conn.CurrentColumnName() + " ";
  EXPECT_EQ(names, "n c ");
  EXPECT_EQ(conn.CurrentKeyName(), kPrimaryKeyName);
}

TMemDataset Counts(std::initializer_list<std::int64_t> values) {
  TMemDataset dataset({{"count", EFieldKind::LargeInt, 0}});
  for (std::int64_t each : values) dataset.AddRow({each});
  return dataset;
}

TEST(GetResultSQLTest, OneValueOrNone) {
  TFakeConn conn;
  conn.engine = kEngineAccess;
  conn.results.emplace("none", Counts({}));
  conn.results.emplace("one", Counts({7}));
  conn.results.emplace("two", Counts({7, 8}));
  TVariant result = "before"s;
  conn.GetResultSQL("one", result);
  EXPECT_EQ(result, TVariant(std::int64_t{7}));
  EXPECT_EQ(MessageOf([&] { conn.GetResultSQL("two", result); }), "Access.GetResultSQL: exactly one record expected");
  EXPECT_EQ(result, TVariant(std::int64_t{7}));
  conn.GetResultSQL("none", result);
  EXPECT_TRUE(VarIsNull(result));
  conn.engine = kEngineMySQLScript;
  EXPECT_EQ(MessageOf([&] { conn.GetResultSQL("two", result); }), "StrEngine error")
      << "this engine has no name to tell";
}

TEST(DBConnTest, TablesAreOpenedByTheirQuotedName) {
  TFakeConn conn;
  conn.quotes = "[]";
  EXPECT_EQ(conn.QuoteName("a b"), "[a b]");
  conn.results.emplace("select count(*) from [t]", Counts({12}));
  conn.results.emplace("select * from [t]", Counts({1, 2}));
  EXPECT_EQ(conn.GetRecordCount("t"), 12);
  EXPECT_EQ(conn.OpenTable("t")->RecordCount(), 2);
}

TEST(DBConnTest, StatementsAreAnnounced) {
  TDBConn conn;
  TStringList seen;
  conn.on_exec_sql = [&seen](const std::string& sql) { seen.push_back(sql); };
  EXPECT_EQ(conn.ExecSQL("drop table t"), -1);
  EXPECT_EQ(seen, TStringList{"drop table t"});
}

// Counts the ends of its tables; one of them fails.
class TClosingConn : public TFakeConn {
 public:
  void CloseTable(std::unique_ptr<TDataset> dataset) override {
    ++closed;
    TDBConn::CloseTable(std::move(dataset));
    if (fails) RaiseError("close failed");
  }
  int closed = 0;
  bool fails = false;
};

TEST(TableGuardTest, EndsThroughItsEngine) {
  TClosingConn conn;
  conn.results.emplace("select * from t", Counts({5}));
  {
    TTableGuard rows(conn, "t");
    EXPECT_EQ(VarToInt(rows->Value(0)), 5);
    EXPECT_EQ(conn.closed, 0);
  }
  EXPECT_EQ(conn.closed, 1);
  conn.fails = true;
  { const TTableGuard rows(conn, "t"); }
  EXPECT_EQ(conn.closed, 2) << "and a failing end stays quiet";
}

}  // namespace
}  // namespace velmora

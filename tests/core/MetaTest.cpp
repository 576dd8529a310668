// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/Meta.h"

#include <gtest/gtest.h>

#include "core/CreationTexts.h"
#include "core/DBConn.h"
#include "support/CaseFile.h"
#include "support/MessageOf.h"
#include "support/MetaBuilder.h"

namespace velmora {
namespace {

using testing::Build;
using testing::MessageOf;
using testing::Shape;

// A shop: two tables that refer to the third, one that refers to itself.
class MetaTest : public ::testing::Test {
 protected:
  MetaTest() {
    Build(meta,
          "customers(id,name,boss) key primary key(id) key ix_boss(boss) fk fk_boss(boss:id)->customers "
          "orders(id,cust,kind) key primary key(id) key ix_cust(cust) key ix_both(cust,kind) fk "
          "fk_cust(cust:id)->customers "
          "notes(id,cust) key ix_cust(cust) key ix_twin(cust) fk fk_note(cust:name)->customers fk "
          "fk_case(id:id)->Customers");
  }
  TMeta meta;
};

TEST_F(MetaTest, LookupsIgnoreCaseAndLeaveTheCursorOnWhatTheyFind) {
  EXPECT_TRUE(meta.FindColumn("ORDERS", "Cust"));
  EXPECT_EQ(meta.tTables.Current().name, "orders");
  EXPECT_EQ(meta.tColumns.Current().name, "cust");
  EXPECT_TRUE(meta.FindKey("orders", "IX_BOTH"));
  EXPECT_EQ(meta.KeyFieldList(";"), "cust;kind");
  EXPECT_TRUE(meta.FindConstraint("notes", "FK_NOTE"));
  const TMetaConstraint note = meta.ConstraintRecord(meta.tTables.Current(), meta.tConstraints.Current());
  EXPECT_EQ(note.local_columns + ">" + note.foreign_columns, "cust>name");
  EXPECT_FALSE(meta.FindColumn("nowhere", "id")) << "an unknown table raises nothing";
  EXPECT_FALSE(meta.FindColumn("orders", "nowhere"));
  EXPECT_EQ(meta.tColumns.Current().name, "id") << "the table was entered anew, the failed search moved nothing";
}

TEST_F(MetaTest, AFailedSearchLeavesTheCursor) {
  meta.GotoColumn("orders", "kind");
  EXPECT_FALSE(meta.FindColumn("orders", "nothing"));
  EXPECT_EQ(meta.tColumns.Current().name, "kind");
  EXPECT_FALSE(meta.FindTable("nothing"));
  EXPECT_EQ(meta.tTables.Current().name, "orders");
  EXPECT_EQ(meta.tColumns.Current().name, "kind");
}

TEST_F(MetaTest, AMissingObjectIsNamed) {
  EXPECT_EQ(MessageOf([&] { meta.GotoTable("x"); }), "Can't find table x in metadata");
  EXPECT_EQ(MessageOf([&] { meta.GotoColumn("t", "x"); }), "Can't find field x of table t in metadata");
  EXPECT_EQ(MessageOf([&] { meta.GotoKey("orders", "x"); }), "Can't find key x of table orders in metadata");
  EXPECT_EQ(MessageOf([&] { meta.GotoConstraint("orders", "x"); }),
            "Can't find constraint x of table orders in metadata");
  meta.InvalidateTable("orders");
  EXPECT_EQ(MessageOf([&] { meta.FindColumn("orders", "id"); }), "TMeta: Table orders not fetched!");
}

TEST(MetaTableTest, NamesThatDifferInCaseOnly) {
  TMeta meta;
  Build(meta, "Ab() aB(x,X) key K(x) key k(X) fk F()->p fk f()->p");
  ASSERT_TRUE(meta.FindTable("aB"));
  EXPECT_EQ(meta.tTables.Current().name, "aB") << "the current row has exactly this name";
  ASSERT_TRUE(meta.FindTable("AB"));
  EXPECT_EQ(meta.tTables.Current().name, "Ab") << "else the first in order";
  meta.tTables.Last();
  meta.tKeys.Last();
  ASSERT_TRUE(meta.FindKey("aB", "K"));
  EXPECT_EQ(meta.tKeys.Current().name, "k") << "a key on which the cursor stands fits whatever its case";
  meta.tConstraints.Last();
  ASSERT_TRUE(meta.FindConstraint("aB", "F"));
  EXPECT_EQ(meta.tConstraints.Current().name, "f") << "and so does a constraint";
}

// Many rows are looked up by an index; it must agree with a walk, whatever was renamed, deleted or is alike but for
// case.
TEST(MetaTableTest, ManyRowsAreFoundAsFewAre) {
  TMeta meta;
  for (int i = 0; i < 100; ++i) Build(meta, "t" + std::to_string(i) + "()");
  for (int i = 0; i < 100; ++i) ASSERT_TRUE(meta.FindTable("T" + std::to_string(i))) << "in order";
  for (int i = 99; i >= 0; i -= 7) {
    ASSERT_TRUE(meta.FindTable("T" + std::to_string(i)));
    EXPECT_EQ(meta.tTables.Current().name, "t" + std::to_string(i));
  }
  meta.GotoTable("t50");
  meta.tTables.Edit().name = "renamed";
  EXPECT_FALSE(meta.FindTable("t50"));
  EXPECT_TRUE(meta.FindTable("RENAMED"));
  meta.tTables.Delete();
  EXPECT_EQ(meta.tTables.Current().name, "t51");
  EXPECT_FALSE(meta.FindTable("renamed"));

  Build(meta, "T60() T7()");
  meta.GotoTable("t99");
  EXPECT_TRUE(meta.FindTable("t60"));
  EXPECT_EQ(meta.tTables.Current().name, "t60") << "the first in order, not the one after the cursor";
  meta.GotoTable("t59");
  EXPECT_TRUE(meta.FindTable("T60"));
  EXPECT_EQ(meta.tTables.Current().name, "t60") << "the first in order";
  meta.GotoTable("T7");
  EXPECT_EQ(meta.tTables.Current().name, "t7");
  meta.tTables.Delete();
  EXPECT_TRUE(meta.FindTable("t7"));
  EXPECT_EQ(meta.tTables.Current().name, "T7");
  Build(meta, "t60()");
  meta.GotoTable("T60");
  meta.tTables.First();
  EXPECT_TRUE(meta.FindTable("t60"));
  EXPECT_EQ(meta.tTables.Current().name, "t60");

  TMeta copy;
  copy.CopyFrom(meta);
  for (const char* table : {"t61", "T60", "t3"}) {
    ASSERT_TRUE(copy.tTables.LocateExact(table));
    copy.tTables.Delete();
    EXPECT_FALSE(copy.tTables.LocateExact(table)) << "a row stands in the index of a copy once";
  }
  for (int i = 0; i < 40; ++i) {
    copy.tColumns.Append().name = i == 20 ? "C19" : "c" + std::to_string(i);
    copy.tColumns.Post();
  }
  copy.tColumns.Append().name = "c19";
  EXPECT_ANY_THROW(copy.tColumns.Post());
  copy.tColumns.LocateExact("c19");
  EXPECT_TRUE(copy.tColumns.Locate("C19"));
  EXPECT_EQ(copy.tColumns.Current().name, "c19") << "the first in order: the refused row was never in the index";
}

TEST_F(MetaTest, AMasterThatMovesPutsItsDetailsOnTheirFirstRow) {
  meta.GotoColumn("orders", "kind");
  meta.FindKey("orders", "ix_both");
  meta.tKeyFields.Last();
  meta.tTables.GoTo(meta.tTables.Mark());
  EXPECT_EQ(meta.tColumns.Current().name, "kind") << "sent to the row it stands on, it leaves them";
  EXPECT_EQ(meta.tKeyFields.Current().column, "kind");
  meta.GotoTable("notes");
  meta.GotoTable("orders");
  EXPECT_EQ(meta.tColumns.Current().name, "id");
  EXPECT_EQ(meta.tKeys.Current().name, "primary key");
  EXPECT_EQ(meta.tKeyFields.Current().column, "id");
}

TEST_F(MetaTest, DeletionLeavesTheFollowingRowElseTheLast) {
  meta.GotoColumn("customers", "id");
  meta.tColumns.Delete();
  EXPECT_EQ(meta.tColumns.Current().name, "name");
  meta.tColumns.Last();
  meta.tColumns.Delete();
  EXPECT_EQ(meta.tColumns.Current().name, "name");
  meta.tColumns.Delete();
  EXPECT_TRUE(meta.tColumns.Empty());
  EXPECT_TRUE(meta.tColumns.Eof());
}

TEST_F(MetaTest, UniqueNamesAreComparedExactlyAndARefusedRowIsAsItWas) {
  meta.GotoTable("orders");
  meta.tColumns.Append().name = "cust";
  EXPECT_EQ(MessageOf([&] { meta.tColumns.Post(); }), "Duplicate column name: cust");
  EXPECT_EQ(Shape(meta, "orders").substr(0, 21), "orders(id,cust,kind) ");
  meta.tColumns.Append().name = "CUST";
  EXPECT_NO_THROW(meta.tColumns.Post());
  meta.GotoColumn("orders", "kind");
  meta.tColumns.Edit().name = "cust";
  EXPECT_EQ(MessageOf([&] { meta.tColumns.Post(); }), "Duplicate column name: cust");
  EXPECT_TRUE(meta.FindColumn("orders", "kind"));
  meta.FindKey("orders", "ix_both");
  meta.tKeyFields.Append().column = "kind";
  EXPECT_EQ(MessageOf([&] { meta.tKeyFields.Post(); }), "Duplicate key column name: kind");
  EXPECT_EQ(meta.KeyFieldList(","), "cust,kind");
}

TEST_F(MetaTest, AnOpenRowShowsAndIsFoundByTheNextLookup) {
  meta.GotoTable("orders");
  meta.tColumns.Append().name = "open";
  EXPECT_EQ(Shape(meta, "orders").substr(0, 25), "orders(id,cust,kind,open)");
  EXPECT_TRUE(meta.FindColumn("orders", "OPEN"));
  EXPECT_FALSE(meta.tColumns.IsOpen());
  meta.tColumns.Edit().name = "renamed";
  EXPECT_FALSE(meta.FindColumn("orders", "open"));
  EXPECT_TRUE(meta.FindColumn("orders", "renamed"));
}

TEST_F(MetaTest, PostingClearsThePrecisionOfAnIntegerWithoutSize) {
  struct {
    TNeutralType type;
    std::optional<std::int64_t> size;
    bool kept;
  } const cases[] = {
      {ntI4, {}, false}, {ntUI8, {}, false}, {ntI4, 11, true}, {ntDecimal, {}, true}, {ntFloat, {}, true}};
  meta.GotoTable("orders");
  for (const auto& c : cases) {
    TColumnRow& row = meta.tColumns.Append();
    row.name = "c" + std::to_string(&c - cases);
    row.datatype = c.type;
    row.size = c.size;
    row.precision = 2;
    meta.tColumns.Post();
    EXPECT_EQ(meta.tColumns.Current().precision.has_value(), c.kept) << row.name;
  }
}

TEST(MetaTableTest, TextsAreCutToTheirFieldsInCharacters) {
  TMeta meta;
  std::string umlauts;
  for (int i = 0; i < 300; ++i) umlauts += "\xC3\xA4";
  TTableRow& row = meta.tTables.Append();
  row.name = umlauts;
  row.type = std::string(30, 't');
  meta.tTables.Post();
  EXPECT_EQ(meta.tTables.Current().name.size(), 2 * kNameWidth);
  EXPECT_EQ(meta.tTables.Current().type.size(), kWordWidth);
  EXPECT_FALSE(meta.tTables.Current().fetched);
  EXPECT_EQ(meta.tTables.Current().cached_ddl, "N/A");
}

TEST(MetaTableTest, ADetailWithoutAMasterRowBelongsToNobody) {
  TMeta meta;
  meta.tColumns.Append().name = "stray";
  meta.tColumns.Post();
  Build(meta, "t()");
  EXPECT_TRUE(meta.tColumns.Empty());
}

TEST_F(MetaTest, ReferencingTablesAreThoseInMemoryThatSpellTheNameExactly) {
  TStringList list{"rest of a former call"};
  meta.ReferencingTables("customers", list);
  EXPECT_EQ(list, (TStringList{"orders", "notes"}));
  meta.ReferencingTables("Customers", list);
  EXPECT_EQ(list, (TStringList{"notes"}));
  Build(meta, "self(a) fk fk_self(a:a)->SELF");
  meta.ReferencingTables("SELF", list);
  EXPECT_EQ(list, (TStringList{"self"})) << "in other letters it is another table";
  meta.InvalidateTable("notes");
  meta.ReferencingTables("customers", list);
  EXPECT_EQ(list, (TStringList{"orders"}));
  // A reference that is no foreign key does not count, and one that changes is found under its new name only.
  meta.GotoConstraint("orders", "fk_cust");
  meta.tConstraints.Edit().foreign_table = "notes";
  meta.tConstraints.Post();
  meta.ReferencingTables("customers", list);
  EXPECT_TRUE(list.empty());
  meta.tConstraints.Edit().constraint_type = kCheckConstraint;
  meta.tConstraints.Post();
  meta.ReferencingTables("notes", list);
  EXPECT_TRUE(list.empty());
}

struct TDropCase {
  std::string name;
  std::string store;
  TStringList drops;  // "key TABLE, NAME"
  TStringList statements;
  std::string left;  // of a table
};

std::vector<TDropCase> DropCases() {
  std::vector<TDropCase> cases;
  std::string store;
  for (const std::string& line : LinesOf(testing::CaseText("core/drops.txt"))) {
    const std::string rest = line.substr(std::min<std::size_t>(2, line.size()));
    if (line.empty() || line.starts_with("##")) continue;
    if (line.starts_with("store "))
      store = line.substr(6);
    else if (line[0] == '#')
      cases.push_back({rest, store, {}, {}, {}});
    else if (line[0] == '-')
      cases.back().drops.push_back(rest);
    else if (line[0] == '=')
      cases.back().left = rest;
    else
      cases.back().statements.push_back(line);
  }
  return cases;
}

void Drop(TMeta& meta, const std::string& what, std::string& sql) {
  TStringList names;
  SplitText(", ", what.substr(what.find(' ') + 1), names);
  meta.GotoTable(names[0]);
  meta.tKeys.First();  // else the cursor stands on the last one, which may fit the name too
  if (what.starts_with("table ")) meta.DropTableSQL(names[0], sql);
  if (what.starts_with("column ")) meta.DropColumnSQL(names[0], names[1], sql);
  if (what.starts_with("key ")) meta.DropKeySQL(names[0], names[1], sql);
  if (what.starts_with("constraint ")) meta.DropConstraintSQL(names[0], names[1], sql);
}

TEST(MetaDropTest, RemovesWhatHangsOnItAndSaysSo) {
  for (const TDropCase& c : DropCases()) {
    SCOPED_TRACE(c.name);
    TMeta meta;
    Build(meta, c.store);
    std::string sql;
    for (const std::string& what : c.drops) Drop(meta, what, sql);
    EXPECT_EQ(sql, JoinList(c.statements, "\r\n"));
    EXPECT_EQ(Shape(meta, c.left.substr(0, c.left.find('('))), c.left);
  }
}

TEST_F(MetaTest, ADroppedTableLeavesNoDetailsBehind) {
  std::string sql;
  for (const char* table : {"orders", "notes", "customers"}) meta.DropTableSQL(table, sql);
  EXPECT_EQ(meta.tTables.TotalCount() + meta.tColumns.TotalCount() + meta.tKeys.TotalCount() +
                meta.tKeyFields.TotalCount() + meta.tConstraints.TotalCount() + meta.tConstraintFields.TotalCount(),
            0u);
}

TEST_F(MetaTest, AFailedDropLeavesTheTextAlone) {
  std::string sql = "before";
  EXPECT_EQ(MessageOf([&] { meta.DropColumnSQL("orders", "nothing", sql); }),
            "Can't find field nothing of table orders in metadata");
  EXPECT_EQ(sql, "before");
}

TEST(MetaMoveTest, PutsTheColumnBehindItsAnchor) {
  const struct {
    const char* column;
    const char* after;
    const char* order;
  } cases[] = {
      {"e", "a", "t(a,e,b,c,d)"}, {"e", "", "t(e,a,b,c,d)"},  {"a", "", "t(a,b,c,d,e)"},  {"a", "e", "t(b,c,d,e,a)"},
      {"b", "d", "t(a,c,d,b,e)"}, {"c", "a", "t(a,c,b,d,e)"}, {"c", "", "t(c,a,b,d,e)"},  {"b", "a", "t(a,b,c,d,e)"},
      {"a", "b", "t(b,a,c,d,e)"}, {"c", "c", "t(a,b,c,d,e)"}, {"C", "A", "t(a,c,b,d,e)"},
  };
  for (const auto& c : cases) {
    TMeta meta;
    Build(meta, "t(a,b,c,d,e)");
    meta.tTables.Amend().fetched = false;  // never fetches
    meta.MoveColumn("t", c.column, c.after);
    EXPECT_EQ(Shape(meta, "t"), c.order) << c.column << " after " << c.after;
    EXPECT_TRUE(SameText(meta.tColumns.Current().name, c.column));
    int former = 0;
    for (const TColumnRow& row : meta.tColumns.Rows()) {
      EXPECT_GT(row.id, former) << "ids rise in column order";
      former = row.id;
    }
    meta.tColumns.Append().name = "new";
    EXPECT_GT(meta.tColumns.Current().id, former) << "and none is given twice";
  }
}

TEST(MetaMoveTest, NamesThatDifferInCaseOnlyAreToldApart) {
  const struct {
    const char* column;
    const char* after;
    const char* order;
  } cases[] = {{"A", "b", "t(a,b,A)"}, {"a", "b", "t(A,b,a)"}, {"b", "A", "t(a,A,b)"}, {"b", "a", "t(a,b,A)"}};
  for (const auto& c : cases) {
    TMeta meta;
    Build(meta, "t(a,A,b)");
    meta.MoveColumn("t", c.column, c.after);
    EXPECT_EQ(Shape(meta, "t"), c.order) << c.column << " after " << c.after;
  }
}

TEST(MetaMoveTest, MissingColumnsAreNamed) {
  TMeta meta;
  Build(meta, "t(a)");
  EXPECT_EQ(MessageOf([&] { meta.MoveColumn("t", "a", "x"); }), "Can't find field x of table t in metadata");
  EXPECT_EQ(MessageOf([&] { meta.MoveColumn("t", "x", ""); }), "Can't find field x of table t in metadata");
  EXPECT_EQ(MessageOf([&] { meta.MoveColumn("u", "a", ""); }), "Can't find table u in metadata");
}

TEST_F(MetaTest, ACopyKeepsIdsOrderLinksAndTexts) {
  meta.MoveColumn("orders", "kind", "");
  meta.GotoTable("orders");
  meta.tTables.Amend().cached_ddl = "text";
  const int id = meta.tTables.CurrentId();
  TMeta copy;
  Build(copy, "gone(x)");
  copy.CopyFrom(meta);
  EXPECT_EQ(meta.tTables.Current().name, "orders") << "the source's cursor stays";
  for (const char* table : {"customers", "orders", "notes"}) EXPECT_EQ(Shape(copy, table), Shape(meta, table));
  EXPECT_FALSE(copy.FindTable("gone"));
  ASSERT_TRUE(copy.FindConstraint("orders", "fk_cust"));
  EXPECT_EQ(copy.tTables.CurrentId(), id);
  EXPECT_EQ(copy.tTables.Current().cached_ddl, "text");
  int greatest = 0;
  for (const TTableRow& row : meta.tTables.Rows()) greatest = std::max(greatest, row.id);
  EXPECT_GT(copy.tTables.Append().id, greatest) << "an id of the source is not given again";
  std::string sql;
  copy.DropTableSQL("customers", sql);
  EXPECT_TRUE(meta.FindTable("customers")) << "the copy stands alone";
}

TEST_F(MetaTest, InvalidateKeepsTheRowAndItsCachedText) {
  meta.GotoTable("orders");
  meta.tTables.Amend().cached_ddl = "kept";
  meta.InvalidateTable("ORDERS");
  EXPECT_EQ(Shape(meta, "orders"), "orders()");
  EXPECT_FALSE(meta.tTables.Current().fetched);
  std::string ddl;
  meta.CachedTableDDL("orders", ddl);
  EXPECT_EQ(ddl, "kept");
}

TEST_F(MetaTest, ListsOfNames) {
  TStringList list;
  meta.TableNames(list);
  EXPECT_EQ(list, (TStringList{"customers", "orders", "notes"}));
  meta.ColumnNames("Notes", list, false);
  EXPECT_EQ(list, (TStringList{"id", "cust"}));
  std::string fields;
  meta.PrimaryKeyFields("orders", fields);
  EXPECT_EQ(fields, "id");
  meta.PrimaryKeyFields("notes", fields);
  EXPECT_EQ(fields, "");
  Build(meta, "two(a,b) key primary key(b,a) key primary key(a)");
  meta.PrimaryKeyFields("two", fields);
  EXPECT_EQ(fields, "b;a") << "of the first one";
}

// An engine of a given number that gives creation texts and counts how often it is asked.
class TTextEngine : public TDBConn, public TCreationTexts {
 public:
  explicit TTextEngine(int engine) : engine_(engine) {}
  int GetEngine() override { return engine_; }
  void ShowCreateTable(const std::string& table, std::string& ddl) override {
    ++asked;
    ddl = "text of " + table;
  }
  void FetchTableStructure(const std::string& /*table*/) override { ++fetched; }
  int asked = 0;
  int fetched = 0;

 private:
  int engine_;
};

TEST(MetaOwnerTest, CreationTextsAreAskedForOnceAndOnlyOfMySQL) {
  TTextEngine mysql(kEngineMySQL);
  Build(mysql.meta(), "t()");
  std::string ddl;
  mysql.meta().CachedTableDDL("T", ddl);
  mysql.meta().CachedTableDDL("t", ddl);
  EXPECT_EQ(ddl, "text of T");
  EXPECT_EQ(mysql.asked, 1);

  for (int engine : {kEngineOracle, kEngineNone}) {
    TTextEngine other(engine);
    Build(other.meta(), "t()");
    EXPECT_EQ(MessageOf([&] { other.meta().CachedTableDDL("t", ddl); }), "CachedTableDDL unsupported");
  }
  TMeta alone;
  Build(alone, "t()");
  EXPECT_EQ(MessageOf([&] { alone.CachedTableDDL("t", ddl); }), "CachedTableDDL unsupported");
  EXPECT_EQ(MessageOf([&] { alone.CachedTableDDL("x", ddl); }), "Can't find table x in metadata");
}

TEST(MetaOwnerTest, AnUnfetchedTableIsFetchedOnce) {
  TTextEngine engine(kEngineMySQL);
  Build(engine.meta(), "t(a)");
  engine.meta().tTables.Amend().fetched = false;
  EXPECT_TRUE(engine.meta().FindColumn("t", "a"));
  EXPECT_TRUE(engine.meta().FindColumn("t", "a"));
  EXPECT_EQ(engine.fetched, 1);
}

}  // namespace
}  // namespace velmora

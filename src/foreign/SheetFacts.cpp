// SPDX-License-Identifier: GPL-3.0-or-later
#include "foreign/SheetFacts.h"

#include <filesystem>
#include <string_view>
#include <system_error>
#include <utility>

#include "engines/oledb/DBConnExcel.h"
#include "engines/oledb/DBConnLotus.h"
#include "foreign/SeenValues.h"
#include "util/Text.h"

namespace velmora {

namespace {

bool IsLongText(const TOLEDBColumnRow& row) {
  if ((row.COLUMN_FLAGS & kColumnIsMixedLong) != 0) return true;
  const bool others = row.DATA_TYPE == kDbTypeR8 || row.DATA_TYPE == kDbTypeDate;
  return !others && (row.COLUMN_FLAGS & kColumnIsMixed) == 0 && (row.COLUMN_FLAGS & kColumnIsLong) != 0;
}

TForeignColumn ColumnOf(const TOLEDBColumnRow& row) {
  constexpr std::uint32_t kShort = 255;
  TForeignColumn column{.name = row.COLUMN_NAME, .native = "text", .family = EFamily::VarChar};
  if (IsLongText(row)) {
    column.native = "long text";
    column.family = EFamily::LongText;
  } else if ((row.COLUMN_FLAGS & kColumnIsMixed) != 0) {
    column.length = kShort;
  } else if (row.DATA_TYPE == kDbTypeR8) {
    column.native = "number";
    column.family = EFamily::Double;
  } else if (row.DATA_TYPE == kDbTypeDate) {
    column.native = "date and time";
    column.family = EFamily::DateTime;
  } else {
    column.length = row.CHARACTER_MAXIMUM_LENGTH;
  }
  return column;
}

// `Engine` has a file.
template <class Engine>
class TSheetFacts final : public TFactReader {
 public:
  explicit TSheetFacts(Engine& conn) : conn_(conn) {}

  TKnownFacts Known() const override { return {EFact::Order}; }
  TStringList Tables() override {
    TStringList tables;
    conn_.ListTables(tables);
    return tables;
  }
  std::string PlainName(const std::string& table) const override;
  bool Reachable() override {
    std::error_code ignored;
    return std::filesystem::exists(conn_.filename(), ignored);
  }

  // All rows are read: the first ones decide on the kinds of columns, the others say what these have to hold.
  TForeignTable Table(const std::string& name) override {
    TOLEDBDataSource& source = conn_.GetConnectionObject();
    TForeignTable table{.name = name};
    for (const TOLEDBColumnRow& row : source.Session().GetColumns(name)) table.columns.push_back(ColumnOf(row));
    TSeenValues seen(table.columns.size());
    for (const TMemDataset::TRow& row : Rows(source, name)) seen.See(row);
    seen.Settle(table.columns);
    return table;
  }

 private:
  TRowsOfValues Rows(TOLEDBDataSource& source, const std::string& table) {
    TOLEDBRowset rowset = source.Provider().Open("select * from " + conn_.QuoteName(table));
    return rowset.read_rows ? rowset.read_rows() : std::move(rowset.rows);
  }

  Engine& conn_;
};

// "'My sheet$'" as "My sheet".
template <class Engine>
std::string TSheetFacts<Engine>::PlainName(const std::string& table) const {
  std::string name = table;
  if (name.size() > 1 && name.front() == '\'' && name.back() == '\'')
    name = StrReplace(name.substr(1, name.size() - 2), "''", "'");
  if (name.size() > 1 && (name.back() == '$' || name.back() == ':')) name.pop_back();
  return name;
}

template <class Engine>
std::unique_ptr<TFactReader> MakeSheetFacts(TDBConn& conn) {
  auto* engine = dynamic_cast<Engine*>(&conn);
  return engine == nullptr ? nullptr : std::make_unique<TSheetFacts<Engine>>(*engine);
}

}  // namespace

std::unique_ptr<TFactReader> MakeExcelFacts(TDBConn& conn) { return MakeSheetFacts<TDBConnExcel>(conn); }
std::unique_ptr<TFactReader> MakeLotusFacts(TDBConn& conn) { return MakeSheetFacts<TDBConnLotus>(conn); }

}  // namespace velmora

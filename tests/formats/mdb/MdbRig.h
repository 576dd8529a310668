#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>

#include "formats/mdb/MdbReader.h"
#include "support/MdbFile.h"
#include "support/MessageOf.h"
#include "support/ParadoxFile.h"
#include "support/ScratchFolder.h"
#include "util/Format.h"
#include "util/Text.h"
#include "util/Variant.h"

namespace velmora::testing {

// One Access file, read within this process.
class TMdbRig : public ::testing::Test {
 protected:
  void Put(const std::string& bytes) { PutFile(path_, bytes); }
  std::unique_ptr<TFileReader> Open() const { return OpenMdbFileHere(path_); }
  std::string Tables() const {
    std::string text;
    for (const TOLEDBTableRow& table : Open()->Tables()) text += table.TABLE_NAME + " " + table.TABLE_TYPE + ";";
    return text;
  }

  // "name type flags length precision,scale", " null" where it may be, the default, the kind of the field.
  static std::string Columns(const TFileTable& table) {
    std::string text;
    for (std::size_t i = 0; i < table.columns.size(); ++i) {
      const TOLEDBColumnRow& column = table.columns[i];
      EXPECT_EQ(column.ORDINAL_POSITION, i + 1);
      EXPECT_EQ(table.fields[i].name, column.COLUMN_NAME);
      text += Format("%s %d %d %d %d,%d%s%s %s%s\n", column.COLUMN_NAME, column.DATA_TYPE, column.COLUMN_FLAGS,
                     column.CHARACTER_MAXIMUM_LENGTH, column.NUMERIC_PRECISION, column.NUMERIC_SCALE,
                     column.IS_NULLABLE ? " null" : "", column.COLUMN_DEFAULT ? " =" + *column.COLUMN_DEFAULT : "",
                     FieldKindName(table.fields[i].kind), table.is_autoincrement[i] ? " auto" : "");
    }
    return text;
  }
  std::string Columns(const std::string& table) const { return Columns(Open()->Structure(table)); }

  // "name column column primary unique;" per index.
  std::string Indexes(const std::string& table) const {
    std::string text;
    const std::vector<TOLEDBIndexRow> rows = Open()->Structure(table).indexes;
    for (std::size_t i = 0; i < rows.size(); ++i) {
      if (rows[i].ORDINAL_POSITION == 1) text += rows[i].INDEX_NAME;
      text += " " + rows[i].COLUMN_NAME;
      if (i + 1 < rows.size() && rows[i + 1].ORDINAL_POSITION != 1) continue;
      text += std::string(rows[i].PRIMARY_KEY ? " primary" : "") + (rows[i].UNIQUE ? " unique" : "") + ";";
    }
    return text;
  }

  // A line per row, "-" for null, bytes in hexadecimal.
  static std::string Rows(TFileReader& reader, const std::string& table, std::int64_t limit = kAllRows) {
    const std::vector<TFieldDef> fields = reader.Structure(table).fields;
    std::string text;
    for (const TMemDataset::TRow& row : reader.Rows(table, limit).rows)
      for (std::size_t i = 0; i < row.size(); ++i)
        text += Shown(fields[i].kind, row[i]) + (i + 1 < row.size() ? "|" : "\n");
    return text;
  }
  std::string Rows(const std::string& table, std::int64_t limit = kAllRows) const {
    return Rows(*Open(), table, limit);
  }

  std::string Failure(const std::function<void()>& body) const { return StrReplace(MessageOf(body), path_, "FILE"); }
  std::string OpenFailure() const {
    return Failure([&] { Open(); });
  }

  TScratchFolder folder_;
  const std::string path_ = folder_ / "shop.mdb";

 private:
  static std::string Shown(EFieldKind kind, const TVariant& value) {
    if (VarIsNull(value)) return "-";
    if (kind != EFieldKind::Blob && kind != EFieldKind::VarBytes) return VarToText(value);
    std::string hex;
    for (const char byte : std::get<std::string>(value)) hex += Format("%02x", static_cast<unsigned char>(byte));
    return hex;
  }
};

}  // namespace velmora::testing

#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>

#include "formats/dbf/DBaseFolder.h"
#include "formats/dbf/FoxProFolder.h"
#include "support/DbfFile.h"
#include "support/MessageOf.h"
#include "support/ParadoxFile.h"
#include "support/ScratchFolder.h"
#include "util/Format.h"
#include "util/Text.h"
#include "util/Variant.h"

namespace velmora::testing {

// A folder of files, seen by the readers of both products. Messages come without the folder's path.
class TDbfRig : public ::testing::Test {
 protected:
  void Put(const std::string& name, const std::string& bytes) { PutFile(folder_ / name, bytes); }
  void Put(const std::string& name, const TDbfDraft& table) { PutFile(folder_ / name, table.Bytes()); }

  std::unique_ptr<TFileReader> DBase() const { return OpenDBaseFolder(folder_.Path()); }
  std::unique_ptr<TFileReader> FoxPro(const std::string& file = "") const {
    return OpenFoxProFolder(file.empty() ? folder_.Path() : folder_ / file);
  }

  // Values with their kinds: "int 5|text a|null;" per record, with its number in front where numbers are given.
  static std::string Rows(TFileReader& reader, const std::string& table = "t", std::int64_t limit = kAllRows) {
    const TFileRows rows = reader.Rows(table, limit);
    std::string text;
    for (std::size_t i = 0; i < rows.rows.size(); ++i) {
      if (!rows.numbers.empty()) text += Format("%d: ", rows.numbers[i]);
      for (std::size_t k = 0; k < rows.rows[i].size(); ++k) text += (k > 0 ? "|" : "") + Shown(rows.rows[i][k]);
      text += ";";
    }
    return text;
  }
  static std::string Shown(const TVariant& value) {
    static constexpr const char* kKinds[] = {"null", "truth ", "int ", "float ", "moment ", "text "};
    return kKinds[value.index()] + VarToText(value);
  }

  // "NAME type flags length precision,scale", "null" where it may be, the default, the kind of the field.
  static std::string Columns(TFileReader& reader, const std::string& table = "t") {
    const TFileTable described = reader.Structure(table);
    std::string text;
    for (std::size_t i = 0; i < described.columns.size(); ++i) {
      const TOLEDBColumnRow& column = described.columns[i];
      EXPECT_EQ(column.TABLE_NAME, table);
      EXPECT_EQ(column.ORDINAL_POSITION, i + 1);
      EXPECT_EQ(described.fields[i].name, column.COLUMN_NAME);
      text += Format("%s %d %d %d %d,%d%s%s %s%s\n", column.COLUMN_NAME, column.DATA_TYPE, column.COLUMN_FLAGS,
                     column.CHARACTER_MAXIMUM_LENGTH, column.NUMERIC_PRECISION, column.NUMERIC_SCALE,
                     column.IS_NULLABLE ? " null" : "", column.COLUMN_DEFAULT ? " =" + *column.COLUMN_DEFAULT : "",
                     FieldKindName(described.fields[i].kind), described.is_autoincrement[i] ? " auto" : "");
    }
    return text;
  }

  // "name(column) primary unique;" per index.
  static std::string Indexes(TFileReader& reader, const std::string& table = "t") {
    std::string text;
    for (const TOLEDBIndexRow& index : reader.Structure(table).indexes) {
      EXPECT_EQ(index.TABLE_NAME, table);
      EXPECT_EQ(index.ORDINAL_POSITION, 1U);
      text += index.INDEX_NAME + "(" + index.COLUMN_NAME + ")" + (index.PRIMARY_KEY ? " primary" : "") +
              (index.UNIQUE ? " unique" : "") + ";";
    }
    return text;
  }

  std::string Failure(const std::function<void()>& body) const {
    return StrReplace(MessageOf(body), folder_.Path() + "/", "");
  }

  TScratchFolder folder_;
};

}  // namespace velmora::testing

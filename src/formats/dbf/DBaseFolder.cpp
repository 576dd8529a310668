// SPDX-License-Identifier: GPL-3.0-or-later
#include "formats/dbf/DBaseFolder.h"

// The mapping of types is that of the provider for Jet, which is documented with it: everything is text, a double, a
// date or a truth value, may be null, and has no default. Deleted records are shown, as they are there.

#include <memory>
#include <string>
#include <utility>

#include "formats/dbf/DbfFolder.h"
#include "formats/dbf/DbfIndexes.h"
#include "formats/dbf/DbfStructure.h"

namespace velmora {
namespace {

// What dBASE under DOS wrote in the United States, and what the provider takes for granted.
constexpr char kCodePage[] = "CP437";

using enum EFieldKind;
constexpr std::uint32_t kFixed = kColumnIsFixedLength;
constexpr std::uint32_t kLong = kColumnIsLong;

// The types after G are those of Visual FoxPro, whose files have the same name; they are mapped as there.
constexpr TDbfTypeRow kTypes[] = {
    {'C', 0, kDbTypeWStr, 0, String, EDbfSize::Bytes, DbfText},
    {'N', 0, kDbTypeR8, kFixed, Float, EDbfSize::None, DbfFloat},
    {'F', 0, kDbTypeR8, kFixed, Float, EDbfSize::None, DbfFloat},
    {'L', 0, kDbTypeBool, kFixed, Boolean, EDbfSize::None, DbfLogical},
    {'D', 0, kDbTypeDate, kFixed, Date, EDbfSize::None, DbfDate},
    {'M', 0, kDbTypeWStr, kLong, Memo, EDbfSize::None, DbfMemoText},
    {'G', 0, kDbTypeBytes, kLong, Blob, EDbfSize::None, DbfMemoBytes},
    {'P', 0, kDbTypeBytes, kLong, Blob, EDbfSize::None, DbfMemoBytes},
    {'W', 0, kDbTypeBytes, kLong, Blob, EDbfSize::None, DbfMemoBytes},
    {'I', 0, kDbTypeI4, kFixed, Integer, EDbfSize::None, DbfInteger},
    {'B', 0, kDbTypeR8, kFixed, Float, EDbfSize::None, DbfDouble},
    {'Y', 0, kDbTypeCy, kFixed, Currency, EDbfSize::None, DbfMoney},
    {'T', 0, kDbTypeDBTimeStamp, kFixed, DateTime, EDbfSize::None, DbfDateTime},
    {'V', 0, kDbTypeWStr, 0, String, EDbfSize::Bytes, DbfVarText},
    {'Q', 0, kDbTypeBytes, 0, VarBytes, EDbfSize::Bytes, DbfBytes},
};

class TDBaseFolder final : public TFileReader, public TDbfStructures {
 public:
  TDBaseFolder(std::string folder, std::string code_page)
      : folder_(std::move(folder)), code_page_(CheckedCodePage(std::move(code_page))) {
    TDBaseFolder::Tables();
  }

  std::vector<TOLEDBTableRow> Tables() override {
    std::vector<TOLEDBTableRow> tables;
    for (const std::string& name : TDBaseFolder::TableNames()) tables.push_back({name, "TABLE"});
    return tables;
  }

  TStringList TableNames() override {
    known_ = {};
    return DbfTableNames(folder_);
  }

  TDbfStructure StructureOf(const std::string& table) override {
    const TDbfFile file = File(table);
    return {.fields = ShownFields(file),
            .visual = file.Head().IsVisualFoxPro(),
            .indexes = ReadDBaseIndexes(file.Path(), &known_),
            .warnings = file.Warnings()};
  }

  TFileTable Structure(const std::string& table) override {
    const TDbfFile file = File(table);
    TFileTable described = DescribeDbf(file, table, kTypes);
    std::vector<std::string> names;
    for (const TOLEDBColumnRow& column : described.columns) names.push_back(column.COLUMN_NAME);
    for (const TDbfIndex& index : ReadDBaseIndexes(file.Path(), &known_)) AddDbfIndex(index, false, names, described);
    return described;
  }

  TFileRows Rows(const std::string& table, std::int64_t limit) override {
    return ReadDbfRows(File(table), kTypes, true, limit);
  }

 private:
  TDbfFile File(const std::string& table) {
    return {DbfPathOf(folder_, table, known_), kCodePage, code_page_, &known_};
  }

  std::string folder_;
  std::string code_page_;
  TFolderNames known_;  // since the tables were listed
};

}  // namespace

std::unique_ptr<TDbfStructures> OpenDBaseStructures(const std::string& folder, const std::string& code_page) {
  return std::make_unique<TDBaseFolder>(folder, code_page);
}

std::unique_ptr<TFileReader> OpenDBaseFolder(const std::string& folder, const std::string& code_page) {
  return std::make_unique<TDBaseFolder>(folder, code_page);
}

}  // namespace velmora

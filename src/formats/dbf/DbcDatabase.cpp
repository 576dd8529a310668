// SPDX-License-Identifier: GPL-3.0-or-later
#include "formats/dbf/DbcDatabase.h"

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <map>
#include <string_view>
#include <system_error>

#include "formats/dbf/DbfFile.h"
#include "formats/dbf/DbfMemo.h"
#include "formats/dbf/DbfValues.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/LittleEndian.h"
#include "util/Text.h"
#include "util/Variant.h"

namespace velmora {
namespace {

constexpr char kMemoExtension[] = ".dct";
constexpr char kCodePage[] = "CP1252";

// Numbers of properties.
constexpr unsigned char kPathId = 1;
constexpr unsigned char kCommentId = 7;
constexpr unsigned char kRuleId = 9;
constexpr unsigned char kDefaultId = 11;
constexpr unsigned char kChildTagId = 13;
constexpr unsigned char kParentId = 18;
constexpr unsigned char kParentTagId = 19;
constexpr unsigned char kPrimaryTagId = 20;

// A property: its whole length, the length of its number (always 1), its number, its value.
constexpr std::size_t kPropertyHead = 7;

constexpr char kNoDatabase[] = "%s: it is no database of FoxPro: it has no field %s of type %s";
constexpr char kBadProperties[] = "%s: record %d: the properties of %s end in the middle of one";

const TDbfField& FieldNamed(const TDbfFile& file, std::string_view name, char type) {
  const auto field = std::ranges::find_if(
      file.Fields(), [&](const TDbfField& each) { return SameText(each.name, name) && each.type == type; });
  if (field == file.Fields().end()) RaiseError(Format(kNoDatabase, file.Path(), name, std::string_view(&type, 1)));
  return *field;
}

class TObjects {
 public:
  explicit TObjects(const TDbfFile& file)
      : file_(file),
        records_(file),
        memos_(file.Path(), kMemoExtension, EDbfMemo::FoxPro),
        id_(FieldNamed(file, "OBJECTID", 'I')),
        parent_(FieldNamed(file, "PARENTID", 'I')),
        type_(FieldNamed(file, "OBJECTTYPE", 'C')),
        name_(FieldNamed(file, "OBJECTNAME", 'C')),
        properties_(FieldNamed(file, "PROPERTY", 'M')) {
    const auto rules = std::ranges::find_if(
        file.Fields(), [](const TDbfField& each) { return SameText(each.name, "RIINFO") && each.type == 'C'; });
    if (rules != file.Fields().end()) rules_ = &*rules;
  }

  bool Next() {
    while (records_.Next())
      if (!records_.IsDeleted()) return true;
    return false;
  }
  std::int64_t Id() { return VarToInt(DbfInteger(Cell(id_))); }
  std::int64_t Parent() { return VarToInt(DbfInteger(Cell(parent_))); }
  std::string Type() { return VarToText(DbfText(Cell(type_))); }
  std::string Name() { return VarToText(DbfText(Cell(name_))); }
  std::map<unsigned char, std::string> Properties();
  // A letter for what a relation does on update, delete, insert.
  std::string Rules() { return rules_ == nullptr ? std::string() : std::string(Cell(*rules_).bytes); }

 private:
  TDbfCell Cell(const TDbfField& field) {
    return {file_, field, records_.Bytes().substr(field.offset, field.size), memos_};
  }

  const TDbfFile& file_;
  TDbfRecords records_;
  TDbfMemoFile memos_;
  const TDbfField &id_, &parent_, &type_, &name_, &properties_;
  const TDbfField* rules_ = nullptr;
};

// Texts as UTF-8, without the zero byte at the end.
std::map<unsigned char, std::string> TObjects::Properties() {
  std::map<unsigned char, std::string> properties;
  const std::string memo = VarToText(DbfMemoBytes(Cell(properties_)));
  std::string_view rest = memo;
  while (!rest.empty()) {
    const std::size_t length = rest.size() < kPropertyHead ? 0 : LittleAt<std::uint32_t>(rest.data());
    if (length < kPropertyHead || length > rest.size())
      RaiseError(Format(kBadProperties, file_.Path(), records_.Number(), Name()));
    const std::string_view value = rest.substr(kPropertyHead, length - kPropertyHead);
    properties[static_cast<unsigned char>(rest[kPropertyHead - 1])] =
        file_.CodePage().Decode(value.substr(0, value.find('\0')));
    rest.remove_prefix(length);
  }
  return properties;
}

TDbcRelation RelationOf(TObjects& objects) {
  auto properties = objects.Properties();
  const std::string rules = objects.Rules() + "   ";
  return {.tag = properties[kChildTagId],
          .parent = properties[kParentId],
          .parent_tag = properties[kParentTagId],
          .on_update = rules[0],
          .on_delete = rules[1]};
}

std::string FileKey(const std::string& path) { return LowerText(std::filesystem::path(path).filename().string()); }

}  // namespace

// Objects stand after their parents, fields of a table in their order.
TDbcDatabase::TDbcDatabase(const std::string& path, const std::string& code_page, TFolderNames* known) : path_(path) {
  const TDbfFile file(path, kCodePage, code_page, known);
  const std::string folder = std::filesystem::path(path).parent_path().string();
  TObjects objects(file);
  std::map<std::int64_t, std::size_t> places;  // of tables, by their numbers
  while (objects.Next()) {
    const std::string type = objects.Type();
    if (SameText(type, "Table")) {
      auto properties = objects.Properties();
      places.emplace(objects.Id(), tables_.size());
      std::string name = objects.Name();
      const std::string file_name = properties[kPathId].empty() ? name + ".dbf" : properties[kPathId];
      tables_.push_back({.name = std::move(name),
                         .path = DbfResolvePath(folder, file_name, known),
                         .primary_tag = properties[kPrimaryTagId],
                         .fields = {},
                         .rule = properties[kRuleId],
                         .comment = properties[kCommentId]});
    } else if (SameText(type, "Field")) {
      const auto place = places.find(objects.Parent());
      if (place == places.end()) continue;  // of a view
      TDbcField field{.name = objects.Name(), .default_value = {}};
      auto properties = objects.Properties();
      if (!properties[kDefaultId].empty()) field.default_value = properties[kDefaultId];
      field.rule = properties[kRuleId];
      field.comment = properties[kCommentId];
      tables_[place->second].fields.push_back(std::move(field));
    } else if (SameText(type, "Relation")) {
      const auto place = places.find(objects.Parent());
      if (place != places.end()) tables_[place->second].relations.push_back(RelationOf(objects));
    }
  }
  for (std::size_t i = 0; i < tables_.size(); ++i) {
    by_name_[LowerText(tables_[i].name)].push_back(i);
    by_file_[FileKey(tables_[i].path)].push_back(i);
  }
}

const TDbcTable* TDbcDatabase::TableNamed(const std::string& name) const {
  const auto places = by_name_.find(LowerText(name));
  return places == by_name_.end() ? nullptr : &tables_[places->second.front()];
}

// Most files are called as here; asking the system about each of the others takes long.
const TDbcTable* TDbcDatabase::TableIn(const std::string& dbf_path) const {
  const auto is_it = [&](const TDbcTable& table) {
    std::error_code error;
    return std::filesystem::equivalent(table.path, dbf_path, error);
  };
  if (const auto places = by_file_.find(FileKey(dbf_path)); places != by_file_.end())
    for (const std::size_t place : places->second)
      if (is_it(tables_[place])) return &tables_[place];
  const auto table = std::ranges::find_if(tables_, is_it);
  return table == tables_.end() ? nullptr : &*table;
}

}  // namespace velmora

// SPDX-License-Identifier: GPL-3.0-or-later
#include "ForeignSources.h"

#include <fstream>
#include <initializer_list>
#include <vector>

#ifdef VELMORA_MDB
#include "foreign/AccessSamples.h"
#include "formats/mdb/MdbPages.h"
#endif
#include "support/PlainBytes.h"
#include "util/Files.h"
#include "util/Format.h"

namespace velmora::bench {

namespace {

constexpr int kReferenceStride = 3;
constexpr char kTable[] = "table_%05d";

bool Refers(int table) { return table > 0 && table % kReferenceStride == 0; }

// --- Access

#ifdef VELMORA_MDB
using testing::TAccessRelation;
using testing::TAccessTable;
using enum EMdbType;

constexpr std::uint16_t kWide = 2;  // bytes of a letter

TMdbColumn Letters(const char* name, int count) {
  return MdbVarColumn(name, Text, static_cast<std::uint16_t>(count * kWide));
}

TAccessTable AccessTable(int number) {
  TAccessTable table{
      .name = Format(kTable, number),
      .columns = {MdbFixedColumn("id", LongInt, kMdbAutoNumber), Letters("name", 80), MdbVarColumn("note", Memo),
                  MdbFixedColumn("parent_id", LongInt), MdbFixedColumn("price", Money),
                  MdbFixedColumn("weight", Double), MdbFixedColumn("active", Bool),
                  MdbFixedColumn("created_at", DateTime), MdbFixedColumn("changed_at", DateTime), Letters("code", 12),
                  Letters("language", 5), MdbVarColumn("picture", Ole)}};
  table.indexes = {{.name = "PrimaryKey", .parts = {{0}}, .flags = kMdbUnique, .kind = kMdbPrimaryKey},
                   {.name = Format("ix_parent_%05d", number), .parts = {{3}}},
                   {.name = "ix_code", .parts = {{9}, {10}}}};
  table.properties[""]["Description"] = "A table of the sample";
  table.properties["name"] = {{"Required", "yes"}, {"DefaultValue", "\"\""}};
  table.properties["parent_id"] = {{"DefaultValue", "0"}};
  table.properties["price"] = {{"Required", "yes"}, {"DefaultValue", "0"}, {"ValidationRule", ">=0"}};
  table.properties["language"] = {{"Required", "yes"}, {"DefaultValue", "\"en\""}};
  return table;
}
#endif

// --- dBASE

using testing::Little;
using testing::Padded;

struct TDbfColumn {
  const char* name;
  char type;
  int size;
  int decimals = 0;
};

constexpr TDbfColumn kDbfColumns[] = {
    {"ID", 'N', 9},         {"NAME", 'C', 80},      {"NOTE", 'M', 10},    {"PARENT_ID", 'N', 9},
    {"PRICE", 'N', 12, 2},  {"WEIGHT", 'F', 20, 6}, {"ACTIVE", 'L', 1},   {"CREATED_AT", 'D', 8},
    {"CHANGED_AT", 'D', 8}, {"CODE", 'C', 12},      {"LANGUAGE", 'C', 5}, {"PICTURE", 'M', 10},
};

// Without rows.
std::string DbfBytes() {
  std::string fields;
  unsigned record = 1;
  for (const TDbfColumn& column : kDbfColumns) {
    fields += Padded(Padded(column.name, 11) + column.type, 16) + static_cast<char>(column.size) +
              Padded(std::string(1, static_cast<char>(column.decimals)), 15);
    record += static_cast<unsigned>(column.size);
  }
  const auto head = static_cast<unsigned>(32 + fields.size() + 1);
  return Padded("\x03\x7C\x01\x02" + Little(0, 4) + Little(head, 2) + Little(record, 2), 32) + fields + "\x0D\x1A";
}

// --- Firebird

std::string FirebirdTable(int number) {
  std::string text = Format("create table TABLE_%05d (", number);
  text +=
      "ID integer not null, NAME varchar(80) default '' not null, NOTE blob sub_type text, PARENT_ID integer "
      "default 0 not null, PRICE numeric(12,2) default 0 not null, WEIGHT double precision, ACTIVE smallint default 1 "
      "not null, CREATED_AT timestamp, CHANGED_AT timestamp default current_timestamp not null, CODE char(12), "
      "LANG varchar(5) default 'en' not null, PICTURE blob, ";
  text += Format("constraint PK_%05d primary key (ID)", number);
  if (Refers(number))
    text += Format(", constraint FK_%05d foreign key (PARENT_ID) references TABLE_%05d (ID) on delete cascade", number,
                   number - 1);
  text += ");\n";
  if (!Refers(number)) text += Format("create index IX_PARENT_%05d on TABLE_%05d (PARENT_ID);\n", number, number);
  return text + Format("create index IX_CODE_%05d on TABLE_%05d (CODE, LANG);\n", number, number);
}

}  // namespace

std::string AccessSample([[maybe_unused]] int tables) {
#ifdef VELMORA_MDB
  constexpr unsigned kDeleteCascades = 0x1000;
  std::vector<TAccessTable> made;
  std::vector<TAccessRelation> relations;
  for (int i = 0; i < tables; ++i) {
    made.push_back(AccessTable(i));
    if (!Refers(i)) continue;
    relations.push_back({.name = Format("fk_%05d", i),
                         .child = Format(kTable, i),
                         .columns = {"parent_id"},
                         .parent = Format(kTable, i - 1),
                         .parent_columns = {"id"},
                         .bits = kDeleteCascades});
  }
  return testing::AccessFile(made, relations);
#else
  return {};
#endif
}

std::string FirebirdSample(int tables) {
  std::string script;
  for (int i = 0; i < tables; ++i) script += FirebirdTable(i);
  return script;
}

void PutFile(const std::string& path, const std::string& bytes) { std::ofstream(path, std::ios::binary) << bytes; }

void WriteDbfSample(int tables, const std::string& folder) {
  const std::string bytes = DbfBytes();
  for (int i = 0; i < tables; ++i) PutFile(JoinPath(folder, Format("table_%05d.dbf", i)), bytes);
}

}  // namespace velmora::bench

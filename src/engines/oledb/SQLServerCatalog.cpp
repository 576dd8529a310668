// SPDX-License-Identifier: GPL-3.0-or-later
#include "engines/oledb/SQLServerCatalog.h"

#include "util/Format.h"

namespace velmora {

namespace {

constexpr char kColumns[] =
    "SELECT *,COLUMNPROPERTY( OBJECT_ID(TABLE_NAME),COLUMN_NAME,'IsIdentity') IsIdentity FROM "
    "INFORMATION_SCHEMA.COLUMNS WHERE TABLE_NAME='%s' ORDER BY ORDINAL_POSITION";
constexpr char kKeys[] =
    "SELECT name,INDEXPROPERTY(id,name,'IsUnique') IsUnique,INDEXPROPERTY(id,name,'IsClustered') IsClustered";
constexpr char kKeyColumn[] =
    ",INDEX_COL('%s',indid,%d) col%d,INDEXKEY_PROPERTY(id,indid,%d,'IsDescending') col%d_desc";
constexpr char kKeysOfTable[] = " FROM sysindexes WHERE id = object_id('%s')";
constexpr char kConstraints[] =
    "SELECT sysobjects.name,syscolumns.name col,sysconstraints.status,syscomments.text, (select sysobjects.name from "
    "sysreferences left join sysobjects on sysreferences.rkeyid=sysobjects.id where "
    "sysreferences.constid=sysconstraints.constid) fgntable";
constexpr char kReferenceColumn[] =
    ", (select syscolumns.name from sysreferences left join syscolumns on sysreferences.%skeyid=syscolumns.id and "
    "sysreferences.%skey%d=syscolumns.colid where sysreferences.constid=sysconstraints.constid) %s%d";
constexpr char kConstraintsOfTable[] =
    " FROM sysconstraints left join syscolumns on \tsysconstraints.id=syscolumns.id and "
    "\tsysconstraints.colid=syscolumns.colid left join sysobjects on \tsysobjects.id=sysconstraints.constid left join "
    "syscomments on \tsyscomments.id=sysconstraints.constid WHERE sysconstraints.id = object_id('%s') order by "
    "sysconstraints.status desc,sysobjects.name";

// The columns of foreign keys on one side: 'f' the keys' own, 'r' the referenced ones.
std::string ReferenceColumns(const char* side, const char* name) {
  std::string text;
  for (int i = 1; i <= kCatalogColumns; ++i) text += Format(kReferenceColumn, side, side, i, name, i);
  return text;
}

}  // namespace

std::string ColumnsQuery(const std::string& name) { return Format(kColumns, name); }

std::string KeysQuery(const std::string& name) {
  std::string text = kKeys;
  for (int i = 1; i <= kCatalogColumns; ++i) text += Format(kKeyColumn, name, i, i, i, i);
  return text + Format(kKeysOfTable, name);
}

std::string ConstraintsQuery(const std::string& name) {
  return kConstraints + ReferenceColumns("f", "loccol") + ReferenceColumns("r", "fgncol") +
         Format(kConstraintsOfTable, name);
}

}  // namespace velmora

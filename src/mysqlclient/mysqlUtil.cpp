// SPDX-License-Identifier: GPL-3.0-or-later
#include "mysqlclient/mysqlUtil.h"

#include <memory>

namespace velmora {

namespace {

std::unique_ptr<TMyQuery> Opened(const std::string& sql, TMyConnection& connection) {
  std::unique_ptr<TMyQuery> query = connection.NewQuery();
  query->SQL = sql;
  query->Open();
  return query;
}

}  // namespace

std::int64_t MySqlQueryRow(const std::string& sql, TMyConnection& connection, std::vector<TVariant>& row) {
  const std::unique_ptr<TMyQuery> query = Opened(sql, connection);
  row.resize(query->Fields().size());
  for (std::size_t field = 0; field < row.size(); ++field) row[field] = query->Value(field);
  const std::int64_t count = query->RecordCount();
  query->Close();
  return count;
}

void MySqlQueryList(const std::string& sql, TStringList& list, TMyConnection& connection,
                    std::vector<std::int64_t>* objects) {
  const std::unique_ptr<TMyQuery> query = Opened(sql, connection);
  list.clear();
  list.reserve(static_cast<std::size_t>(query->RecordCount()));
  if (objects != nullptr) objects->clear();
  const bool has_objects = objects != nullptr && query->Fields().size() > 1;
  for (; !query->Eof(); query->Next()) {
    list.push_back(VarToText(query->Value(0)));
    if (has_objects) objects->push_back(VarToInt(query->Value(1)));
  }
  query->Close();
}

}  // namespace velmora

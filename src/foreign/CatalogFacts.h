// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What the fact readers of servers have in common: the catalog is asked once for all tables, a query for each kind of
// facts, and the tables are put together from its rows.

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "core/DBConn.h"
#include "core/Dataset.h"
#include "foreign/Facts.h"

namespace velmora {

// A row of a catalog's answer, its fields by their names.
class TCatalogRow {
 public:
  explicit TCatalogRow(const TDataset& rows) : rows_(rows) {}

  bool Has(std::string_view field) const { return !VarIsNull(rows_.FieldByName(field).value); }
  std::string Text(std::string_view field) const { return VarToText(rows_.FieldByName(field).value); }
  std::int64_t Number(std::string_view field) const { return VarToInt(rows_.FieldByName(field).value); }  // 0 for null
  std::optional<int> Int(std::string_view field) const;
  bool Yes(std::string_view field) const { return Has(field) && Number(field) != 0; }

 private:
  const TDataset& rows_;
};

// A rule by the catalog's word: "CASCADE", "SET NULL", with a blank or "_". Any other word is no action.
EReferenceRule ReferenceRuleOf(std::string_view word);

// A question that a reader asks, by the name that played servers know it by.
struct TCatalogQuery {
  const char* name;
  const char* sql;
};

class TCatalogFacts : public TFactReader {
 public:
  static constexpr char kDisabled[] = "it is switched off";  // of a key
  static constexpr char kTemporary[] =
      "it is temporary: each session has rows of its own there, which MySQL's table does not keep apart";

  TKnownFacts Known() const override;  // all of them
  TStringList Tables() override;       // asks the catalog anew
  TForeignTable Table(const std::string& name) override;
  bool Reachable() override;

 protected:
  // `probe` is a query that any server of this kind answers.
  TCatalogFacts(TDBConn& conn, std::string probe) : conn_(conn), probe_(std::move(probe)) {}

  virtual void ReadCatalog() = 0;

  // Rows come in the order of the query.
  void ForEach(const std::string& sql, const std::function<void(const TCatalogRow& row)>& take);

  void AddTable(TForeignTable table);
  TForeignTable* Find(const std::string& table);  // null for one that is no table to be compared
  static TForeignColumn* FindColumn(TForeignTable& table, std::string_view column);
  void ForEachTable(const std::function<void(TForeignTable& table)>& change);
  // Names a reference or check that is not in force there, as it would be here. Of several columns there is a row each.
  static void LeaveOutDisabled(const std::string& name, TForeignTable& table);
  // What a trigger before inserts does with the table's columns.
  static void TakeCounting(std::string_view body, TForeignTable& table);
  // The last one if `id` is that of the row before, else a new one. Ids count within a table and name no key.
  TForeignKey& KeyOf(TForeignTable& table, const std::string& id, const TForeignKey& otherwise);
  TForeignReference& ReferenceOf(TForeignTable& table, const std::string& id, const TForeignReference& otherwise);

  TDBConn& conn_;

 private:
  bool SameAsBefore(const TForeignTable& table, const std::string& id);

  std::string probe_;
  std::vector<TForeignTable> tables_;
  std::map<std::string, std::size_t, std::less<>> places_;
  std::pair<std::string, std::string> last_;  // table and id
};

}  // namespace velmora

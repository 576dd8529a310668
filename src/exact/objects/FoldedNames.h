// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Names of tables and views as a target's server takes them to which letter case in them is nothing
// (lower_case_table_names): those of both sides are to be the same then.

#include <functional>
#include <map>
#include <string>

#include "exact/compare/ServerForm.h"
#include "exact/objects/ObjectChanges.h"
#include "mysqltext/TableText.h"
#include "util/Lists.h"

namespace velmora {

class TFoldedNames {
 public:
  using TLower = std::function<std::string(const std::string& name)>;

  TFoldedNames() = default;  // letter case counts: names stay as they are
  // As the server makes letters small, but for names that it keeps as they are `given`.
  explicit TFoldedNames(TLower lower, const TStringList& given = {});

  bool Folds() const { return lower_ != nullptr; }
  std::string Spelled(const std::string& name) const;

 private:
  TLower lower_{};
  std::map<std::string, std::string> given_{};  // by their small letters
};

// The table, with what the server has made of its name, and the tables to which its foreign keys refer. What has the
// same name in `there`, the target's table, null for none, keeps it.
void SpellNames(const TFoldedNames& names, const TServerTraits& server, const TTableText* there, TTableText& table);
// Views and sequences, tables in the queries of views and what these call them, tables of triggers. Bodies stay.
void SpellNames(const TFoldedNames& names, TDatabaseObjects& objects);

}  // namespace velmora

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// A database (.dbc, with its memos in .dct) of Visual FoxPro: what it adds to its tables. It is a table itself, of
// objects that name their parents and keep their properties in a memo. The table is published ("Table Structures of
// Table Files" in the documentation), the form of the properties is not: docs/dbf.md has what the files show.

#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "util/InputFile.h"

namespace velmora {

struct TDbcField {
  std::string name;
  std::optional<std::string> default_value;  // as an expression of FoxPro
  std::string rule{};                        // the same, of what values have to be
  std::string comment{};
};

// From an index of the table that it stands with to one of another table.
struct TDbcRelation {
  std::string tag;
  std::string parent;
  std::string parent_tag;
  char on_update = ' ';  // C: cascade, R: restrict; anything else is not looked after
  char on_delete = ' ';
};

struct TDbcTable {
  std::string name;
  std::string path;         // of its file, whether that is there or not
  std::string primary_tag;  // empty: it has no primary key
  std::vector<TDbcField> fields;
  std::vector<TDbcRelation> relations{};
  std::string rule{};  // of its rows
  std::string comment{};
};

class TDbcDatabase {
 public:
  // Reads the whole. Raises for what is no database, and for what is wrong with it.
  explicit TDbcDatabase(const std::string& path, const std::string& code_page = {}, TFolderNames* known = nullptr);

  const std::string& Path() const { return path_; }
  const std::vector<TDbcTable>& Tables() const { return tables_; }
  // Null when there is none; by name the case of letters plays no part.
  const TDbcTable* TableNamed(const std::string& name) const;
  const TDbcTable* TableIn(const std::string& dbf_path) const;

 private:
  using TPlaces = std::unordered_map<std::string, std::vector<std::size_t>>;

  std::string path_;
  std::vector<TDbcTable> tables_;
  TPlaces by_name_;  // in lower case
  TPlaces by_file_;  // the file's name alone, likewise
};

}  // namespace velmora

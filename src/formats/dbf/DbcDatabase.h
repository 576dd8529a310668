#pragma once

// A database (.dbc, with its memos in .dct) of Visual FoxPro: what it adds to its tables. It is a table itself, of
// objects that name their parents and keep their properties in a memo. The table is published ("Table Structures of
// Table Files" in the documentation), the form of the properties is not: docs/dbf.md has what the files show.

#include <optional>
#include <string>
#include <vector>

namespace velmora {

struct TDbcField {
  std::string name;
  std::optional<std::string> default_value;  // as an expression of FoxPro
};

struct TDbcTable {
  std::string name;
  std::string path;         // of its file, whether that is there or not
  std::string primary_tag;  // empty: it has no primary key
  std::vector<TDbcField> fields;
};

class TDbcDatabase {
 public:
  // Reads the whole. Raises for what is no database, and for what is wrong with it.
  explicit TDbcDatabase(const std::string& path);

  const std::string& Path() const { return path_; }
  const std::vector<TDbcTable>& Tables() const { return tables_; }
  // Null when there is none; by name the case of letters plays no part.
  const TDbcTable* TableNamed(const std::string& name) const;
  const TDbcTable* TableIn(const std::string& dbf_path) const;

 private:
  std::string path_;
  std::vector<TDbcTable> tables_;
};

}  // namespace velmora

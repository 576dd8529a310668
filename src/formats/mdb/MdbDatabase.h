// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Database files of Jet and ACE (.mdb, .accdb) as libmdb sees them: pages, rows and the definitions of tables. What the
// library would follow blindly is checked against the file first; still, it may end the process over a damaged file.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "formats/mdb/MdbFormat.h"
#include "util/InputFile.h"

namespace velmora {

class TMdbDatabase {
 public:
  explicit TMdbDatabase(const std::string& path);  // raises for what is no database of Jet 3, 4 or ACE
  ~TMdbDatabase();

  const std::string& Path() const { return file_.Path(); }
  std::uint64_t FileSize() const { return file_.Size(); }
  bool IsJet3() const;

  std::string_view Page(std::uint32_t number) const;  // valid until the next call
  std::string RowAt(std::uint32_t pointer) const;     // what a pointer, page * 256 + row, leads to
  // The rows that a page says it has, the flags of one, and its bytes.
  std::uint32_t RowCount(std::string_view page) const;
  std::uint16_t RowFlags(std::string_view page, std::uint32_t row) const;
  std::string_view Row(std::string_view page, std::uint32_t row) const;

  std::optional<std::string> Text(std::string_view stored) const;  // as UTF-8; nothing for what is no text
  [[noreturn]] void Damaged(const std::string& fault) const;

 private:
  friend class TMdbTableDef;
  struct TLibrary;

  void CheckKind() const;
  void OpenLibrary();
  [[noreturn]] void Fail(const std::string& fault) const;

  TInputFile file_;
  std::unique_ptr<TLibrary> library_;
};

// The stored bytes of a row's columns, in the order of the columns; of a yes/no column any bytes mean yes.
using TMdbStoredRow = std::vector<std::optional<std::string>>;

class TMdbTableDef {
 public:
  // `page` is the first of the definition. The database must outlive the table.
  TMdbTableDef(const TMdbDatabase& database, const std::string& name, std::uint32_t page);
  ~TMdbTableDef();

  const std::string& Name() const { return name_; }
  const std::vector<TMdbColumn>& Columns() const { return columns_; }
  std::size_t PlaceOf(std::string_view column) const;  // raises where there is none of that name
  std::uint32_t RowCount() const;                      // as the definition has it
  std::vector<TMdbIndex> Indexes() const;
  std::vector<std::uint32_t> Pages() const;  // that belong to it
  // None on a page that is not one of this table's pages of rows.
  std::vector<TMdbStoredRow> RowsOn(std::uint32_t page) const;
  [[noreturn]] void Damaged(const std::string& fault) const;

 private:
  struct TLibrary;

  void ReadColumns();
  void MarkComputed();
  std::uint16_t MaxColumns() const;
  std::string ReadDefinition() const;
  std::string_view Part(std::size_t& at, std::size_t size) const;
  std::string_view NamePart(std::size_t& at) const;
  std::vector<TMdbIndex> Trees(std::size_t& at) const;
  TMdbStoredRow StoredRow(std::string_view row, std::size_t start) const;

  const TMdbDatabase& database_;
  std::string name_;
  std::uint32_t page_;
  std::string definition_;  // in one piece
  std::unique_ptr<TLibrary> library_;
  std::vector<TMdbColumn> columns_;
};

}  // namespace velmora

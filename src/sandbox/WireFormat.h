// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Tables and rows as bytes, for the way between a child process and its user. Both ends are this program, so the form
// is that of the machine; what comes back is checked all the same, since the sender may have died in the middle.

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "formats/port/FileReader.h"

namespace velmora {

class TWireWriter {
 public:
  void Number(std::int64_t number);
  void Text(std::string_view text);
  void Raw(std::string_view bytes) { bytes_.append(bytes); }  // without their length; the reader takes them as Rest
  void Value(const TVariant& value);
  void Tables(const std::vector<TOLEDBTableRow>& tables);
  void Columns(const std::vector<TOLEDBColumnRow>& columns);
  void Indexes(const std::vector<TOLEDBIndexRow>& indexes);
  void Fields(const std::vector<TFieldDef>& fields, const std::vector<bool>& is_autoincrement);
  void Values(const TRowsOfValues& rows);
  void Structure(const TFileTable& table);
  void Rows(const TFileRows& rows);

  std::string Take() { return std::move(bytes_); }

 private:
  void Texts(const TStringList& texts);
  void References(const std::vector<TFileReference>& references);

  std::string bytes_;
};

// Raises EVelmora where the bytes end too early or make no sense.
class TWireReader {
 public:
  explicit TWireReader(std::string_view bytes) : rest_(bytes) {}

  std::int64_t Number();
  std::string Text();
  std::string_view Rest() const { return rest_; }
  TVariant Value();
  std::vector<TOLEDBTableRow> Tables();
  std::vector<TOLEDBColumnRow> Columns();
  std::vector<TOLEDBIndexRow> Indexes();
  void Fields(std::vector<TFieldDef>& fields, std::vector<bool>& is_autoincrement);
  TRowsOfValues Values();
  TFileTable Structure();
  TFileRows Rows();

 private:
  TStringList Texts();
  std::vector<TFileReference> References();
  std::string_view Bytes(std::size_t count);
  template <class T>
  T Whole();
  std::size_t Count();  // of items, each of which takes a byte or more

  std::string_view rest_;
};

}  // namespace velmora

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Values of the rows of a Jet database's tables.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "core/Dataset.h"
#include "formats/mdb/MdbDatabase.h"

namespace velmora {

// Both must outlive it.
class TMdbValueReader {
 public:
  TMdbValueReader(const TMdbDatabase& database, const TMdbTableDef& table) : database_(database), table_(table) {}

  TMemDataset::TRow Row(const TMdbStoredRow& stored) const;  // raises for values that are none

 private:
  TVariant Value(const TMdbColumn& column, const std::optional<std::string>& stored) const;
  std::optional<TVariant> KnownValue(const TMdbColumn& column, const std::string& stored) const;
  std::optional<TVariant> Computed(const TMdbColumn& column, const std::string& stored) const;
  std::string LongValue(const TMdbColumn& column, const std::string& stored) const;
  std::string Chain(const TMdbColumn& column, std::uint32_t pointer, std::size_t length) const;
  [[noreturn]] void Broken(const TMdbColumn& column, const char* why) const;

  const TMdbDatabase& database_;
  const TMdbTableDef& table_;
};

}  // namespace velmora

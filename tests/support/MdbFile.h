#pragma once

// Access files made by hand: tables with columns of every type, long values, properties and indexes, as Jet 4 and
// Jet 3 write them.

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "formats/mdb/MdbBuilder.h"

namespace velmora::testing {

extern const TMdbLayout kMdbJet3;  // Access 97; its texts are those of Windows-1252

TMdbColumn MdbNumericColumn(std::string name, std::uint8_t precision, std::uint8_t scale);

std::string MdbLong(std::int32_t value);
std::string MdbNumeric(std::int64_t units);  // a number of 10 to the minus scale
std::string MdbSingle(float value);
std::string MdbCompressed(std::string_view ascii);  // Jet 4

// A long value as it stands in a row: with its bytes, or leading to them.
enum class ELongValue { Inline, OneRow, Chain };
std::string MdbLongValue(TMdbBuilder& builder, const std::string& bytes, ELongValue form);

struct TMdbColumnProperties {
  std::string default_value;
  bool required = false;
};
// A value of LvProp in the row, by column.
std::string MdbProperties(const TMdbLayout& layout, const std::map<std::string, TMdbColumnProperties>& columns);

// Two tables: "Kinds", with a column of every type, two rows (the second of nulls) and properties; and "Words", with
// rows that were moved, deleted, or written before its last column was there, and the five kinds of indexes: primary,
// unique, with a descending column, of a relation, and one that is ordered by two columns.
std::string MdbSample(const TMdbLayout& layout);
// The sample with all pages but the first enciphered, as "Encode database" does.
std::string MdbEncoded(const TMdbLayout& layout, std::uint32_t key);

}  // namespace velmora::testing

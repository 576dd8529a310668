// SPDX-License-Identifier: GPL-3.0-or-later
#include "formats/mdb/MdbRows.h"

#include <bit>
#include <cstdint>
#include <set>
#include <utility>

#include "formats/mdb/MdbText.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/LittleEndian.h"

namespace velmora {

namespace {

template <class T>
std::optional<TVariant> Integer(const std::string& stored) {
  if (stored.size() != sizeof(T)) return std::nullopt;
  return static_cast<std::int64_t>(LittleAt<T>(stored.data()));
}

template <class T, class Bits>
std::optional<TVariant> Float(const std::string& stored) {
  if (stored.size() != sizeof(T)) return std::nullopt;
  return static_cast<double>(std::bit_cast<T>(LittleAt<Bits>(stored.data())));
}

std::optional<TVariant> Moment(const std::optional<TDateTime>& moment) {
  if (!moment) return std::nullopt;
  return TMoment{*moment};
}

// Of a computed column a value has a head, which ends with its size, and a tail.
std::optional<std::string> WithoutFrame(const std::string& stored) {
  constexpr std::size_t kSizeAt = 16;
  constexpr std::size_t kHead = 20;
  if (stored.size() < kHead) return std::nullopt;
  const std::size_t size = LittleAt<std::uint32_t>(stored.data() + kSizeAt);
  if (size > stored.size() - kHead) return std::nullopt;
  return stored.substr(kHead, size);
}

}  // namespace

TMemDataset::TRow TMdbValueReader::Row(const TMdbStoredRow& stored) const {
  TMemDataset::TRow row;
  for (std::size_t i = 0; i < stored.size(); ++i) row.push_back(Value(table_.Columns()[i], stored[i]));
  return row;
}

TVariant TMdbValueReader::Value(const TMdbColumn& column, const std::optional<std::string>& stored) const {
  if (column.type == EMdbType::Bool && !column.computed) return stored.has_value();
  if (!stored) return {};
  std::optional<TVariant> value = column.computed ? Computed(column, *stored) : KnownValue(column, *stored);
  if (!value) Broken(column, "is broken");
  return std::move(*value);
}

std::optional<TVariant> TMdbValueReader::Computed(const TMdbColumn& column, const std::string& stored) const {
  const bool is_long = column.type == EMdbType::Memo || column.type == EMdbType::Ole;
  const std::optional<std::string> value = WithoutFrame(is_long ? LongValue(column, stored) : stored);
  if (!value) return std::nullopt;
  if (column.type == EMdbType::Bool) return !value->empty() && value->front() != '\0';
  if (column.type == EMdbType::Memo) return database_.Text(*value);
  return column.type == EMdbType::Ole ? *value : KnownValue(column, *value);
}

void TMdbValueReader::Broken(const TMdbColumn& column, const char* why) const {
  table_.Damaged(Format("a value of column %s %s", column.name, why));
}

std::optional<TVariant> TMdbValueReader::KnownValue(const TMdbColumn& column, const std::string& stored) const {
  switch (column.type) {
    case EMdbType::Byte:
      return Integer<std::uint8_t>(stored);
    case EMdbType::Int:
      return Integer<std::int16_t>(stored);
    case EMdbType::LongInt:
      return Integer<std::int32_t>(stored);
    case EMdbType::Money:
      return TextOfMoney(stored);
    case EMdbType::Float:
      return Float<float, std::uint32_t>(stored);
    case EMdbType::Double:
      return Float<double, std::uint64_t>(stored);
    case EMdbType::DateTime:
      return Moment(MomentOf(stored));
    case EMdbType::Binary:
      return stored;
    case EMdbType::Text:
      return database_.Text(stored);
    case EMdbType::Ole:
      return LongValue(column, stored);
    case EMdbType::Memo:
      return database_.Text(LongValue(column, stored));
    case EMdbType::RepId:
      return TextOfGuid(stored);
    case EMdbType::Numeric:
      return TextOfNumeric(stored, column.scale);
    case EMdbType::BigInt:
      return Integer<std::int64_t>(stored);
    case EMdbType::LongDateTime:
      return Moment(MomentOfDigits(stored));
    default:
      return std::nullopt;
  }
}

// In the row itself, in another row, or in a chain of rows, by the highest bits of the length.
std::string TMdbValueReader::LongValue(const TMdbColumn& column, const std::string& stored) const {
  constexpr std::size_t kHead = 12;
  constexpr std::uint32_t kInline = 0x80000000;
  constexpr std::uint32_t kOneRow = 0x40000000;
  if (stored.empty()) return {};
  if (stored.size() < kHead) Broken(column, "is broken");
  const auto head = LittleAt<std::uint32_t>(stored.data());
  const auto pointer = LittleAt<std::uint32_t>(stored.data() + sizeof head);
  const std::size_t length = head & ~(kInline | kOneRow);
  if (length > database_.FileSize()) Broken(column, "is longer than the file");
  std::string value;
  if ((head & kInline) != 0)
    value = stored.substr(kHead);
  else if ((head & kOneRow) != 0)
    value = database_.RowAt(pointer);
  else
    value = Chain(column, pointer, length);
  if (value.size() < length) Broken(column, "is cut short");
  value.resize(length);
  return value;
}

// Of each row all but its first bytes, which lead to the next.
std::string TMdbValueReader::Chain(const TMdbColumn& column, std::uint32_t pointer, std::size_t length) const {
  std::string value;
  std::set<std::uint32_t> passed;
  while (value.size() < length && pointer != 0) {
    if (!passed.insert(pointer).second) Broken(column, "runs in a circle");
    const std::string row = database_.RowAt(pointer);
    if (row.size() <= sizeof pointer) break;
    value.append(row, sizeof pointer);
    pointer = LittleAt<std::uint32_t>(row.data());
  }
  return value;
}

}  // namespace velmora

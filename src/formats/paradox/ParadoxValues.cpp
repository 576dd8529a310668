// SPDX-License-Identifier: GPL-3.0-or-later

// Numbers stand highest byte first, with the sign bit turned over: set for positive ones. So their bytes sort as the
// numbers do, and all bytes zero, in front of every number, is null.

#include "formats/paradox/ParadoxValues.h"

#include <bit>
#include <cmath>
#include <string_view>
#include <type_traits>

#include "util/LittleEndian.h"
#include "util/Text.h"

namespace velmora {
namespace {

constexpr double kMillisecondsPerDay = 86400000.0;
constexpr double kDaysToDayZero = 693594.0;  // from the beginning of the year 1 to 1899-12-30

template <class T>
T BigAt(const char* bytes) {
  T number = 0;
  for (std::size_t i = 0; i < sizeof(T); ++i)
    number = static_cast<T>(static_cast<T>(number << (sizeof(T) > 1 ? 8 : 0)) | static_cast<unsigned char>(bytes[i]));
  return number;
}

template <class T>
constexpr T kSignBit = static_cast<T>(T{1} << (8 * sizeof(T) - 1));

// Of the integers only the sign bit is turned over, so that FF FF FF FF below it is -1. False: null.
template <class T>
bool DecodeInteger(const char* bytes, std::int64_t& number) {
  const T raw = BigAt<T>(bytes);
  // NOLINTNEXTLINE(bugprone-signed-char-misuse): a number of one byte, which has a sign
  number = static_cast<std::make_signed_t<T>>(static_cast<T>(raw ^ kSignBit<T>));
  return raw != 0;
}

// Of a negative float all bits are turned over. False: null.
bool DecodeFloat(const char* bytes, double& number) {
  const auto raw = BigAt<std::uint64_t>(bytes);
  const bool positive = (raw & kSignBit<std::uint64_t>) != 0;
  number = std::bit_cast<double>(positive ? raw ^ kSignBit<std::uint64_t> : ~raw);
  return raw != 0;
}

template <class T>
void DecodeIntegerField(const char* bytes, TVariant& value) {
  std::int64_t number = 0;
  if (DecodeInteger<T>(bytes, number)) value = number;
}

void DecodeFloatField(const char* bytes, TVariant& value) {
  double number = 0;
  if (DecodeFloat(bytes, number) && !std::isnan(number)) value = number;
}

void DecodeLogical(const char* bytes, TVariant& value) {
  std::int64_t number = 0;
  if (DecodeInteger<std::uint8_t>(bytes, number)) value = std::int64_t{number == 1};
}

// Deliberate: the number 0 is not shifted, so a stored day 0 is 1899-12-30 and not the day before the year 1.
void DecodeDate(const char* bytes, TVariant& value) {
  std::int64_t days = 0;
  if (DecodeInteger<std::uint32_t>(bytes, days)) value = days == 0 ? 0.0 : static_cast<double>(days) - kDaysToDayZero;
}

void DecodeTime(const char* bytes, TVariant& value) {
  std::int64_t milliseconds = 0;
  if (DecodeInteger<std::uint32_t>(bytes, milliseconds))
    value = static_cast<double>(milliseconds) / kMillisecondsPerDay;
}

void DecodeTimestamp(const char* bytes, TVariant& value) {
  double milliseconds = 0;
  if (!DecodeFloat(bytes, milliseconds)) return;
  value = milliseconds == 0 ? 0.0 : milliseconds / kMillisecondsPerDay - kDaysToDayZero;
}

// Deliberate: bytes as they are, of whatever code page; and no field is null, an empty one is the empty text.
void DecodeAlpha(std::string_view field, TVariant& value) {
  value = std::string(TrimView(field.substr(0, field.find('\0'))));
}

// The field holds the memo's beginning, and in its last bytes where the whole stands and how long it is.
void DecodeMemo(std::string_view field, TPxMemoFile& memos, TVariant& value) {
  const std::string_view leader = field.substr(0, field.size() - kPxMemoDescriptor);
  const char* descriptor = leader.data() + leader.size();
  const auto length = LittleAt<std::int32_t>(descriptor + 4);
  if (length <= 0) return;
  const auto size = static_cast<std::size_t>(length);
  if (size > leader.size())
    value = memos.Read(LittleAt<std::uint32_t>(descriptor), size);
  else
    value = std::string(leader.substr(0, size));
}

}  // namespace

void DecodePxField(const TPxField& field, const char* record, TPxMemoFile& memos, TVariant& value) {
  const char* bytes = record + field.offset;
  if (field.type == pxAlpha) return DecodeAlpha({bytes, field.size}, value);
  if (!IsPxMemo(field.type) && (PxWidth(field.type) == 0 || field.type == pxBCD)) return;
  value = std::monostate();
  switch (field.type) {
    case pxShort:
      return DecodeIntegerField<std::uint16_t>(bytes, value);
    case pxLong:
    case pxAutoInc:
      return DecodeIntegerField<std::uint32_t>(bytes, value);
    case pxCurrency:
    case pxNumber:
      return DecodeFloatField(bytes, value);
    case pxLogical:
      return DecodeLogical(bytes, value);
    case pxDate:
      return DecodeDate(bytes, value);
    case pxTime:
      return DecodeTime(bytes, value);
    case pxTimestamp:
      return DecodeTimestamp(bytes, value);
    default:
      return DecodeMemo({bytes, field.size}, memos, value);
  }
}

}  // namespace velmora

// SPDX-License-Identifier: GPL-3.0-or-later
#include "formats/sheet/BiffRecords.h"

#include <algorithm>
#include <array>
#include <bit>
#include <iterator>

#include "util/Errors.h"
#include "util/Format.h"
#include "util/LittleEndian.h"

namespace velmora {

namespace {

constexpr char kEndsEarly[] = "the workbook is damaged: it ends at byte %d, in the middle of a record";
constexpr char kShortRecord[] = "the workbook is damaged: a record near byte %d is too short for what it holds";

constexpr std::uint16_t kContinue = 0x003C;
constexpr std::size_t kHeadSize = 4;

// How the letters of a wide text are stored.
constexpr std::uint8_t kTwoBytes = 0x01, kWithPronunciation = 0x04, kWithFormats = 0x08;
constexpr std::size_t kFormatSize = 4;

constexpr std::string_view kNoLetter = "\xEF\xBF\xBD";

struct TPageName {
  unsigned number;
  const char* name;
};
// Those that are not named "CP" and their number.
constexpr TPageName kPageNames[] = {
    {367, "ASCII"},        {1200, "UTF-16LE"},      {10000, "MACINTOSH"},
    {10006, "MACGREEK"},   {10007, "MAC-CYRILLIC"}, {10029, "MAC-CENTRALEUROPE"},
    {10079, "MACICELAND"}, {10081, "MACTURKISH"},   {32768, "MACINTOSH"},
    {32769, "CP1252"},
};

// UTF-8 out of the units of UTF-16, one at a time; half a pair becomes U+FFFD.
class TUnitsToText {
 public:
  void Put(std::uint16_t unit) {
    if (unit >= 0xDC00 && unit < 0xE000 && high_ != 0) {
      Append(0x10000 + ((high_ - 0xD800U) << 10U) + (unit - 0xDC00U));
      high_ = 0;
      return;
    }
    EndPair();
    if (unit >= 0xD800 && unit < 0xDC00)
      high_ = unit;
    else if (unit >= 0xDC00 && unit < 0xE000)
      text_ += kNoLetter;
    else
      Append(unit);
  }
  std::string Take() {
    EndPair();
    return std::move(text_);
  }

 private:
  void EndPair() {
    if (high_ != 0) text_ += kNoLetter;
    high_ = 0;
  }
  void Append(std::uint32_t c) {
    const auto tail = [&](unsigned shift) { text_ += static_cast<char>(0x80U | (c >> shift & 0x3FU)); };
    if (c < 0x80) {
      text_ += static_cast<char>(c);
    } else if (c < 0x800) {
      text_ += static_cast<char>(0xC0U | c >> 6U);
      tail(0);
    } else if (c < 0x10000) {
      text_ += static_cast<char>(0xE0U | c >> 12U);
      tail(6), tail(0);
    } else {
      text_ += static_cast<char>(0xF0U | c >> 18U);
      tail(12), tail(6), tail(0);
    }
  }

  std::string text_;
  std::uint32_t high_ = 0;  // the first half of a pair, or 0
};

}  // namespace

// --- Records

TBiffRecord TBiffRecords::Next() {
  if (at_ > stream_.size() || stream_.size() - at_ < kHeadSize) RaiseError(Format(kEndsEarly, stream_.size()));
  const std::size_t size = LittleAt<std::uint16_t>(stream_.data() + at_ + 2);
  if (stream_.size() - at_ - kHeadSize < size) RaiseError(Format(kEndsEarly, stream_.size()));
  const TBiffRecord record{LittleAt<std::uint16_t>(stream_.data() + at_), stream_.substr(at_ + kHeadSize, size)};
  at_ += kHeadSize + size;
  return record;
}

bool TBiffRecords::NextIsContinuation() const {
  return at_ <= stream_.size() && stream_.size() - at_ >= kHeadSize &&
         LittleAt<std::uint16_t>(stream_.data() + at_) == kContinue;
}

// --- Code pages

TCodePage BiffCodePage(unsigned number) {
  const auto* row = std::ranges::find(kPageNames, number, &TPageName::number);
  return TCodePage(row == std::end(kPageNames) ? Format("CP%d", number) : row->name);
}

// --- What records hold

void TBiffReader::NextPiece() {
  if (!records_.NextIsContinuation()) RaiseError(Format(kShortRecord, records_.Position()));
  piece_ = records_.Next().data;
}

std::uint8_t TBiffReader::Byte() {
  while (piece_.empty()) NextPiece();
  const char byte = piece_.front();
  piece_.remove_prefix(1);
  return static_cast<std::uint8_t>(byte);
}

std::uint16_t TBiffReader::Word() {
  const unsigned low = Byte();
  return static_cast<std::uint16_t>(low | static_cast<unsigned>(Byte()) << 8U);
}

std::uint32_t TBiffReader::Long() {
  const std::uint32_t low = Word();
  return low | static_cast<std::uint32_t>(Word()) << 16U;
}

double TBiffReader::Float() {
  const std::uint64_t low = Long();
  return std::bit_cast<double>(low | static_cast<std::uint64_t>(Long()) << 32U);
}

void TBiffReader::Skip(std::size_t count) {
  for (; count > piece_.size(); NextPiece()) count -= piece_.size();
  piece_.remove_prefix(count);
}

std::string TBiffReader::Bytes(std::size_t count) {
  std::string bytes;
  for (; count > piece_.size(); NextPiece()) {
    count -= piece_.size();
    bytes += piece_;
  }
  bytes += piece_.substr(0, count);
  piece_.remove_prefix(count);
  return bytes;
}

std::string TBiffReader::WideText(std::size_t letters) {
  const std::uint8_t storage = Byte();
  const std::size_t formats = (storage & kWithFormats) != 0 ? Word() : 0;
  const std::size_t pronunciation = (storage & kWithPronunciation) != 0 ? Long() : 0;
  std::string text = Letters(letters, (storage & kTwoBytes) != 0);
  Skip(formats * kFormatSize);
  Skip(pronunciation);
  return text;
}

// Where a continuation goes on with the letters it says anew how they are stored.
std::string TBiffReader::Letters(std::size_t count, bool wide) {
  TUnitsToText text;
  while (count > 0) {
    const std::size_t here = std::min(count, wide ? piece_.size() / 2 : piece_.size());
    for (std::size_t i = 0; i < here; ++i)
      text.Put(wide ? LittleAt<std::uint16_t>(piece_.data() + 2 * i) : static_cast<unsigned char>(piece_[i]));
    piece_.remove_prefix(wide ? 2 * here : here);
    count -= here;
    if (count == 0) break;
    NextPiece();
    wide = (Byte() & kTwoBytes) != 0;
  }
  return text.Take();
}

}  // namespace velmora

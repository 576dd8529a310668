#include "support/ExcelFile.h"

#include <cstddef>
#include <stdexcept>

namespace velmora::testing {

namespace {

constexpr std::size_t kSector = 512;
constexpr std::size_t kNoMiniStream = 4096;  // from this size on a stream lies in sectors
constexpr std::uint32_t kEndOfChain = 0xFFFFFFFE, kFatSector = 0xFFFFFFFD, kFree = 0xFFFFFFFF;

std::string Padded(std::string bytes, std::size_t unit, char with = '\0') {
  bytes.resize((bytes.size() + unit - 1) / unit * unit, with);
  return bytes;
}

std::string DirectoryEntry(const std::string& name, std::uint8_t type, std::uint32_t child, std::uint32_t start,
                           std::size_t size) {
  std::string wide;
  for (const char c : name + std::string(1, '\0')) wide += {c, '\0'};
  const std::size_t length = wide.size();
  wide.resize(64);
  return wide + BiffNumber(length, 2) + BiffNumber(type, 1) + BiffNumber(1, 1) + BiffNumber(kFree, 4) +
         BiffNumber(kFree, 4) + BiffNumber(child, 4) + std::string(36, '\0') + BiffNumber(start, 4) +
         BiffNumber(size, 8);
}

std::string Begin(std::uint16_t kind) {
  return BiffRecord(0x0809, BiffNumber(0x0500, 2) + BiffNumber(kind, 2) + std::string(4, '\0'));
}

std::string CellFormat(std::uint16_t number_format) {
  return BiffRecord(0x00E0, BiffNumber(0, 2) + BiffNumber(number_format, 2) + std::string(12, '\0'));
}

std::string SheetStream(const TBiffSheet& sheet) {
  const std::string size = BiffNumber(0, 2) + BiffNumber(sheet.end_row, 2) + BiffNumber(0, 2) +
                           BiffNumber(sheet.end_column, 2) + BiffNumber(0, 2);
  return Begin(0x0010) + BiffRecord(0x0200, size) + sheet.records + BiffRecord(0x000A, {});
}

}  // namespace

std::string BiffNumber(std::uint64_t number, std::size_t size) {
  std::string bytes;
  for (std::size_t i = 0; i < size; ++i) bytes += static_cast<char>(number >> (8 * i) & 0xFF);
  return bytes;
}

std::string BiffRecord(std::uint16_t type, const std::string& data) {
  return BiffNumber(type, 2) + BiffNumber(data.size(), 2) + data;
}

std::string Biff5File(const std::vector<TBiffSheet>& sheets, const std::string& more_globals) {
  constexpr std::uint16_t kGeneral = 0, kShortDate = 14;
  const std::string head = Begin(0x0005) + BiffRecord(0x0042, BiffNumber(1252, 2)) + more_globals +
                           CellFormat(kGeneral) + CellFormat(kShortDate);
  const std::string end = BiffRecord(0x000A, {});
  std::size_t offset = head.size() + end.size();
  for (const TBiffSheet& sheet : sheets) offset += 4 + 7 + sheet.name.size();
  std::string list, streams;
  for (const TBiffSheet& sheet : sheets) {
    list += BiffRecord(0x0085, BiffNumber(offset + streams.size(), 4) + BiffNumber(0, 2) +
                                   BiffNumber(sheet.name.size(), 1) + sheet.name);
    streams += SheetStream(sheet);
  }
  return CompoundFile("Book", head + list + end + streams);
}

// Head, one sector of the allocation table, one of the directory, then the stream's.
std::string CompoundFile(const std::string& stream_name, const std::string& stream) {
  std::string padded = Padded(stream, kSector);
  if (padded.size() < kNoMiniStream) padded.resize(kNoMiniStream);
  const std::size_t sectors = padded.size() / kSector;
  std::string table = BiffNumber(kFatSector, 4) + BiffNumber(kEndOfChain, 4);
  for (std::size_t i = 0; i < sectors; ++i) table += BiffNumber(i + 1 < sectors ? i + 3 : kEndOfChain, 4);
  if (table.size() > kSector) throw std::runtime_error("the stream needs more than one sector of the table");
  const std::string directory =
      DirectoryEntry("Root Entry", 5, 1, kEndOfChain, 0) + DirectoryEntry(stream_name, 2, kFree, 2, padded.size());
  const std::string head = "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1" + std::string(16, '\0') + BiffNumber(0x3E, 2) +
                           BiffNumber(3, 2) + BiffNumber(0xFFFE, 2) + BiffNumber(9, 2) + BiffNumber(6, 2) +
                           std::string(10, '\0') + BiffNumber(1, 4) + BiffNumber(1, 4) + BiffNumber(0, 4) +
                           BiffNumber(kNoMiniStream, 4) + BiffNumber(kEndOfChain, 4) + BiffNumber(0, 4) +
                           BiffNumber(kEndOfChain, 4) + BiffNumber(0, 4) + BiffNumber(0, 4);
  return Padded(head, kSector, '\xFF') + Padded(table, kSector, '\xFF') + Padded(directory, kSector) + padded;
}

}  // namespace velmora::testing

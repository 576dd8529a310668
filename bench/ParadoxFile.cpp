// SPDX-License-Identifier: GPL-3.0-or-later
#include "ParadoxFile.h"

#include <bit>

namespace velmora::bench {
namespace {

constexpr int kBcd = 23;
constexpr std::size_t kHeaderUnit = 2048;

std::string Little(std::uint64_t value, std::size_t width) {
  std::string bytes;
  for (std::size_t i = 0; i < width; ++i) bytes += static_cast<char>(value >> (8 * i) & 0xFF);
  return bytes;
}

std::string Big(std::uint64_t value, std::size_t width) {
  const std::string little = Little(value, width);
  return {little.rbegin(), little.rend()};
}

void Put(std::string& bytes, std::size_t at, std::uint64_t value, std::size_t width) {
  bytes.replace(at, width, Little(value, width));
}

template <class T>
std::uint64_t Unsigned(T value) {
  return static_cast<std::uint64_t>(value);
}

}  // namespace

int TPxFile::RecordSize() const {
  int size = 0;
  for (const TPxFileField& field : fields) size += field.type == kBcd ? 17 : field.size;
  return size;
}

std::string TPxFile::Header() const {
  std::string header(88, '\0');
  std::uint32_t held = 0;
  for (const TPxFileBlock& block : blocks) held += static_cast<std::uint32_t>(block.records.size());
  Put(header, 0x00, Unsigned(RecordSize()), 2);
  Put(header, 0x04, Unsigned(fileType), 1);
  Put(header, 0x05, Unsigned(blockKilobytes), 1);
  Put(header, 0x06, records.value_or(held), 4);
  Put(header, 0x0E, Unsigned(firstBlock), 2);
  Put(header, 0x21, fields.size(), 2);
  Put(header, 0x23, Unsigned(keys), 2);
  Put(header, 0x39, Unsigned(version), 1);
  Put(header, 0x44, encryption, 4);
  if (version > 4 && (fileType == 0 || fileType == 2 || fileType == 3 || fileType == 5)) header.append(32, 'X');
  for (const TPxFileField& field : fields) header += Little(Unsigned(field.type), 1) + Little(Unsigned(field.size), 1);
  header.append(4 + 4 * fields.size(), 'P');
  header.append(version >= 12 ? 261 : 79, 'T');
  for (const TPxFileField& field : fields) header.append(field.name).append(1, '\0');
  header.resize((header.size() + kHeaderUnit - 1) / kHeaderUnit * kHeaderUnit);
  Put(header, 0x02, header.size(), 2);
  return header;
}

std::string TPxFile::Block(const TPxFileBlock& block) const {
  const int count = static_cast<int>(block.records.size());
  std::string bytes = "NNPP" + Little(Unsigned(block.addDataSize.value_or((count - 1) * RecordSize())), 2);
  for (const std::string& record : block.records) bytes += record;
  bytes.resize(Unsigned(blockKilobytes) * 1024);
  return bytes;
}

std::string TPxFile::Bytes() const {
  std::string bytes = Header();
  for (const TPxFileBlock& block : blocks) bytes += Block(block);
  return bytes;
}

std::string PxInteger(std::int64_t value, std::size_t width) {
  return Big(Unsigned(value) ^ std::uint64_t{1} << (8 * width - 1), width);
}

std::string PxFloat(double value) {
  const auto bits = std::bit_cast<std::uint64_t>(value);
  return Big(bits >> 63 != 0 ? ~bits : bits | std::uint64_t{1} << 63, 8);
}

std::string PxText(const std::string& text, std::size_t size) {
  std::string bytes = text;
  bytes.resize(size);
  return bytes;
}

std::string PxMemoField(const std::string& leader, std::uint32_t location, std::int32_t length) {
  return leader + Little(location, 4) + Little(static_cast<std::uint32_t>(length), 4) + std::string("\1\0", 2);
}

}  // namespace velmora::bench

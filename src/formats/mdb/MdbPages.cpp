// SPDX-License-Identifier: GPL-3.0-or-later
#include "formats/mdb/MdbPages.h"

#include <algorithm>
#include <array>
#include <bit>
#include <numeric>
#include <utility>

#include "formats/mdb/MdbText.h"

namespace velmora {

namespace {

std::uint16_t SizeOf(EMdbType type) {
  switch (type) {
    case EMdbType::Byte:
      return 1;
    case EMdbType::Int:
      return 2;
    case EMdbType::LongInt:
    case EMdbType::Float:
    case EMdbType::Complex:
      return 4;
    case EMdbType::Money:
    case EMdbType::Double:
    case EMdbType::DateTime:
    case EMdbType::BigInt:
      return 8;
    case EMdbType::RepId:
      return 16;
    case EMdbType::Numeric:
      return 17;
    case EMdbType::LongDateTime:
      return 42;
    default:
      return 0;
  }
}

}  // namespace

TMdbColumn MdbFixedColumn(std::string name, EMdbType type, std::uint8_t flags) {
  TMdbColumn column = MdbVarColumn(std::move(name), type, SizeOf(type));
  column.flags = flags | kMdbFixed;
  return column;
}

TMdbColumn MdbVarColumn(std::string name, EMdbType type, std::uint16_t size) {
  TMdbColumn column;
  column.name = std::move(name);
  column.type = type;
  column.size = size;
  return column;
}

std::vector<TMdbColumn> PlacedColumns(std::vector<TMdbColumn> columns) {
  std::uint16_t number = 0;
  std::uint16_t var_index = 0;
  std::uint16_t fixed_offset = 0;
  for (TMdbColumn& column : columns) {
    column.number = number++;
    column.var_index = column.Has(kMdbFixed) ? var_index : var_index++;
    column.fixed_offset = fixed_offset;
    if (column.Has(kMdbFixed)) fixed_offset = static_cast<std::uint16_t>(fixed_offset + column.size);
  }
  return columns;
}

// Count of columns, fixed values, others, where each of these ends and begins (the last one first), mask of values.
std::string EncodeMdbRow(const std::vector<TMdbColumn>& columns, const TMdbValues& values) {
  std::string fixed;
  std::string others;
  std::vector<std::size_t> starts;
  std::string mask((columns.size() + 7) / 8, '\0');
  const auto fixed_size = std::accumulate(columns.begin(), columns.end(), std::size_t{0}, [](std::size_t sum, auto& c) {
    return sum + (c.Has(kMdbFixed) ? c.size : 0U);
  });
  for (const TMdbColumn& column : columns) {
    const std::optional<std::string>& value = values.at(column.number);
    if (value) SetBit(mask, column.number);
    if (column.Has(kMdbFixed)) {
      std::string bytes = column.type == EMdbType::Bool ? "" : value.value_or("");
      bytes.resize(column.size);
      fixed += bytes;
    } else {
      starts.push_back(2 + fixed_size + others.size());
      others += value.value_or("");
    }
  }
  std::string row = LittleBytes(columns.size(), 2) + fixed + others;
  if (!starts.empty()) {
    row += LittleBytes(row.size(), 2);
    std::ranges::reverse(starts);
    for (const std::size_t start : starts) row += LittleBytes(start, 2);
    row += LittleBytes(starts.size(), 2);
  }
  return row + mask;
}

const TMdbLayout kMdbJet4 = {.name = "Standard Jet DB",
                             .version = 1,
                             .wide = true,
                             .page_size = 4096,
                             .secret_size = 128,
                             .row_count_at = 12,
                             .map_size = 64,
                             .name_length = 2,
                             .text = Utf16OfText,
                             .row = EncodeMdbRow};

std::string LittleBytes(std::uint64_t value, std::size_t width) {
  std::string bytes;
  for (std::size_t i = 0; i < width; ++i) bytes += static_cast<char>(value >> (8 * i) & 0xFF);
  return bytes;
}

std::string DoubleBytes(double value) { return LittleBytes(std::bit_cast<std::uint64_t>(value), sizeof value); }

void ApplyRC4(std::string_view key, std::string& bytes, std::size_t at, std::size_t count) {
  std::array<std::uint8_t, 256> state;
  std::iota(state.begin(), state.end(), std::uint8_t{0});
  std::uint8_t j = 0;
  for (std::size_t i = 0; i < state.size(); ++i) {
    j = static_cast<std::uint8_t>(j + state[i] + static_cast<std::uint8_t>(key[i % key.size()]));
    std::swap(state[i], state[j]);
  }
  std::uint8_t i = 0;
  j = 0;
  for (std::size_t n = at; n < at + count; ++n) {
    j = static_cast<std::uint8_t>(j + state[++i]);
    std::swap(state[i], state[j]);
    const std::uint8_t mask = state[static_cast<std::uint8_t>(state[i] + state[j])];
    bytes[n] = static_cast<char>(static_cast<std::uint8_t>(bytes[n]) ^ mask);
  }
}

std::string NewMdbPage(const TMdbLayout& layout, std::uint8_t kind) {
  std::string page(layout.page_size, '\0');
  page[0] = static_cast<char>(kind);
  page[1] = 1;
  return page;
}

void PutAt(std::string& bytes, std::size_t at, std::uint64_t value, std::size_t width) {
  bytes.replace(at, width, LittleBytes(value, width));
}

void SetBit(std::string& bytes, std::size_t bit) {
  bytes[bit / 8] = static_cast<char>(static_cast<unsigned char>(bytes[bit / 8]) | 1U << bit % 8);
}

// Rows stand at the end of the page, the first one last; the table of their places grows towards them.
std::string MdbPageOfRows(const TMdbLayout& layout, std::uint32_t owner, const TMdbRow* rows, std::size_t count) {
  std::string page = NewMdbPage(layout, kMdbPageOfRows);
  std::size_t start = page.size();
  std::size_t entry = layout.row_count_at + 2;
  for (std::size_t i = 0; i < count; ++i, entry += 2) {
    start -= rows[i].bytes.size();
    page.replace(start, rows[i].bytes.size(), rows[i].bytes);
    PutAt(page, entry, start | rows[i].flags, 2);
  }
  PutAt(page, 2, start - entry, 2);
  PutAt(page, 4, owner, 4);
  PutAt(page, layout.row_count_at, count, 2);
  return page;
}

std::string MdbHeaderPage(const TMdbLayout& layout, TDateTime created) {
  constexpr std::string_view kKey = "\xC7\xDA\x39\x6B";
  constexpr std::size_t kSecretAt = 0x18;
  std::string page = NewMdbPage(layout, 0);
  page.replace(4, layout.name.size(), layout.name);
  page[0x14] = static_cast<char>(layout.version);
  PutAt(page, 0x3A, layout.wide ? 0 : kMdbGeneralOrder, 2);
  PutAt(page, 0x3C, kMdbCodePage, 2);
  if (layout.wide) {
    // The password, which is none, is mixed with the day of creation.
    for (std::size_t at = 0x42; at < 0x42 + 40; at += 4) PutAt(page, at, static_cast<std::uint32_t>(created), 4);
    PutAt(page, 0x6E, kMdbGeneralOrder, 4);
    page.replace(0x72, 8, DoubleBytes(created));
  }
  ApplyRC4(kKey, page, kSecretAt, layout.secret_size);
  return page;
}

}  // namespace velmora

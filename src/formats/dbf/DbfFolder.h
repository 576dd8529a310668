// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What folders of dBASE and of FoxPro have in common: their tables, described and read by a mapping of field types that
// is each engine's own.

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "formats/dbf/DbfFile.h"
#include "formats/dbf/DbfValues.h"
#include "formats/port/FileReader.h"
#include "util/Lists.h"

namespace velmora {

enum class EDbfSize { None, Bytes, Digits };

// What a type of field is to a provider and to a dataset.
struct TDbfTypeRow {
  char type;
  std::uint8_t flag;  // only fields with this flag; the first row that fits counts
  std::uint16_t data_type;
  std::uint32_t column_flags;
  EFieldKind kind;
  EDbfSize size;  // where a field's size goes: length, or precision and scale
  TVariant (*read)(const TDbfCell& cell);
};
using TDbfMapping = std::span<const TDbfTypeRow>;

inline constexpr std::uint16_t kDbfDoublePrecision = 15;

// Raises "Cannot open %s: %s" for a folder that is not there or cannot be read.
TStringList DbfTableNames(const std::string& folder);  // the files *.dbf, by name, without the extension
std::string DbfPathOf(const std::string& folder, const std::string& table, TFolderNames& known);

// The text, if it is empty or names a code page. Raises an error otherwise.
std::string CheckedCodePage(std::string code_page);

// The columns of the fields that are not hidden, all nullable, and their fields.
TFileTable DescribeDbf(const TDbfFile& file, const std::string& table, TDbfMapping mapping);
// Rows of the fields that are not hidden. Deleted rows come with `with_deleted`; without them `numbers` may be set.
TFileRows ReadDbfRows(const TDbfFile& file, TDbfMapping mapping, bool with_deleted, std::int64_t limit);

}  // namespace velmora

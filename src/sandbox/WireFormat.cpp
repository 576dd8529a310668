// SPDX-License-Identifier: GPL-3.0-or-later
#include "sandbox/WireFormat.h"

#include <bit>
#include <cstring>
#include <optional>
#include <utility>

#include "util/Errors.h"

namespace velmora {

namespace {

constexpr char kBroken[] = "A message of a child process is broken";

}  // namespace

void TWireWriter::Number(std::int64_t number) {
  char bytes[sizeof number];
  std::memcpy(bytes, &number, sizeof number);
  bytes_.append(bytes, sizeof number);
}

void TWireWriter::Text(std::string_view text) {
  Number(static_cast<std::int64_t>(text.size()));
  bytes_.append(text);
}

void TWireWriter::Value(const TVariant& value) {
  bytes_.push_back(static_cast<char>(value.index()));
  if (const auto* truth = std::get_if<bool>(&value)) return Number(*truth ? 1 : 0);
  if (const auto* number = std::get_if<std::int64_t>(&value)) return Number(*number);
  if (const auto* real = std::get_if<double>(&value)) return Number(std::bit_cast<std::int64_t>(*real));
  if (const auto* moment = std::get_if<TMoment>(&value)) return Number(std::bit_cast<std::int64_t>(moment->value));
  if (const auto* text = std::get_if<std::string>(&value)) Text(*text);
}

void TWireWriter::Tables(const std::vector<TOLEDBTableRow>& tables) {
  Number(static_cast<std::int64_t>(tables.size()));
  for (const TOLEDBTableRow& table : tables) {
    Text(table.TABLE_NAME);
    Text(table.TABLE_TYPE);
  }
}

void TWireWriter::Columns(const std::vector<TOLEDBColumnRow>& columns) {
  Number(static_cast<std::int64_t>(columns.size()));
  for (const TOLEDBColumnRow& column : columns) {
    Text(column.TABLE_NAME);
    Text(column.COLUMN_NAME);
    Number(column.ORDINAL_POSITION);
    Value(column.COLUMN_DEFAULT ? TVariant(*column.COLUMN_DEFAULT) : TVariant());
    Number(column.COLUMN_FLAGS);
    Number(column.IS_NULLABLE ? 1 : 0);
    Number(column.DATA_TYPE);
    Number(column.CHARACTER_MAXIMUM_LENGTH);
    Number(column.NUMERIC_PRECISION);
    Number(column.NUMERIC_SCALE);
  }
}

void TWireWriter::Indexes(const std::vector<TOLEDBIndexRow>& indexes) {
  Number(static_cast<std::int64_t>(indexes.size()));
  for (const TOLEDBIndexRow& index : indexes) {
    Text(index.TABLE_NAME);
    Text(index.INDEX_NAME);
    Number(index.PRIMARY_KEY ? 1 : 0);
    Number(index.UNIQUE ? 1 : 0);
    Number(index.ORDINAL_POSITION);
    Text(index.COLUMN_NAME);
    Number(index.DESCENDING ? 1 : 0);
    Number(index.NOT_NULL ? 1 : 0);
  }
}

void TWireWriter::Fields(const std::vector<TFieldDef>& fields, const std::vector<bool>& is_autoincrement) {
  Number(static_cast<std::int64_t>(fields.size()));
  for (const TFieldDef& field : fields) {
    Text(field.name);
    Number(static_cast<int>(field.kind));
    Number(field.size);
  }
  Number(static_cast<std::int64_t>(is_autoincrement.size()));
  for (const bool counts : is_autoincrement) Number(counts ? 1 : 0);
}

void TWireWriter::Values(const TRowsOfValues& rows) {
  Number(static_cast<std::int64_t>(rows.size()));
  for (const TMemDataset::TRow& row : rows) {
    Number(static_cast<std::int64_t>(row.size()));
    for (const TVariant& value : row) Value(value);
  }
}

void TWireWriter::Structure(const TFileTable& table) {
  Columns(table.columns);
  Indexes(table.indexes);
  Fields(table.fields, table.is_autoincrement);
  Texts(table.warnings);
  Number(static_cast<std::int64_t>(table.properties.size()));
  for (const auto& [column, properties] : table.properties) {
    Text(column);
    Number(static_cast<std::int64_t>(properties.size()));
    for (const auto& [name, value] : properties) {
      Text(name);
      Text(value);
    }
  }
  References(table.references);
}

void TWireWriter::Texts(const TStringList& texts) {
  Number(static_cast<std::int64_t>(texts.size()));
  for (const std::string& text : texts) Text(text);
}

void TWireWriter::References(const std::vector<TFileReference>& references) {
  Number(static_cast<std::int64_t>(references.size()));
  for (const TFileReference& reference : references) {
    Text(reference.name);
    Texts(reference.columns);
    Text(reference.parent);
    Texts(reference.parent_columns);
    Number(reference.enforced ? 1 : 0);
    Text(reference.on_update);
    Text(reference.on_delete);
  }
}

void TWireWriter::Rows(const TFileRows& rows) {
  Values(rows.rows);
  Number(static_cast<std::int64_t>(rows.numbers.size()));
  for (const std::int64_t number : rows.numbers) Number(number);
}

std::string_view TWireReader::Bytes(std::size_t count) {
  if (count > rest_.size()) RaiseError(kBroken);
  const std::string_view bytes = rest_.substr(0, count);
  rest_.remove_prefix(count);
  return bytes;
}

std::int64_t TWireReader::Number() {
  std::int64_t number = 0;
  std::memcpy(&number, Bytes(sizeof number).data(), sizeof number);
  return number;
}

template <class T>
T TWireReader::Whole() {
  const std::int64_t number = Number();
  if (!std::in_range<T>(number)) RaiseError(kBroken);
  return static_cast<T>(number);
}

std::size_t TWireReader::Count() {
  const auto count = Whole<std::size_t>();
  if (count > rest_.size()) RaiseError(kBroken);
  return count;
}

std::string TWireReader::Text() { return std::string(Bytes(Whole<std::size_t>())); }

TVariant TWireReader::Value() {
  switch (Bytes(1).front()) {
    case 0:
      return {};
    case 1:
      return Number() != 0;
    case 2:
      return Number();
    case 3:
      return std::bit_cast<double>(Number());
    case 4:
      return TMoment{std::bit_cast<double>(Number())};
    case 5:
      return Text();
    default:
      RaiseError(kBroken);
  }
}

std::vector<TOLEDBTableRow> TWireReader::Tables() {
  std::vector<TOLEDBTableRow> tables(Count());
  for (TOLEDBTableRow& table : tables) {
    table.TABLE_NAME = Text();
    table.TABLE_TYPE = Text();
  }
  return tables;
}

std::vector<TOLEDBColumnRow> TWireReader::Columns() {
  std::vector<TOLEDBColumnRow> columns(Count());
  for (TOLEDBColumnRow& column : columns) {
    column.TABLE_NAME = Text();
    column.COLUMN_NAME = Text();
    column.ORDINAL_POSITION = Whole<std::uint32_t>();
    TVariant standard = Value();
    if (auto* text = std::get_if<std::string>(&standard)) column.COLUMN_DEFAULT = std::move(*text);
    column.COLUMN_FLAGS = Whole<std::uint32_t>();
    column.IS_NULLABLE = Number() != 0;
    column.DATA_TYPE = Whole<std::uint16_t>();
    column.CHARACTER_MAXIMUM_LENGTH = Whole<std::uint32_t>();
    column.NUMERIC_PRECISION = Whole<std::uint16_t>();
    column.NUMERIC_SCALE = Whole<std::int16_t>();
  }
  return columns;
}

std::vector<TOLEDBIndexRow> TWireReader::Indexes() {
  std::vector<TOLEDBIndexRow> indexes(Count());
  for (TOLEDBIndexRow& index : indexes) {
    index.TABLE_NAME = Text();
    index.INDEX_NAME = Text();
    index.PRIMARY_KEY = Number() != 0;
    index.UNIQUE = Number() != 0;
    index.ORDINAL_POSITION = Whole<std::uint32_t>();
    index.COLUMN_NAME = Text();
    index.DESCENDING = Number() != 0;
    index.NOT_NULL = Number() != 0;
  }
  return indexes;
}

void TWireReader::Fields(std::vector<TFieldDef>& fields, std::vector<bool>& is_autoincrement) {
  fields.resize(Count());
  for (TFieldDef& field : fields) {
    field.name = Text();
    const auto kind = Whole<unsigned>();
    if (kind > static_cast<unsigned>(EFieldKind::Other)) RaiseError(kBroken);
    field.kind = static_cast<EFieldKind>(kind);
    field.size = Number();
  }
  is_autoincrement.resize(Count());
  for (auto&& counts : is_autoincrement) counts = Number() != 0;
}

TRowsOfValues TWireReader::Values() {
  TRowsOfValues rows(Count());
  for (TMemDataset::TRow& row : rows) {
    row.resize(Count());
    for (TVariant& value : row) value = Value();
  }
  return rows;
}

TFileTable TWireReader::Structure() {
  TFileTable table;
  table.columns = Columns();
  table.indexes = Indexes();
  Fields(table.fields, table.is_autoincrement);
  table.warnings = Texts();
  for (std::size_t owners = Count(); owners > 0; --owners) {
    auto& properties = table.properties[Text()];
    for (std::size_t count = Count(); count > 0; --count) {
      std::string name = Text();
      properties[std::move(name)] = Text();
    }
  }
  table.references = References();
  return table;
}

TStringList TWireReader::Texts() {
  TStringList texts(Count());
  for (std::string& text : texts) text = Text();
  return texts;
}

std::vector<TFileReference> TWireReader::References() {
  std::vector<TFileReference> references(Count());
  for (TFileReference& reference : references) {
    reference.name = Text();
    reference.columns = Texts();
    reference.parent = Text();
    reference.parent_columns = Texts();
    reference.enforced = Number() != 0;
    reference.on_update = Text();
    reference.on_delete = Text();
  }
  return references;
}

TFileRows TWireReader::Rows() {
  TFileRows rows;
  rows.rows = Values();
  rows.numbers.resize(Count());
  for (std::int64_t& number : rows.numbers) number = Number();
  return rows;
}

}  // namespace velmora

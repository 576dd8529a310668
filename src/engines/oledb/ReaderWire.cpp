#include "engines/oledb/ReaderWire.h"

#include <bit>
#include <cstring>
#include <optional>
#include <utility>

#include "util/Errors.h"

namespace velmora {

namespace {

constexpr char kBroken[] = "A message of a reader process is broken";

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

void TWireWriter::Structure(const TFileTable& table) {
  Number(static_cast<std::int64_t>(table.columns.size()));
  for (const TOLEDBColumnRow& column : table.columns) {
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
  Number(static_cast<std::int64_t>(table.indexes.size()));
  for (const TOLEDBIndexRow& index : table.indexes) {
    Text(index.TABLE_NAME);
    Text(index.INDEX_NAME);
    Number(index.PRIMARY_KEY ? 1 : 0);
    Number(index.UNIQUE ? 1 : 0);
    Number(index.ORDINAL_POSITION);
    Text(index.COLUMN_NAME);
  }
  Number(static_cast<std::int64_t>(table.fields.size()));
  for (const TFieldDef& field : table.fields) {
    Text(field.name);
    Number(static_cast<int>(field.kind));
    Number(field.size);
  }
  Number(static_cast<std::int64_t>(table.is_autoincrement.size()));
  for (const bool is_autoincrement : table.is_autoincrement) Number(is_autoincrement ? 1 : 0);
}

void TWireWriter::Rows(const TFileRows& rows) {
  Number(static_cast<std::int64_t>(rows.rows.size()));
  for (const TMemDataset::TRow& row : rows.rows) {
    Number(static_cast<std::int64_t>(row.size()));
    for (const TVariant& value : row) Value(value);
  }
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

TFileTable TWireReader::Structure() {
  TFileTable table;
  table.columns.resize(Count());
  for (TOLEDBColumnRow& column : table.columns) {
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
  table.indexes.resize(Count());
  for (TOLEDBIndexRow& index : table.indexes) {
    index.TABLE_NAME = Text();
    index.INDEX_NAME = Text();
    index.PRIMARY_KEY = Number() != 0;
    index.UNIQUE = Number() != 0;
    index.ORDINAL_POSITION = Whole<std::uint32_t>();
    index.COLUMN_NAME = Text();
  }
  table.fields.resize(Count());
  for (TFieldDef& field : table.fields) {
    field.name = Text();
    const auto kind = Whole<unsigned>();
    if (kind > static_cast<unsigned>(EFieldKind::Other)) RaiseError(kBroken);
    field.kind = static_cast<EFieldKind>(kind);
    field.size = Number();
  }
  table.is_autoincrement.resize(Count());
  for (std::size_t i = 0; i < table.is_autoincrement.size(); ++i) table.is_autoincrement[i] = Number() != 0;
  return table;
}

TFileRows TWireReader::Rows() {
  TFileRows rows;
  rows.rows.resize(Count());
  for (TMemDataset::TRow& row : rows.rows) {
    row.resize(Count());
    for (TVariant& value : row) value = Value();
  }
  rows.numbers.resize(Count());
  for (std::int64_t& number : rows.numbers) number = Number();
  return rows;
}

}  // namespace velmora

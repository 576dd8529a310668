#include "support/MdbFile.h"

#include <algorithm>
#include <bit>
#include <functional>
#include <numeric>
#include <optional>

#include "formats/mdb/MdbText.h"
#include "util/Dates.h"

namespace velmora::testing {

namespace {

constexpr char kHeaderKey[] = "\xC7\xDA\x39\x6B";
constexpr std::size_t kHeaderSecret = 0x18;
constexpr std::size_t kHeaderPageKey = 0x3E;
constexpr std::uint32_t kLongOwner = 0x4C41564C;  // "LVAL"
constexpr std::size_t kChainPiece = 1900;

const TDateTime kCreated = EncodeDate(2001, 2, 3) + EncodeTime(4, 5, 6);

std::string OneByteText(std::string_view utf8) {
  const std::string wide = Utf16OfText(utf8);
  std::string text;
  for (std::size_t i = 0; i < wide.size(); i += 2) text += wide[i];
  return text;
}

// As in Jet 4, but with bytes for numbers. What they cannot count is told by a table of jumps, which holds the numbers
// of the values that are the first to begin at 256, 512 and so on; its size goes by that of the row.
std::string OldRow(const std::vector<TMdbColumn>& columns, const TMdbValues& values) {
  std::string row(1, static_cast<char>(columns.size()));
  std::string mask((columns.size() + 7) / 8, '\0');
  for (const TMdbColumn& column : columns) {
    const auto bit = static_cast<unsigned char>(mask[column.number / 8U]) | 1U << column.number % 8;
    if (values[column.number]) mask[column.number / 8U] = static_cast<char>(bit);
    std::string bytes = column.type == EMdbType::Bool ? "" : values[column.number].value_or("");
    bytes.resize(column.size);
    if (column.Has(kMdbFixed)) row += bytes;
  }
  std::vector<std::size_t> starts;
  for (const TMdbColumn& column : columns) {
    if (column.Has(kMdbFixed)) continue;
    starts.push_back(row.size());
    row += values[column.number].value_or("");
  }
  if (starts.empty()) return row + mask;
  const std::size_t count = starts.size();
  starts.push_back(row.size());
  const std::size_t bare = row.size() + starts.size() + 1 + mask.size();
  std::size_t jumps = 0;
  while (jumps < (bare + jumps - 1) / 256) ++jumps;
  std::for_each(starts.rbegin(), starts.rend(), [&](std::size_t start) { row += static_cast<char>(start & 0xFF); });
  for (std::size_t jump = jumps; jump > 0; --jump) {
    const auto first = std::ranges::find_if(starts, [&](std::size_t start) { return start >= 256 * jump; });
    row += first == starts.end() ? '\xFF' : static_cast<char>(first - starts.begin());
  }
  return row + static_cast<char>(count) + mask;
}

std::string Counted(const std::string& text) { return LittleBytes(text.size(), 2) + text; }

// A chunk of properties: its length, which counts itself, its kind, its content.
std::string Chunk(std::uint16_t kind, const std::string& content) {
  return LittleBytes(content.size() + 6, 4) + LittleBytes(kind, 2) + content;
}

std::string PropertyValue(std::uint8_t type, std::uint16_t name, const std::string& value) {
  return LittleBytes(value.size() + 8, 2) + LittleBytes(1, 1) + LittleBytes(type, 1) + LittleBytes(name, 2) +
         Counted(value);
}

std::string Inline(const std::string& bytes) {
  return LittleBytes(bytes.size() | 0x80000000U, 4) + std::string(8, '\0') + bytes;
}

std::vector<TMdbColumn> KindsColumns(const TMdbLayout& layout) {
  using enum EMdbType;
  const std::uint16_t width = layout.wide ? 2 : 1;
  TMdbColumn fixed_text = MdbFixedColumn("fixed", Text);
  fixed_text.size = static_cast<std::uint16_t>(4 * width);
  std::vector<TMdbColumn> columns = {MdbFixedColumn("id", LongInt, kMdbAutoNumber),
                                     MdbFixedColumn("yes", Bool),
                                     MdbFixedColumn("tiny", Byte),
                                     MdbFixedColumn("small", Int),
                                     MdbFixedColumn("price", Money),
                                     MdbFixedColumn("single", Float),
                                     MdbFixedColumn("double", Double),
                                     MdbFixedColumn("day", DateTime),
                                     MdbVarColumn("bytes", Binary, 20),
                                     MdbVarColumn("naïve", Text, static_cast<std::uint16_t>(50 * width)),
                                     fixed_text,
                                     MdbVarColumn("note", Memo),
                                     MdbVarColumn("object", Ole),
                                     MdbFixedColumn("guid", RepId, kMdbNullable | kMdbAutoGuid)};
  if (layout.wide) columns.push_back(MdbNumericColumn("number", 12, 3));  // Jet 3 has none
  return PlacedColumns(columns);
}

TMdbTable KindsTable(TMdbBuilder& builder, const TMdbLayout& layout) {
  constexpr std::string_view kGuid("\x33\x22\x11\0\x55\x44\x77\x66\x88\x99\xAA\xBB\xCC\xDD\xEE\xFF", 16);
  TMdbTable table;
  table.columns = KindsColumns(layout);
  table.last_autonumber = 2;
  const auto text = [&](std::string_view utf8) { return layout.text(utf8); };
  TMdbValues values = {MdbLong(1),
                       "",
                       "\xFE",
                       LittleBytes(0xFFFE, 2),
                       LittleBytes(static_cast<std::uint64_t>(-123456789), 8),
                       MdbSingle(1.5F),
                       DoubleBytes(-2.25),
                       DoubleBytes(EncodeDate(2001, 2, 3) + 0.25),
                       std::string("\x00\xFF\x10", 3),
                       text("Größe"),
                       text("abcd"),
                       MdbLongValue(builder, text("a note"), ELongValue::OneRow),
                       MdbLongValue(builder, std::string(5000, '\x01'), ELongValue::Chain),
                       std::string(kGuid),
                       MdbNumeric(-12340)};
  values.resize(table.columns.size());
  table.rows.push_back({layout.row(table.columns, values)});
  TMdbValues nulls(table.columns.size());
  nulls[0] = MdbLong(2);
  table.rows.push_back({layout.row(table.columns, nulls)});
  return table;
}

TMdbIndex Index(std::string name, std::vector<TMdbIndexPart> parts, std::uint8_t flags = 0, std::uint8_t kind = 0) {
  return {.name = std::move(name), .parts = std::move(parts), .flags = flags, .kind = kind};
}

// The column "gone" was deleted once, and "late" added when some rows were there.
TMdbTable WordsTable(const TMdbLayout& layout) {
  using enum EMdbType;
  const std::vector<TMdbColumn> all =
      PlacedColumns({MdbFixedColumn("id", LongInt), MdbVarColumn("gone", Text, 100), MdbVarColumn("word", Text, 510),
                     MdbFixedColumn("left", Int), MdbFixedColumn("late", Int)});
  const std::vector<TMdbColumn> before(all.begin(), all.begin() + 4);
  TMdbTable table;
  table.columns = {all[0], all[2], all[3], all[4]};
  const auto values = [&](std::int32_t id, std::string_view word, std::optional<std::string> late) {
    return TMdbValues{MdbLong(id), layout.text("x"), layout.text(word), LittleBytes(7, 2), std::move(late)};
  };
  const std::string long_word(250, 'w');
  table.rows = {{layout.row(before, values(1, "early", {}))},
                {layout.row(all, values(2, "", LittleBytes(8, 2)))},
                {layout.row(all, values(3, "deleted", {})), kMdbRowMoved | kMdbRowOutside},
                {LittleBytes(0, 4), kMdbRowMoved},
                {layout.row(all, values(4, long_word, LittleBytes(9, 2))), kMdbRowOutside}};
  table.indexes = {Index("PrimaryKey", {{0}}, kMdbUnique, 1), Index("unique", {{2}}, kMdbUnique),
                   Index("two", {{2, true}, {0}}), Index("relation", {{0}}, 0, 2), Index("other", {{3}, {4}})};
  return table;
}

}  // namespace

const TMdbLayout kMdbJet3 = {.version = 0,
                             .wide = false,
                             .page_size = 2048,
                             .secret_size = 126,
                             .row_count_at = 8,
                             .map_size = 128,
                             .name_length = 1,
                             .text = OneByteText,
                             .row = OldRow};

TMdbColumn MdbNumericColumn(std::string name, std::uint8_t precision, std::uint8_t scale) {
  TMdbColumn column = MdbFixedColumn(std::move(name), EMdbType::Numeric);
  column.precision = precision;
  column.scale = scale;
  return column;
}

std::string MdbLong(std::int32_t value) { return LittleBytes(static_cast<std::uint32_t>(value), 4); }

std::string MdbNumeric(std::int64_t units) {
  const auto amount = static_cast<std::uint64_t>(units < 0 ? -units : units);
  return std::string(1, units < 0 ? '\x80' : '\0') + std::string(8, '\0') + LittleBytes(amount >> 32, 4) +
         LittleBytes(amount, 4);
}

std::string MdbSingle(float value) { return LittleBytes(std::bit_cast<std::uint32_t>(value), sizeof value); }

std::string MdbCompressed(std::string_view ascii) { return "\xFF\xFE" + std::string(ascii); }

std::string MdbLongValue(TMdbBuilder& builder, const std::string& bytes, ELongValue form) {
  if (form == ELongValue::Inline) return Inline(bytes);
  const std::string tail(4, '\0');
  if (form == ELongValue::OneRow) {
    const std::uint32_t row = builder.AddRows(kLongOwner, {{bytes}}).front();
    return LittleBytes(bytes.size() | 0x40000000U, 4) + LittleBytes(row, 4) + tail;
  }
  std::uint32_t next = 0;
  for (std::size_t at = (bytes.size() - 1) / kChainPiece * kChainPiece;; at -= kChainPiece) {
    next = builder.AddRows(kLongOwner, {{LittleBytes(next, 4) + bytes.substr(at, kChainPiece)}}).front();
    if (at == 0) break;
  }
  return LittleBytes(bytes.size(), 4) + LittleBytes(next, 4) + tail;
}

std::string MdbProperties(const TMdbLayout& layout, const std::map<std::string, TMdbColumnProperties>& columns) {
  const auto name = [&](std::string_view text) { return Counted(layout.text(text)); };
  std::string stored = layout.wide ? "MR2" : "KKD";
  stored += '\0';
  stored += Chunk(0x80, name("DefaultValue") + name("Required") + name("DisplayControl"));
  stored += Chunk(0, LittleBytes(6, 4) + LittleBytes(0, 2) + PropertyValue(4, 2, MdbLong(1)));  // of the table itself
  for (const auto& [column, properties] : columns) {
    std::string content = LittleBytes(6 + layout.text(column).size(), 4) + name(column);
    content += PropertyValue(3, 2, LittleBytes(109, 2));
    if (!properties.default_value.empty()) content += PropertyValue(12, 0, layout.text(properties.default_value));
    content += PropertyValue(1, 1, std::string(1, properties.required ? '\xFF' : '\0'));
    stored += Chunk(1, content);
  }
  return Inline(stored);
}

std::string MdbSample(const TMdbLayout& layout) {
  TMdbBuilder builder(layout, kCreated);
  builder.AddTable(
      "Kinds", KindsTable(builder, layout),
      MdbProperties(layout, {{"yes", {"=No"}}, {"small", {"5", true}}, {"naïve", {"\"x\""}}, {"day", {"Now()"}}}));
  builder.AddTable("Words", WordsTable(layout));
  return std::move(builder).Bytes();
}

std::string MdbEncoded(const TMdbLayout& layout, std::uint32_t key) {
  std::string bytes = MdbSample(layout);
  ApplyRC4({kHeaderKey, 4}, bytes, kHeaderSecret, layout.secret_size);
  bytes.replace(kHeaderPageKey, 4, LittleBytes(key, 4));
  ApplyRC4({kHeaderKey, 4}, bytes, kHeaderSecret, layout.secret_size);
  for (std::uint32_t page = 1; page < bytes.size() / layout.page_size; ++page)
    ApplyRC4(LittleBytes(key ^ page, 4), bytes, page * layout.page_size, layout.page_size);
  return bytes;
}

}  // namespace velmora::testing

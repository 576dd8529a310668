// SPDX-License-Identifier: GPL-3.0-or-later
#include "formats/mdb/MdbDatabase.h"

// In front of mdbtools.h, which includes it where C++ headers must not be.
#include <glib.h>

#include <mdbtools.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>

#include "formats/mdb/MdbText.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/LittleEndian.h"

namespace velmora {

namespace {

constexpr char kDamaged[] = "Cannot read %s: the file is damaged: %s";
constexpr char kUnreadable[] = "Cannot read %s: %s";

constexpr char kEmpty[] = "the file is empty";
constexpr char kNoDatabase[] = "it is no Access database";
constexpr char kNewer[] = "it is an Access database of a version that is not known here (%d)";
constexpr char kOtherProgram[] = "it is a database of another program, though its format is akin to that of Access";
constexpr char kEncrypted[] = "it is encrypted, in a way that is not known here";

constexpr char kNoDefinition[] = "page %d is no table definition";
constexpr char kShortDefinition[] = "its definition counts more than it holds";
constexpr char kBrokenRow[] = "one of its rows is broken";

constexpr std::uint16_t kRowPlace = 0x1FFF;  // of an entry in a page's table of rows; the rest are flags
constexpr unsigned kMaxColumns = 255;

// The one code page of Windows that the library does not know; it would take 1252 for it.
constexpr std::uint16_t kKorean = 949;
constexpr char kKoreanLetters[] = "CP949";

// Where the parts of an index stand in a definition. A tree is one that has pages; an index is what users know.
struct TIndexLayout {
  std::size_t tree_size, parts_at, flags_at;
  std::size_t index_size, tree_at, kind_at;
};
constexpr TIndexLayout kJet3Indexes = {39, 0, 38, 20, 4, 19};
constexpr TIndexLayout kJet4Indexes = {52, 4, 46, 28, 8, 23};
constexpr std::size_t kPartSize = 3;

std::uint16_t Number16(std::string_view bytes, std::size_t at) { return LittleAt<std::uint16_t>(bytes.data() + at); }
std::uint32_t Number32(std::string_view bytes, std::size_t at) { return LittleAt<std::uint32_t>(bytes.data() + at); }

// libmdb 1.0.0 takes precision and scale for one another; no scale is larger than its precision.
TMdbColumn ColumnOf(const MdbColumn& found) {
  TMdbColumn column;
  column.name = found.name;
  column.type = static_cast<EMdbType>(found.col_type);
  column.size = static_cast<std::uint16_t>(found.col_size);
  column.number = static_cast<std::uint16_t>(found.col_num);
  column.precision = static_cast<std::uint8_t>(std::max(found.col_prec, found.col_scale));
  column.scale = static_cast<std::uint8_t>(std::min(found.col_prec, found.col_scale));
  column.flags =
      static_cast<std::uint8_t>((found.is_fixed ? kMdbFixed : 0) | (found.is_long_auto ? kMdbAutoNumber : 0) |
                                (found.is_uuid_auto ? kMdbAutoGuid : 0));
  return column;
}

void AddPages(std::vector<std::uint32_t>& pages, std::uint32_t first, std::string_view bits) {
  for (std::uint32_t i = 0; i < 8 * bits.size(); ++i)
    if ((static_cast<unsigned char>(bits[i / 8]) >> i % 8 & 1) != 0) pages.push_back(first + i);
}

}  // namespace

// --- The file

struct TMdbDatabase::TLibrary {
  struct TClose {
    void operator()(MdbHandle* handle) const { mdb_close(handle); }
  };
  std::unique_ptr<MdbHandle, TClose> mdb;
};

// Several users have such a database open at a time, so that none is held off.
TMdbDatabase::TMdbDatabase(const std::string& path)
    : file_(path, ESharing::Full), library_(std::make_unique<TLibrary>()) {
  constexpr char kCharset[] = "MDB_JET3_CHARSET";
  CheckKind();
  // They would have texts read, and given, in other codes than the file's and UTF-8.
  for (const char* name : {"MDBICONV", kCharset}) unsetenv(name);
  OpenLibrary();
  if (IsJet3() && library_->mdb->f->code_page == kKorean) {
    setenv(kCharset, kKoreanLetters, 1);
    OpenLibrary();
  }
  if (Page(kMdbCatalogPage)[0] == MDB_PAGE_TABLE) return;
  if (library_->mdb->f->db_key != 0) Fail(kEncrypted);
  Damaged(Format(kNoDefinition, kMdbCatalogPage));
}

TMdbDatabase::~TMdbDatabase() = default;

void TMdbDatabase::OpenLibrary() {
  library_->mdb.reset(mdb_open(Path().c_str(), MDB_NOFLAGS));
  if (!library_->mdb) Fail(kNoDatabase);
}

void TMdbDatabase::CheckKind() const {
  constexpr std::size_t kNameAt = 4;
  constexpr std::size_t kVersionAt = 0x14;
  std::array<char, kVersionAt + 1> head{};
  const std::size_t count = file_.ReadAt(0, head);
  if (count == 0) Fail(kEmpty);
  const std::string_view name(head.data() + kNameAt, kVersionAt - kNameAt);
  if (name.starts_with("MSISAM Database")) Fail(kOtherProgram);
  const bool ace = name.starts_with("Standard ACE DB");
  if (count < head.size() || head[0] != 0 || (!ace && !name.starts_with("Standard Jet DB"))) Fail(kNoDatabase);
  const int version = static_cast<unsigned char>(head[kVersionAt]);
  if (version > (ace ? MDB_VER_ACCDB_2019 : MDB_VER_JET4)) Fail(Format(kNewer, version));
}

bool TMdbDatabase::IsJet3() const { return library_->mdb->f->jet_version == MDB_VER_JET3; }

std::string_view TMdbDatabase::Page(std::uint32_t number) const {
  MdbHandle* mdb = library_->mdb.get();
  const auto size = static_cast<std::size_t>(mdb->fmt->pg_size);
  if ((number + std::uint64_t{1}) * size > FileSize()) Damaged(Format("there is no page %d", number));
  if (mdb_read_pg(mdb, number) != mdb->fmt->pg_size) Damaged(Format("page %d cannot be read", number));
  return {reinterpret_cast<const char*>(mdb->pg_buf), size};
}

std::string TMdbDatabase::RowAt(std::uint32_t pointer) const {
  const std::string_view page = Page(pointer >> 8);
  const std::uint32_t row = pointer & 0xFF;
  if (page[0] != MDB_PAGE_DATA || row >= RowCount(page))
    Damaged(Format("there is no row %d on page %d", row, pointer >> 8));
  return std::string(Row(page, row));
}

std::uint32_t TMdbDatabase::RowCount(std::string_view page) const {
  const std::size_t at = library_->mdb->fmt->row_count_offset;
  const std::uint32_t count = Number16(page, at);
  if (at + 2 + 2 * std::size_t{count} > page.size()) Damaged("a page has more rows than fit on it");
  return count;
}

std::uint16_t TMdbDatabase::RowFlags(std::string_view page, std::uint32_t row) const {
  return Number16(page, library_->mdb->fmt->row_count_offset + 2U + 2 * row) & static_cast<std::uint16_t>(~kRowPlace);
}

std::string_view TMdbDatabase::Row(std::string_view page, std::uint32_t row) const {
  const std::size_t entry = library_->mdb->fmt->row_count_offset + 2U + 2 * row;
  const std::size_t start = Number16(page, entry) & kRowPlace;
  const std::size_t end = row == 0 ? page.size() : Number16(page, entry - 2) & kRowPlace;
  if (start > end || end > page.size()) Damaged(Format("row %d of a page stands outside of it", row));
  return page.substr(start, end - start);
}

std::optional<std::string> TMdbDatabase::Text(std::string_view stored) const {
  if (!IsJet3()) return TextOfUtf16(stored);
  constexpr std::size_t kMaxSize = 3;  // of a byte in the file's code page, as UTF-8
  std::string text(stored.size() * kMaxSize + 1, '\0');
  errno = 0;  // the library stops at an E2BIG that it finds there
  const int size = mdb_unicode2ascii(library_->mdb.get(), stored.data(), stored.size(), text.data(), text.size());
  text.resize(static_cast<std::size_t>(std::max(size, 0)));
  return text;
}

void TMdbDatabase::Damaged(const std::string& fault) const { RaiseError(Format(kDamaged, Path(), fault)); }

void TMdbDatabase::Fail(const std::string& fault) const { RaiseError(Format(kUnreadable, Path(), fault)); }

// --- A table

struct TMdbTableDef::TLibrary {
  struct TFree {
    void operator()(MdbTableDef* definition) const { mdb_free_tabledef(definition); }
  };
  MdbCatalogEntry entry{};
  std::unique_ptr<MdbTableDef, TFree> table;
};

TMdbTableDef::TMdbTableDef(const TMdbDatabase& database, const std::string& name, std::uint32_t page)
    : database_(database), name_(name), page_(page), library_(std::make_unique<TLibrary>()) {
  definition_ = ReadDefinition();
  library_->entry.mdb = database.library_->mdb.get();
  library_->entry.object_type = MDB_TABLE;
  library_->entry.table_pg = page;
  library_->table.reset(mdb_read_table(&library_->entry));
  if (!library_->table) Damaged("its definition is broken");
  ReadColumns();
}

TMdbTableDef::~TMdbTableDef() = default;

void TMdbTableDef::ReadColumns() {
  MdbTableDef* table = library_->table.get();
  const MdbFormatConstants& layout = *library_->entry.mdb->fmt;
  const std::uint64_t counted = std::uint64_t{table->num_cols} * layout.tab_col_entry_size +
                                std::uint64_t{table->num_real_idxs} * layout.tab_ridx_entry_size;
  if (table->num_cols > kMaxColumns || counted > definition_.size()) Damaged(kShortDefinition);
  const GPtrArray* columns = mdb_read_columns(table);
  for (guint i = 0; i < columns->len; ++i)
    columns_.push_back(ColumnOf(*static_cast<const MdbColumn*>(g_ptr_array_index(columns, i))));
  if (!database_.IsJet3()) MarkComputed();
}

// By the second byte of a column's flags, of which the library says nothing.
void TMdbTableDef::MarkComputed() {
  constexpr std::size_t kNumberAt = 5;
  constexpr std::size_t kFlagsAt = 16;
  const MdbFormatConstants& layout = *library_->entry.mdb->fmt;
  std::size_t at = 0;
  Part(at, layout.tab_cols_start_offset + std::size_t{library_->table->num_real_idxs} * layout.tab_ridx_entry_size);
  for (std::size_t i = 0; i < columns_.size(); ++i) {
    const std::string_view block = Part(at, layout.tab_col_entry_size);
    const auto column = std::ranges::find(columns_, Number16(block, kNumberAt), &TMdbColumn::number);
    const auto flags = static_cast<unsigned char>(block[kFlagsAt]);
    if (column != columns_.end()) column->computed = (flags & kMdbComputed) == kMdbComputed;
  }
}

// Its first page, and the others but for their heads.
std::string TMdbTableDef::ReadDefinition() const {
  constexpr std::size_t kNextAt = 4;
  constexpr std::size_t kHead = 8;
  std::string definition;
  for (std::uint32_t page = page_; page != kMdbNoPage || definition.empty();) {
    const std::string_view bytes = database_.Page(page);
    if (bytes[0] != MDB_PAGE_TABLE) Damaged(Format(kNoDefinition, page));
    if (definition.size() > database_.FileSize()) Damaged("its definition runs in a circle");
    definition += bytes.substr(definition.empty() ? 0 : kHead);
    page = Number32(bytes, kNextAt);
  }
  return definition;
}

// The columns that the table has ever had.
std::uint16_t TMdbTableDef::MaxColumns() const {
  return Number16(definition_, library_->entry.mdb->fmt->tab_num_cols_offset - std::size_t{4});
}

std::size_t TMdbTableDef::PlaceOf(std::string_view column) const {
  const auto found = std::ranges::find(columns_, column, &TMdbColumn::name);
  if (found == columns_.end()) Damaged(Format("it has no column %s", column));
  return static_cast<std::size_t>(found - columns_.begin());
}

std::uint32_t TMdbTableDef::RowCount() const { return library_->table->num_rows; }

void TMdbTableDef::Damaged(const std::string& fault) const { database_.Damaged(Format("table %s: %s", name_, fault)); }

// The part of the definition from `at`, which moves past it.
std::string_view TMdbTableDef::Part(std::size_t& at, std::size_t size) const {
  if (size > definition_.size() - at) Damaged(kShortDefinition);
  at += size;
  return std::string_view(definition_).substr(at - size, size);
}

std::string_view TMdbTableDef::NamePart(std::size_t& at) const {
  const std::string_view size = Part(at, database_.IsJet3() ? 1 : 2);
  return Part(at, size.size() == 1 ? static_cast<unsigned char>(size[0]) : Number16(size, 0));
}

// Deliberate: not by mdb_read_indices, which gives an index the columns of another one where the table takes part in a
// relation. After the names of the columns come the trees, then the indexes, several of which may share a tree, then
// their names.
std::vector<TMdbIndex> TMdbTableDef::Indexes() const {
  const MdbTableDef& table = *library_->table;
  const MdbFormatConstants& layout = *library_->entry.mdb->fmt;
  const TIndexLayout& places = database_.IsJet3() ? kJet3Indexes : kJet4Indexes;
  std::size_t at = 0;
  Part(at, layout.tab_cols_start_offset + std::size_t{table.num_real_idxs} * layout.tab_ridx_entry_size);
  Part(at, columns_.size() * layout.tab_col_entry_size);
  for (std::size_t i = 0; i < columns_.size(); ++i) NamePart(at);
  const std::vector<TMdbIndex> trees = Trees(at);
  std::vector<TMdbIndex> indexes;
  for (unsigned i = 0; i < table.num_idxs; ++i) {
    const std::string_view block = Part(at, places.index_size);
    const std::uint32_t tree = Number32(block, places.tree_at);
    if (tree >= trees.size()) Damaged("an index has no columns");
    indexes.push_back(trees[tree]);
    indexes.back().kind = static_cast<std::uint8_t>(block[places.kind_at]);
  }
  for (TMdbIndex& index : indexes) {
    const std::optional<std::string> name = database_.Text(NamePart(at));
    if (!name) Damaged("the name of an index is broken");
    index.name = *name;
  }
  return indexes;
}

std::vector<TMdbIndex> TMdbTableDef::Trees(std::size_t& at) const {
  const TIndexLayout& places = database_.IsJet3() ? kJet3Indexes : kJet4Indexes;
  std::vector<TMdbIndex> trees(library_->table->num_real_idxs);
  for (TMdbIndex& tree : trees) {
    const std::string_view block = Part(at, places.tree_size);
    tree.flags = static_cast<std::uint8_t>(block[places.flags_at]);
    for (std::size_t i = 0; i < kMdbMaxParts; ++i) {
      const std::string_view part = block.substr(places.parts_at + i * kPartSize, kPartSize);
      if (Number16(part, 0) != kMdbNoColumn) tree.parts.push_back({Number16(part, 0), part[2] == 0});
    }
  }
  return trees;
}

// The map is one of bits, after the number of the page that the first stands for; or one of pages of bits.
std::vector<std::uint32_t> TMdbTableDef::Pages() const {
  constexpr std::size_t kBitsAt = 5;
  constexpr std::size_t kPageHead = 4;
  const std::string map = database_.RowAt(Number32(definition_, library_->entry.mdb->fmt->tab_usage_map_offset));
  if (map.size() < kBitsAt || (map[0] != 0 && map[0] != 1)) Damaged("the map of its pages is broken");
  std::vector<std::uint32_t> pages;
  if (map[0] == 0) {
    AddPages(pages, Number32(map, 1), std::string_view(map).substr(kBitsAt));
    return pages;
  }
  for (std::uint32_t i = 0; 1 + 4 * (i + std::size_t{1}) <= map.size(); ++i) {
    const std::uint32_t number = Number32(map, 1 + 4 * std::size_t{i});
    if (number == 0) continue;
    const std::string_view page = database_.Page(number);
    if (page[0] != MDB_PAGE_MAP) Damaged(Format("page %d is no map of pages", number));
    const std::string_view bits = page.substr(kPageHead);
    AddPages(pages, static_cast<std::uint32_t>(8 * bits.size()) * i, bits);
  }
  return pages;
}

std::vector<TMdbStoredRow> TMdbTableDef::RowsOn(std::uint32_t page) const {
  constexpr std::size_t kOwnerAt = 4;
  const std::string_view bytes = database_.Page(page);
  std::vector<TMdbStoredRow> rows;
  if (bytes[0] != MDB_PAGE_DATA || Number32(bytes, kOwnerAt) != page_) return rows;
  for (std::uint32_t i = 0; i < database_.RowCount(bytes); ++i) {
    if ((database_.RowFlags(bytes, i) & kMdbRowMoved) != 0) continue;
    const std::string_view row = database_.Row(bytes, i);
    rows.push_back(StoredRow(row, static_cast<std::size_t>(row.data() - bytes.data())));
  }
  return rows;
}

// `row` stands in the library's own buffer, from `start`. Columns that are younger than the row are null.
TMdbStoredRow TMdbTableDef::StoredRow(std::string_view row, std::size_t start) const {
  std::vector<MdbField> fields(columns_.size() + 1);
  if (row.size() < 2 || mdb_crack_row(library_->table.get(), static_cast<int>(start), row.size(), fields.data()) < 0)
    Damaged(kBrokenRow);
  const std::uint16_t count = database_.IsJet3() ? static_cast<unsigned char>(row[0]) : Number16(row, 0);
  if (count > MaxColumns()) Damaged(kBrokenRow);
  TMdbStoredRow stored(columns_.size());
  for (std::size_t i = 0; i < columns_.size(); ++i) {
    const MdbField& field = fields[i];
    if (field.is_null || columns_[i].number >= count) continue;
    const std::size_t at = static_cast<std::size_t>(field.start) - start;
    const auto size = static_cast<std::size_t>(field.siz);  // one below 0 is beyond every row
    if (at > row.size() || size > row.size() - at) Damaged(kBrokenRow);
    stored[i] = row.substr(at, size);
  }
  return stored;
}

}  // namespace velmora

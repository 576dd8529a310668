// SPDX-License-Identifier: GPL-3.0-or-later
#include "formats/dbf/DbfIndexes.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <filesystem>
#include <set>
#include <utility>

#include "formats/dbf/DbfFile.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/InputFile.h"
#include "util/Lists.h"
#include "util/LittleEndian.h"
#include "util/Text.h"

namespace velmora {
namespace {

namespace fs = std::filesystem;

constexpr char kHeadTooShort[] = "the file ends within the first %d bytes of its head";
constexpr char kTagBeyondEnd[] = "the head of tag \"%s\" begins here, but the file ends at 0x%02X";
constexpr char kPageBeyondEnd[] = "a page of the list of tags begins here, but the file ends at 0x%02X";
constexpr char kPageTwice[] = "the list of tags comes back to a page";
constexpr char kBadPage[] = "a page of the list of tags with %d entries of %d bytes";
constexpr char kBadEntry[] = "entry %d of this page of the list of tags is damaged";

// --- dBASE

constexpr std::size_t kMaxInf = 0x10000;
constexpr std::size_t kNdxHead = 512;
constexpr std::size_t kNdxUniqueAt = 23;
constexpr std::size_t kNdxExpressionAt = 24;

std::string TextAt(std::string_view bytes, std::size_t at) {
  const std::string_view text = bytes.substr(at);
  return Trim(text.substr(0, text.find('\0')));
}

// The first `max` bytes of the file, or all of a shorter one.
std::string Beginning(const std::string& path, std::size_t max) {
  std::string bytes(max, '\0');
  bytes.resize(TInputFile(path, ESharing::Full).ReadAt(0, bytes));
  return bytes;
}

TDbfIndex ReadNdx(const std::string& path, bool unique) {
  const std::string head = Beginning(path, kNdxHead);
  if (head.size() < kNdxHead) RaiseDbfFault(path, head.size(), Format(kHeadTooShort, kNdxHead));
  return {.name = fs::path(path).stem().string(),
          .expression = TextAt(head, kNdxExpressionAt),
          .unique = unique || head[kNdxUniqueAt] != 0};
}

// Whether `key` is the word and a number.
bool IsNumbered(std::string_view key, std::string_view word) {
  const std::string_view number = key.substr(std::min(word.size(), key.size()));
  return SameText(key.substr(0, word.size()), word) && number.find_first_not_of("0123456789") == std::string_view::npos;
}

}  // namespace

std::vector<TDbfIndex> ReadDBaseIndexes(const std::string& table_path, TFolderNames* known) {
  const fs::path table(table_path);
  const std::string folder = table.parent_path().string();
  const std::string path = FindFileNoCase(folder, table.stem().string(), ".inf", known);
  std::error_code error;
  if (!fs::exists(path, error)) return {};
  std::vector<TDbfIndex> indexes;
  bool counts = false;
  for (const std::string& line : LinesOf(Beginning(path, kMaxInf))) {
    std::string value = line;
    const std::string key = Trim(StrChop("=", value, true));
    if (key.starts_with('[')) counts = PosNoCase("[dBASE", key) == 1;
    const bool unique = IsNumbered(key, "UNDX");
    if (!counts || (!unique && !IsNumbered(key, "NDX"))) continue;
    indexes.push_back(ReadNdx(DbfResolvePath(folder, Trim(value), known), unique));
  }
  return indexes;
}

// --- FoxPro

namespace {

constexpr std::size_t kPage = 512;
constexpr std::size_t kTagHead = 2 * kPage;
constexpr std::size_t kKeySizeAt = 12;
constexpr std::size_t kOptionsAt = 14;
constexpr unsigned kCandidate = 0x04;  // or the primary key
constexpr unsigned kFiltered = 0x08;

// In a page.
constexpr std::size_t kKindAt = 0;
constexpr unsigned kLeaf = 0x02;
constexpr std::size_t kCountAt = 2;
constexpr std::size_t kRightAt = 8;
constexpr std::uint32_t kNoPage = 0xFFFFFFFF;
constexpr std::size_t kInnerEntries = 12;
constexpr std::size_t kLeafMasks = 14;
constexpr std::size_t kLeafEntries = 24;

// A tag as it stands in the list of tags: its name, and where its head begins.
struct TTagPlace {
  std::string name;
  std::uint64_t place;
};

// The list of tags is an index itself: its keys are their names, its record numbers their places.
class TTagList {
 public:
  explicit TTagList(const TInputFile& file) : file_(file) {}
  std::vector<TTagPlace> Read();

 private:
  std::string Page(std::uint32_t place);
  std::uint32_t FirstBelow(const std::string& page, std::uint32_t place) const;
  void AddLeaf(const std::string& page, std::uint32_t place);

  const TInputFile& file_;
  std::size_t key_size_ = 0;
  std::set<std::uint32_t> seen_;
  std::vector<TTagPlace> tags_;
};

std::vector<TTagPlace> TTagList::Read() {
  std::string head(kTagHead, '\0');
  const std::size_t count = file_.ReadAt(0, head);
  if (count < head.size()) RaiseDbfFault(file_.Path(), count, Format(kHeadTooShort, head.size()));
  key_size_ = LittleAt<std::uint16_t>(head.data() + kKeySizeAt);
  auto place = LittleAt<std::uint32_t>(head.data());
  std::string page = Page(place);
  while ((LittleAt<std::uint16_t>(page.data() + kKindAt) & kLeaf) == 0) {
    place = FirstBelow(page, place);
    page = Page(place);
  }
  for (;;) {
    AddLeaf(page, place);
    place = LittleAt<std::uint32_t>(page.data() + kRightAt);
    if (place == kNoPage) return std::move(tags_);
    page = Page(place);
  }
}

std::string TTagList::Page(std::uint32_t place) {
  if (!seen_.insert(place).second) RaiseDbfFault(file_.Path(), place, kPageTwice);
  std::string page(kPage, '\0');
  if (file_.ReadAt(place, page) < page.size()) RaiseDbfFault(file_.Path(), place, Format(kPageBeyondEnd, file_.Size()));
  return page;
}

// An entry is a key, a record number, and the page below it, highest byte first.
std::uint32_t TTagList::FirstBelow(const std::string& page, std::uint32_t place) const {
  const std::size_t at = kInnerEntries + key_size_ + sizeof(std::uint32_t);
  const auto count = LittleAt<std::uint16_t>(page.data() + kCountAt);
  if (count == 0 || at + sizeof(std::uint32_t) > page.size())
    RaiseDbfFault(file_.Path(), place, Format(kBadPage, count, key_size_));
  return DbfBigAt(page.data() + at);
}

// Entries stand at the front: record number, number of bytes shared with the key before, number of blanks left out at
// the end, packed into bits. What remains of the keys stands at the back, the first key last.
void TTagList::AddLeaf(const std::string& page, std::uint32_t place) {
  const char* masks = page.data() + kLeafMasks;
  const auto count = LittleAt<std::uint16_t>(page.data() + kCountAt);
  const auto number_mask = LittleAt<std::uint32_t>(masks);
  const auto shared_mask = LittleAt<std::uint8_t>(masks + 4), blanks_mask = LittleAt<std::uint8_t>(masks + 5);
  const auto number_bits = LittleAt<std::uint8_t>(masks + 6), shared_bits = LittleAt<std::uint8_t>(masks + 7);
  const auto entry_size = LittleAt<std::uint8_t>(masks + 9);
  if (entry_size == 0 || entry_size > 8 || number_bits + shared_bits > 56 ||
      kLeafEntries + std::size_t{count} * entry_size > page.size())
    RaiseDbfFault(file_.Path(), place, Format(kBadPage, count, entry_size));
  std::size_t end = page.size();
  std::string key;
  for (std::size_t i = 0; i < count; ++i) {
    std::array<char, 8> bytes{};
    page.copy(bytes.data(), entry_size, kLeafEntries + i * entry_size);
    const auto entry = LittleAt<std::uint64_t>(bytes.data());
    const std::size_t shared = entry >> number_bits & shared_mask;
    const std::size_t blanks = entry >> (number_bits + shared_bits) & blanks_mask;
    const std::size_t own = key_size_ - std::min(key_size_, shared + blanks);
    if (shared > key.size() || end < kLeafEntries + std::size_t{count} * entry_size + own)
      RaiseDbfFault(file_.Path(), place, Format(kBadEntry, i + 1));
    end -= own;
    key = key.substr(0, shared) + page.substr(end, own);
    key.resize(key_size_, ' ');
    tags_.push_back({Trim(key), entry & number_mask});
  }
}

// Whether a filter leaves out deleted records alone, so that what is unique in the index is unique among the rows.
bool SparesDeletedAlone(std::string_view filter) {
  std::string plain = LowerText(filter);
  std::erase_if(plain, [](char c) { return c == ' ' || c == '.'; });
  return plain == "!deleted()" || plain == "notdeleted()";
}

TDbfIndex ReadTag(const TInputFile& file, const TTagPlace& tag) {
  std::string head(kTagHead, '\0');
  if (file.ReadAt(tag.place, head) < head.size())
    RaiseDbfFault(file.Path(), tag.place, Format(kTagBeyondEnd, tag.name, file.Size()));
  const auto options = LittleAt<std::uint8_t>(head.data() + kOptionsAt);
  // The filter's text follows that of the key.
  const std::string_view texts = std::string_view(head).substr(kPage);
  const std::size_t filter_at = std::min(texts.find('\0'), texts.size() - 1) + 1;
  const bool whole = (options & kFiltered) == 0 || SparesDeletedAlone(TextAt(texts, filter_at));
  return {.name = tag.name, .expression = TextAt(texts, 0), .unique = (options & kCandidate) != 0 && whole};
}

}  // namespace

std::vector<TDbfIndex> ReadFoxProTags(const std::string& path) {
  const TInputFile file(path, ESharing::Full);
  std::vector<TDbfIndex> indexes;
  for (const TTagPlace& tag : TTagList(file).Read()) indexes.push_back(ReadTag(file, tag));
  return indexes;
}

void AddDbfIndex(const TDbfIndex& index, bool primary, const std::vector<std::string>& short_names, TFileTable& table) {
  for (std::size_t i = 0; i < table.columns.size(); ++i) {
    const TOLEDBColumnRow& column = table.columns[i];
    if (!SameText(index.expression, column.COLUMN_NAME) && !SameText(index.expression, short_names[i])) continue;
    table.indexes.push_back({.TABLE_NAME = column.TABLE_NAME,
                             .INDEX_NAME = index.name,
                             .PRIMARY_KEY = primary,
                             .UNIQUE = primary || index.unique,
                             .ORDINAL_POSITION = 1,
                             .COLUMN_NAME = column.COLUMN_NAME});
    return;
  }
}

}  // namespace velmora

#include "support/DbfFile.h"

#include <algorithm>
#include <bit>

namespace velmora::testing {
namespace {

constexpr std::size_t kPage = 512;

void Put(std::string& bytes, std::size_t at, const std::string& value) { bytes.replace(at, value.size(), value); }

std::string Zeros(std::string text, std::size_t size) {
  text.resize(size);
  return text;
}

std::string Descriptor(const TDbfDraftField& field) {
  std::string bytes(32, '\0');
  Put(bytes, 0, Zeros(field.name, 11));
  bytes[11] = field.type;
  bytes[16] = static_cast<char>(field.size);
  bytes[17] = static_cast<char>(field.decimals);
  bytes[18] = static_cast<char>(field.flags);
  return bytes;
}

// A page of a list of tags, with keys of 10 characters; its entries take 4 bytes, 24 bits of them for the place.
std::string CdxLeaf(const std::vector<std::pair<std::string, std::uint32_t>>& tags, bool root, std::uint32_t left,
                    std::uint32_t right) {
  std::string page(kPage, '\0');
  std::size_t end = kPage, at = 24;
  std::string last;
  for (const auto& [name, place] : tags) {
    const std::string key = DbfLeft(name, 10);
    const auto differ = std::ranges::mismatch(key, last).in1;
    const auto shared = last.empty() ? 0 : static_cast<std::size_t>(differ - key.begin());
    const std::size_t blanks = key.size() - std::max(shared, key.find_last_not_of(' ') + 1);
    const std::string own = key.substr(shared, key.size() - shared - blanks);
    Put(page, at, DbfLittle(static_cast<std::int64_t>(place | shared << 24 | blanks << 28)));
    at += 4;
    end -= own.size();
    Put(page, end, own);
    last = key;
  }
  Put(page, 0,
      DbfLittle(root ? 3 : 2, 2) + DbfLittle(std::ssize(tags), 2) + DbfLittle(left) + DbfLittle(right) +
          DbfLittle(static_cast<std::int64_t>(end - at), 2) + DbfLittle(0xFFFFFF) + "\x0F\x0F\x18\x04\x04\x04");
  return page;
}

std::string CdxHead(std::uint32_t root, int key_size, int options, const std::string& key, const std::string& filter) {
  std::string head(2 * kPage, '\0');
  Put(head, 0,
      DbfLittle(root) + DbfLittle(-1) + DbfLittle(0) + DbfLittle(key_size, 2) + DbfLittle(options, 1) + "\x01");
  Put(head, 506, DbfLittle(std::ssize(filter) + 1, 2) + DbfLittle(0, 2) + DbfLittle(std::ssize(key) + 1, 2));
  Put(head, kPage, key);
  Put(head, kPage + key.size() + 1, filter);
  return head;
}

std::string PropertyBytes(const std::vector<std::pair<int, std::string>>& properties) {
  std::string bytes;
  for (const auto& [id, value] : properties)
    bytes += DbfLittle(std::ssize(value) + 8) + DbfLittle(1, 2) + DbfLittle(id, 1) + value + '\0';
  return bytes;
}

}  // namespace

std::string TDbfDraft::Bytes() const {
  const bool visual = version >= 0x30 && version <= 0x32;
  std::string bytes(32, '\0');
  int size = 1;
  for (const TDbfDraftField& field : fields) {
    bytes += Descriptor(field);
    size += field.size;
  }
  bytes += '\r';
  if (visual) bytes += Zeros(database, 263);
  bytes[0] = static_cast<char>(version);
  Put(bytes, 1, "\x18\x06\x01");
  Put(bytes, 4, DbfLittle(count.value_or(static_cast<std::uint32_t>(records.size()))));
  Put(bytes, 8, DbfLittle(head_size.value_or(static_cast<int>(bytes.size())), 2));
  Put(bytes, 10, DbfLittle(record_size.value_or(size), 2));
  bytes[28] = static_cast<char>(flags);
  bytes[29] = static_cast<char>(code_page);
  for (const std::string& record : records) bytes += record;
  return bytes + '\x1A';
}

TDbfMemoDraft::TDbfMemoDraft(std::string form, std::size_t block_size)
    : form_(std::move(form)),
      block_size_(block_size),
      bytes_((kPage + block_size - 1) / block_size * block_size, '\0') {
  if (form_ == "IV") Put(bytes_, 20, DbfLittle(static_cast<std::int64_t>(block_size), 2));
  if (form_ == "Fox") Put(bytes_, 6, DbfBig(block_size, 2));
}

std::uint32_t TDbfMemoDraft::Add(const std::string& memo) {
  const std::size_t block = bytes_.size() / block_size_;
  if (form_ == "III") bytes_ += memo + "\x1A\x1A";
  if (form_ == "IV") bytes_ += std::string("\xFF\xFF\x08\0", 4) + DbfLittle(std::ssize(memo) + 8) + memo;
  if (form_ == "Fox") bytes_ += DbfBig(1) + DbfBig(memo.size()) + memo;
  bytes_.resize((bytes_.size() + block_size_ - 1) / block_size_ * block_size_, '\0');
  return static_cast<std::uint32_t>(block);
}

std::string TDbfMemoDraft::Bytes() const {
  std::string bytes = bytes_;
  const std::uint64_t next = bytes.size() / block_size_;
  Put(bytes, 0, form_ == "Fox" ? DbfBig(next) : DbfLittle(static_cast<std::int64_t>(next)));
  return bytes;
}

std::string NdxBytes(const std::string& expression, bool unique) {
  std::string head(kPage, '\0');
  Put(head, 0, DbfLittle(1) + DbfLittle(2));
  Put(head, 12, DbfLittle(10, 2) + DbfLittle(25, 2) + DbfLittle(0, 2) + DbfLittle(20, 2));
  head[23] = unique ? 1 : 0;
  Put(head, 24, expression);
  return head + std::string(kPage, '\0');
}

// The head of the list, its pages, the heads of the tags.
std::string CdxBytes(const std::vector<TCdxTag>& tags, std::size_t per_page) {
  const std::size_t leaves = std::max<std::size_t>(1, (tags.size() + per_page - 1) / per_page);
  const auto page_at = [](std::size_t number) { return static_cast<std::uint32_t>((2 + number) * kPage); };
  const auto head_at = [&](std::size_t tag) {
    return static_cast<std::uint32_t>(page_at(leaves + 1) + tag * 2 * kPage);
  };
  std::string pages, root(kPage, '\0');
  Put(root, 0, DbfLittle(1, 2) + DbfLittle(static_cast<std::int64_t>(leaves), 2) + DbfLittle(-1) + DbfLittle(-1));
  for (std::size_t leaf = 0; leaf < leaves; ++leaf) {
    std::vector<std::pair<std::string, std::uint32_t>> entries;
    for (std::size_t i = leaf * per_page; i < std::min(tags.size(), (leaf + 1) * per_page); ++i)
      entries.emplace_back(tags[i].name, head_at(i));
    pages += CdxLeaf(entries, leaves == 1, leaf == 0 ? 0xFFFFFFFF : page_at(leaf - 1),
                     leaf + 1 == leaves ? 0xFFFFFFFF : page_at(leaf + 1));
    const std::string last = entries.empty() ? "" : entries.back().first;
    Put(root, 12 + leaf * 18, DbfLeft(last, 10) + DbfBig(head_at(0)) + DbfBig(page_at(leaf)));
  }
  std::string bytes = CdxHead(leaves == 1 ? page_at(0) : page_at(leaves), 10, 0xE0, "", "") + pages + root;
  for (const TCdxTag& tag : tags) bytes += CdxHead(0, 10, tag.options, tag.expression, tag.filter);
  return bytes;
}

int TDbcDraft::AddTable(const std::string& name, const std::vector<std::pair<int, std::string>>& properties) {
  return Add("Table", 1, name, PropertyBytes(properties));
}

int TDbcDraft::AddField(int table, const std::string& name,
                        const std::vector<std::pair<int, std::string>>& properties) {
  return Add("Field", table, name, PropertyBytes(properties));
}

int TDbcDraft::Add(const std::string& type, int parent, const std::string& name, const std::string& properties) {
  const int id = static_cast<int>(table_.records.size()) + 1;
  const std::uint32_t block = properties.empty() ? 0 : memos_.Add(properties);
  table_.records.push_back(" " + DbfLittle(id) + DbfLittle(parent) + DbfLeft(type, 10) + DbfLeft(name, 128) +
                           DbfLittle(block) + DbfLittle(0) + DbfLeft("", 6) + DbfLittle(0));
  return id;
}

std::string DbfLeft(const std::string& text, std::size_t size) { return text + std::string(size - text.size(), ' '); }

std::string DbfRight(const std::string& text, std::size_t size) { return std::string(size - text.size(), ' ') + text; }

std::string DbfLittle(std::int64_t number, std::size_t size) {
  std::string bytes;
  for (std::size_t i = 0; i < std::min<std::size_t>(size, 8); ++i)
    bytes += static_cast<char>(static_cast<std::uint64_t>(number) >> 8 * i & 0xFF);
  bytes.resize(size);
  return bytes;
}

std::string DbfBig(std::uint64_t number, std::size_t size) {
  const std::string little = DbfLittle(static_cast<std::int64_t>(number), size);
  return {little.rbegin(), little.rend()};
}

std::string DbfDoubleBytes(double number) { return DbfLittle(std::bit_cast<std::int64_t>(number), 8); }

std::string DbfMomentBytes(int day, int milliseconds) { return DbfLittle(day) + DbfLittle(milliseconds); }

}  // namespace velmora::testing

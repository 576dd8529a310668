// SPDX-License-Identifier: GPL-3.0-or-later
#include "formats/mdb/MdbProperties.h"

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "util/LittleEndian.h"

namespace velmora {

namespace {

constexpr std::uint16_t kNames = 0x80;
constexpr std::uint16_t kOfTable = 0;
constexpr std::uint16_t kOfColumn = 1;
constexpr std::uint8_t kBool = 1;
constexpr std::uint8_t kText = 10;
constexpr std::uint8_t kMemo = 12;

// Takes parts off the front; once a part is missing, all that follow are.
class TParts {
 public:
  explicit TParts(std::string_view rest) : rest_(rest) {}

  bool AtEnd() const { return rest_.empty(); }
  bool Whole() const { return whole_; }
  std::string_view Take(std::size_t count) {
    if (count > rest_.size()) whole_ = false;
    const std::string_view part = whole_ ? rest_.substr(0, count) : std::string_view();
    rest_.remove_prefix(part.size());
    if (!whole_) rest_ = {};
    return part;
  }
  template <class T>
  T Number() {
    const std::string_view part = Take(sizeof(T));
    return part.empty() ? T{0} : LittleAt<T>(part.data());
  }
  // A part with its own size in front, which counts itself.
  template <class T>
  TParts Block() {
    const T size = Number<T>();
    if (size < sizeof(T)) whole_ = false;
    return TParts(Take(size - sizeof(T)));
  }
  std::string_view Counted() { return Take(Number<std::uint16_t>()); }

 private:
  std::string_view rest_;
  bool whole_ = true;
};

class TPropertyReader {
 public:
  explicit TPropertyReader(const TMdbTextDecoder& text) : text_(text) {}

  bool Chunk(TParts chunk) {
    const auto kind = chunk.Number<std::uint16_t>();
    if (kind == kNames) return Names(chunk);
    if (kind == kOfTable) Owner(chunk, true);  // no column depends on them
    return kind != kOfColumn || Owner(chunk, false);
  }
  TMdbProperties Take() { return std::move(found_); }

 private:
  bool Names(TParts& chunk) {
    while (!chunk.AtEnd()) {
      const std::optional<std::string> name = text_(chunk.Counted());
      if (!chunk.Whole() || !name) return false;
      names_.push_back(*name);
    }
    return true;
  }

  bool Owner(TParts& chunk, bool is_table) {
    TParts head = chunk.Block<std::uint32_t>();
    const std::optional<std::string> name = text_(head.Counted());
    if (!chunk.Whole() || !head.Whole() || !name) return false;
    while (!chunk.AtEnd())
      if (!Value(chunk.Block<std::uint16_t>(), found_[is_table ? "" : *name]) || !chunk.Whole()) return false;
    return true;
  }

  bool Value(TParts entry, std::map<std::string, std::string>& values) {
    entry.Take(1);
    const auto type = entry.Number<std::uint8_t>();
    const auto name = entry.Number<std::uint16_t>();
    const std::string_view value = entry.Counted();
    if (!entry.Whole() || name >= names_.size()) return false;
    if (type == kBool) values[names_[name]] = !value.empty() && value[0] != '\0' ? "yes" : "no";
    if (type != kText && type != kMemo) return true;
    const std::optional<std::string> text = text_(value);
    if (text) values[names_[name]] = *text;
    return text.has_value();
  }

  const TMdbTextDecoder& text_;
  std::vector<std::string> names_;
  TMdbProperties found_;
};

}  // namespace

std::optional<TMdbProperties> ReadMdbProperties(std::string_view stored, const TMdbTextDecoder& text) {
  TParts parts(stored);
  const std::string_view mark = parts.Take(4);
  using namespace std::string_view_literals;
  if (mark != "MR2\0"sv && mark != "KKD\0"sv) return std::nullopt;
  TPropertyReader reader(text);
  while (!parts.AtEnd())
    if (!reader.Chunk(parts.Block<std::uint32_t>()) || !parts.Whole()) return std::nullopt;
  return reader.Take();
}

}  // namespace velmora

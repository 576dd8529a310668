#include "app/LineDifference.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <string_view>

#include "exact/compare/OptionEquivalences.h"
#include "util/Errors.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr std::size_t kMostCells = 4'000'000;

// Lengths of the longest common sequences of what stands after each pair of places.
class TCommonLengths {
 public:
  TCommonLengths(const TStringList& a, const TStringList& b, std::size_t first, std::size_t end_a, std::size_t end_b)
      : first_(first), width_(end_b - first + 1), cells_((end_a - first + 1) * width_) {
    for (std::size_t i = end_a; i-- > first;)
      for (std::size_t j = end_b; j-- > first;)
        At(i, j) = a[i] == b[j] ? At(i + 1, j + 1) + 1 : std::max(At(i + 1, j), At(i, j + 1));
  }
  std::uint32_t& At(std::size_t i, std::size_t j) { return cells_[(i - first_) * width_ + j - first_]; }

 private:
  std::size_t first_;
  std::size_t width_;
  std::vector<std::uint32_t> cells_;
};

constexpr char kOptionsStart = ')';

// A creation text line by line, as servers print it: an element on each, then the options.
class TTableLines {
 public:
  explicit TTableLines(const std::string& ddl) : table(ReadTableText(ddl)), lines(LinesOf(ddl)) {
    for (const TElement& element : table.elements) elements_.emplace(element.text.Str(), &element);
    for (std::string& line : lines) {
      line = Trim(line);
      if (line.ends_with(',')) line.pop_back();
    }
  }
  const TElement* ElementOf(const std::string& line) const {
    const auto found = elements_.find(line);
    return found == elements_.end() ? nullptr : found->second;
  }

  TTableLines(const TTableLines&) = delete;
  TTableLines& operator=(const TTableLines&) = delete;

  const TTableText table;
  TStringList lines;

 private:
  std::map<std::string_view, const TElement*> elements_;  // by their texts
};

// Writes the lines of `a` that mean the same as one of `b` as `b` has them.
void SpeakAs(const TTableLines& b, TTableLines& a, TEquivalenceUse& use) {
  TElementComparison comparison(a.table, b.table, use);
  const bool same_options = SameOptions(a.table, b.table, use);
  for (std::size_t i = 0; i < a.lines.size(); ++i) {
    if (const TElement* element = a.ElementOf(a.lines[i])) {
      const TElement* other = b.table.Find(element->kind, element->name);
      if (other != nullptr && comparison.Same(*element, *other)) a.lines[i] = other->text.Str();
    } else if (same_options && a.lines[i].starts_with(kOptionsStart)) {
      const auto options =
          std::ranges::find_if(b.lines, [](const std::string& line) { return line.starts_with(kOptionsStart); });
      if (options != b.lines.end()) a.lines[i] = *options;
    }
  }
}

// Keys and checks of `lines` that `other` has too, wherever they stand there.
void LeaveOutMoved(const TTableLines& b, const TStringList& mine, const TStringList& other,
                   std::vector<std::size_t>& lines) {
  std::erase_if(lines, [&](std::size_t line) {
    const TElement* element = b.ElementOf(mine[line]);
    const bool key = element != nullptr && element->kind != EElement::Column;
    return key && std::ranges::find(other, mine[line]) != other.end();
  });
}

}  // namespace

TLinePair DifferingLines(const TStringList& a, const TStringList& b) {
  std::size_t first = 0;
  while (first < a.size() && first < b.size() && a[first] == b[first]) ++first;
  std::size_t end_a = a.size();
  std::size_t end_b = b.size();
  while (end_a > first && end_b > first && a[end_a - 1] == b[end_b - 1]) --end_a, --end_b;

  TLinePair lines;
  std::size_t i = first;
  std::size_t j = first;
  if ((end_a - first + 1) * (end_b - first + 1) <= kMostCells) {
    TCommonLengths common(a, b, first, end_a, end_b);
    while (i < end_a && j < end_b)
      if (a[i] == b[j])
        ++i, ++j;
      else if (common.At(i + 1, j) >= common.At(i, j + 1))
        lines.first.push_back(i++);
      else
        lines.second.push_back(j++);
  }
  while (i < end_a) lines.first.push_back(i++);
  while (j < end_b) lines.second.push_back(j++);
  return lines;
}

TLinePair DifferingLines(const std::string& a, const std::string& b, TEquivalenceUse use) {
  try {
    TTableLines in_a(a);
    const TTableLines in_b(b);
    SpeakAs(in_b, in_a, use);
    TLinePair lines = DifferingLines(in_a.lines, in_b.lines);
    LeaveOutMoved(in_b, in_a.lines, in_b.lines, lines.first);
    LeaveOutMoved(in_b, in_b.lines, in_a.lines, lines.second);
    return lines;
  } catch (const EVelmora&) {
    return DifferingLines(LinesOf(a), LinesOf(b));
  }
}

}  // namespace velmora

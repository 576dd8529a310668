#include "app/LineDifference.h"

#include <algorithm>
#include <cstdint>

namespace velmora {

namespace {

constexpr std::size_t kMostCells = 4'000'000;

// Lengths of the longest common sequences of what stands behind each pair of places.
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

}  // namespace

std::pair<std::vector<std::size_t>, std::vector<std::size_t>> DifferingLines(const TStringList& a,
                                                                             const TStringList& b) {
  std::size_t first = 0;
  while (first < a.size() && first < b.size() && a[first] == b[first]) ++first;
  std::size_t end_a = a.size();
  std::size_t end_b = b.size();
  while (end_a > first && end_b > first && a[end_a - 1] == b[end_b - 1]) --end_a, --end_b;

  std::pair<std::vector<std::size_t>, std::vector<std::size_t>> lines;
  std::size_t i = first;
  std::size_t j = first;
  if ((end_a - first + 1) * (end_b - first + 1) <= kMostCells) {
    TCommonLengths common(a, b, first, end_a, end_b);
    while (i < end_a && j < end_b) {
      if (a[i] == b[j])
        ++i, ++j;
      else if (common.At(i + 1, j) >= common.At(i, j + 1))
        lines.first.push_back(i++);
      else
        lines.second.push_back(j++);
    }
  }
  while (i < end_a) lines.first.push_back(i++);
  while (j < end_b) lines.second.push_back(j++);
  return lines;
}

}  // namespace velmora

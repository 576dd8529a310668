// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/NearWords.h"

#include <algorithm>
#include <vector>

#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr std::size_t kLongest = 64;  // letters; what is longer is no slip
constexpr std::size_t kLettersToASlip = 3;
constexpr std::size_t kMostSlips = 3;
constexpr std::size_t kShortestBeginning = 3;  // letters

std::size_t SlipsAllowed(std::string_view bare) {
  return std::clamp<std::size_t>(bare.size() / kLettersToASlip, 1, kMostSlips);
}

std::string_view WithoutDashes(std::string_view word) {
  return word.substr(std::min(word.find_first_not_of('-'), word.size()));
}

bool GoesOn(std::string_view longer, std::string_view word) {
  return longer.size() > word.size() && SameText(longer.substr(0, word.size()), word);
}

bool IsBeginning(std::string_view given, std::string_view word) {
  return WithoutDashes(given).size() >= kShortestBeginning && GoesOn(word, given);
}

// "--format-json" goes on from "--format".
bool GoesOnFrom(std::string_view given, std::string_view word) {
  return GoesOn(given, word) && given[word.size()] == '-';
}

}  // namespace

std::size_t WordDistance(std::string_view a, std::string_view b) {
  std::vector<std::size_t> before, last(b.size() + 1), now(b.size() + 1);
  for (std::size_t j = 0; j <= b.size(); ++j) last[j] = j;
  for (std::size_t i = 1; i <= a.size(); ++i) {
    now[0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const std::size_t replaced = last[j - 1] + (SameLetter(a[i - 1], b[j - 1]) ? 0 : 1);
      now[j] = std::min({last[j] + 1, now[j - 1] + 1, replaced});
      const bool swapped = i > 1 && j > 1 && SameLetter(a[i - 1], b[j - 2]) && SameLetter(a[i - 2], b[j - 1]);
      if (swapped) now[j] = std::min(now[j], before[j - 2] + 1);
    }
    before = last;
    std::swap(last, now);
  }
  return last.back();
}

TStringList NearWords(std::string_view given, const TStringList& words) {
  if (given.size() > kLongest) return {};
  std::size_t least = SlipsAllowed(WithoutDashes(given));
  TStringList near;
  for (const std::string& word : words) {
    const std::size_t slips = WordDistance(given, word);
    if (slips > least) continue;
    if (slips < least) near.clear();
    least = slips;
    near.push_back(word);
  }
  if (!near.empty()) return near;
  for (const auto& fits : {IsBeginning, GoesOnFrom}) {
    std::ranges::copy_if(words, std::back_inserter(near), [&](const std::string& word) { return fits(given, word); });
    if (near.size() == 1) return near;
    near.clear();
  }
  return {};
}

std::string DidYouMean(std::string_view given, const TStringList& words) {
  const TStringList near = NearWords(given, words);
  return near.empty() ? std::string() : Format("; did you mean %s?", JoinList(near, " or "));
}

}  // namespace velmora

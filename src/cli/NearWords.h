// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "util/Lists.h"

namespace velmora {

// How many letters have to be put in, taken out, replaced or swapped with the next to make one word of the other.
std::size_t WordDistance(std::string_view a, std::string_view b);

// The words that somebody may have meant who wrote `given`: those with the fewest slips, as many as a word of that
// length may have; else the one of which it is the beginning, or that it goes on from. Case is ignored. Mostly none or
// one.
TStringList NearWords(std::string_view given, const TStringList& words);

// "; did you mean --format?"; empty where nothing is near.
std::string DidYouMean(std::string_view given, const TStringList& words);

}  // namespace velmora

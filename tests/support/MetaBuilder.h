// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// A store as a text, there and back: "t(a,b) key k(a) fk f(a:id)->p check c()->": tables with their columns, keys,
// foreign keys by pairs of local and foreign column, and checks.

#include <string>

#include "core/Meta.h"

namespace velmora::testing {

// Adds what the text says to a store without an engine; keys and constraints in front of any table go to the current
// one. Tables count as fetched.
void Build(TMeta& meta, const std::string& text);

// One table of the store; "-" for none.
std::string Shape(const TMeta& meta, const std::string& table);

}  // namespace velmora::testing

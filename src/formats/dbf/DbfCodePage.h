// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "util/CodePage.h"

namespace velmora {

// The code page of a DBF file, by the number in its head (the numbers are published with the documentation of Visual
// FoxPro, "Code Pages Supported by Visual FoxPro"). 0, and a number that stands for no page known here, is `unstated`,
// a name of iconv's.
TCodePage DbfCodePage(std::uint8_t number, const char* unstated);

// iconv's name for a page as people and files name it: "1251", "CP1251", "ANSI 1251", "UTF-8", "88591". Nothing where
// this system knows no such page.
std::optional<std::string> CodePageNamed(std::string_view text);

}  // namespace velmora

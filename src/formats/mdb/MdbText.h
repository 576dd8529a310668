// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Values of Jet database files as they are stored, and what they stand for. Where bytes make no value of the kind,
// nothing is given.

#include <optional>
#include <string>
#include <string_view>

#include "util/Dates.h"

namespace velmora {

// Text of Jet 4: UTF-16, lowest byte first, or its compressed form, which begins with FF FE. As UTF-8; what is no
// character comes as U+FFFD.
std::optional<std::string> TextOfUtf16(std::string_view stored);
std::string Utf16OfText(std::string_view utf8);

// 8 bytes, in units of a ten-thousandth: "-922337203685477.5808".
std::optional<std::string> TextOfMoney(std::string_view stored);
// 17 bytes: a sign, and 128 bits in four groups, the highest first: "-12.340" with a scale of 3.
std::optional<std::string> TextOfNumeric(std::string_view stored, int scale);
// 16 bytes: "{00112233-4455-6677-8899-AABBCCDDEEFF}".
std::optional<std::string> TextOfGuid(std::string_view stored);
// 8 bytes: days since 1899-12-30; before that day the fraction still counts forward from midnight.
std::optional<TDateTime> MomentOf(std::string_view stored);
// 42 bytes of digits: days since the year 1, and the day's units of 100 nanoseconds.
std::optional<TDateTime> MomentOfDigits(std::string_view stored);

}  // namespace velmora

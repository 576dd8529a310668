// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Bytes of files in a form that can be read. Words with blanks or line ends between:
//
//   4F 0a          bytes
//   "a\r\n\x84"    a text in UTF-8; \r \n \" \\ and \x with two digits as usual
//   u"ab"          the same with a zero after each byte
//   le2:97 be4:1 f8:-1.5   numbers of so many bytes, lowest or highest byte first; an IEEE number
//   20*7 "ab"*3    a word so many times
//   "NAME"/11      a word, and zeros up to that size
//   @0x40          go on at that offset; what is not there yet becomes zeros
//   cut:31         all from that offset on is left out
//   # comment      up to the end of the line

#include <string>
#include <string_view>

namespace velmora::testing {

// Throws std::runtime_error for what is none of these.
std::string BytesOf(std::string_view text);
// The same over bytes that are there: what is put replaces as many of them.
std::string BytesOver(std::string bytes, std::string_view text);

// Writes a file, without waiting for the disk.
void PutFile(const std::string& path, const std::string& bytes);

}  // namespace velmora::testing

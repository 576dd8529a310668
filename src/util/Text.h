// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Routines on single texts. Texts are bytes in UTF-8; positions count bytes from 1, 0 means "not found"; letter case
// is folded for ASCII letters only. None has state; only the two StrChop routines raise.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>

namespace velmora {

// --- Letters, white space, case
constexpr char LowerChar(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }
constexpr bool SameLetter(char a, char b) { return a == b || LowerChar(a) == LowerChar(b); }
std::string LowerText(std::string_view text);
// Equal but for the case of ASCII letters. Here, since most texts that are compared differ in their length.
constexpr bool SameText(std::string_view a, std::string_view b) {
  return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), SameLetter);
}
std::size_t NameHash(std::string_view name);       // the same for names that are SameText
std::string_view TrimView(std::string_view text);  // without characters up to blank (codes 0 to 32) at both ends
std::string Trim(std::string_view text);

// --- Searching; `from` and results count from 1
std::size_t Pos(std::string_view what, std::string_view text, std::size_t from = 1);
std::size_t PosNoCase(std::string_view what, std::string_view text, std::size_t from = 1);
std::size_t LastPos(std::string_view what, std::string_view text);
bool InList(std::string_view text, std::initializer_list<std::string_view> list);  // exact

// Finds the first `open` and the next `close` after it, ignoring case; `out` gets what stands between them, with
// `keep` together with both marks. False, and `out` left alone, when either is missing.
bool Between(std::string_view text, std::string_view open, std::string_view close, bool keep, std::string& out);

// --- Parts
std::string LeftPart(std::string_view text, std::int64_t n);   // n bytes from the left; n < 1: all but -n at the right
std::string RightPart(std::string_view text, std::int64_t n);  // n bytes from the right; n < 1: all but -n at the left

// Gives the part before the first `delimiter` and takes it and the delimiter out of `text`. Without a delimiter: the
// whole text, which is emptied, when `allowMissing` is set; otherwise raises "Nothing to StrChop!".
std::string StrChop(std::string_view delimiter, std::string& text, bool allowMissing = false);
// The mirror: gives the part before the last delimiter and leaves what follows it in `text`.
std::string StrChopLast(std::string_view delimiter, std::string& text, bool allowMissing = false);

// --- Changing
std::string StrReplace(std::string_view text, std::string_view from, std::string_view to);  // all, going on after each
std::string TrimChar(std::string_view text, char c);
std::string RepeatChar(char c, std::int64_t count);
std::string RemoveChar(std::string_view text, char c);

// Takes out each stretch from `open` to the next `close`, both included, together with the one character before `open`.
// An `open` without a `close` cuts the text at the end of the last stretch taken out.
void StripBetween(std::string& text, std::string_view open, std::string_view close);

// Occurrences of `c` among the first `length` bytes. With `quotes` those are left out that stand after a backslash,
// or after a backslash and one more character.
std::size_t CountChar(char c, std::string_view text, std::size_t length, bool quotes);

// Whether the byte at `index`, from 0, stands after a backslash, or after a backslash and one more character.
// Deliberate: by the second rule the quote that closes 'a\n' does not count, as that of 'a\\' does not by the first.
inline bool IsEscaped(std::string_view text, std::size_t index) {
  return (index >= 1 && text[index - 1] == '\\') || (index >= 2 && text[index - 2] == '\\');
}

// --- Characters (as against bytes); a byte that is no UTF-8 counts as one character
std::size_t CharSize(std::string_view text, std::size_t index);  // bytes of the character at `index`, from 0
std::size_t LastCharSize(std::string_view text);                 // bytes of its last character; 0 for an empty text
std::size_t CharCount(std::string_view text);
std::string CutChars(std::string_view text, std::size_t max);  // the first `max` characters

// --- Texts of strangers on their way to a terminal or a log
// On one line and without a control sequence: "\n", "\t", "\x1B" in place of control characters and of bytes that are
// no UTF-8, "\u202E" in place of characters that turn the direction of text or end its line.
std::string ShownText(std::string_view text);
std::string ShownLines(std::string_view text);  // the same, with tabs and line ends (LF, CR LF) as they are

template <class T>
T Iif(bool condition, T a, T b) {
  return condition ? a : b;
}

}  // namespace velmora

// SPDX-License-Identifier: GPL-3.0-or-later
#include "util/Text.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

#include "util/Errors.h"

namespace velmora {
namespace {

constexpr char kNothingToChop[] = "Nothing to StrChop!";

bool IsBlankOrControl(char c) { return static_cast<unsigned char>(c) <= 32; }

// The first `count` bytes or the last, `count` below 1 standing for the length less that many.
std::size_t PartSize(std::string_view text, std::int64_t count) {
  const auto size = static_cast<std::int64_t>(text.size());
  return static_cast<std::size_t>(std::clamp(count < 1 ? size + count : count, std::int64_t{0}, size));
}

// Cuts `text` at `at` (npos: not found): gives what stands before and leaves what stands `skip` bytes after it.
std::string ChopAt(std::string& text, std::size_t at, std::size_t skip, bool allowMissing) {
  if (at == std::string::npos) {
    if (!allowMissing) RaiseError(kNothingToChop);
    return std::exchange(text, {});
  }
  std::string part = text.substr(0, at);
  text.erase(0, at + skip);
  return part;
}

constexpr std::size_t kLongestSequence = 4;

bool IsContinuation(unsigned char c) { return (c & 0xC0) == 0x80; }

// The smallest and greatest second byte that a lead byte allows: no overlong forms, no surrogates, no more than
// U+10FFFF.
std::pair<unsigned char, unsigned char> SecondByteRange(unsigned char lead) {
  switch (lead) {
    case 0xE0:
      return {0xA0, 0xBF};
    case 0xED:
      return {0x80, 0x9F};
    case 0xF0:
      return {0x90, 0xBF};
    case 0xF4:
      return {0x80, 0x8F};
    default:
      return {0x80, 0xBF};
  }
}

std::size_t SequenceSize(unsigned char lead) {
  if (lead >= 0xC2 && lead <= 0xDF) return 2;
  if (lead >= 0xE0 && lead <= 0xEF) return 3;
  if (lead >= 0xF0 && lead <= 0xF4) return 4;
  return 1;
}

}  // namespace

std::string LowerText(std::string_view text) {
  std::string result(text);
  std::transform(result.begin(), result.end(), result.begin(), LowerChar);
  return result;
}

std::string_view TrimView(std::string_view text) {
  const auto first = std::find_if_not(text.begin(), text.end(), IsBlankOrControl);
  text.remove_prefix(static_cast<std::size_t>(first - text.begin()));
  const auto last = std::find_if_not(text.rbegin(), text.rend(), IsBlankOrControl);
  text.remove_suffix(static_cast<std::size_t>(last - text.rbegin()));
  return text;
}

std::string Trim(std::string_view text) { return std::string(TrimView(text)); }

std::size_t Pos(std::string_view what, std::string_view text, std::size_t from) {
  if (what.empty()) return 0;
  return text.find(what, from == 0 ? 0 : from - 1) + 1;  // npos + 1 is 0
}

// Where the letter stands that is the rarest one in texts: searches that look for it alone stop seldom.
constexpr std::size_t RarestLetter(std::string_view word) {
  constexpr std::string_view kByRarity = "qzxjkvbywgpfmucdlhrsnioate";
  std::size_t rarest = 0;
  std::size_t rank = kByRarity.size() + 1;
  for (std::size_t at = 0; at < word.size(); ++at) {
    const std::size_t found = std::min(kByRarity.find(LowerChar(word[at])), kByRarity.size());
    if (found < rank) rarest = at, rank = found;
  }
  return rarest;
}

constexpr char UpperChar(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }

std::size_t PosNoCase(std::string_view what, std::string_view text, std::size_t from) {
  const std::size_t skipped = from == 0 ? 0 : from - 1;
  if (what.empty() || skipped >= text.size()) return 0;
  const std::string_view rest = text.substr(skipped);
  const std::size_t rare = RarestLetter(what);
  std::size_t found = rest.size();
  for (const char letter : {LowerChar(what[rare]), UpperChar(what[rare])})
    for (std::size_t at = rest.find(letter, rare); at < found + rare; at = rest.find(letter, at + 1))
      if (SameText(rest.substr(at - rare, what.size()), what)) found = at - rare;
  return found == rest.size() ? 0 : skipped + found + 1;
}

std::size_t LastPos(std::string_view what, std::string_view text) { return what.empty() ? 0 : text.rfind(what) + 1; }

bool InList(std::string_view text, std::initializer_list<std::string_view> list) {
  return std::find(list.begin(), list.end(), text) != list.end();
}

bool Between(std::string_view text, std::string_view open, std::string_view close, bool keep, std::string& out) {
  const std::size_t first = PosNoCase(open, text);
  if (first == 0) return false;
  const std::size_t inner = first + open.size();
  const std::size_t last = PosNoCase(close, text, inner);
  if (last == 0) return false;
  const std::size_t begin = keep ? first : inner;
  const std::size_t end = keep ? last + close.size() : last;
  out = std::string(text.substr(begin - 1, end - begin));
  return true;
}

std::string LeftPart(std::string_view text, std::int64_t n) { return std::string(text.substr(0, PartSize(text, n))); }

std::string RightPart(std::string_view text, std::int64_t n) {
  return std::string(text.substr(text.size() - PartSize(text, n)));
}

std::string StrChop(std::string_view delimiter, std::string& text, bool allowMissing) {
  return ChopAt(text, Pos(delimiter, text) - 1, delimiter.size(), allowMissing);
}

std::string StrChopLast(std::string_view delimiter, std::string& text, bool allowMissing) {
  return ChopAt(text, LastPos(delimiter, text) - 1, delimiter.size(), allowMissing);
}

std::string StrReplace(std::string_view text, std::string_view from, std::string_view to) {
  std::string result;
  std::size_t done = 1;
  while (const std::size_t at = Pos(from, text, done)) {
    result.append(text.substr(done - 1, at - done)).append(to);
    done = at + from.size();
  }
  result.append(text.substr(done - 1));
  return result;
}

std::string TrimChar(std::string_view text, char c) {
  const std::size_t first = text.find_first_not_of(c);
  if (first == std::string_view::npos) return {};
  return std::string(text.substr(first, text.find_last_not_of(c) - first + 1));
}

std::string RepeatChar(char c, std::int64_t count) {
  return std::string(static_cast<std::size_t>(std::max<std::int64_t>(count, 0)), c);
}

std::string RemoveChar(std::string_view text, char c) {
  std::string result(text);
  std::erase(result, c);
  return result;
}

void StripBetween(std::string& text, std::string_view open, std::string_view close) {
  std::string kept;
  std::size_t from = 1;
  while (const std::size_t at = Pos(open, text, from)) {
    const std::size_t end = Pos(close, text, at + open.size());
    // Deliberate: an open mark that is never closed also takes the text between it and the stretch before.
    if (end == 0) {
      text = std::move(kept);
      return;
    }
    // Deliberate: the character before the mark goes with it; for a comment line that is the end of the line above.
    const std::string_view before = std::string_view(text).substr(from - 1, at - from);
    kept.append(before.substr(0, before.size() - LastCharSize(before)));
    from = end + close.size();
  }
  kept.append(text, from - 1);
  text = std::move(kept);
}

std::size_t CountChar(char c, std::string_view text, std::size_t length, bool quotes) {
  const std::string_view part = text.substr(0, length);
  std::size_t count = 0;
  for (std::size_t at = part.find(c); at != std::string_view::npos; at = part.find(c, at + 1))
    if (!quotes || !IsEscaped(part, at)) ++count;
  return count;
}

std::size_t CharSize(std::string_view text, std::size_t index) {
  const auto byteAt = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const std::size_t size = SequenceSize(byteAt(index));
  if (size == 1 || text.size() - index < size) return 1;
  const auto [low, high] = SecondByteRange(byteAt(index));
  if (byteAt(index + 1) < low || byteAt(index + 1) > high) return 1;
  for (std::size_t i = index + 2; i < index + size; ++i)
    if (!IsContinuation(byteAt(i))) return 1;
  return size;
}

std::size_t LastCharSize(std::string_view text) {
  for (std::size_t size = std::min(kLongestSequence, text.size()); size > 1; --size)
    if (CharSize(text, text.size() - size) == size) return size;
  return std::min<std::size_t>(1, text.size());
}

std::size_t CharCount(std::string_view text) {
  std::size_t count = 0;
  for (std::size_t index = 0; index < text.size(); index += CharSize(text, index)) ++count;
  return count;
}

namespace {

std::string Hexadecimal(std::string_view mark, unsigned code, int digits) {
  static constexpr char kDigits[] = "0123456789ABCDEF";
  std::string text(mark);
  for (int shift = 4 * (digits - 1); shift >= 0; shift -= 4) text += kDigits[code >> shift & 15];
  return text;
}

// The code of a character of three bytes.
unsigned WideCode(std::string_view character) {
  const auto bits = [&](std::size_t i, unsigned mask) { return static_cast<unsigned char>(character[i]) & mask; };
  return bits(0, 15) << 12 | bits(1, 63) << 6 | bits(2, 63);
}

bool TurnsText(unsigned code) {
  return code == 0x200E || code == 0x200F || (code >= 0x2028 && code <= 0x202E) || (code >= 0x2066 && code <= 0x2069);
}

// One character as it can be shown.
std::string ShownCharacter(std::string_view character) {
  const auto first = static_cast<unsigned char>(character[0]);
  constexpr std::pair<char, const char*> kNamed[] = {{'\n', "\\n"}, {'\r', "\\r"}, {'\t', "\\t"}};
  for (const auto& [c, name] : kNamed)
    if (character[0] == c) return name;
  if (character.size() == 1) {
    const bool plain = first >= ' ' && first < 0x7F;
    return plain ? std::string(character) : Hexadecimal("\\x", first, 2);
  }
  if (first == 0xC2 && static_cast<unsigned char>(character[1]) < 0xA0)  // a control character of eight bits
    return Hexadecimal("\\x", static_cast<unsigned char>(character[1]), 2);
  if (character.size() == 3 && TurnsText(WideCode(character))) return Hexadecimal("\\u", WideCode(character), 4);
  return std::string(character);
}

// `keeps` tells how many bytes at a place are to stay as they are.
template <class Keeps>
std::string Shown(std::string_view text, Keeps keeps) {
  if (std::ranges::all_of(text, [](char c) { return c >= ' ' && c < 0x7F; })) return std::string(text);
  std::string shown;
  for (std::size_t i = 0; i < text.size();) {
    const std::size_t kept = keeps(text.substr(i));
    const std::string_view next = text.substr(i, kept > 0 ? kept : CharSize(text, i));
    shown += kept > 0 ? std::string(next) : ShownCharacter(next);
    i += next.size();
  }
  return shown;
}

}  // namespace

std::string ShownText(std::string_view text) {
  return Shown(text, [](std::string_view) { return std::size_t{0}; });
}

std::string ShownLines(std::string_view text) {
  return Shown(text, [](std::string_view rest) -> std::size_t {
    if (rest.starts_with("\r\n")) return 2;
    return rest.front() == '\n' || rest.front() == '\t' ? 1 : 0;
  });
}

std::string CutChars(std::string_view text, std::size_t max) {
  std::size_t index = 0;
  for (std::size_t count = 0; count < max && index < text.size(); ++count) index += CharSize(text, index);
  return std::string(text.substr(0, index));
}

std::size_t NameHash(std::string_view name) {
  std::uint64_t hash = 14695981039346656037u;
  for (char c : name) hash = (hash ^ static_cast<unsigned char>(LowerChar(c))) * 1099511628211u;
  return static_cast<std::size_t>(hash ^ (hash >> 29));
}

}  // namespace velmora

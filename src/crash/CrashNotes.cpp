// SPDX-License-Identifier: GPL-3.0-or-later
#include "crash/CrashNotes.h"

#include <algorithm>
#include <array>
#include <atomic>

#include "util/Text.h"

namespace velmora {

namespace {

struct TNote {
  std::array<char, kCrashNoteLength> text;
  std::atomic<std::size_t> length;
};

// Not on the heap, which may be what the crash has spoiled.
std::array<TNote, kCrashNotes> notes;
std::atomic<std::size_t> written = 0;

constexpr std::size_t kLongestNumber = 5;  // digits: numbers of errors, of lines

bool IsDigit(char c) { return c >= '0' && c <= '9'; }
bool IsWord(char c) {
  return (LowerChar(c) >= 'a' && LowerChar(c) <= 'z') || IsDigit(c) || (static_cast<unsigned char>(c) & 0x80) != 0;
}

// Not the apostrophe of "can't" and "the target's".
bool OpensValue(std::string_view line, std::size_t at) {
  if (line[at] != '\'') return line[at] == '"';
  const bool ending = at + 1 < line.size() && (line[at + 1] == 't' || line[at + 1] == 's') &&
                      (at + 2 == line.size() || !IsWord(line[at + 2]));
  return !(ending && at > 1 && IsWord(line[at - 1]) && IsWord(line[at - 2]));
}

// The end of a number that may be a value; `at` where there is none.
std::size_t AfterValue(std::string_view line, std::size_t at) {
  if (at > 0 && IsWord(line[at - 1])) return at;
  std::size_t end = at;
  while (end < line.size() && IsDigit(line[end])) ++end;
  if (end == at + 1 && line[at] == '0' && end < line.size() && LowerChar(line[end]) == 'x')
    return std::min(line.find_first_of(" ,;)", end), line.size());
  return end - at > kLongestNumber ? end : at;
}

}  // namespace

std::string WithoutValues(std::string_view line) {
  std::string kept;
  for (std::size_t at = 0; at < line.size(); ++at) {
    if (OpensValue(line, at)) return kept + line[at] + "...";
    const std::size_t end = AfterValue(line, at);
    kept += end > at ? std::string("...") : std::string(1, line[at]);
    if (end > at) at = end - 1;
  }
  return kept;
}

void NoteForCrash(std::string_view line) {
  TNote& note = notes[written.fetch_add(1) % kCrashNotes];
  const std::string shown = ShownText(WithoutValues(line));
  const std::size_t length = std::min(shown.size(), kCrashNoteLength);
  note.length = 0;
  std::copy_n(shown.begin(), length, note.text.begin());
  note.length = length;
}

void EachCrashNote(void (*take)(void* context, std::string_view line), void* context) {
  const std::size_t end = written;
  for (std::size_t i = end > kCrashNotes ? end - kCrashNotes : 0; i < end; ++i) {
    const TNote& note = notes[i % kCrashNotes];
    take(context, {note.text.data(), std::min<std::size_t>(note.length, kCrashNoteLength)});
  }
}

}  // namespace velmora

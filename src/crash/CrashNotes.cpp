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

bool IsLetter(char c) { return (LowerChar(c) >= 'a' && LowerChar(c) <= 'z') || (static_cast<unsigned char>(c) & 0x80); }

// Not the apostrophe of "can't".
bool OpensValue(std::string_view line, std::size_t at) {
  if (line[at] == '"') return true;
  if (line[at] != '\'') return false;
  return at == 0 || at + 1 == line.size() || !IsLetter(line[at - 1]) || !IsLetter(line[at + 1]);
}

}  // namespace

std::string WithoutQuotedValues(std::string_view line) {
  std::size_t open = 0;
  while (open < line.size() && !OpensValue(line, open)) ++open;
  if (open >= line.size()) return std::string(line);
  const std::size_t close = line.find_last_of("'\"");  // of either kind, as values may hold both
  const std::string_view rest = close == open ? std::string_view() : line.substr(close);
  return std::string(line.substr(0, open + 1)) + "..." + std::string(rest);
}

void NoteForCrash(std::string_view line) {
  TNote& note = notes[written.fetch_add(1) % kCrashNotes];
  const std::string shown = ShownText(WithoutQuotedValues(line));
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

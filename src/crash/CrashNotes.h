// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What a crash report tells of the time before the crash: the last lines of the program's log, without data.

#include <cstddef>
#include <string>
#include <string_view>

namespace velmora {

inline constexpr std::size_t kCrashNotes = 40;        // lines that are remembered
inline constexpr std::size_t kCrashNoteLength = 200;  // bytes of each

// Remembers a line in place of the oldest one, as WithoutValues makes it. Any thread may call it.
void NoteForCrash(std::string_view line);

// The line as reports hold it. What stands in quotes is a value as likely as a name, and may hold quotes itself: the
// line ends with the first quote. `Duplicate entry '...` Long numbers and numbers in hexadecimal may be values, too.
std::string WithoutValues(std::string_view line);

// For the reporter: the notes, oldest first, one by one to `take`. Safe in a signal handler, where a line that is being
// written at that moment may be torn.
void EachCrashNote(void (*take)(void* context, std::string_view line), void* context);

}  // namespace velmora

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What the engines of text files share: a file as lines, and values as texts.

#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "util/Dates.h"
#include "util/Lists.h"

namespace velmora {

// The lines of a text file in UTF-8, whatever ends them (CR LF, LF or CR). A line that is no UTF-8 is read as
// Windows-1252, of which every byte is a character. The file stands in memory once, and 16 bytes more for each line;
// lines of Windows-1252 once more. Reading it raises ECancelled in work that was left (util/Aside.h).
class TTextLines {
 public:
  explicit TTextLines(const std::string& path);  // raises "Cannot read %s: %s"
  TTextLines(const TTextLines&) = delete;
  TTextLines& operator=(const TTextLines&) = delete;

  std::size_t Count() const { return lines_.size(); }
  std::string_view Line(std::size_t index) const;  // from 0; valid as long as this object. Raises EListError
  void DropEmptyEnd();                             // empty lines at the end

 private:
  std::string text_;
  std::deque<std::string> decoded_;  // lines that were no UTF-8
  std::vector<std::string_view> lines_;
};

// --- Values. The one form of dates is yyyy-mm-dd, of times hh:mm or hh:mm:ss, of both together these two with one
// blank between them. Numbers have an optional sign and a decimal point. Blanks around a value make it a text.
std::optional<TDateTime> TextToDate(std::string_view text);
std::optional<TDateTime> TextToTime(std::string_view text);
std::optional<TDateTime> TextToDateTime(std::string_view text);    // a date, a time, or both
std::optional<std::int32_t> TextToInteger(std::string_view text);  // also "$" and hexadecimal digits

void CutToFileNames(TStringList& paths);  // each line to what follows its last path delimiter

}  // namespace velmora

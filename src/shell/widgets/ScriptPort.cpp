// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/widgets/ScriptPort.h"

#include <algorithm>
#include <utility>

namespace velmora {

namespace {

constexpr char kLineEnd[] = "\r\n";
constexpr std::size_t kLineEndLength = 2;
constexpr int kLinesAbove = 3;  // of a line that is scrolled to, so that it does not stand at the very edge

std::string WithLineEnds(const TStringList& lines) {
  std::string text;
  for (const std::string& line : lines) text.append(line).append(kLineEnd);
  return text;
}

}  // namespace

void TScriptPort::AddLine(const std::string& text) {
  pending_ += text.empty() ? std::string(kLineEnd) : WithLineEnds(LinesOf(text));
}

void TScriptPort::Flush() const {
  if (pending_.empty()) return;
  const bool open = edit_.lines() > 0 && !edit_.LineBytes(edit_.lines() - 1).empty();  // the last line has no end
  if (open) pending_.insert(0, kLineEnd);
  edit_.AppendBytes(std::exchange(pending_, {}));
}

void TScriptPort::Clear() {
  pending_.clear();
  edit_.SetBytes({});
}

std::string TScriptPort::LastLine() const {
  Flush();
  int last = edit_.lines() - 1;
  if (last > 0 && edit_.LineBytes(last).empty()) --last;  // what stands after the last line end is no line
  return last < 0 ? std::string() : edit_.LineBytes(last);
}

TStringList TScriptPort::Lines() const {
  Flush();
  return LinesOf(edit_.Bytes());
}

std::string TScriptPort::Text() const { return WithLineEnds(Lines()); }

void TScriptPort::SetText(const std::string& text) {
  pending_.clear();
  edit_.SetBytes(WithLineEnds(LinesOf(text)));
}

// By line and place in it, since the editor may hold line ends of another length than those of Text().
void TScriptPort::SetCaret(std::size_t position) {
  const TStringList lines = Lines();
  std::size_t line = 0;
  while (line < lines.size() && position >= lines[line].size() + kLineEndLength)
    position -= lines[line++].size() + kLineEndLength;
  edit_.SetCaret(static_cast<int>(line), static_cast<int>(position));
}

std::size_t TScriptPort::CaretLine() const {
  int line = 0;
  int index = 0;
  edit_.getCursorPosition(&line, &index);
  return static_cast<std::size_t>(line);
}

void TScriptPort::ScrollToLine(std::size_t line) {
  edit_.ensureLineVisible(static_cast<int>(line));
  edit_.setFirstVisibleLine(std::max(0, static_cast<int>(line) - kLinesAbove));
}

}  // namespace velmora

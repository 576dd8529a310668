// SPDX-License-Identifier: GPL-3.0-or-later
#include "sync/ScriptEditor.h"

#include <algorithm>
#include <utility>

namespace velmora {

namespace {

constexpr char kLineEnd[] = "\r\n";
constexpr std::size_t kLineEndLength = 2;

}  // namespace

void TLineEditor::Clear() {
  lines_.clear();
  caret_ = 0;
}

void TLineEditor::AddLine(const std::string& text) {
  if (text.empty()) {
    lines_.emplace_back();
    return;
  }
  for (std::string& line : LinesOf(text)) lines_.push_back(std::move(line));
}

std::string TLineEditor::LastLine() const { return lines_.empty() ? std::string() : lines_.back(); }

std::string TLineEditor::Text() const {
  std::string text;
  for (const std::string& line : lines_) text.append(line).append(kLineEnd);
  return text;
}

void TLineEditor::SetText(const std::string& text) {
  lines_ = LinesOf(text);
  caret_ = 0;
}

std::size_t TLineEditor::CaretLine() const {
  std::size_t end = 0;
  for (std::size_t line = 0; line < lines_.size(); ++line) {
    end += lines_[line].size() + kLineEndLength;
    if (caret_ < end) return line;
  }
  return lines_.empty() ? 0 : lines_.size() - 1;
}

void TLineEditor::MarkLine(std::size_t line) {
  if (std::find(marks_.begin(), marks_.end(), line) == marks_.end()) marks_.push_back(line);
}

}  // namespace velmora

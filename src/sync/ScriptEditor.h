// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The port to the editor that holds the script, and the editor that is used where there is no window.

#include <cstddef>
#include <string>
#include <vector>

#include "util/Lists.h"

namespace velmora {

// A list of lines. Lines count from 0; positions are bytes of Text(), from 0.
class TScriptEditor {
 public:
  virtual ~TScriptEditor() = default;

  virtual void Clear() = 0;
  // Adds one line; a text of several lines becomes as many, whatever ends them. The empty text is an empty line.
  virtual void AddLine(const std::string& text) = 0;
  virtual std::string LastLine() const = 0;  // empty when there is no line
  virtual TStringList Lines() const = 0;
  virtual std::string Text() const = 0;  // every line with CR LF at its end
  virtual void SetText(const std::string& text) = 0;

  virtual void SetCaret(std::size_t position) = 0;  // without a selection; after the text means at its end
  virtual std::size_t CaretLine() const = 0;
  virtual void ScrollToLine(std::size_t line) = 0;
  virtual void MarkLine(std::size_t line) = 0;
  virtual void ClearMarks() = 0;
  virtual void Show() = 0;  // brings the editor's page to the front
};

class TLineEditor final : public TScriptEditor {
 public:
  void Clear() override;
  void AddLine(const std::string& text) override;
  std::string LastLine() const override;
  TStringList Lines() const override { return lines_; }
  std::string Text() const override;
  void SetText(const std::string& text) override;

  void SetCaret(std::size_t position) override { caret_ = position; }
  std::size_t CaretLine() const override;
  void ScrollToLine(std::size_t /*line*/) override {}
  void MarkLine(std::size_t line) override;
  void ClearMarks() override { marks_.clear(); }
  void Show() override { ++shown_; }

  std::size_t caret() const { return caret_; }
  const std::vector<std::size_t>& marks() const { return marks_; }
  int shown() const { return shown_; }  // how often Show was called

 private:
  TStringList lines_;
  std::size_t caret_ = 0;
  std::vector<std::size_t> marks_;
  int shown_ = 0;
};

}  // namespace velmora

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>

#include "shell/widgets/SqlEdit.h"
#include "sync/ScriptEditor.h"

namespace velmora {

// A window's SQL editor as the port that generator and runner write to.
class TScriptPort final : public TScriptEditor {
 public:
  // `show` brings the editor's page to the front.
  TScriptPort(TSqlEdit& edit, std::function<void()> show) : edit_(edit), show_(std::move(show)) {}

  // Lines that were added come to the editor at the latest with this: each change of its text costs the editor about a
  // millisecond. Every other operation sees to it by itself.
  void Flush() const;

  void Clear() override;
  void AddLine(const std::string& text) override;
  std::string LastLine() const override;
  TStringList Lines() const override;
  std::string Text() const override;
  void SetText(const std::string& text) override;

  void SetCaret(std::size_t position) override;
  std::size_t CaretLine() const override;
  void ScrollToLine(std::size_t line) override;
  void MarkLine(std::size_t line) override {
    Flush();
    edit_.MarkLine(static_cast<int>(line));
  }
  void ClearMarks() override { edit_.ClearMarks(); }
  void Show() override {
    Flush();
    show_();
  }

 private:
  TSqlEdit& edit_;
  std::function<void()> show_;
  mutable std::string pending_;  // added, and not yet in the editor
};

}  // namespace velmora

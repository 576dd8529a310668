// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// A host that writes down what it was asked and gives the answers that a test has laid out.

#include <optional>
#include <string>

#include "core/Host.h"
#include "util/Lists.h"

namespace velmora::testing {

class TRecordingHost : public THost {
 public:
  TStringList calls;  // as in "ConfirmYes: Sure?"
  bool ok_answer = false;
  bool yes_answer = false;
  std::optional<std::string> chosen;  // the file or folder that the user picks; without it the dialog is cancelled

  void ProcessMessages() override { ++pumped; }
  bool ConfirmOk(const std::string& message) override { return Note("ConfirmOk: " + message), ok_answer; }
  bool ConfirmYes(const std::string& message) override { return Note("ConfirmYes: " + message), yes_answer; }
  bool OpenFile(const std::string& filter, std::string& path) override { return Choose("OpenFile: " + filter, path); }
  bool SaveFile(const std::string& filter, std::string& path) override { return Choose("SaveFile: " + filter, path); }
  bool BrowseFolder(const std::string& title, std::string& folder) override {
    return Choose("BrowseFolder: " + title + " from " + folder, folder);
  }
  void ShellOpen(const std::string& target, const std::string& parameters, const std::string& folder,
                 bool wait) override {
    Note("ShellOpen: " + target + (parameters.empty() ? "" : " with " + parameters) +
         (folder.empty() ? "" : " in " + folder) + (wait ? ", waiting" : ""));
  }

  int pumped = 0;

 private:
  void Note(std::string call) { calls.push_back(std::move(call)); }
  bool Choose(std::string call, std::string& path) {
    Note(std::move(call));
    if (chosen) path = *chosen;
    return chosen.has_value();
  }
};

}  // namespace velmora::testing

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Ports that write down what they are told, and a clock that stands.

#include <cstdint>
#include <string>

#include "sync/ActionTree.h"
#include "sync/MessageLog.h"
#include "sync/Progress.h"
#include "util/Clock.h"
#include "util/Lists.h"

namespace velmora::testing {

class TFixedClock : public TClock {
 public:
  explicit TFixedClock(TDateTime now) : now_(now) {}
  TDateTime Now() const override { return now_; }

 private:
  TDateTime now_;
};

// As in "ShowTwoBars: Analyzing structure..., 7".
class TRecordingProgress : public TProgress {
 public:
  TStringList calls;

  void ShowSimple(const std::string& title) override { calls.push_back("ShowSimple: " + title); }
  void ShowOneBar(const std::string& title, std::int64_t max) override { Note("ShowOneBar", title, max); }
  void ShowTwoBars(const std::string& title, std::int64_t max) override { Note("ShowTwoBars", title, max); }
  void SetTitle(const std::string& title) override { calls.push_back("SetTitle: " + title); }
  void StartDetail(const std::string& text, std::int64_t max) override { Note("StartDetail", text, max); }
  void StepDetail() override { calls.push_back("StepDetail"); }
  void StepTotal() override { calls.push_back("StepTotal"); }
  void SetDetailMax(std::int64_t max) override { calls.push_back("SetDetailMax: " + std::to_string(max)); }
  void SetDetailPosition(std::int64_t position) override {
    calls.push_back("SetDetailPosition: " + std::to_string(position));
  }
  void SetDetailText(const std::string& text) override { calls.push_back("SetDetailText: " + text); }
  void Finish() override { calls.push_back("Finish"); }

 private:
  void Note(const std::string& call, const std::string& text, std::int64_t max) {
    calls.push_back(call + ": " + text + ", " + std::to_string(max));
  }
};

class TRecordingLog : public TMessageLog {
 public:
  TStringList lines;  // of LogLine
  TStringList shown;  // by the last SetLines

  void LogLine(const std::string& text) override { lines.push_back(text); }
  void SetLines(const TStringList& list) override { shown = list; }
};

// As in "+t", "+t/New column a", "-t", "begin", "end", "cleared".
class TRecordingTreeView : public TTreeView {
 public:
  TStringList calls;

  void BeginUpdate() override { calls.push_back("begin"); }
  void EndUpdate() override { calls.push_back("end"); }
  void NodeAdded(const TActionNode& node) override { calls.push_back("+" + Path(node)); }
  void NodeRemoved(const TActionNode& node) override { calls.push_back("-" + Path(node)); }
  void Cleared() override { calls.push_back("cleared"); }

 private:
  static std::string Path(const TActionNode& node) {
    return node.parent == nullptr ? node.text : node.parent->text + "/" + node.text;
  }
};

}  // namespace velmora::testing

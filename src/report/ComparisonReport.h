// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What a comparison found, gathered for pages that people without SQL read and for programs that comment on changes.

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "app/AlignedTexts.h"
#include "app/Application.h"
#include "app/Difference.h"
#include "mysqlclient/OfflineConnection.h"
#include "report/RunPart.h"
#include "util/Clock.h"
#include "util/Lists.h"

namespace velmora {

// What a difference costs or risks most.
enum class EReportRule { DataLoss, Rebuild, Difference };
std::string_view RuleId(EReportRule rule);  // "data-loss", "rebuild", "difference"

struct TReportLine {
  TDifference difference;
  EReportRule rule = EReportRule::Difference;
  bool scripted = true;  // false where the user has taken it out
};

// A table, or a view, trigger, routine or event, that differs.
struct TReportPart {
  std::string title;               // "orders", "view totals"
  std::vector<TReportLine> lines;  // one at least
  std::string reference;           // creation texts; empty for a side without it
  std::string target;
  TAlignedRows rows;    // of these texts
  TScriptPlace stands;  // its text in a reference that is a file, or a folder of files; line 0 where it is in none
  TScriptPlace place;   // the same, but of what is in none the file's first line; line 0 where there is no file

  std::string Place() const;  // "tables/orders.sql: line 3"; empty where it stands in no file
};

struct TReport {
  std::string reference;  // as messages name them
  std::string target;
  std::string dialect;  // "Dialect: exact (automatic: ...)"
  std::string made;     // "Velmora 2.0, 2026-11-22 23:15"
  bool identical = false;
  std::string verdict;  // "14 differences in 3 tables and 2 other objects, 1 of them unsafe"
  std::vector<TReportPart> parts;
  TStringList failures{};  // what makes the command fail that was asked for it: "rebuild: ..."
  TStringList findings;    // what could not be compared, is left alone, or was left out, a sentence each
  std::string script;      // for all differences; empty where there is none
  TStringList log;
  std::optional<TReportRun> run{};  // of the script, where it was to be run
};

// Of the last comparison, which ended well; `script` is that of all its actions. Reads texts of what differs. Raises
// where the dialect tells no differences.
TReport CollectReport(TApplication& app, const std::string& script, const TClock& clock);

char SignOf(EDifferenceState state);  // "+", "~", "-"

}  // namespace velmora

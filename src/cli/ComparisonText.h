// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What a comparison found, for people.

#include <iosfwd>

#include "app/Application.h"
#include "cli/Colours.h"
#include "cli/Console.h"

namespace velmora {

inline constexpr char kIdentical[] = "Databases are identical. Nothing to synchronize.";

// The actions by table, and their number. With `failed` what was found before the failure, without a result.
void PrintComparison(const TApplication& app, bool failed, std::ostream& out, const TColours& colours = {});

// "VERIFIED: 0 differences left", or "NOT VERIFIED: 2 differences left".
std::string TellLeft(const std::string& verified, const std::string& not_verified, const TFindings& findings, int left);

// What the user should hear of a comparison that ended well and gave `compared`.
void TellRemarks(const TApplication& app, TDBConn* compared, TConsole& console);

// A script that is about to run on `target`.
struct TScriptPlan {
  std::string script;
  std::string target;      // its name for messages
  std::size_t statements;  // of the script
  TStringList unsafe;      // what may lose data, a line each
  bool compared;           // the script is that of a comparison

  std::string Summary() const;  // "3 statements on database shop of server db, with 1 unsafe change"
};

// What a user should have seen before the answer: differences, statements, what is unsafe.
void ShowPlan(const TApplication& app, const TScriptPlan& plan, std::ostream& out, const TColours& colours = {});

// Whether the script may run: nothing in it is unsafe, or `allowed` says so. Otherwise that is listed.
bool UnsafeAllowed(const TScriptPlan& plan, bool allowed, TConsole& console);

}  // namespace velmora

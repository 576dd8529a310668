// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// A structure as it stands in a store, as plain values to show. Looking never fetches and moves no cursor.

#include <optional>
#include <string>
#include <vector>

#include "core/DBConn.h"
#include "core/Meta.h"

namespace velmora {

// A text that the engine renders, or the message with which it refused.
struct TRenderedText {
  std::optional<std::string> text;
  std::string error;
};

struct TColumnView {
  TColumnRow row;
  TRenderedText rendered;
};

struct TKeyView {
  TKeyRow row;
  TStringList columns;
  TStringList orders;
  TRenderedText rendered;
};

struct TConstraintView {
  TConstraintRow row;
  TStringList local;
  TStringList foreign;
  TRenderedText rendered;
};

struct TTableView {
  std::string name;
  std::string type;
  std::vector<TColumnView> columns;
  std::vector<TKeyView> keys;
  std::vector<TConstraintView> constraints;
  std::optional<std::string> error;  // why the table could not be fetched; it has no rows then
};

// The rows of one table as they stand, each rendered in detail by the engine itself.
TTableView ViewTable(TDBConn& conn, const TTableRow& table);
std::vector<TTableView> ViewTables(TDBConn& conn);  // all tables of the store

// Fetches one table and gives its rows as they are when that fetch ends; on a failure the view holds the message.
TTableView FetchAndView(TDBConn& conn, const std::string& table);

}  // namespace velmora

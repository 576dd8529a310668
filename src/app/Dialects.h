// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The dialects: one row each, and the only place where one is told from another.

#include <memory>
#include <optional>
#include <span>
#include <string>

namespace velmora {

class TDialect;
struct TDialectParts;

// How databases are compared and scripts are written.
enum class EDialect {
  Automatic,  // one of the others, whichever fits the target; see AutomaticDialect.h
  Standard,   // as the statements that the program has always written
  Exact       // creation texts without loss, for the servers of today
};

struct TDialectRow {
  EDialect id;
  const char* word;     // on the command line
  const char* stored;   // in task files; null for the one that files say nothing of
  const char* caption;  // of its item in the window
  const char* command;  // the item's name, and what it tells
  const char* hint;
  std::unique_ptr<TDialect> (*make)(const TDialectParts& parts);  // null for Automatic

  std::optional<std::string> Stored() const { return stored == nullptr ? std::nullopt : std::optional(stored); }
};

std::span<const TDialectRow> Dialects();
const TDialectRow& DialectRow(EDialect id);
inline constexpr EDialect kDefaultDialect = EDialect::Automatic;

// The dialect that a task file names. Raises "OpenTask: Unhandled dialect " and the word for any other.
const TDialectRow& StoredDialect(const std::optional<std::string>& word);

// For an option, as in "osc", that only the exact dialect gives a meaning to, and that is given to another.
[[noreturn]] void RaiseExactAlone(const std::string& option);

}  // namespace velmora

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What is looked for in a structure: one row of data each. A rule says nothing of what it does not know for certain.

#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "lint/Finding.h"
#include "lint/LintSchema.h"

namespace velmora {

class TTableLook;

struct TLintRule {
  std::string_view id;  // "no-primary-key"
  ESeverity severity;   // where nobody asks for another one
  std::string_view help;
  void (*look)(TTableLook& at);  // called for each table
  bool of_rows = false;          // what it finds comes of rows, and not of the structure alone
};
std::span<const TLintRule> LintRules();
const TLintRule* FindLintRule(std::string_view id);  // null for none; case ignored

inline constexpr int kFullCounter = 80;  // percent

struct TLintWishes {
  std::map<std::string, ESeverity, std::less<>> severities{};  // by id, of the rules that are not to be as they are
  int counter_percent = kFullCounter;  // from which a counter is told of; it is an error when it is nearly full
};
// Takes "ID=SEVERITY". Raises for an unknown rule and for an unknown severity, with those that there are.
void TakeRuleWish(const std::string& text, TLintWishes& wishes);

// A table under the look of a rule, and where the rule puts what it finds.
class TTableLook {
 public:
  TTableLook(const TTableText& of, const TLintSchema& among, const TLintWishes& asked, std::vector<TFinding>& found)
      : table(of), schema(among), wishes(asked), found_(found) {}

  void Begin(const TLintRule& rule);
  // Of the table itself.
  void Add(std::string text, std::string advice);
  void Add(const TElement& element, std::string text, std::string advice);
  // Of another severity than the rule's, where nobody has asked for one.
  void Add(ESeverity severity, const TElement& element, std::string text, std::string advice);

  const TTableText& table;
  const TLintSchema& schema;
  const TLintWishes& wishes;

 private:
  std::vector<TFinding>& found_;
  const TLintRule* rule_ = nullptr;
  bool asked_ = false;  // for its severity
  ESeverity severity_ = ESeverity::Off;
};

// What the rules find in a table, in their order.
void LookAtTable(const TTableText& table, const TLintSchema& schema, const TLintWishes& wishes,
                 std::vector<TFinding>& found);

}  // namespace velmora

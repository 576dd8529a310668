// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What a task asks for its reference that is not MySQL, while the user changes it: rules of the mapping, and what is
// accepted without a form in MySQL. Beside it what the last comparison made of the source, if there was one.

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "app/Dialect.h"
#include "foreign/ForeignWishes.h"
#include "util/Lists.h"

namespace velmora {

enum class EMappingShown { All, Warnings, Refused, ByRules };

// Something that has no form in MySQL. Elements of one name are accepted together.
struct TDraftElement {
  std::string name;  // "TABLE.ELEMENT"
  std::string kind;  // empty for what the last comparison did not come upon
  std::string reason;
  bool accepted = false;
};

class TMappingDraft {
 public:
  TMappingDraft(TForeignWishes wishes, const TFindings& found);
  TMappingDraft(const TMappingDraft&) = delete;
  TMappingDraft& operator=(const TMappingDraft&) = delete;

  const TForeignWishes& Wishes() const { return wishes_; }  // as they stand
  bool Compared() const { return !columns_.empty(); }

  // --- The columns of the last comparison, and what was told of tables
  const std::vector<TMadeColumn>& Columns() const { return columns_; }
  // Places of those in which every word of `filter` stands; letter case does not count.
  std::vector<std::size_t> Shown(EMappingShown shown, const std::string& filter) const;
  // By the rules as they stand; empty where only a comparison can tell.
  std::string TypeOf(const TMadeColumn& column) const;
  std::string TextOf(const TMadeColumn& column) const;  // what the user should know, with the rule that decides
  // The rule for this column alone; nothing where it has none.
  std::optional<std::size_t> OwnRule(const TMadeColumn& column) const;
  // A column of a table, by the target's name; null for none.
  const TMadeColumn* Find(const std::string& table, const std::string& column) const;

  // --- Rules
  const std::vector<TMapRule>& Rules() const { return wishes_.rules; }
  std::string UseOf(std::size_t place) const;  // "3 columns", "no column"; empty before a comparison
  // Takes the place of that rule, or is a further one. Raises as ReadMapRule does, and for what has a rule already.
  void PutRule(const TMapRule& rule, std::optional<std::size_t> place = std::nullopt);
  void RemoveRule(std::size_t place);

  // --- What has no form in MySQL, and what else is accepted
  const std::vector<TDraftElement>& Elements() const { return elements_; }
  void Accept(std::size_t place, bool accepted);

 private:
  const TMapRule* RuleOf(const TMadeColumn& column) const;  // of `columns_`; null for none
  void FindRules();

  TForeignWishes wishes_;
  std::vector<TMadeColumn> columns_;
  std::vector<const TMapRule*> deciding_;  // for each of them
  std::vector<TDraftElement> elements_;
};

}  // namespace velmora

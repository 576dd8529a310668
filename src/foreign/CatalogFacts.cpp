// SPDX-License-Identifier: GPL-3.0-or-later
#include "foreign/CatalogFacts.h"

#include <algorithm>
#include <memory>

#include "foreign/Sequences.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kNoTable[] = "There is no table %s";
constexpr char kLeftOut[] = "%s is left out: %s";

struct TRuleWord {
  std::string_view word;
  EReferenceRule rule;
};

constexpr TRuleWord kRules[] = {
    {"cascade", EReferenceRule::Cascade},
    {"set null", EReferenceRule::SetNull},
    {"set default", EReferenceRule::SetDefault},
};

// Comments count where the source has some: those of a target are no reason to differ from a source without any.
void KnowComments(TKnownFacts known, TForeignTable& table) {
  if (table.comment.empty()) known.Remove(EFact::TableComment);
  const auto commented = [](const TForeignColumn& column) { return !column.comment.empty(); };
  if (std::ranges::none_of(table.columns, commented)) known.Remove(EFact::ColumnComments);
  table.known = known;
}

}  // namespace

std::optional<int> TCatalogRow::Int(std::string_view field) const {
  return Has(field) ? std::optional(static_cast<int>(Number(field))) : std::nullopt;
}

EReferenceRule ReferenceRuleOf(std::string_view word) {
  const std::string plain = StrReplace(word, "_", " ");
  for (const TRuleWord& row : kRules)
    if (SameText(row.word, plain)) return row.rule;
  return EReferenceRule::NoAction;
}

TKnownFacts TCatalogFacts::Known() const {
  return {EFact::Nullability, EFact::Defaults,       EFact::Counting,    EFact::PrimaryKey,
          EFact::OtherKeys,   EFact::References,     EFact::Rules,       EFact::Checks,
          EFact::Order,       EFact::ColumnComments, EFact::TableComment};
}

TStringList TCatalogFacts::Tables() {
  tables_.clear();
  places_.clear();
  last_ = {};
  ReadCatalog();
  TStringList names;
  for (TForeignTable& table : tables_) {
    names.push_back(table.name);
    KnowComments(table.known.value_or(Known()), table);
  }
  return names;
}

TForeignTable TCatalogFacts::Table(const std::string& name) {
  if (tables_.empty()) Tables();
  const TForeignTable* table = Find(name);
  if (table == nullptr) RaiseError(Format(kNoTable, name));
  return *table;
}

bool TCatalogFacts::Reachable() {
  try {
    conn_.OpenQuery(probe_)->Close();
    return true;
  } catch (const EAbort&) {
    throw;
  } catch (const EVelmora&) {
    return false;
  }
}

void TCatalogFacts::ForEach(const std::string& sql, const std::function<void(const TCatalogRow& row)>& take) {
  const std::unique_ptr<TDataset> rows = conn_.OpenQuery(sql);
  for (; !rows->Eof(); rows->Next()) take(TCatalogRow(*rows));
  rows->Close();
}

void TCatalogFacts::AddTable(TForeignTable table) {
  places_.emplace(table.name, tables_.size());
  tables_.push_back(std::move(table));
}

TForeignTable* TCatalogFacts::Find(const std::string& table) {
  const auto found = places_.find(table);
  return found == places_.end() ? nullptr : &tables_[found->second];
}

TForeignColumn* TCatalogFacts::FindColumn(TForeignTable& table, std::string_view column) {
  const auto found = std::ranges::find(table.columns, column, &TForeignColumn::name);
  return found == table.columns.end() ? nullptr : &*found;
}

void TCatalogFacts::ForEachTable(const std::function<void(TForeignTable& table)>& change) {
  for (TForeignTable& table : tables_) change(table);
}

void TCatalogFacts::LeaveOutDisabled(const std::string& name, TForeignTable& table) {
  std::string warning = Format(kLeftOut, name, kDisabled);
  if (table.warnings.empty() || table.warnings.back() != warning) table.warnings.push_back(std::move(warning));
}

void TCatalogFacts::TakeCounting(std::string_view body, TForeignTable& table) {
  for (TForeignColumn& column : table.columns)
    if (const ECounting counting = CountingBy(body, column.name);
        counting != ECounting::None && column.counting != ECounting::Counts)
      column.counting = counting;
}

bool TCatalogFacts::SameAsBefore(const TForeignTable& table, const std::string& id) {
  const std::pair<std::string, std::string> now(table.name, id);
  return std::exchange(last_, now) == now;
}

TForeignKey& TCatalogFacts::KeyOf(TForeignTable& table, const std::string& id, const TForeignKey& otherwise) {
  if (!SameAsBefore(table, id) || table.keys.empty()) table.keys.push_back(otherwise);
  return table.keys.back();
}

TForeignReference& TCatalogFacts::ReferenceOf(TForeignTable& table, const std::string& id,
                                              const TForeignReference& otherwise) {
  if (!SameAsBefore(table, id) || table.references.empty()) table.references.push_back(otherwise);
  return table.references.back();
}

}  // namespace velmora

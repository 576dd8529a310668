// SPDX-License-Identifier: GPL-3.0-or-later
#include "foreign/ForeignTexts.h"

#include <algorithm>
#include <array>
#include <utility>

#include "core/CreationTexts.h"
#include "foreign/CatalogFacts.h"
#include "foreign/CreationText.h"
#include "foreign/FactReaders.h"
#include "util/Counted.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kNoReader[] = "The structure of this source cannot be read for MySQL";
constexpr char kNoTables[] = "The reference has no tables: is it the right place?";
constexpr char kNoTable[] = "There is no table %s";
constexpr char kWider[] = "Taken as equal: types that hold more than the source's (%d)";
constexpr char kUnique[] = "Taken as equal: a unique key in place of a plain one (%d)";
constexpr char kUnknown[] = "Not compared, as the source does not say it: %s (%d)";
constexpr char kNoForm[] = "no form in MySQL: %s";
constexpr char kNotThere[] = "Accepted, but not there: %s";
constexpr char kIdleRule[] = "A rule of the mapping that decides for no column: %s";
constexpr char kAccepted[] = "Accepted: %s without a form in MySQL";

struct TFactName {
  EFact fact;
  const char* name;
};
constexpr std::array<TFactName, static_cast<std::size_t>(EFact::kCount)> kFactNames = {
    {{EFact::Nullability, "not null"},
     {EFact::Defaults, "defaults"},
     {EFact::Counting, "auto_increment"},
     {EFact::PrimaryKey, "primary keys"},
     {EFact::OtherKeys, "other keys"},
     {EFact::References, "foreign keys"},
     {EFact::Rules, "rules of foreign keys"},
     {EFact::Checks, "checks"},
     {EFact::ColumnComments, "comments of columns"},
     {EFact::TableComment, "comments of tables"},
     {EFact::Order, "order of columns"}}};

// Null for a target that is a file.
TCreationTexts* TextsOfServer(TDBConn& target) {
  auto* texts = dynamic_cast<TCreationTexts*>(&target);
  return texts == nullptr || texts->StructureScript() != nullptr ? nullptr : texts;
}

TTargetServer ServerOf(TDBConn& target) {
  TCreationTexts* texts = TextsOfServer(target);
  return texts == nullptr ? TTargetServer() : ReadTargetServer(texts->ServerVersion());
}

TTargetNames NamesOf(TDBConn& target, const TStringList& tables) {
  TTargetNames names{.tables = tables};
  if (TextsOfServer(target) == nullptr) return names;
  const std::unique_ptr<TDataset> rows = target.OpenQuery(
      "select constraint_name as name_there, table_name as table_there, constraint_type as type_there from "
      "information_schema.table_constraints "
      "where constraint_schema = database() and constraint_type in ('FOREIGN KEY', 'CHECK')");
  for (; !rows->Eof(); rows->Next()) {
    const TCatalogRow row(*rows);
    auto& of_type = SameText(row.Text("type_there"), "check") ? names.checks : names.references;
    of_type.emplace(LowerText(row.Text("name_there")), row.Text("table_there"));
  }
  rows->Close();
  return names;
}

std::vector<TSettledColumn> ColumnsOf(const TTableText& made, const TMappedTable& table) {
  std::vector<TSettledColumn> columns;
  for (const TMappedColumn& column : table.columns) {
    const TElement* element = made.Find(EElement::Column, column.name);
    TSettledColumn& settled = columns.emplace_back();
    if (element != nullptr) settled = {PiecesOf(*element).type, ReadColumnText(element->text, made).charset};
  }
  return columns;
}

}  // namespace

TForeignTexts::TForeignTexts(std::unique_ptr<TFactReader> reader, TForeignWishes wishes)
    : reader_(std::move(reader)), context_{{}, std::move(wishes)} {
  if (reader_ == nullptr) RaiseError(kNoReader);
}

TForeignTexts::TForeignTexts(TDBConn& reference, TForeignWishes wishes)
    : TForeignTexts(MakeFactReader(reference), std::move(wishes)) {}

void TForeignTexts::Read(TDBConn& target, const TStringList& target_tables,
                         const std::function<void(const std::string& table, std::size_t count)>& step) {
  Read(ServerOf(target), NamesOf(target, target_tables), step);
}

void TForeignTexts::Read(const TTargetServer& server, const TTargetNames& names_there,
                         const std::function<void(const std::string& table, std::size_t count)>& step) {
  context_.server = server;
  const TStringList names = reader_->Tables();
  if (names.empty()) RaiseError(kNoTables);
  std::vector<TReadTable> read;
  read.reserve(names.size());
  for (const std::string& name : names) {
    step(name, names.size());
    read.push_back({ReadTable(name), reader_->PlainName(name)});
  }
  tables_ = MapSchema(std::move(read), reader_->Known(), names_there, context_);
  places_.clear();
  settled_.clear();
  parents_.clear();
  counts_ = {};
  for (std::size_t i = 0; i < tables_.size(); ++i) {
    places_.emplace(tables_[i].name, i);
    for (const TMappedColumn& column : tables_[i].columns)
      for (const std::size_t parent : {column.root.table, column.letters_root.table})
        if (parent != i) parents_.insert(parent);
  }
}

TForeignTable TForeignTexts::ReadTable(const std::string& name) const {
  try {
    return reader_->Table(name);
  } catch (const EAbort&) {
    throw;
  } catch (const EVelmora& error) {
    if (!reader_->Reachable()) throw;
    return {.name = name, .problem = error.what()};
  }
}

TStringList TForeignTexts::Tables() const {
  TStringList names;
  for (const TMappedTable& table : tables_) names.push_back(table.name);
  return names;
}

TMadeTable TForeignTexts::Make(const std::string& table, const TTableText* there) {
  const auto place = places_.find(table);
  if (place == places_.end()) RaiseError(Format(kNoTable, table));
  const TMappedTable& mapped = tables_[place->second];
  if (!mapped.refused.empty()) RaiseError(mapped.refused);
  const TSettledColumns settled = [this](const TColumnPlace& root) {
    const auto found = settled_.find(root.table);
    return found == settled_.end() ? TSettledColumn() : found->second[root.column];
  };
  TMadeTable made;
  made.table = TTolerance(context_, counts_).Complete(mapped, there, settled);
  if (parents_.contains(place->second)) settled_[place->second] = ColumnsOf(made.table, mapped);
  made.shown = ShownCreationText(made.table, mapped);
  return made;
}

bool TForeignTexts::Accepted(const TUnmadeElement& element) const {
  return std::ranges::any_of(context_.wishes.accepted,
                             [&](const std::string& accepted) { return SameElement(accepted, element.Name()); });
}

bool TForeignTexts::IsThere(const std::string& accepted) const {
  for (const TMappedTable& table : tables_)
    for (const TUnmadeElement& element : table.unmade)
      if (SameElement(accepted, element.Name())) return true;
  return false;
}

bool TForeignTexts::Decides(const TMapRule& rule) const {
  return std::ranges::any_of(tables_, [&](const TMappedTable& table) {
    return std::ranges::any_of(table.columns, [&](const auto& column) { return column.type.rule == rule.what; });
  });
}

std::vector<TUnmadeElement> TForeignTexts::Unmade(bool accepted) const {
  std::vector<TUnmadeElement> unmade;
  for (const TMappedTable& table : tables_)
    for (const TUnmadeElement& element : table.unmade)
      if (Accepted(element) == accepted) unmade.push_back(element);
  return unmade;
}

std::vector<TMadeColumn> TForeignTexts::Columns() const {
  std::vector<TMadeColumn> columns;
  for (const TMappedTable& table : tables_) {
    columns.insert(columns.end(), table.told.begin(), table.told.end());
    if (!table.refused.empty()) columns.push_back({table.name, "", "", "", EMadeLevel::Refused, table.refused});
    for (const TUnmadeElement& element : table.unmade)
      columns.push_back({table.name, "", "", "", Accepted(element) ? EMadeLevel::Info : EMadeLevel::Refused,
                         Format(kNoForm, element.Text().substr(element.table.size() + 1))});
  }
  return columns;
}

TStringList TForeignTexts::Log() const {
  TStringList lines;
  if (counts_.wider > 0) lines.push_back(Format(kWider, counts_.wider));
  if (counts_.unique_for_plain > 0) lines.push_back(Format(kUnique, counts_.unique_for_plain));
  for (const TFactName& row : kFactNames)
    if (const int count = counts_.unknown[static_cast<std::size_t>(row.fact)]; count > 0)
      lines.push_back(Format(kUnknown, row.name, count));
  for (const TMapRule& rule : context_.wishes.rules)
    if (!Decides(rule)) lines.push_back(Format(kIdleRule, MapRuleText(rule)));
  for (const std::string& name : context_.wishes.accepted)
    if (!IsThere(name)) lines.push_back(Format(kNotThere, name));
  if (const std::size_t accepted = Accepted().size(); accepted > 0)
    lines.push_back(Format(kAccepted, Counted(accepted, "element")));
  return lines;
}

}  // namespace velmora

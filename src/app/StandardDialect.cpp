// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/StandardDialect.h"

#include "app/Dialects.h"
#include "core/CreationTexts.h"
#include "core/Meta.h"
#include "sync/CaseTwins.h"
#include "util/Errors.h"

namespace velmora {

namespace {

constexpr TDialectTraits kTraits{};

constexpr char kVerifies[] = "Only a script of the exact dialect can be verified on the server";
constexpr char kReadsByServer[] = "Only the exact dialect can read a reference by the server (--via-server)";

std::string BuiltText(TDBConn* conn, const std::string& table) {
  std::string text;
  if (conn != nullptr && conn->meta().FindTable(table)) conn->meta().BuildCreateTable(table, nullptr, text);
  return text;
}

}  // namespace

TStandardDialect::TStandardDialect(const TDialectParts& parts)
    : TDialect(kTraits),
      parts_(parts),
      sync_(parts.connections, parts.data, parts.tree, parts.progress, parts.log),
      generator_(parts.connections, parts.data, parts.editor, parts.progress, parts.clock) {}

void TStandardDialect::Take(const TComparisonWishes& wishes) {
  if (wishes.verify_on_server) RaiseError(kVerifies);
  if (wishes.via_server) RaiseError(kReadsByServer);
  if (!wishes.collations.empty()) RaiseExactAlone("map-collation");
  for (const TExactOption& option : ExactOptions())
    if (!option.given(wishes.exact).empty()) RaiseExactAlone(std::string(option.word));
}

std::unique_ptr<TDBConn> TStandardDialect::Compare() {
  TTaskConnections& pair = parts_.connections;
  for (TDBConn* conn : {pair.reference.get(), pair.target.get()})
    if (auto* texts = dynamic_cast<TCreationTexts*>(conn)) texts->PrepareExactTexts(false);
  sync_.SetDatabases(pair.reference.get(), pair.target.get());
  return sync_.Compare();
}

std::vector<TRemark> TStandardDialect::Remarks(TDBConn* compared) const {
  std::vector<TRemark> remarks;
  if (compared == nullptr) return remarks;
  for (const std::string& line : CaseTwins(*parts_.connections.reference, *compared)) remarks.push_back({true, line});
  return remarks;
}

bool TStandardDialect::ReferenceIsEmpty() const {
  TStringList tables;
  if (parts_.connections.reference != nullptr) parts_.connections.reference->meta().TableNames(tables);
  return tables.empty();
}

void TStandardDialect::TableTexts(const std::string& table, std::string& reference, std::string& target) {
  reference = BuiltText(parts_.connections.reference.get(), table);
  target = BuiltText(parts_.connections.target.get(), table);
}

void TStandardDialect::GenerateScript() {
  generator_.Note = parts_.use.note;
  generator_.GenerateScript();
}

int TStandardDialect::VerifyOnServer(const TScratchPorts& /*ports*/) { RaiseError(kVerifies); }

}  // namespace velmora

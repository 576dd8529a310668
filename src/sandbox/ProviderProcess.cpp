// SPDX-License-Identifier: GPL-3.0-or-later
#include "sandbox/ProviderProcess.h"

#include <cstdint>
#include <utility>

#include "sandbox/WireFormat.h"
#include "util/Errors.h"
#include "util/Format.h"

namespace velmora {

namespace {

constexpr char kNotConnected[] = "Not connected";

enum class EQuestion : std::int64_t {
  Catalogs,
  Tables,
  Columns,
  Indexes,
  Open,
  Execute,
  StartTransaction,
  Commit,
  CatalogRows,
  IsOpen
};

TChildFaults FaultsOf(const std::string& source) {
  const std::string lost = Format("The connection to %s is lost: ", source);
  return {.ended = lost + "its driver broke off, as drivers do when they meet what they cannot read",
          .silent = lost + "its driver or server is silent",
          .no_memory = lost + "its driver needs more memory than it may use"};
}

// Rows that cannot be read are an error of theirs alone: the fields are good, and say more about what is wrong.
void PutRowset(const TOLEDBRowset& rowset, TWireWriter& answer) {
  answer.Fields(rowset.fields, rowset.is_autoincrement);
  TRowsOfValues rows;
  std::string error;
  try {
    rows = rowset.read_rows ? rowset.read_rows() : rowset.rows;
  } catch (const EVelmora& fault) {
    error = fault.what();
  }
  answer.Text(error);
  answer.Values(rows);
}

TOLEDBRowset TakeRowset(TWireReader& answer) {
  TOLEDBRowset rowset;
  answer.Fields(rowset.fields, rowset.is_autoincrement);
  const std::string error = answer.Text();
  rowset.rows = answer.Values();
  if (!error.empty()) rowset.read_rows = [error]() -> TRowsOfValues { RaiseError(error); };
  return rowset;
}

void PutCatalogs(const TStringList& catalogs, TWireWriter& answer) {
  answer.Number(static_cast<std::int64_t>(catalogs.size()));
  for (const std::string& catalog : catalogs) answer.Text(catalog);
}

std::string Answer(TOLEDBProvider& provider, const std::string& question) {
  TWireReader words(question);
  TWireWriter answer;
  const auto kind = static_cast<EQuestion>(words.Number());
  const std::string text = words.Text();
  switch (kind) {
    case EQuestion::Catalogs:
      PutCatalogs(provider.Catalogs(), answer);
      break;
    case EQuestion::Tables:
      answer.Tables(provider.Tables());
      break;
    case EQuestion::Columns:
      answer.Columns(provider.Columns(text));
      break;
    case EQuestion::Indexes:
      answer.Indexes(provider.Indexes(text));
      break;
    case EQuestion::Open:
      PutRowset(provider.Open(text), answer);
      break;
    case EQuestion::Execute:
      answer.Number(provider.Execute(text));
      break;
    case EQuestion::StartTransaction:
      provider.StartTransaction(static_cast<std::uint32_t>(words.Number()));
      break;
    case EQuestion::Commit:
      provider.Commit();
      break;
    case EQuestion::CatalogRows:
      PutRowset(provider.CatalogRows(static_cast<ECatalogRows>(words.Number()), text), answer);
      break;
    case EQuestion::IsOpen:
      answer.Number(provider.Initialized() ? 1 : 0);
      break;
  }
  return answer.Take();
}

TChildProcess::TAnswerer OpenProvider(std::shared_ptr<TOLEDBProvider> provider) {
  provider->Initialize();
  return [provider = std::move(provider)](const std::string& question) { return Answer(*provider, question); };
}

class TProviderProcess final : public TOLEDBProvider {
 public:
  TProviderProcess(std::function<std::unique_ptr<TOLEDBProvider>()> make, const std::string& source,
                   const TChildLimits& limits)
      : child_([make = std::move(make)] { return OpenProvider(make()); }, FaultsOf(source), limits,
               EChildEnd::WithGoodbye) {}

  void Initialize() override { child_.Start(); }
  void Uninitialize() override { child_.End(); }
  bool Initialized() const override { return child_.Running(); }

  TStringList Catalogs() override;
  std::vector<TOLEDBTableRow> Tables() override;
  std::vector<TOLEDBColumnRow> Columns(const std::string& table) override;
  std::vector<TOLEDBIndexRow> Indexes(const std::string& table) override;
  TOLEDBRowset CatalogRows(ECatalogRows kind, const std::string& table) override;
  TOLEDBRowset Open(const std::string& sql) override;
  std::int64_t Execute(const std::string& sql) override;
  void StartTransaction(std::uint32_t isolation) override { Ask(EQuestion::StartTransaction, {}, isolation); }
  void Commit() override { Ask(EQuestion::Commit); }

 private:
  std::string Ask(EQuestion kind, const std::string& text = {}, std::int64_t number = 0);
  void EndIfLost();

  TChildProcess child_;
};

// A new child would be another connection, so none is started here.
std::string TProviderProcess::Ask(EQuestion kind, const std::string& text, std::int64_t number) {
  if (!child_.Running()) RaiseError(kNotConnected);
  TWireWriter question;
  question.Number(static_cast<std::int64_t>(kind));
  question.Text(text);
  question.Number(number);
  try {
    return child_.Ask(question.Take());
  } catch (const EVelmora&) {
    if (kind != EQuestion::IsOpen) EndIfLost();
    throw;
  }
}

// An error may have told the provider that its connection is gone.
void TProviderProcess::EndIfLost() {
  if (!child_.Running()) return;
  const std::string answer = Ask(EQuestion::IsOpen);
  if (TWireReader(answer).Number() == 0) child_.End();
}

TStringList TProviderProcess::Catalogs() {
  const std::string answer = Ask(EQuestion::Catalogs);
  TWireReader words(answer);
  TStringList catalogs;
  for (std::int64_t count = words.Number(); count > 0; --count) catalogs.push_back(words.Text());
  return catalogs;
}

std::vector<TOLEDBTableRow> TProviderProcess::Tables() {
  const std::string answer = Ask(EQuestion::Tables);
  return TWireReader(answer).Tables();
}

std::vector<TOLEDBColumnRow> TProviderProcess::Columns(const std::string& table) {
  const std::string answer = Ask(EQuestion::Columns, table);
  return TWireReader(answer).Columns();
}

std::vector<TOLEDBIndexRow> TProviderProcess::Indexes(const std::string& table) {
  const std::string answer = Ask(EQuestion::Indexes, table);
  return TWireReader(answer).Indexes();
}

TOLEDBRowset TProviderProcess::CatalogRows(ECatalogRows kind, const std::string& table) {
  const std::string answer = Ask(EQuestion::CatalogRows, table, static_cast<std::int64_t>(kind));
  TWireReader words(answer);
  return TakeRowset(words);
}

TOLEDBRowset TProviderProcess::Open(const std::string& sql) {
  const std::string answer = Ask(EQuestion::Open, sql);
  TWireReader words(answer);
  return TakeRowset(words);
}

std::int64_t TProviderProcess::Execute(const std::string& sql) {
  const std::string answer = Ask(EQuestion::Execute, sql);
  return TWireReader(answer).Number();
}

}  // namespace

std::unique_ptr<TOLEDBProvider> ProvideInOwnProcess(std::function<std::unique_ptr<TOLEDBProvider>()> make,
                                                    const std::string& source, const TChildLimits& limits) {
  return std::make_unique<TProviderProcess>(std::move(make), source, limits);
}

}  // namespace velmora

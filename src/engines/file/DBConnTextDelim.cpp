// SPDX-License-Identifier: GPL-3.0-or-later
#include "engines/file/DBConnTextDelim.h"

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <utility>

#include "core/Meta.h"
#include "engines/file/FilesOfFolder.h"
#include "formats/text/DelimitedText.h"
#include "formats/text/TextFile.h"
#include "util/Aside.h"
#include "util/Errors.h"
#include "util/Files.h"
#include "xml/XMLAccess.h"

namespace velmora {
namespace {

constexpr char kUnhandledType[] = "TDBConnTextDelim.FetchTableStructure: unhandled column type";

TNeutralType NeutralTypeOf(EFieldKind kind) {
  switch (kind) {
    case EFieldKind::String:
      return ntVarChar;
    case EFieldKind::Integer:
      return ntI4;
    case EFieldKind::Float:
      return ntDouble;
    case EFieldKind::DateTime:
      return ntDate;
    default:
      RaiseError(kUnhandledType);
  }
}

}  // namespace

TDBConnTextDelim::TDBConnTextDelim(std::string folder, std::string separator, bool hdr)
    : hdr_(hdr), separator_(std::move(separator)), folder_(std::move(folder)) {}

// --- Connection

void TDBConnTextDelim::Connect() { RefreshTableList(); }

void TDBConnTextDelim::Disconnect() {}

void TDBConnTextDelim::SaveParams(const std::string& path, TXMLAccess& store) {
  store.xmlSetVal(path + "/folder", folder_);
  store.xmlSetBool(path + "/HDR", hdr_);
  store.xmlSetVal(path + "/separator", separator_);
}

bool TDBConnTextDelim::GetConnected() {
  std::error_code ignored;
  return std::filesystem::is_directory(folder_, ignored);
}

void TDBConnTextDelim::GetDisplayName(std::string& text) { text = folder_; }

// --- Words of the dialect, rows, statements

std::unique_ptr<TDataset> TDBConnTextDelim::OpenTable(const std::string& table) {
  return DoAside(ESlow::Files, [table, path = PathOf(table), separator = separator_, hdr = hdr_] {
    const TDelimitedText text(table, path, separator, hdr);
    auto dataset = std::make_unique<TMemDataset>(text.Fields());
    text.ReadRows([&dataset](TMemDataset::TRow& row) { dataset->AddRow(std::move(row)); });
    return dataset;
  });
}

void TDBConnTextDelim::CloseTable(std::unique_ptr<TDataset> dataset) { TDBConn::CloseTable(std::move(dataset)); }

int TDBConnTextDelim::GetEngine() { return kEngineText; }

std::int64_t TDBConnTextDelim::GetRecordCount(const std::string& table) {
  const auto lines =
      static_cast<std::int64_t>(DoAside(ESlow::Files, [path = PathOf(table)] { return TTextLines(path).Count(); }));
  return std::max<std::int64_t>(lines - (hdr_ ? 1 : 0), 0);
}

// --- Names

void TDBConnTextDelim::ListTables(TStringList& list) { list = FilesAside(folder_, {"txt", "csv", "tsv"}); }

// --- Transactions, copies

std::unique_ptr<TDBConn> TDBConnTextDelim::Clone() {
  auto clone = std::make_unique<TDBConnTextDelim>(folder_, separator_, hdr_);
  clone->meta().CopyFrom(meta());
  return clone;
}

// --- Structure to texts and back

// All rows are read, so that a file with a bad value has no structure either; none is kept.
void TDBConnTextDelim::FetchTableStructure(const std::string& table) {
  const auto fields = DoAside(ESlow::Files, [table, path = PathOf(table), separator = separator_, hdr = hdr_] {
    const TDelimitedText text(table, path, separator, hdr);
    text.ReadRows([](const TMemDataset::TRow&) {});
    return text.Fields();
  });
  meta().InvalidateTable(table);
  for (const TFieldDef& field : fields) {
    TColumnTypeInfo type;
    const TNeutralType datatype = NeutralTypeOf(field.kind);
    ColumnTypeInfo(datatype, type);
    TColumnRow& column = meta().tColumns.Append();
    column.name = field.name;
    column.datatype = datatype;
    column.size = type.has_length ? field.size : 0;
    meta().tColumns.Post();
  }
}

// --- Changing the structure

void TDBConnTextDelim::CreateTable(const std::string& table, const TStringList& /*definitions*/) {
  WriteFileText(PathOf(table + ".txt"), "# " + table + "\r\n");
}

std::string TDBConnTextDelim::PathOf(const std::string& table) const { return JoinPath(folder_, table); }

}  // namespace velmora

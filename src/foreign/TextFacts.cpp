#include "foreign/TextFacts.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <system_error>
#include <variant>

#include "engines/file/DBConnTextDelim.h"
#include "engines/file/DBConnTextFixed.h"
#include "formats/text/DelimitedText.h"
#include "util/Errors.h"
#include "util/Files.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kNoFolder[] = "Cannot open %s: there is no such folder";

// "p.csv" as "p".
std::string WithoutExtension(const std::string& file) {
  const std::size_t dot = file.rfind('.');
  return dot == std::string::npos || dot == 0 ? file : file.substr(0, dot);
}

bool IsFolder(const std::string& path) {
  std::error_code ignored;
  return std::filesystem::is_directory(path, ignored);
}

struct TKindRow {
  EFieldKind kind;
  const char* native;
  EFamily family;
};

constexpr TKindRow kDelimitedKinds[] = {
    {EFieldKind::String, "text", EFamily::VarChar},
    {EFieldKind::Integer, "integer", EFamily::Int32},
    {EFieldKind::Float, "number", EFamily::Double},
    {EFieldKind::DateTime, "date and time", EFamily::DateTime},
};

struct TImportRow {
  int type;
  const char* native;
  EFamily family;
};

constexpr TImportRow kFixedTypes[] = {
    {kSMString, "text", EFamily::VarChar},
    {kSMInteger, "integer", EFamily::Int32},
    {kSMFloat, "number", EFamily::Double},
    {kSMDate, "date", EFamily::Date},
    {kSMDateTime, "date and time", EFamily::DateTime},
    {kSMTime, "time", EFamily::Time},
};

// What both kinds have in common.
class TTextFacts : public TFactReader {
 public:
  TTextFacts(TDBConn& conn, std::string folder) : conn_(conn), folder_(std::move(folder)) {}

  TKnownFacts Known() const override { return {EFact::Order}; }
  TStringList Tables() override {
    if (!IsFolder(folder_)) RaiseError(Format(kNoFolder, folder_));
    TStringList tables;
    conn_.ListTables(tables);
    return tables;
  }
  std::string PlainName(const std::string& table) const override { return WithoutExtension(table); }
  bool Reachable() override { return IsFolder(folder_); }

 protected:
  TDBConn& conn_;
  std::string folder_;
};

class TDelimitedFacts final : public TTextFacts {
 public:
  explicit TDelimitedFacts(TDBConnTextDelim& conn)
      : TTextFacts(conn, conn.folder()), separator_(conn.separator()), hdr_(conn.hdr()) {}

  // All rows are read: a file with a bad value has no structure.
  TForeignTable Table(const std::string& name) override {
    const TDelimitedText text(name, JoinPath(folder_, name), separator_, hdr_);
    TForeignTable table{.name = name};
    for (const TFieldDef& field : text.Fields()) table.columns.push_back(ColumnOf(field));
    std::vector<TSeenNumbers> numbers(table.columns.size());
    text.ReadRows([&](const TMemDataset::TRow& row) { See(row, table.columns, numbers); });
    for (std::size_t i = 0; i < numbers.size(); ++i)
      if (numbers[i].any && numbers[i].whole) TakeWhole(numbers[i].largest, table.columns[i]);
    return table;
  }

 private:
  struct TSeenNumbers {
    bool any = false;
    bool whole = true;
    double largest = 0;
  };

  // The sample says the usual length; a longer text needs more.
  static void See(const TMemDataset::TRow& row, std::vector<TForeignColumn>& columns,
                  std::vector<TSeenNumbers>& numbers) {
    for (std::size_t i = 0; i < columns.size(); ++i) {
      if (const auto* number = std::get_if<double>(&row[i])) {
        numbers[i].any = true;
        numbers[i].whole = numbers[i].whole && std::trunc(*number) == *number;
        numbers[i].largest = std::max(numbers[i].largest, std::abs(*number));
      }
      const auto* text = std::get_if<std::string>(&row[i]);
      if (text == nullptr || !columns[i].length || static_cast<std::int64_t>(text->size()) <= *columns[i].length)
        continue;
      columns[i].length = std::max(*columns[i].length, static_cast<std::int64_t>(CharCount(*text)));
    }
  }

  // Numbers of which none has anything behind the point.
  static void TakeWhole(double largest, TForeignColumn& column) {
    constexpr double kInt = 2147483647;
    constexpr double kExact = 9007199254740992;  // up to which doubles keep every digit
    if (column.family != EFamily::Double || largest > kExact) return;
    column.native = "whole number";
    column.family = largest <= kInt ? EFamily::Int32 : EFamily::Int64;
  }

  static TForeignColumn ColumnOf(const TFieldDef& field) {
    TForeignColumn column{.name = field.name};
    for (const TKindRow& row : kDelimitedKinds) {
      if (row.kind != field.kind) continue;
      column.native = row.native;
      column.family = row.family;
    }
    if (column.family == EFamily::VarChar) column.length = field.size;
    return column;
  }

  std::string separator_;
  bool hdr_;
};

class TFixedFacts final : public TTextFacts {
 public:
  explicit TFixedFacts(TDBConnTextFixed& conn) : TTextFacts(conn, conn.folder()), fixed_(conn) {}

  TForeignTable Table(const std::string& name) override {
    TForeignTable table{.name = name};
    const std::unique_ptr<TSMImportBaseComponent> component = fixed_.ComponentClass();
    TMemDataset rows({});
    component->SourceFileName = JoinPath(folder_, name);
    component->DataSet = &rows;
    component->OnCreateStructure = [&](TSMImportBaseComponent&, const TSMColumns& columns) {
      for (const TSMColumn& column : columns) table.columns.push_back(ColumnOf(column));
    };
    fixed_.ApplyParams(*component);
    component->Execute();
    return table;
  }

 private:
  static TForeignColumn ColumnOf(const TSMColumn& found) {
    TForeignColumn column{.name = found.name};
    for (const TImportRow& row : kFixedTypes) {
      if (row.type != found.type) continue;
      column.native = row.native;
      column.family = row.family;
    }
    if (column.family == EFamily::VarChar) column.length = found.size;
    return column;
  }

  TDBConnTextFixed& fixed_;
};

}  // namespace

std::unique_ptr<TFactReader> MakeTextFacts(TDBConn& conn) {
  if (auto* delimited = dynamic_cast<TDBConnTextDelim*>(&conn)) return std::make_unique<TDelimitedFacts>(*delimited);
  if (auto* fixed = dynamic_cast<TDBConnTextFixed*>(&conn)) return std::make_unique<TFixedFacts>(*fixed);
  return nullptr;
}

}  // namespace velmora

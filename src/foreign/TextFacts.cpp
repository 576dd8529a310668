// SPDX-License-Identifier: GPL-3.0-or-later
#include "foreign/TextFacts.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <optional>
#include <system_error>
#include <utility>
#include <vector>

#include "engines/file/DBConnTextDelim.h"
#include "engines/file/DBConnTextFixed.h"
#include "formats/text/DelimitedRecords.h"
#include "formats/text/TypeGuess.h"
#include "util/Aside.h"
#include "util/Errors.h"
#include "util/Files.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kNoLines[] = "the file is empty";
constexpr char kNoFolder[] = "Cannot open %s: there is no such folder";

// "p.csv" as "p".
std::string WithoutExtension(const std::string& file) {
  const std::size_t dot = file.rfind('.');
  return dot == std::string::npos || dot == 0 ? file : file.substr(0, dot);
}

bool IsFolder(const std::string& path) {
  return DoAside(ESlow::Files, [path] {
    std::error_code ignored;
    return std::filesystem::is_directory(path, ignored);
  });
}

struct TTypeRow {
  int type;
  const char* native;
  EFamily family;
};

constexpr TTypeRow kTypes[] = {
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

// A column, as all its values say it.
class TSeenColumn {
 public:
  explicit TSeenColumn(std::string name = {}) : name_(std::move(name)) {}

  void See(const TDelimitedValue& value) {
    longest_ = std::max(longest_, static_cast<std::int64_t>(CharCount(value.text)));
    quoted_ = quoted_ || value.quoted;
    if (value.text.empty()) return;
    type_.See(value.text);
    if (const std::optional<double> number = TryStrToFloat(value.text)) {
      whole_ = whole_ && std::trunc(*number) == *number;
      largest_ = std::max(largest_, std::abs(*number));
    }
  }

  // What stands in quotes is text.
  TForeignColumn Column(std::size_t number) const {
    constexpr double kExact = 9007199254740992;  // up to which doubles keep every digit
    const int type = quoted_ ? kSMString : type_.Type();
    TForeignColumn column{.name = name_.empty() ? Format("Column%d", number) : name_};
    for (const TTypeRow& row : kTypes) {
      if (row.type != type) continue;
      column.native = row.native;
      column.family = row.family;
    }
    if (type == kSMFloat && whole_ && largest_ <= kExact) {
      column.native = "whole number";
      column.family = EFamily::Int64;
    }
    if (type == kSMString) column.length = std::max(longest_, kUsualText);
    return column;
  }

 private:
  static constexpr std::int64_t kUsualText = 255;

  std::string name_;
  TTypeGuess type_;
  std::int64_t longest_ = 0;  // in letters
  bool quoted_ = false;
  bool whole_ = true;
  double largest_ = 0;
};

// Read by itself: the engine takes text without quotes for a bad value.
class TDelimitedFacts final : public TTextFacts {
 public:
  explicit TDelimitedFacts(TDBConnTextDelim& conn)
      : TTextFacts(conn, conn.folder()), separator_(conn.separator()), hdr_(conn.hdr()) {}

  TForeignTable Table(const std::string& name) override {
    return DoAside(ESlow::Files, [name, path = JoinPath(folder_, name), separator = separator_, hdr = hdr_] {
      return ReadTable(name, path, separator, hdr);
    });
  }

 private:
  static TForeignTable ReadTable(const std::string& name, const std::string& path, const std::string& separator,
                                 bool hdr) {
    std::vector<TSeenColumn> columns;
    bool first = true;
    ReadDelimitedRecords(path, separator, [&](const std::vector<TDelimitedValue>& values) {
      const bool names = std::exchange(first, false) && hdr;
      if (names)
        for (const TDelimitedValue& value : values) columns.emplace_back(Trim(value.text));
      if (values.size() > columns.size()) columns.resize(values.size());
      for (std::size_t i = 0; i < values.size() && !names; ++i) columns[i].See(values[i]);
    });
    TForeignTable table{.name = name};
    for (const TSeenColumn& column : columns) table.columns.push_back(column.Column(table.columns.size()));
    if (columns.empty()) table.problem = kNoLines;
    return table;
  }

  std::string separator_;
  bool hdr_;
};

class TFixedFacts final : public TTextFacts {
 public:
  explicit TFixedFacts(TDBConnTextFixed& conn) : TTextFacts(conn, conn.folder()), fixed_(conn) {}

  TForeignTable Table(const std::string& name) override {
    const std::shared_ptr<TSMImportBaseComponent> component = fixed_.ComponentClass();
    component->SourceFileName = JoinPath(folder_, name);
    fixed_.ApplyParams(*component);
    return DoAside(ESlow::Files, [component, name] {
      TForeignTable table{.name = name};
      TMemDataset rows({});
      component->DataSet = &rows;
      component->OnCreateStructure = [&](TSMImportBaseComponent&, const TSMColumns& columns) {
        for (const TSMColumn& column : columns) table.columns.push_back(ColumnOf(column));
      };
      component->Execute();
      return table;
    });
  }

 private:
  static TForeignColumn ColumnOf(const TSMColumn& found) {
    TForeignColumn column{.name = found.name};
    for (const TTypeRow& row : kTypes) {
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

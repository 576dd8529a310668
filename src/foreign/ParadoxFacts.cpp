// SPDX-License-Identifier: GPL-3.0-or-later
#include "foreign/ParadoxFacts.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <optional>
#include <string_view>
#include <system_error>
#include <utility>

#include "engines/file/DBConnParadox.h"
#include "formats/paradox/ParadoxReader.h"
#include "util/Aside.h"
#include "util/Errors.h"
#include "util/Files.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

namespace fs = std::filesystem;

constexpr char kNoFolder[] = "Cannot open %s: there is no such folder";
constexpr char kUnknownType[] = "its type, number %d, is not known";
constexpr char kUnreadKey[] = "the file %s says not which columns it is over";
constexpr char kUnreadFolder[] = "Cannot read %s: %s";
constexpr char kUnreadChecks[] =
    "%s is not read: required fields, defaults, checks and references that it states are not compared";
constexpr char kValidityChecks[] = ".val";
constexpr char kHint[] = "Hint";  // the last field of a secondary key's file

struct TTypeRow {
  std::uint8_t type;
  const char* native;  // the letter by which users know the type
  EFamily family;
};

constexpr int kMilliseconds = 3;
constexpr int kBcdDigits = 32;

constexpr TTypeRow kTypes[] = {
    {pxAlpha, "A", EFamily::VarChar},  {pxDate, "D", EFamily::Date},          {pxShort, "S", EFamily::Int16},
    {pxLong, "I", EFamily::Int32},     {pxAutoInc, "+", EFamily::Int32},      {pxCurrency, "$", EFamily::FloatMoney},
    {pxNumber, "N", EFamily::Double},  {pxBCD, "#", EFamily::Decimal},        {pxLogical, "L", EFamily::Boolean},
    {pxMemo, "M", EFamily::LongText},  {pxFmtMemo, "F", EFamily::LongText},   {pxBinary, "B", EFamily::LongBinary},
    {pxOLE, "O", EFamily::LongBinary}, {pxGraphic, "G", EFamily::LongBinary}, {pxBytes, "Y", EFamily::VarBinary},
    {pxTime, "T", EFamily::Time},      {pxTimestamp, "@", EFamily::DateTime},
};

TForeignColumn ColumnOf(const TPxField& field) {
  TForeignColumn column{.name = field.name};
  const auto* row = std::ranges::find(kTypes, field.type, &TTypeRow::type);
  if (row == std::end(kTypes)) {
    column.native = Format("%d", field.type);
    column.problem = Format(kUnknownType, field.type);
    return column;
  }
  column.native = row->native;
  column.family = row->family;
  if (field.type == pxAlpha || field.type == pxBytes) column.length = static_cast<std::int64_t>(field.size);
  if (field.type == pxTime || field.type == pxTimestamp) column.fraction = kMilliseconds;
  // Of a number in decimal digits the size is that of what stands behind the point.
  if (field.type == pxBCD) {
    column.precision = kBcdDigits;
    column.scale = static_cast<int>(std::min<std::size_t>(field.size, kBcdDigits));
  }
  if (field.type == pxAutoInc) column.counting = ECounting::Counts;
  return column;
}

// The number that two hexadecimal digits are; nothing for any other text.
std::optional<std::size_t> HexNumber(std::string_view digits) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::size_t number = 0;
  for (const char c : digits) {
    const std::size_t digit = kDigits.find(LowerChar(c));
    if (digit == std::string_view::npos) return std::nullopt;
    number = number * kDigits.size() + digit;
  }
  return digits.empty() ? std::nullopt : std::optional(number);
}

constexpr TKnownFacts kKnown{EFact::Order, EFact::PrimaryKey, EFact::Counting};

// The tables of a folder and what stands beside them.
class TParadoxFolder {
 public:
  explicit TParadoxFolder(std::string folder) : folder_(std::move(folder)) {}

  bool IsThere() const {
    std::error_code ignored;
    return fs::is_directory(folder_, ignored);
  }

  void ListFiles() {
    if (!IsThere()) RaiseError(Format(kNoFolder, folder_));
    files_.clear();
    std::error_code error;
    for (fs::directory_iterator entry(folder_, error); !error && entry != fs::directory_iterator();
         entry.increment(error)) {
      StopIfLeft();
      files_.emplace(LowerText(entry->path().stem().string()), entry->path());
    }
    if (error) RaiseError(Format(kUnreadFolder, folder_, error.message()));
  }

  TForeignTable Table(const std::string& name) const {
    const TPxTable file(FindFileNoCase(folder_, name, ".db"), true);
    TForeignTable table{.name = name};
    for (const TPxField& field : file.Fields()) table.columns.push_back(ColumnOf(field));
    const std::size_t width = file.Header().primaryKeyFields;
    TForeignKey primary{.kind = EForeignKeyKind::Primary};
    for (std::size_t i = 0; i < width; ++i) primary.parts.push_back({table.columns[i].name});
    if (width > 0) table.keys.push_back(std::move(primary));
    const std::map<std::string, std::string> beside = Beside(name);
    AddSecondaryKeys(beside, width, table);
    if (const auto checks = beside.find(kValidityChecks); checks != beside.end())
      table.warnings.push_back(Format(kUnreadChecks, fs::path(checks->second).filename().string()));
    return table;
  }

 private:
  // The files of the folder that have the table's name, whatever the case of letters, by their extensions in lower
  // case. Among files that differ in case alone the one with the very name is taken.
  std::map<std::string, std::string> Beside(const std::string& name) const {
    std::map<std::string, std::string> beside;
    const auto [first, last] = files_.equal_range(LowerText(name));
    for (auto file = first; file != last; ++file) {
      std::string& path = beside[LowerText(file->second.extension().string())];
      if (path.empty() || file->second.stem() == name) path = file->second.string();
    }
    return beside;
  }

  // The files TABLE.Xnn, of which nn is a field's number in hexadecimal digits, or Gn for a key over several fields.
  static void AddSecondaryKeys(const std::map<std::string, std::string>& beside, std::size_t width,
                               TForeignTable& table) {
    constexpr std::size_t kExtension = 4;  // ".x04"
    for (const auto& [extension, path] : beside)
      if (extension.size() == kExtension && extension[1] == 'x') {
        table.keys.push_back(SecondaryKey(path, width, table));
        table.known = kKnown;
        table.known->Add(EFact::OtherKeys);
      }
  }

  static TForeignKey SecondaryKey(const std::string& path, std::size_t width, const TForeignTable& table) {
    const std::string digits = LowerText(fs::path(path).extension().string().substr(2));
    if (const auto number = HexNumber(digits); number && *number > 0 && *number <= table.columns.size()) {
      const std::string& column = table.columns[*number - 1].name;
      return {.name = column, .parts = {{column}}};
    }
    TForeignKey key{.name = "key_" + digits};
    try {
      const TPxTable file(path, true);
      const std::vector<TPxField>& fields = file.Fields();
      // The key's own fields, those of the primary key, and a hint where the record is.
      std::size_t own = fields.size();
      if (own > 0 && SameText(fields.back().name, kHint)) --own;
      own -= std::min(own, width);
      for (std::size_t i = 0; i < own; ++i) key.parts.push_back({fields[i].name});
    } catch (const EAbort&) {
      throw;
    } catch (const EVelmora& fault) {
      key.problem = fault.what();
    }
    if (key.parts.empty() && key.problem.empty()) key.problem = Format(kUnreadKey, path);
    return key;
  }

  std::string folder_;
  std::multimap<std::string, fs::path> files_;  // of the folder, by their names without extension in lower case
};

class TParadoxFacts final : public TFactReader {
 public:
  explicit TParadoxFacts(TDBConnParadox& conn)
      : conn_(conn), folder_(ESlow::Files, [path = conn.Folder()] { return std::make_unique<TParadoxFolder>(path); }) {}

  TKnownFacts Known() const override { return kKnown; }
  TStringList Tables() override {
    folder_.Do([](TParadoxFolder& folder) { folder.ListFiles(); });
    TStringList tables;
    conn_.ListTables(tables);
    return tables;
  }
  bool Reachable() override {
    return folder_.Do([](TParadoxFolder& folder) { return folder.IsThere(); });
  }
  TForeignTable Table(const std::string& name) override {
    return folder_.Do([name](TParadoxFolder& folder) { return folder.Table(name); });
  }

 private:
  TDBConnParadox& conn_;
  TAsideObject<TParadoxFolder> folder_;
};

}  // namespace

std::unique_ptr<TFactReader> MakeParadoxFacts(TDBConn& conn) {
  auto* engine = dynamic_cast<TDBConnParadox*>(&conn);
  return engine == nullptr ? nullptr : std::make_unique<TParadoxFacts>(*engine);
}

}  // namespace velmora

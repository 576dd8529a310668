// SPDX-License-Identifier: GPL-3.0-or-later
#include "foreign/Road.h"

#include <zip.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <map>

#include "app/Sources.h"
#include "exact/run/ExactSync.h"
#include "foreign/ForeignTexts.h"
#include "mysqlclient/mysqlUtil.h"
#include "support/LiveDatabase.h"
#include "support/RecordingPorts.h"
#include "support/ScratchFolder.h"
#include "util/Errors.h"
#include "util/Files.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora::testing {

namespace {

// The list that a query has for each table, which its first column names.
std::map<std::string, TStringList> ByTable(TLiveDatabase& database, const std::string& query) {
  TStringList rows;
  MySqlQueryList("select concat(t, '\\n', coalesce(v, '')) from (" + query + ") q", rows, database.Connection());
  std::map<std::string, TStringList> lists;
  for (std::string row : rows) {
    const std::string table = StrChop("\n", row);
    lists[table].push_back(row);
  }
  return lists;
}

constexpr char kColumns[] =
    "select table_name t, is_nullable v from information_schema.columns where table_schema = database() "
    "order by table_name, ordinal_position limit 100000";
constexpr char kPrimary[] =
    "select s.table_name t, c.ordinal_position v from information_schema.statistics s join information_schema.columns "
    "c "
    "on c.table_schema = s.table_schema and binary c.table_name = binary s.table_name and binary c.column_name = "
    "binary s.column_name where s.table_schema = database() and s.index_name = 'PRIMARY' "
    "order by s.table_name, s.seq_in_index limit 100000";
constexpr char kReferences[] =
    "select k.table_name t, concat(' ', c.ordinal_position, '>', p.ordinal_position) v "
    "from information_schema.key_column_usage k "
    "join information_schema.columns c on c.table_schema = k.table_schema and binary c.table_name = binary "
    "k.table_name and "
    "binary c.column_name = binary k.column_name join information_schema.columns p on p.table_schema = k.table_schema "
    "and "
    "binary p.table_name = binary k.referenced_table_name and binary p.column_name = binary k.referenced_column_name "
    "where k.table_schema = database()";

// As ShapeOf has it.
TStringList ShapeThere(TLiveDatabase& database, bool nullability) {
  auto primary = ByTable(database, kPrimary);
  auto references = ByTable(database, kReferences);
  TStringList shape;
  for (const auto& [table, columns] : ByTable(database, kColumns)) {
    std::string line;
    for (const std::string& nullable : columns) line += nullability && nullable == "NO" ? 'N' : '0';
    if (!primary[table].empty()) line += " primary " + JoinList(primary[table], ",");
    std::ranges::sort(references[table]);
    shape.push_back(line + JoinList(references[table], ""));
  }
  std::ranges::sort(shape);
  return shape;
}

// Changes one part of a Zip archive: damage to the archive itself seldom comes as far as to what is in it.
void ChangePart(const std::string& path, TRandom& random, const std::function<void(std::string&)>& change) {
  zip_t* zip = zip_open(path.c_str(), 0, nullptr);
  if (zip == nullptr) RaiseError("Cannot read " + path);
  const auto part = random.Below(static_cast<std::size_t>(zip_get_num_entries(zip, 0)));
  zip_stat_t about = {};
  zip_stat_index(zip, part, 0, &about);
  std::string bytes(about.size, ' ');
  zip_file_t* file = zip_fopen_index(zip, part, 0);
  zip_fread(file, bytes.data(), bytes.size());
  zip_fclose(file);
  change(bytes);
  zip_file_replace(zip, part, zip_source_buffer(zip, bytes.data(), bytes.size(), 0), 0);
  if (zip_close(zip) != 0) RaiseError("Cannot write " + path);
}

class TTraveller {
 public:
  TTraveller(TSourceMaker& maker, unsigned long long seed) : maker_(maker), random_(seed) {}

  TRoadResult TravelDamaged() {
    try {
      Open();
      Damage();
      sync_.Compare();
      for (const TSkippedTable& table : sync_.Skipped())
        if (table.table.empty() || table.reason.empty()) Miss("skipped without a name or a reason");
      result_.statements = sync_.Plan().size();
      if (sync_.DifferencesLeft() != 0) Miss("the proof leaves differences:\n" + JoinList(sync_.ActionLog, "\n"));
    } catch (const EVelmora& error) {
      if (std::string_view(error.what()).find(folder_.Path()) == std::string_view::npos)
        Miss("no file is named: " + std::string(error.what()));
    }
    return std::move(result_);
  }

  TRoadResult Travel() {
    try {
      Run();
    } catch (const std::exception& error) {
      Miss(error.what());
    }
    return std::move(result_);
  }

 private:
  void Miss(const std::string& fault) { result_.fault += (result_.fault.empty() ? "" : "\n") + fault; }

  TSketch Open() {
    TSketch sketch = DrawSketch(maker_.Dialect(), random_);
    const std::string source = maker_.Make(sketch, folder_.Path(), random_);
    connections_.reference = MakeSource(source);
    connections_.target = target_.NewEngine();
    sync_.MakeTexts = [this](TDBConn& reference) { return std::make_unique<TForeignTexts>(reference, wishes_); };
    result_.tables = sketch.size();
    return sketch;
  }

  // Cuts one of the files, or changes some of its bytes.
  void Damage() {
    std::vector<std::string> files;
    for (const auto& entry : std::filesystem::directory_iterator(folder_.Path())) files.push_back(entry.path());
    if (files.empty()) return;
    std::ranges::sort(files);
    const std::string& path = random_.Pick(files);
    if (path.ends_with(".xlsx") && random_.Chance(70))
      return ChangePart(path, random_, [this](std::string& bytes) { DamageBytes(bytes, 4); });
    std::string bytes = ReadFileText(path);
    DamageBytes(bytes, 20);
    WriteFileText(path, bytes);
  }

  void DamageBytes(std::string& bytes, std::size_t most) {
    if (random_.Chance(30)) bytes.resize(random_.Below(bytes.size() + 1));
    for (std::size_t i = random_.Below(most); i > 0 && !bytes.empty(); --i)
      bytes[random_.Below(random_.Chance(50) ? std::min<std::size_t>(bytes.size(), 600) : bytes.size())] =
          static_cast<char>(random_.Below(256));
  }

  void Run() {
    const TSketch sketch = Open();
    sync_.Compare();
    for (const TUnmadeElement& element : sync_.Unmade()) {
      result_.unmade.push_back(element.Text());
      const auto expected = [&](const char* part) { return element.Text().find(part) != std::string::npos; };
      if (std::ranges::none_of(maker_.Dialect().without_form, expected)) Miss("without a form: " + element.Text());
      wishes_.accepted.push_back(element.table + "." + element.element);
    }
    for (const TSkippedTable& table : sync_.Skipped()) Miss("skipped: " + table.table + ": " + table.reason);
    if (sync_.DifferencesLeft() != 0) Miss("the proof leaves differences:\n" + JoinList(sync_.ActionLog, "\n"));
    result_.statements = sync_.Plan().size();
    RunPlan();
    if (!result_.fault.empty()) return;
    sync_.Compare();
    if (!sync_.Plan().empty() || !sync_.Identical()) Miss("not identical then:\n" + JoinList(sync_.ActionLog, "\n"));
    LookThere(sketch);
  }

  void RunPlan() {
    if (std::getenv("VELMORA_TELL_PLAN") != nullptr)
      for (const TPlanStatement& statement : sync_.Plan()) std::puts(statement.text.c_str());
    for (const TPlanStatement& statement : sync_.Plan()) try {
        target_.Run(statement.text);
      } catch (const EVelmora& error) {
        Miss(std::string(error.what()) + ": " + statement.text);
      }
  }

  // What is there, asked otherwise than by the comparison.
  void LookThere(const TSketch& sketch) {
    const TSketchDialect& dialect = maker_.Dialect();
    const TStringList there = ShapeThere(target_, !dialect.columns_alone), wanted = ShapeOf(sketch, dialect);
    if (dialect.shaped && result_.unmade.empty() && there != wanted)
      Miss("another shape:\n" + JoinList(there, "\n") + "\nin place of\n" + JoinList(wanted, "\n"));
    if (!dialect.shaped) return;
    TStringList tables;
    MySqlQueryList("show tables", tables, target_.Connection());
    target_.Run("set foreign_key_checks = 0, sql_mode = 'STRICT_ALL_TABLES'");
    for (const TSketchTable& table : sketch) Fill(table, tables);
  }

  // Tables of a simple name are known again.
  void Fill(const TSketchTable& table, const TStringList& there) {
    const auto found = std::ranges::find_if(there, [&](const auto& name) { return SameText(name, table.name); });
    if (found == there.end()) return;
    TStringList most;
    for (const TSketchColumn& column : table.columns) most.push_back(column.Most());
    if (table.rows.empty()) Insert(*found, most);
    for (const auto& row : table.rows) {
      TStringList values;
      for (const auto& [source, value] : row) values.push_back(value);
      Insert(*found, values);
    }
  }

  // A check, or a column that may not be null, is none of the types' doing.
  void Insert(const std::string& table, const TStringList& values) {
    try {
      target_.Run("insert into `" + StrReplace(table, "`", "``") + "` values (" + JoinList(values, ", ") + ")");
    } catch (const EVelmora& error) {
      const std::string_view text = error.what();
      for (const char* other : {"CONSTRAINT", "heck constraint", "cannot be null"})
        if (text.find(other) != text.npos) return;
      Miss("values do not fit: " + std::string(text) + ": " + JoinList(values, ", ").substr(0, 500));
    }
  }

  TSourceMaker& maker_;
  TRandom random_;
  TScratchFolder folder_;
  TLiveDatabase target_{"foreign"};
  TForeignWishes wishes_;
  TTaskConnections connections_;
  TdmData data_;
  TActionTree tree_;
  TRecordingProgress progress_;
  TRecordingLog log_;
  TExactSync sync_{connections_, data_, tree_, progress_, log_};
  TRoadResult result_;
};

}  // namespace

TRoadResult Travel(TSourceMaker& maker, unsigned long long seed) { return TTraveller(maker, seed).Travel(); }
TRoadResult TravelDamaged(TSourceMaker& maker, unsigned long long seed) {
  return TTraveller(maker, seed).TravelDamaged();
}

}  // namespace velmora::testing

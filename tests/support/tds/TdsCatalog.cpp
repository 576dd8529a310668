#include "support/tds/TdsCatalog.h"

#include <algorithm>
#include <stdexcept>

#include "util/Format.h"
#include "util/Text.h"

namespace velmora::testing {

namespace {

constexpr char kSchema[] = R"(
create table sysobjects (name nvarchar(128) collate nocase, id int, xtype char(2), parent_obj int);
create table sysindexes (id int, status int, indid smallint, name nvarchar(128) collate nocase);
create table sysindexkeys (id int, indid smallint, colid smallint, keyno smallint, descending int);
create table sysconstraints (constid int, id int, colid smallint, status int);
create table syscomments (id int, colid smallint, text nvarchar(4000));
create table syscolumns (name nvarchar(128) collate nocase, id int, colid smallint, status tinyint);
create table sysreferences (constid int, fkeyid int, rkeyid int,
  fkey1, fkey2, fkey3, fkey4, fkey5, fkey6, fkey7, fkey8, fkey9, fkey10, fkey11, fkey12, fkey13, fkey14, fkey15, fkey16,
  rkey1, rkey2, rkey3, rkey4, rkey5, rkey6, rkey7, rkey8, rkey9, rkey10, rkey11, rkey12, rkey13, rkey14, rkey15, rkey16
);
create table INFORMATION_SCHEMA.COLUMNS (TABLE_CATALOG nvarchar(128), TABLE_SCHEMA nvarchar(128),
  TABLE_NAME nvarchar(128) collate nocase, COLUMN_NAME nvarchar(128), ORDINAL_POSITION int, COLUMN_DEFAULT nvarchar(4000),
  IS_NULLABLE varchar(3), DATA_TYPE nvarchar(128), CHARACTER_MAXIMUM_LENGTH int, CHARACTER_OCTET_LENGTH int,
  NUMERIC_PRECISION tinyint, NUMERIC_PRECISION_RADIX smallint, NUMERIC_SCALE int, DATETIME_PRECISION smallint);
)";

constexpr char kOpen[] =
    "pragma busy_timeout = 5000; pragma journal_mode = wal; pragma synchronous = off;"
    "attach %s as INFORMATION_SCHEMA; pragma INFORMATION_SCHEMA.journal_mode = wal;";

// The server's functions, as queries over its catalog.
constexpr struct {
  const char* name;
  int arguments;
  const char* query;
} kFunctions[] = {
    {"OBJECT_ID", 1, "select id from sysobjects where name = ?1"},
    {"COLUMNPROPERTY", 3,
     "select status >> 7 & 1 from syscolumns where id = ?1 and name = ?2 and lower(?3) = 'isidentity'"},
    {"INDEXPROPERTY", 3,
     "select case lower(?3) when 'isunique' then status >> 1 & 1 when 'isclustered' then indid = 1 end"
     " from sysindexes where id = ?1 and name = ?2"},
    {"INDEX_COL", 3,
     "select c.name from sysindexkeys k join syscolumns c on c.id = k.id and c.colid = k.colid"
     " where k.id = object_id(?1) and k.indid = ?2 and k.keyno = ?3"},
    {"INDEXKEY_PROPERTY", 4,
     "select descending from sysindexkeys where id = ?1 and indid = ?2 and keyno = ?3 and lower(?4) = 'isdescending'"},
};

// In front of declared types, so that SQLite leaves values as they were given: numbers keep all their digits.
constexpr std::string_view kKeptAsText = "as_text ", kKeptAsBytes = "as_blob ";

struct TFinalize {
  void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
using TStatement = std::unique_ptr<sqlite3_stmt, TFinalize>;

TStatement Prepare(sqlite3* file, const char* sql, const char** rest = nullptr) {
  sqlite3_stmt* statement = nullptr;
  if (sqlite3_prepare_v2(file, sql, -1, &statement, rest) != SQLITE_OK) throw std::runtime_error(sqlite3_errmsg(file));
  return TStatement(statement);
}

void CallFunction(sqlite3_context* context, int count, sqlite3_value** arguments) {
  const auto* query = static_cast<const char*>(sqlite3_user_data(context));
  const TStatement statement = Prepare(sqlite3_context_db_handle(context), query);
  for (int i = 0; i < count; ++i) sqlite3_bind_value(statement.get(), i + 1, arguments[i]);
  if (sqlite3_step(statement.get()) == SQLITE_ROW)
    sqlite3_result_value(context, sqlite3_column_value(statement.get(), 0));
}

std::string_view NextPiece(std::string_view sql, std::size_t at) {
  const char c = sql[at];
  const bool quoted = c == '\'' || c == '"' || c == '[';
  if (quoted) return sql.substr(at, std::min(sql.size(), sql.find(c == '[' ? ']' : c, at + 1)) - at + 1);
  std::size_t end = at + 1;
  const auto word = [](char letter) { return isalnum(static_cast<unsigned char>(letter)) != 0 || letter == '_'; };
  if (word(c))
    while (end < sql.size() && word(sql[end])) ++end;
  return sql.substr(at, end - at);
}

// SQLite's form of a statement: "top n" becomes "limit n" behind its query, 0xAB becomes x'AB'.
std::string Adapted(std::string_view sql) {
  std::string out;
  std::vector<std::string> limits(1);  // one per open bracket
  const auto close = [&] {
    out += limits.back();
    limits.pop_back();
  };
  for (std::size_t at = 0; at < sql.size();) {
    const std::string_view piece = NextPiece(sql, at);
    at += piece.size();
    if (SameText(piece, "top")) {
      const std::string_view number = NextPiece(sql, ++at);
      limits.back() = " limit " + std::string(number);
      at += number.size();
    } else if (piece.starts_with("0x")) {
      out += "x'" + std::string(piece.substr(2)) + "'";
    } else {
      if (piece == "(") limits.emplace_back();
      if (piece == ")" && limits.size() > 1) close();
      out += piece;
    }
  }
  close();
  return out;
}

TTdsValue ValueOf(sqlite3_stmt* statement, int column) {
  if (sqlite3_column_type(statement, column) == SQLITE_NULL) return {};
  const auto* bytes = static_cast<const char*>(sqlite3_column_blob(statement, column));
  const auto size = static_cast<std::size_t>(sqlite3_column_bytes(statement, column));
  return bytes == nullptr ? std::string() : std::string(bytes, size);
}

// The type of a column that no table declares, by its values.
const char* TypeOf(int value_type) {
  switch (value_type) {
    case SQLITE_INTEGER:
      return "int";
    case SQLITE_FLOAT:
      return "float";
    case SQLITE_BLOB:
      return "varbinary(8000)";
    default:
      return "nvarchar(4000)";
  }
}

TTdsResult Fetch(sqlite3* file, sqlite3_stmt* statement) {
  TTdsResult result;
  const int columns = sqlite3_column_count(statement);
  std::vector<int> kinds(static_cast<std::size_t>(columns), SQLITE_NULL);
  int state;
  while ((state = sqlite3_step(statement)) == SQLITE_ROW) {
    std::vector<TTdsValue>& row = result.rows.emplace_back();
    for (int i = 0; i < columns; ++i) {
      int& kind = kinds[static_cast<std::size_t>(i)];
      if (kind == SQLITE_NULL) kind = sqlite3_column_type(statement, i);
      row.push_back(ValueOf(statement, i));
    }
  }
  if (state != SQLITE_DONE) throw std::runtime_error(sqlite3_errmsg(file));
  for (int i = 0; i < columns; ++i) {
    const char* declared = sqlite3_column_decltype(statement, i);
    std::string_view type = declared == nullptr ? TypeOf(kinds[static_cast<std::size_t>(i)]) : declared;
    if (type.starts_with(kKeptAsText) || type.starts_with(kKeptAsBytes)) type.remove_prefix(kKeptAsText.size());
    result.columns.push_back({sqlite3_column_name(statement, i), TTdsType(type)});
  }
  if (columns == 0) result.affected = sqlite3_changes64(file);
  return result;
}

}  // namespace

TTdsCatalog::TTdsCatalog(const std::string& folder) {
  sqlite3* file = nullptr;
  sqlite3_open((folder + "/rows.db").c_str(), &file);
  file_.reset(file);
  Run(Format(kOpen, "'" + folder + "/views.db'"));
  for (const auto& f : kFunctions)
    sqlite3_create_function(file, f.name, f.arguments, SQLITE_UTF8, const_cast<char*>(f.query), CallFunction, nullptr,
                            nullptr);
  if (RunOne("select name from sqlite_master").rows.empty()) Run(kSchema);
}

std::vector<TTdsResult> TTdsCatalog::Run(const std::string& sql, const std::vector<TTdsValue>& values) {
  std::vector<TTdsResult> results;
  const std::string text = Adapted(sql);
  for (const char* rest = text.c_str(); *rest != '\0';) {
    const TStatement statement = Prepare(file_.get(), rest, &rest);
    if (!statement) continue;  // blanks
    for (std::size_t i = 0; i < values.size(); ++i)
      if (values[i])
        sqlite3_bind_text(statement.get(), static_cast<int>(i) + 1, values[i]->data(),
                          static_cast<int>(values[i]->size()), SQLITE_TRANSIENT);
    results.push_back(Fetch(file_.get(), statement.get()));
  }
  return results;
}

TTdsResult TTdsCatalog::RunOne(const std::string& sql, const std::vector<TTdsValue>& values) {
  return Run(sql, values).at(0);
}

std::string QuotedTdsName(const std::string& name) { return "\"" + StrReplace(name, "\"", "\"\"") + "\""; }

TTdsTable::TTdsTable(TTdsCatalog& catalog, const std::string& name, const std::string& kind)
    : catalog_(catalog), name_(name) {
  catalog.RunOne("insert into sysobjects select ?1, coalesce(max(id), 1000) + 1, ?2, 0 from sysobjects", {name, kind});
  id_ = *catalog.RunOne("select cast(max(id) as text) from sysobjects").rows.at(0).at(0);
}

TTdsTable& TTdsTable::Write(const std::string& sql, std::vector<TTdsValue> values) {
  values.insert(values.begin(), id_);
  catalog_.RunOne(sql, values);
  return *this;
}

TTdsTable& TTdsTable::Column(const std::string& name, const std::string& type, const std::string& nullable) {
  const TTdsType wire(type);
  const auto number = [](std::optional<int> n) { return n ? std::to_string(*n) : "null"; };
  Write("insert into syscolumns select ?2, ?1, count(*) + 1, ?3 from syscolumns where id = ?1",
        {name, wire.Identity() ? "128" : "0"});
  Write(Format("insert into INFORMATION_SCHEMA.COLUMNS select 'shop', 'dbo', ?2, ?3, count(*), null, ?4, ?5, %s, %s,"
               " %s, 10, %s, null from syscolumns where id = ?1",
               number(wire.Characters()), number(wire.Characters()), number(wire.Precision()), number(wire.Scale())),
        {name_, name, nullable, std::string(wire.Name())});
  const std::string kept = QuotedTdsName(name) + " " + std::string(wire.Binary() ? kKeptAsBytes : kKeptAsText) +
                           StrReplace(type, "(max)", "(-1)");
  const bool first = catalog_.RunOne("select 1 from sqlite_master where name = ?1", {name_}).rows.empty();
  return Write(Format(first ? "create table %s (%s)" : "alter table %s add %s", QuotedTdsName(name_), kept), {});
}

TTdsTable& TTdsTable::Constraint(const std::string& name, int status, const std::string& column,
                                 const std::string& text) {
  const TTdsTable constraint(catalog_, name, "C");
  if (!text.empty()) Write("insert into syscomments values (?2, 1, ?3)", {constraint.id_, text});
  return Write(
      "insert into sysconstraints values (?2, ?1,"
      " coalesce((select colid from syscolumns where id = ?1 and name = ?3), 0), ?4)",
      {constraint.id_, column, std::to_string(status)});
}

TTdsTable& TTdsTable::Default(const std::string& name, const std::string& column, const std::string& text) {
  Constraint(name, 0x805 | 0x10, column, text);
  return Write("update INFORMATION_SCHEMA.COLUMNS set COLUMN_DEFAULT = ?2 where TABLE_NAME = ?3 and COLUMN_NAME = ?4",
               {text, name_, column});
}

TTdsTable& TTdsTable::Index(const std::string& name, const std::vector<std::string>& keys, TTdsIndexFlags flags) {
  const std::string indid =
      flags.clustered ? "1" : "(select max(2, coalesce(max(indid), 0) + 1) from sysindexes where id = ?1)";
  Write("insert into sysindexes values (?1, ?2, " + indid + ", ?3)",
        {std::to_string((flags.unique ? 2 : 0) | (flags.clustered ? 16 : 0)), name});
  for (std::size_t i = 0; i < keys.size(); ++i) {
    const bool descending = keys[i].ends_with(" desc");
    Write(
        "insert into sysindexkeys select ?1, i.indid, c.colid, ?4, ?5 from sysindexes i, syscolumns c"
        " where i.id = ?1 and i.name = ?2 and c.id = ?1 and c.name = ?3",
        {name, descending ? keys[i].substr(0, keys[i].size() - 5) : keys[i], std::to_string(i + 1),
         descending ? "1" : "0"});
  }
  return *this;
}

TTdsTable& TTdsTable::Primary(const std::string& name, const std::vector<std::string>& keys, bool clustered) {
  return Index(name, keys, {.unique = true, .clustered = clustered}).Constraint(name, 1 | 0x20, "", "");
}

TTdsTable& TTdsTable::Unique(const std::string& name, const std::vector<std::string>& keys) {
  return Index(name, keys, {.unique = true}).Constraint(name, 2 | 0x20, "", "");
}

TTdsTable& TTdsTable::Check(const std::string& name, const std::string& text, const std::string& column) {
  return Constraint(name, 4 | (column.empty() ? 0x20 : 0x10), column, text);
}

TTdsTable& TTdsTable::Foreign(const std::string& name, const std::vector<std::string>& local, const std::string& table,
                              const std::vector<std::string>& foreign) {
  Constraint(name, 3 | (local.size() == 1 ? 0x10 : 0x20), local.size() == 1 ? local[0] : "", "");
  Write("insert into sysreferences (constid, fkeyid, rkeyid) select object_id(?2), ?1, object_id(?3)", {name, table});
  for (std::size_t i = 0; i < local.size(); ++i)
    Write(Format("update sysreferences set fkey%d = (select colid from syscolumns where id = fkeyid and name = ?3),"
                 " rkey%d = (select colid from syscolumns where id = rkeyid and name = ?4)"
                 " where constid = object_id(?2) and ?1",
                 i + 1, i + 1),
          {name, local[i], foreign[i]});
  return *this;
}

TTdsTable& TTdsTable::Row(const std::vector<TTdsValue>& values) {
  std::string marks;
  for (std::size_t i = 0; i < values.size(); ++i) marks += (i == 0 ? "?" : ", ?");
  catalog_.RunOne(Format("insert into %s values (%s)", QuotedTdsName(name_), marks), values);
  return *this;
}

}  // namespace velmora::testing

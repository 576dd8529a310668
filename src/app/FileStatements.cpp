#include "app/FileStatements.h"

#include <algorithm>

#include "engines/mysql/StatementReader.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kSeveral[] = "it holds tables of several databases (%s), and only those of one can be the reference";
constexpr char kFault[] = "line %d: table %s: %s";
constexpr char kPassedOver[] = "line %d: \"%s\" is not run: tables that it makes or changes are not known";
constexpr std::size_t kShownChars = 60;

// First words of statements that make no tables.
const TStringList& HarmlessWords() {
  static const TStringList kWords = {
      "insert",   "replace",  "update",   "delete",  "set",      "lock",     "unlock", "start", "begin",
      "commit",   "rollback", "create",   "drop",    "alter",    "grant",    "revoke", "flush", "analyze",
      "optimize", "check",    "show",     "select",  "truncate", "load",     "do",     "use",   "declare",
      "end",      "handler",  "reset",    "explain", "kill",     "change",   "stop",   "purge", "savepoint",
      "release",  "repair",   "describe", "desc",    "help",     "delimiter"};
  return kWords;
}

struct TRawStatement {
  std::string_view text;
  std::size_t line = 0;
};

// Reads what TStatementReader takes for comments too: those for servers of a version.
class TWholeReader {
 public:
  explicit TWholeReader(std::string_view script) : script_(script) {}

  std::vector<TRawStatement> Read() {
    TStatementReader reader(script_);
    for (TStatement statement; reader.Next(statement);) {
      const auto start = static_cast<std::size_t>(statement.text.data() - script_.data());
      ReadGap(start);
      at_ = start + statement.text.size();
      Add(std::min(open_, start), at_);
    }
    ReadGap(script_.size());
    if (open_ != kNone) Add(open_, last_);
    return std::move(statements_);
  }

 private:
  static constexpr std::size_t kNone = std::string_view::npos;

  // From at_ on there are blanks, comments and delimiters, which end what was begun.
  void ReadGap(std::size_t end) {
    while (at_ < end) {
      const std::size_t behind = std::min(CommentEnd(script_, at_), end);
      if (behind > at_) {
        TakeComment(behind);
      } else {
        if (static_cast<unsigned char>(script_[at_]) > ' ' && open_ != kNone) Add(open_, last_);
        ++at_;
      }
    }
  }

  void TakeComment(std::size_t behind) {
    const std::string_view comment = script_.substr(at_, behind - at_);
    if (comment.starts_with("/*!") || comment.starts_with("/*M!")) {
      open_ = std::min(open_, at_);
      last_ = behind;
    }
    at_ = behind;
  }

  void Add(std::size_t start, std::size_t end) {
    open_ = kNone;
    lines_ += static_cast<std::size_t>(std::count(script_.begin() + static_cast<std::ptrdiff_t>(counted_),
                                                  script_.begin() + static_cast<std::ptrdiff_t>(start), '\n'));
    counted_ = start;
    statements_.push_back({script_.substr(start, end - start), lines_});
  }

  std::string_view script_;
  std::size_t at_ = 0;
  std::size_t open_ = kNone;  // where a statement began with a comment for a version
  std::size_t last_ = 0;      // behind the last one of these
  std::size_t counted_ = 0;
  std::size_t lines_ = 1;
  std::vector<TRawStatement> statements_;
};

bool IsOfTables(const TTableStatement& statement) { return statement.kind > ETableStatement::CreateDatabase; }

std::string Beginning(std::string_view statement) {
  const std::string_view line = TrimView(statement.substr(0, statement.find('\n')));
  return CutChars(line.substr(0, 4 * kShownChars), kShownChars);
}

bool MayMakeTables(std::string_view statement) {
  const std::string_view word = statement.substr(0, statement.find_first_of(" \t\r\n(/`;"));
  return !word.empty() && IndexOf(HarmlessWords(), std::string(word)) == kNotInList;
}

class TCollector {
 public:
  TFileStatements Collect(std::string_view script) {
    const std::vector<TRawStatement> raw = TWholeReader(script).Read();
    std::vector<TTableStatement> read;
    read.reserve(raw.size());
    for (const TRawStatement& statement : raw) read.push_back(Read(statement));
    FindOwn(read);
    for (std::size_t i = 0; i < raw.size(); ++i) Take(raw[i], std::move(read[i]));
    if (!faults_.empty()) RaiseError(JoinList(faults_, "\n"));
    return std::move(result_);
  }

 private:
  // What cannot be read as a statement of tables is none: bodies of routines may hold anything.
  static TTableStatement Read(const TRawStatement& statement) {
    try {
      return ReadTableStatement(statement.text);
    } catch (const EVelmora&) {
      return {};
    }
  }

  void FindOwn(const std::vector<TTableStatement>& statements) {
    TStringList used, created;
    std::string current;
    const TTableStatement* first = nullptr;
    const auto add = [](TStringList& names, const std::string& name) {
      if (!name.empty() && std::find(names.begin(), names.end(), name) == names.end()) names.push_back(name);
    };
    for (const TTableStatement& statement : statements) {
      if (statement.kind == ETableStatement::Use) current = statement.database;
      if (statement.kind == ETableStatement::CreateDatabase) add(created, statement.database);
      if (!IsOfTables(statement) || statement.changes.empty()) continue;
      if (statement.changes.front().database.empty()) add(used, current);
      if (statement.kind == ETableStatement::CreateTable && first == nullptr) first = &statement;
    }
    if (used.size() > 1) RaiseError(Format(kSeveral, JoinList(used, ", ")));
    if (used.empty()) add(used, current);
    if (used.empty() && created.size() == 1) used = created;
    if (used.empty() && first != nullptr) used = {first->changes.front().database};
    if (!used.empty()) own_ = used.front();
  }

  void Take(const TRawStatement& raw, TTableStatement about) {
    if (!IsOfTables(about) || about.changes.empty()) {
      if (MayMakeTables(raw.text)) result_.warnings.push_back(Format(kPassedOver, raw.line, Beginning(raw.text)));
      return;
    }
    try {
      result_.statements.push_back({TextForScratch(raw.text, own_), raw.line, about});
    } catch (const EVelmora& error) {
      faults_.push_back(Format(kFault, raw.line, about.changes.front().table, error.what()));
    }
  }

  std::string own_;
  TStringList faults_;
  TFileStatements result_;
};

}  // namespace

TFileStatements ReadFileStatements(std::string_view script) { return TCollector().Collect(script); }

}  // namespace velmora

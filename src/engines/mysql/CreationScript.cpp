#include "engines/mysql/CreationScript.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

#include "core/MetaTable.h"
#include "engines/mysql/StatementHead.h"
#include "engines/mysql/StatementReader.h"
#include "util/Errors.h"
#include "util/Files.h"
#include "util/Format.h"

namespace velmora {

namespace {

constexpr char kNoTables[] = "no create table statement: taken as an empty database";
constexpr char kCreatedAgain[] = "table %s is created again, in place of the one of line %d";
constexpr char kStructurePassedOver[] = "statements passed over that may change the structure: %s";
constexpr char kPassedOver[] = "passed over: %s";
constexpr char kPassedOverMany[] = "passed over: %s (and %d more like it)";
constexpr std::size_t kShownChars = 60;

struct TCountedKind {
  EStatementKind kind;
  std::string_view words;
};
constexpr TCountedKind kCountedKinds[] = {{EStatementKind::ReplaceTable, "create or replace table"},
                                          {EStatementKind::AlterTable, "alter table"},
                                          {EStatementKind::CreateIndex, "create index"},
                                          {EStatementKind::Rename, "rename"},
                                          {EStatementKind::Drop, "drop"}};

std::string_view FirstWord(std::string_view statement) {
  return statement.substr(0, statement.find_first_of(" \t\r\n(/`"));
}

std::string Beginning(std::string_view statement) {
  const std::string_view line = TrimView(statement.substr(0, statement.find('\n')));
  const std::string shown = CutChars(line.substr(0, 4 * kShownChars), kShownChars);  // no character is longer
  return shown.size() < statement.size() ? shown + "..." : shown;
}

}  // namespace

// Where a recorded statement stands in the buffer.
struct TCreationScript::TSpan {
  std::size_t start, end;
  TStatementHead head;
  std::size_t line;
};

// Goes through the statements of a script and sorts them into spans and warnings. Statements passed over are told one
// by one; a run of the same first word that does not concern the structure, such as the rows of a dump, is told once.
class TCreationScript::TCollector {
 public:
  TCollector(std::vector<TSpan>& spans, std::vector<TScriptWarning>& warnings) : spans_(spans), warnings_(warnings) {}

  void Read(std::string_view script) {
    TStatementReader reader(script);
    TStatement statement;
    while (reader.Next(statement)) {
      const TStatementHead head = ReadStatementHead(statement.text);
      if (head.kind == EStatementKind::CreateTable) {
        const auto start = static_cast<std::size_t>(statement.text.data() - script.data());
        spans_.push_back({start, start + statement.text.size(), head, statement.line});
      } else {
        ++counts_[static_cast<std::size_t>(head.kind)];
        PassOver(statement, head.kind == EStatementKind::Other);
      }
    }
    EndRun();
    WarnOfStructure();
  }

 private:
  void PassOver(const TStatement& statement, bool may_join) {
    if (may_join && run_length_ > 0 && SameText(FirstWord(statement.text), FirstWord(run_.text))) {
      ++run_length_;
      return;
    }
    EndRun();
    run_ = statement;
    run_length_ = 1;
  }

  void EndRun() {
    if (run_length_ == 0) return;
    const std::string beginning = Beginning(run_.text);
    warnings_.push_back(
        {run_length_ == 1 ? Format(kPassedOver, beginning) : Format(kPassedOverMany, beginning, run_length_ - 1),
         run_.line, true});
    run_length_ = 0;
  }

  void WarnOfStructure() {
    std::string counted;
    for (const TCountedKind& row : kCountedKinds) {
      const std::size_t count = counts_[static_cast<std::size_t>(row.kind)];
      if (count > 0) counted += Format("%s%s (%d)", counted.empty() ? "" : ", ", std::string(row.words), count);
    }
    if (!counted.empty()) warnings_.push_back({Format(kStructurePassedOver, counted)});
  }

  std::vector<TSpan>& spans_;
  std::vector<TScriptWarning>& warnings_;
  std::array<std::size_t, static_cast<std::size_t>(EStatementKind::Other) + 1> counts_{};
  TStatement run_;
  std::size_t run_length_ = 0;
};

std::string TScriptWarning::Message() const { return line == 0 ? text : Format("line %d: %s", line, text); }

TCreationScript::TCreationScript(std::string script) : buffer_(std::move(script)) {
  std::vector<TSpan> spans;
  TCollector(spans, warnings_).Read(buffer_);
  Pack(spans);
  AddTables(spans);
  if (tables_.empty()) warnings_.push_back({kNoTables});
  std::stable_sort(warnings_.begin(), warnings_.end(),
                   [](const TScriptWarning& a, const TScriptWarning& b) { return a.line < b.line; });
}

std::shared_ptr<const TCreationScript> TCreationScript::Load(const std::string& path) {
  std::string script = ReadFileText(path);
  try {
    return std::make_shared<const TCreationScript>(std::move(script));
  } catch (const EVelmora& fault) {
    RaiseError(path + ": " + fault.what());
  }
}

const TCreationText* TCreationScript::Find(std::string_view name) const {
  const auto found = index_.find(name);
  return found == index_.end() ? nullptr : &tables_[found->second];
}

std::size_t TCreationScript::THash::operator()(std::string_view name) const { return NameHash(name); }

// Moves the recorded texts to the front of the buffer, databases cut out, and gives the rest of its memory back.
void TCreationScript::Pack(std::vector<TSpan>& spans) {
  std::size_t used = 0;
  const auto keep = [this, &used](std::size_t from, std::size_t to) {
    std::memmove(buffer_.data() + used, buffer_.data() + from, to - from);
    used += to - from;
  };
  for (TSpan& span : spans) {
    const std::size_t start = used;
    keep(span.start, span.start + span.head.qualifier);
    keep(span.start + span.head.name, span.end);
    span.head.name_end -= span.head.name - span.head.qualifier;
    span.head.name = span.head.qualifier;
    span.start = start;
    span.end = used;
  }
  buffer_.resize(used);
  buffer_.shrink_to_fit();
}

void TCreationScript::AddTables(const std::vector<TSpan>& spans) {
  const std::string_view buffer = buffer_;
  tables_.reserve(spans.size());
  index_.reserve(spans.size());
  for (const TSpan& span : spans) {
    TCreationText table{{}, buffer.substr(span.start, span.end - span.start), span.line};
    table.name = table.text.substr(span.head.name, span.head.name_end - span.head.name);
    if (table.name.size() > 1 && table.name.front() == '`') table.name = table.name.substr(1, table.name.size() - 2);
    const auto [place, added] = index_.emplace(table.name, tables_.size());
    if (added) {
      tables_.push_back(table);
      continue;
    }
    TCreationText& earlier = tables_[place->second];
    warnings_.push_back({Format(kCreatedAgain, std::string(table.name), earlier.line), table.line});
    earlier = table;
  }
}

}  // namespace velmora

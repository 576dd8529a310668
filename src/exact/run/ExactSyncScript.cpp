// SPDX-License-Identifier: GPL-3.0-or-later
#include <algorithm>

#include "core/CreationTexts.h"
#include "exact/run/ExactSync.h"
#include "exact/run/ScriptComment.h"
#include "exact/run/StructureDigest.h"
#include "mysqltext/ColumnType.h"
#include "mysqltext/StatementReader.h"
#include "sync/ScriptGenerator.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kSaveChecks[] = "set @velmora_foreign_key_checks = @@foreign_key_checks;";
constexpr char kChecksOff[] = "set foreign_key_checks = 0;";
constexpr char kRestoreChecks[] = "set foreign_key_checks = @velmora_foreign_key_checks;";
// Servers of today refuse zero dates to a session that does not say otherwise, even in columns that stay as they are.
constexpr char kSaveMode[] = "set @velmora_sql_mode = @@sql_mode;";
constexpr char kZeroDates[] =
    "set sql_mode = replace(replace(replace(@@sql_mode, 'NO_ZERO_DATE', ''), 'NO_ZERO_IN_DATE', ''), 'TRADITIONAL', "
    "'');";
constexpr char kRestoreMode[] = "set sql_mode = @velmora_sql_mode;";
constexpr char kInPart[] = ": read in part, so that nothing here tells whether it is still what this was made for";
constexpr char kUnsafe[] = "unsafe: ";
constexpr char kLocks[] = "alter table %s: %s";
// Servers look at the rows of a table that gets a foreign key only with checks on.
constexpr char kChecksOn[] = "set foreign_key_checks = 1;";
constexpr char kUnchecked[] =
    "foreign keys are added without a look at the rows: first make sure that none is without the one it refers to";

// '0000-00-00', '2020-00-01', '2020-01-00 00:00:00'
bool IsZeroDate(const std::string& text) {
  constexpr std::size_t kYear = 1;
  constexpr std::size_t kMonth = 5;
  constexpr std::size_t kDay = 8;
  return text.starts_with("'") &&
         (text.find("0000") == kYear || text.find("-00") == kMonth || text.find("-00", kDay) == kDay);
}

void AddStatement(const TPlanStatement& statement, TScriptEditor& editor) {
  for (const std::string& line :
       statement.object.empty() ? TStringList{statement.text + ";"} : Delimited(statement.text))
    editor.AddLine(line);
}

bool HasZeroDate(const TTableText* table) {
  return table != nullptr &&
         std::any_of(table->elements.begin(), table->elements.end(), [table](const TElement& element) {
           if (element.kind != EElement::Column || element.text.Str().find("-00") == std::string::npos) return false;
           const TColumnText column = ReadColumnText(element.text, *table);
           return InList(column.type, {"date", "datetime", "timestamp"}) &&
                  IsZeroDate(column.default_text.value_or(""));
         });
}

}  // namespace

bool TExactSync::MeetsZeroDates(const std::vector<TPlanStatement>& plan) const {
  return std::any_of(plan.begin(), plan.end(), [this](const TPlanStatement& statement) {
    return HasZeroDate(read_.reference.schema.Find(statement.table)) || HasZeroDate(Target().Find(statement.table));
  });
}

// Of a file nobody knows how a server would print it, and of what was skipped or left out not what it says.
TStringList TExactSync::DigestLines() const {
  auto* texts = dynamic_cast<TCreationTexts*>(connections_.target.get());
  if (texts == nullptr || texts->StructureScript() != nullptr || !read_.skipped.empty()) return {};
  const bool in_part = read_.put_aside || !read_.left_out.tables.empty() || !read_.left_out.objects.empty();
  if (in_part) return {std::string(kStructureLine) + kTargetSide + kInPart};
  const bool others = dynamic_cast<TCreationTexts*>(connections_.reference.get()) != nullptr;
  return {DigestLine(kReferenceSide, DigestOf(read_.reference.texts, others ? &read_.wanted_objects : nullptr)),
          DigestLine(kTargetSide, DigestOf(read_.target.texts, others ? &read_.target_objects : nullptr))};
}

void TExactSync::GenerateScript(TScriptEditor& editor, const TClock& clock, const std::string& note) const {
  editor.Clear();
  editor.AddLine(ScriptComment(ScriptOrigin(clock)));
  editor.AddLine(ScriptComment(ScriptPurpose(connections_)));
  if (!note.empty()) editor.AddLine(ScriptComment(note));
  for (const std::string& line : DigestLines()) editor.AddLine(line);
  if (Wishes.locks.fast_foreign_keys) editor.AddLine(ScriptComment(kUnchecked));
  WriteStatements(Plan(), editor);
}

void TExactSync::WriteStatements(const std::vector<TPlanStatement>& plan, TScriptEditor& editor) const {
  editor.AddLine({});
  editor.AddLine(kSaveChecks);
  editor.AddLine(kChecksOff);
  const bool zero_dates = MeetsZeroDates(plan);
  if (zero_dates) {
    editor.AddLine(kSaveMode);
    editor.AddLine(kZeroDates);
  }
  editor.AddLine({});
  bool checks_on = false;
  for (const TPlanStatement& statement : plan) {
    if (statement.checks_on != checks_on) editor.AddLine(statement.checks_on ? kChecksOn : kChecksOff);
    checks_on = statement.checks_on;
    for (const std::string& reason : statement.unsafe) editor.AddLine(ScriptComment(kUnsafe + reason));
    if (statement.lock != ELockClass::None)
      editor.AddLine(ScriptComment(Format(kLocks, statement.table, LockOf(statement).text)));
    if (!statement.note.empty()) editor.AddLine(ScriptComment(statement.note));
    AddStatement(statement, editor);
  }
  editor.AddLine({});
  if (zero_dates) editor.AddLine(kRestoreMode);
  editor.AddLine(kRestoreChecks);
  editor.Show();
}

}  // namespace velmora

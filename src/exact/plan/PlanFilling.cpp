// SPDX-License-Identifier: GPL-3.0-or-later
#include "exact/plan/PlanFilling.h"

#include <algorithm>
#include <array>

#include "mysqltext/ColumnParts.h"
#include "mysqltext/KeyText.h"
#include "mysqltext/Lexer.h"
#include "util/Lists.h"
#include "util/Text.h"

namespace velmora {

namespace {

// What MySQL takes for unsafe to repeat on a replica (MySQL 8.4 Reference Manual, 19.2.1.3 Determination of Safe and
// Unsafe Statements in Binary Logging), and allows in defaults.
constexpr std::array<std::string_view, 9> kFickleCalls = {
    "rand", "uuid", "uuid_short", "random_bytes", "sysdate", "user", "current_user", "session_user", "system_user"};

bool IsFickle(const std::string& value) {
  const std::vector<TToken> tokens = Tokens(value);
  if (!TokenAt(tokens, 0).Is("(")) return false;
  return std::any_of(tokens.begin(), tokens.end(), [](const TToken& token) {
    return std::any_of(kFickleCalls.begin(), kFickleCalls.end(),
                       [&token](std::string_view call) { return IsKeyword(token, call); });
  });
}

bool NotesUpdates(const TElementText& column) {
  const TTokens tokens = column.Tokens();
  for (std::size_t at = 0; at + 1 < tokens.size(); ++at)
    if (IsKeyword(tokens[at], "on") && IsKeyword(tokens[at + 1], "update")) return true;
  return false;
}

// The columns that note updates once the table's statement has run.
TStringList NotingColumns(const TTableWork& work) {
  TStringList names;
  const auto change_of = [&work](const std::string& name) {
    const auto found = std::find_if(work.changes.begin(), work.changes.end(), [&name](const TChange* change) {
      return IsColumnChange(*change) && SameText(change->item, name);
    });
    return found == work.changes.end() ? nullptr : *found;
  };
  for (const TElement& element : work.target->elements) {
    if (element.kind != EElement::Column) continue;
    const TChange* change = change_of(element.name);
    if (NotesUpdates(change == nullptr ? element.text : change->new_text)) names.push_back(element.name);
  }
  for (const TChange* change : work.changes)
    if (change->action == saAddColumn && NotesUpdates(change->new_text)) names.push_back(change->item);
  return names;
}

}  // namespace

namespace {

bool Comes(const TChange& change, const TTableWork& work) {
  return change.action == saAddColumn || IsReplaced(change, work);
}

bool HasFickleDefault(const TChange& change) {
  return change.new_column != nullptr && change.new_column->default_text && IsFickle(*change.new_column->default_text);
}

}  // namespace

bool IsFilledLater(const TChange& change, const TTableWork& work) {
  return Comes(change, work) && HasFickleDefault(change);
}

bool IsFilledByUpdate(const TChange& change) { return HasFickleDefault(change) && change.new_column->not_null; }

bool GetsDefaultLater(const TChange& change, const TTableWork& work) {
  if (change.action != saModifyColumn || !HasFickleDefault(change)) return false;
  return std::any_of(work.changes.begin(), work.changes.end(),
                     [&work](const TChange* other) { return IsColumnChange(*other) && Comes(*other, work); });
}

std::string TextWithoutDefault(const std::string& column, bool nulls) {
  const std::vector<TToken> tokens = Tokens(column);
  const TColumnParts parts = ReadColumnParts(TTokens(tokens).first(tokens.size() - 1));
  std::string text;
  const auto add = [&](std::size_t first, std::size_t last) {
    if (first < last) text += (text.empty() ? "" : " ") + TextOf(column, tokens, first, last);
  };
  std::size_t from = 0;
  for (std::size_t at = 0; at + 1 < tokens.size(); at = AfterValue(tokens, at)) {
    const bool is_default = parts.default_value && at + 1 == parts.default_value->first;
    const bool is_not_null = nulls && IsKeyword(tokens[at], "not") && IsKeyword(tokens[at + 1], "null");
    // MariaDB wants a default for a column that nobody fills.
    const bool is_invisible = IsKeyword(tokens[at], "invisible");
    if (!is_default && !is_not_null && !is_invisible) continue;
    add(from, at);
    from = is_default ? parts.default_value->last : at + 1;
  }
  add(from, tokens.size() - 1);
  return text;
}

bool ComesNotNull(const TChange& change, const TTableWork& work) {
  const TElement* key = work.reference->Find(EElement::PrimaryKey, "PRIMARY");
  if (key == nullptr) return false;
  const std::vector<TKeyPart>& parts = key->text.KeyParts();
  const auto is_it = [&change](const TKeyPart& part) { return SameText(part.column, change.item); };
  const auto is_counter = [&work](const TKeyPart& part) {
    const TElement* column = work.reference->Find(EElement::Column, part.column);
    return column != nullptr && column->text.Column().auto_increment;
  };
  if (std::none_of(parts.begin(), parts.end(), is_it)) return false;
  const bool changes = std::any_of(work.changes.begin(), work.changes.end(), [](const TChange* other) {
    return !other->new_text.Empty() && other->kind == EElement::PrimaryKey;
  });
  return !changes || std::any_of(parts.begin(), parts.end(), is_counter);
}

bool NamesFilledColumn(const TElementText& key, const TTableWork& work) {
  const std::vector<TKeyPart>& parts = key.KeyParts();
  return std::any_of(work.changes.begin(), work.changes.end(), [&](const TChange* change) {
    return IsFilledLater(*change, work) && !ComesNotNull(*change, work) &&
           std::any_of(parts.begin(), parts.end(),
                       [change](const TKeyPart& part) { return SameText(part.column, change->item); });
  });
}

TPlanStatement FillingStatement(const TTableWork& work) {
  TPlanStatement statement;
  std::string values;
  for (const TChange* change : work.changes) {
    if (!IsFilledLater(*change, work) || !IsFilledByUpdate(*change)) continue;
    values += (values.empty() ? "" : ", ") + QuotedName(change->item) + " = " + *change->new_column->default_text;
    statement.actions.push_back(change->id);
  }
  if (values.empty()) return statement;
  for (const std::string& column : NotingColumns(work))
    values += ", " + QuotedName(column) + " = " + QuotedName(column);
  statement.text = "update " + QuotedName(work.name) + " set " + values;
  statement.table = work.name;
  return statement;
}

}  // namespace velmora

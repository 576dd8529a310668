// SPDX-License-Identifier: GPL-3.0-or-later
#include "exact/objects/FoldedNames.h"

#include <cstddef>
#include <set>
#include <utility>
#include <vector>

#include "exact/objects/ObjectContext.h"
#include "exact/objects/TableMentions.h"
#include "mysqltext/ElementText.h"
#include "mysqltext/KeyText.h"
#include "mysqltext/Lexer.h"
#include "util/Errors.h"
#include "util/Text.h"

namespace velmora {

namespace {

// "create ... view v (a) as select ...", "create sequence s ..."
class TSpelling {
 public:
  TSpelling(const TFoldedNames& names, const TOtherObject& object, const std::string& database)
      : names_(names), text_(object.text), tokens_(TokensOf(object)), database_(database) {
    const std::size_t own = OwnName(object.kind);
    if (own == tokens_.size()) return;
    places_.insert(own);
    if (object.kind == "view") AddQuery(own + 1);
  }

  std::string Spelled() const {
    std::string text;
    std::size_t done = 0;
    for (const std::size_t at : places_) {
      const TToken& token = tokens_[at];
      const std::string name = NameOf(token);
      const std::string spelled = names_.Spelled(name);
      if (spelled == name) continue;
      text += text_.substr(done, token.start - done) + (token.kind == EToken::Word ? spelled : QuotedName(spelled));
      done = token.End();
    }
    return text + text_.substr(done);
  }

 private:
  const TToken& Token(std::size_t at) const { return TokenAt(tokens_, at); }

  // Behind the word for the kind; the end where there is none.
  std::size_t OwnName(std::string_view kind) const {
    std::size_t at = 1;
    while (at < tokens_.size() && (!IsKeyword(tokens_[at], kind) || Token(at - 1).Is("=") || Token(at - 1).Is("@")))
      ++at;
    if (++at >= tokens_.size()) return tokens_.size();
    if (IsKeyword(tokens_[at], "if")) at += 3;
    if (Token(at + 1).Is(".")) at += 2;
    return IsName(Token(at)) ? at : tokens_.size();
  }

  void AddQuery(std::size_t first) {
    while (first < tokens_.size() && !IsKeyword(tokens_[first], "as")) ++first;
    if (first >= tokens_.size()) return;
    const TTokens query = TTokens(tokens_).subspan(first + 1);
    std::set<std::size_t> databases;
    for (const TTableMention& mention : TableMentions(query)) {
      places_.insert(first + 1 + mention.at);
      if (mention.qualified) databases.insert(first + 1 + mention.at - 2);
    }
    for (const std::size_t at : TableAliases(query)) places_.insert(first + 1 + at);
    for (std::size_t at = first + 1; at < tokens_.size(); ++at)
      if (IsName(tokens_[at]) && Token(at + 1).Is(".")) AddQualifier(at, databases.contains(at));
  }

  // In front of a column or a table, or a database's; the own database's is known by how it is written.
  void AddQualifier(std::size_t at, bool of_table) {
    const bool database = of_table || Token(at + 3).Is(".") || Token(at + 3).Is("(");
    const bool within = Token(at - 1).Is(".");
    if (within || !database || !SameText(NameOf(tokens_[at]), database_)) places_.insert(at);
  }

  const TFoldedNames& names_;
  const std::string& text_;
  std::vector<TToken> tokens_;
  const std::string& database_;
  std::set<std::size_t> places_;  // of the tokens
};

void SpellTrigger(const TFoldedNames& names, const std::string& database, TOtherObject& trigger) {
  TObjectText text = ReadObject(trigger, database);
  const std::string spelled = names.Spelled(text.table);
  if (spelled == std::exchange(text.table, spelled)) return;
  trigger.text = text.Creation({text.definer, false, text.order});
}

void SpellTable(const std::string& spelled, const TServerTraits& server, const TTableText* there, TTableText& table) {
  const TTableText former = table;
  table.name = spelled;
  MoveMadeNames(table, former.name, server);
  for (std::size_t i = 0; there != nullptr && i < table.elements.size(); ++i) {
    const TElement& element = former.elements[i];
    const TElement* same = there->Find(element.kind, element.name);
    if (same != nullptr && same->name == element.name) table.elements[i] = element;
  }
}

}  // namespace

TFoldedNames::TFoldedNames(TLower lower, const TStringList& given) : lower_(std::move(lower)) {
  for (const std::string& name : given) given_.emplace(lower_(name), name);
}

std::string TFoldedNames::Spelled(const std::string& name) const {
  if (!Folds()) return name;
  std::string lower = lower_(name);
  const auto found = given_.find(lower);
  return found == given_.end() ? lower : found->second;
}

void SpellNames(const TFoldedNames& names, const TServerTraits& server, const TTableText* there, TTableText& table) {
  if (!names.Folds()) return;
  if (const std::string spelled = names.Spelled(table.name); spelled != table.name)
    SpellTable(spelled, server, there, table);
  for (TElement& element : table.elements) {
    if (element.kind != EElement::ForeignKey) continue;
    const std::string parent = element.text.ForeignKey().table;
    if (const std::string spelled = names.Spelled(parent); spelled != parent) MoveReferences(element, parent, spelled);
  }
}

void SpellNames(const TFoldedNames& names, TDatabaseObjects& objects) {
  if (!names.Folds()) return;
  for (TOtherObject& object : objects.objects) {
    const bool table = object.kind == "view" || object.kind == "sequence";
    if (table) object.name = names.Spelled(object.name);
    if (object.text.empty()) continue;
    try {
      if (table) object.text = TSpelling(names, object, objects.database).Spelled();
      if (object.kind == "trigger") SpellTrigger(names, objects.database, object);
    } catch (const EVelmora&) {  // that it cannot be read is told where it is compared
    }
  }
}

}  // namespace velmora

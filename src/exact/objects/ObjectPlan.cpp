// SPDX-License-Identifier: GPL-3.0-or-later
#include "exact/objects/ObjectPlan.h"

#include <algorithm>
#include <array>
#include <functional>
#include <initializer_list>
#include <optional>
#include <set>
#include <utility>

#include "exact/objects/Dependents.h"
#include "exact/objects/ObjectContext.h"
#include "exact/objects/TableMentions.h"
#include "exact/objects/ViewQuery.h"
#include "mysqltext/KeyText.h"
#include "mysqltext/Lexer.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kDefinerNotAsked[] = "its definer %s has to be an account of the server that runs this";
constexpr std::string_view kTrigger = "trigger";
constexpr char kNoSuchTrigger[] = "trigger %s is to stand beside %s, which does not fire with it";
constexpr char kNotFollowed[] = "the statement is none that changes an object: %s";
constexpr char kThere[] = "there is a %s %s already";
constexpr char kNotThere[] = "there is no %s %s";

// Settings that an object is made under, and where the session's own are kept meanwhile.
struct TSetting {
  std::string_view variable;
  std::string_view kept;
};
constexpr TSetting kMode = {"sql_mode", "@velmora_object_mode"};
constexpr TSetting kCollation = {"collation_connection", "@velmora_object_collation"};
constexpr TSetting kZone = {"time_zone", "@velmora_object_zone"};

// The kinds in the order in which they are made: views call functions, triggers and events use all of them.
constexpr std::array<std::string_view, 5> kOrder = {"function", "procedure", "view", "trigger", "event"};

std::string DropText(const TObjectChange& change) {
  return "drop " + change.kind + " " + QuotedName(change.old_text->name);
}

// What a view's query may read from, as servers have the names.
std::set<std::string> TablesIn(const TObjectChange& view) {
  std::set<std::string> names;
  const bool ansi = QuotesNames(view.new_object.context.sql_mode.value_or(""));
  const std::vector<TToken> tokens = TokensByMode(view.new_text->body, ansi);
  for (const TTableMention& table : TableMentions(tokens)) names.insert(NameOf(tokens[table.at]));
  return names;
}

// Views after those that they name. Where each waits for another, the first is made as a view of its columns' names
// alone, and once more at its place.
struct TViewStep {
  const TObjectChange* view;
  bool placeholder;
};
std::vector<TViewStep> InOrder(const std::vector<const TObjectChange*>& views) {
  std::map<std::string, const TObjectChange*> waiting;
  std::map<std::string, std::set<std::string>> named;
  for (const TObjectChange* view : views) {
    waiting.emplace(view->name, view);
    named.emplace(view->name, TablesIn(*view));
  }
  std::vector<TViewStep> steps;
  std::set<std::string> open, held;
  const std::function<void(const TObjectChange&)> visit = [&](const TObjectChange& view) {
    open.insert(view.name);
    for (const std::string& name : named[view.name]) {
      const auto other = name == view.name ? waiting.end() : waiting.find(name);
      if (other == waiting.end()) continue;
      if (!open.contains(name))
        visit(*other->second);
      else if (other->second->action == saCreateObject && held.insert(name).second)
        steps.push_back({other->second, true});
    }
    waiting.erase(view.name);
    steps.push_back({&view, false});
  };
  for (const TObjectChange* view : views)
    if (waiting.contains(view->name)) visit(*view);
  return steps;
}

// "1 as `a`, 1 as `b`"
std::string PlaceholderQuery(const TObjectChange& view) {
  const TObjectText& text = *view.new_text;
  std::string query;
  for (const std::string& column : text.columns.empty() ? QueryColumns(text.query) : text.columns)
    query += (query.empty() ? "1 as " : ", 1 as ") + QuotedName(column);
  return "create or replace view " + QuotedName(view.name) + " as select " + (query.empty() ? "1 as `c1`" : query);
}

std::string AlterText(const TObjectChange& change) {
  std::string text = "alter " + change.kind + " " + QuotedName(change.old_text->name);
  for (const std::string& element : change.elements) {
    const TObjectElement* said = change.new_text->Find(element);
    if (element == "comment")
      text += " comment " + said->text;
    else if (element == "sql security")
      text += " sql security " + (said == nullptr ? "definer" : said->text);
    else
      text += " " + (said == nullptr ? "contains sql" : said->text);
  }
  return text;
}

class TMaker {
 public:
  TMaker(const std::vector<TObjectChange>& changes, const TPlanServer& server, const TStringList& gone)
      : server_(server), gone_(gone) {
    for (const TObjectChange& change : changes)
      if (change.action != saDropObject && change.kind == kTrigger) coming_.insert(change.name);
  }

  std::vector<TPlanStatement> statements;

  void MakePlaceholder(const TObjectChange& view) {
    held_.insert(view.name);
    Add(view, PlaceholderQuery(view));
  }

  void Make(const TObjectChange& change) {
    const bool replaces = change.action == saChangeObject;
    if (AltersInPlace(change, server_)) {
      SetOwn(kMode);
      return Add(change, AlterText(change));
    }
    const bool elsewhere = replaces && change.kind == kTrigger && change.old_text->table != change.new_text->table;
    if (elsewhere && std::ranges::find(gone_, change.old_text->table) == gone_.end()) return MoveTrigger(change);
    SetContext(change);
    if (elsewhere)
      Add(change, Creation(change, false));
    else if (change.kind == "view")
      Add(change, Creation(change, replaces || held_.contains(change.name)));
    else if (!replaces || (server_.mariadb && !elsewhere))
      Add(change, Creation(change, replaces));
    else if (change.kind == "event" && !RefusesNotPreserve(change.new_object.context.sql_mode.value_or("")))
      Add(change, "alter" + Creation(change, false).substr(std::string_view("create").size()));
    else
      DropAndMake(change);
  }

  // The session as it was.
  void PutBack() {
    for (const TSetting& setting : {kMode, kCollation, kZone}) SetOwn(setting);
  }

 private:
  std::string Creation(const TObjectChange& change, bool or_replace) const {
    TObjectSpelling spelling{change.definer, or_replace, OrderOf(change)};
    const bool same_schedule = change.old_text != nullptr && change.old_text->interval == change.new_text->interval;
    spelling.says_not = !RefusesNotPreserve(change.new_object.context.sql_mode.value_or(""));
    if (same_schedule && change.WantedStart().empty()) spelling.starts = change.old_text->starts;
    return change.new_text->Creation(spelling);
  }

  // Beside one that stands where it belongs by then: one that is to come may have been struck out.
  std::string OrderOf(const TObjectChange& change) const {
    for (const std::string& name : change.place.before) {
      const bool added = std::ranges::find(change.place.added, name) != change.place.added.end();
      if (!added || coming_.contains(name)) return "follows " + QuotedName(name);
    }
    return change.place.next.empty() ? std::string() : "precedes " + QuotedName(change.place.next);
  }

  void Add(const TObjectChange& change, std::string text, std::vector<std::string> put_back = {}) {
    TPlanStatement statement{std::move(text), {change.id}, {}, {}, change.Object(), std::move(put_back)};
    if (!change.unsafe.empty()) statement.unsafe.push_back(change.Object() + ": " + change.unsafe);
    if (!server_.asked && change.action == saCreateObject && !change.definer.empty())
      statement.note = Format(kDefinerNotAsked, change.definer);
    statements.push_back(std::move(statement));
  }

  // A server opens its old table anew when it goes, and where a backslash is a letter may not read its partitions.
  // MySQL 9.7 does not find the trigger that it is to stand beside where both tables are locked and one refers to the
  // other; without a lock no row slips through, as those of the new table have had no such trigger so far.
  void MoveTrigger(const TObjectChange& change) {
    const bool locks = !server_.mysql || OrderOf(change).empty();
    SetContext(change);
    if (HasPlainBackslashes(change.new_object.context.sql_mode.value_or(""))) SetOwn(kMode);
    if (locks) Add(change, "lock tables " + Locked(change));
    Add(change, DropText(change));
    SetContext(change);
    Add(change, Creation(change, false), PutBackOf(change));
    if (locks) Add(change, "unlock tables");
  }

  void DropAndMake(const TObjectChange& change) {
    const bool trigger = change.kind == kTrigger;
    if (trigger) Add(change, "lock tables " + Locked(change));
    Add(change, DropText(change));
    Add(change, Creation(change, false), PutBackOf(change));
    if (trigger) Add(change, "unlock tables");
  }

  // What makes the old one again.
  static TStringList PutBackOf(const TObjectChange& change) {
    TStringList put_back = OldContext(change);
    TObjectSpelling old{change.old_text->definer, false, change.place.old};
    old.says_not = !RefusesNotPreserve(change.old_object.context.sql_mode.value_or(""));
    put_back.push_back(change.old_text->Creation(old));
    return put_back;
  }

  // The session is in that of the new one.
  static std::vector<std::string> OldContext(const TObjectChange& change) {
    const TObjectContext& context = change.old_object.context;
    const bool timed = change.kind == "event" && !context.time_zone.empty();
    std::vector<std::string> settings;
    if (context.sql_mode) settings.push_back(SetText(kMode, QuotedText(*context.sql_mode)));
    if (!context.collation.empty()) settings.push_back(SetText(kCollation, QuotedText(context.collation)));
    if (timed) settings.push_back(SetText(kZone, QuotedText(context.time_zone)));
    return settings;
  }

  // The table of a trigger, and the one that it leaves.
  static std::string Locked(const TObjectChange& change) {
    std::string tables = QuotedName(change.new_text->table) + " write";
    if (change.old_text->table != change.new_text->table)
      tables += ", " + QuotedName(change.old_text->table) + " write";
    return tables;
  }

  // What nobody knows is the session's own, whatever the object before was made under. What a client would have is not:
  // the session has modes for the sake of tables.
  void SetContext(const TObjectChange& change) {
    const TObjectContext& context = change.new_object.context;
    if (context.sql_mode)
      Need(kMode, QuotedText(ModesFor(*context.sql_mode, server_)));
    else if (context.of_client)
      Need(kMode, "@@global.sql_mode");
    else
      SetOwn(kMode);
    context.collation.empty() ? SetOwn(kCollation) : Need(kCollation, QuotedText(context.collation));
    if (change.kind != "event") return;
    context.time_zone.empty() ? SetOwn(kZone) : Need(kZone, QuotedText(context.time_zone));
  }

  void SetOwn(const TSetting& setting) {
    if (kept_.contains(setting.variable)) Need(setting, std::string(setting.kept));
  }

  void Need(const TSetting& setting, const std::string& value) {
    std::string& now = kept_[setting.variable];
    if (now == value) return;
    if (now.empty()) Session(Format("set %s = @@%s", std::string(setting.kept), std::string(setting.variable)));
    now = value;
    Set(setting, value);
  }

  static std::string SetText(const TSetting& setting, const std::string& value) {
    return Format("set %s = %s", std::string(setting.variable), value);
  }
  void Set(const TSetting& setting, const std::string& value) { Session(SetText(setting, value)); }

  void Session(std::string text) { statements.push_back({std::move(text), {}, {}, {}, "session", {}}); }

  const TPlanServer& server_;
  const TStringList& gone_;
  std::set<std::string> coming_;                  // triggers that the plan makes or makes anew
  std::set<std::string> held_{};                  // views that have placeholders
  std::map<std::string_view, std::string> kept_;  // what settings are now, as written
};

}  // namespace

TObjectPlan MakeObjectPlan(const std::vector<TObjectChange>& changes, const TPlanServer& server,
                           const TStringList& gone) {
  TObjectPlan plan;
  TMaker maker(changes, server, gone);
  for (const TObjectChange& change : changes)
    if (change.action == saDropObject)
      plan.before.push_back(
          {DropText(change), {change.id}, {change.Object() + ": " + change.unsafe}, {}, change.Object(), {}});
  for (const std::string_view kind : kOrder) {
    std::vector<const TObjectChange*> made;
    for (const TObjectChange& change : changes)
      if (change.kind == kind && change.action != saDropObject) made.push_back(&change);
    // Each beside one that is there by then.
    std::ranges::stable_sort(made, {}, [](const TObjectChange* change) { return change->place.rank; });
    if (kind != "view")
      for (const TObjectChange* change : made) maker.Make(*change);
    else
      for (const TViewStep& step : InOrder(made))
        step.placeholder ? maker.MakePlaceholder(*step.view) : maker.Make(*step.view);
  }
  maker.PutBack();
  plan.after = std::move(maker.statements);
  return plan;
}

// Elements that "alter procedure" and "alter function" take.
bool AltersInPlace(const TObjectChange& change, const TPlanServer& server) {
  if (change.action != saChangeObject || server.mariadb) return false;
  return (change.kind == "procedure" || change.kind == "function") &&
         std::ranges::all_of(change.elements, [&change](const std::string& element) {
           const bool kept = element != "comment" || change.new_text->Find(element) != nullptr;  // no server empties it
           return kept && InList(element, {"comment", "sql security", "data access"});
         });
}

void TObjectProof::Apply(const std::string& statement) {
  const std::vector<TToken> tokens = Tokens(statement);
  if (tokens[0].Is("lock") || tokens[0].Is("unlock")) return;
  if (tokens[0].Is("set")) return Set(tokens);
  if (tokens[0].Is("drop")) return Drop(LowerText(TokenAt(tokens, 1).text), NameOf(TokenAt(tokens, 2)));
  if (tokens[0].Is("create")) return Make(statement, tokens[1].Is("or"));
  if (!tokens[0].Is("alter")) RaiseError(Format(kNotFollowed, statement));
  if (!tokens[1].Is("event") && !tokens[1].Is("definer")) return Alter(statement, tokens);
  const std::string text = "create" + statement.substr(tokens[0].End());
  const TObjectText event = ReadObject({"event", {}, text, context_}, objects_.database);
  if (Find(event.kind, event.name) == nullptr) RaiseError(Format(kNotThere, event.kind, event.name));
  Make(text, true);
}

void TObjectProof::ApplyToTables(const std::string& statement) {
  constexpr std::size_t kTo = 4;
  const std::vector<TToken> tokens = Tokens(statement);
  if (tokens[0].Is("rename")) FollowRename({{}, NameOf(tokens[2]), NameOf(TokenAt(tokens, kTo))}, objects_);
  if (!tokens[0].Is("drop")) return;
  const std::string table = NameOf(TokenAt(tokens, 2));
  std::erase_if(objects_.objects,
                [&](const TOtherObject& object) { return object.kind == kTrigger && FiresAt(object).table == table; });
}

void TObjectProof::Make(std::string text, bool replaces) {
  TOtherObject made{{}, {}, std::move(text), context_};
  const TObjectText read = ReadObject(made, objects_.database);
  made.kind = read.kind;
  made.name = read.name;
  const bool there = Find(made.kind, made.name) != nullptr;
  if (there && !replaces) RaiseError(Format(kThere, made.kind, made.name));
  if (there) Drop(made.kind, made.name);
  objects_.objects.push_back(std::move(made));
  if (read.kind == kTrigger) PutInOrder(read);
}

// Only what is set to a value is known.
void TObjectProof::Set(const std::vector<TToken>& tokens) {
  const bool said = TokenAt(tokens, 3).kind == EToken::String;
  const std::string value = said ? ValueOf(tokens[3]) : std::string();
  if (TokenAt(tokens, 1).Is("sql_mode")) context_.sql_mode = said ? std::optional(value) : std::nullopt;
  if (TokenAt(tokens, 1).Is("collation_connection")) context_.collation = value;
  if (TokenAt(tokens, 1).Is("time_zone")) context_.time_zone = value;
}

TOtherObject* TObjectProof::Find(const std::string& kind, const std::string& name) {
  const TObjectKey key = objects_.KeyOf(kind, name);
  const auto found = std::ranges::find_if(objects_.objects, [&](const TOtherObject& object) {
    return object.kind == kind && SameText(object.name, name) && objects_.KeyOf(kind, object.name) == key;
  });
  return found == objects_.objects.end() ? nullptr : &*found;
}

void TObjectProof::Drop(const std::string& kind, const std::string& name) {
  const TOtherObject* there = Find(kind, name);
  if (there == nullptr) RaiseError(Format(kNotThere, kind, name));
  objects_.objects.erase(objects_.objects.begin() + (there - objects_.objects.data()));
}

// Of a routine; what its text says last holds.
void TObjectProof::Alter(const std::string& statement, const std::vector<TToken>& tokens) {
  const std::string kind = LowerText(TokenAt(tokens, 1).text);
  const std::string name = NameOf(TokenAt(tokens, 2));
  TOtherObject* found = Find(kind, name);
  if (found == nullptr || tokens.size() < 4) RaiseError(Format(kNotFollowed, statement));
  TObjectText text = ReadObject(*found, objects_.database);
  text.header += " " + statement.substr(tokens[3].start);
  found->text = text.Creation({text.definer});
}

// The new one is the last of them.
void TObjectProof::PutInOrder(const TObjectText& made) {
  const std::string kind(kTrigger);
  TOtherObject& added = objects_.objects.back();
  std::vector<TOtherObject*> group;
  for (TOtherObject& object : objects_.objects)
    if (&object != &added && object.kind == kTrigger && FiresAt(object) == FiresAt(added)) group.push_back(&object);
  std::ranges::stable_sort(group, {}, &TOtherObject::order);
  std::string other = made.order;
  const std::string word = StrChop(" ", other, true);
  const std::string beside = other.empty() ? std::string() : NameOf({EToken::Name, other, 0});
  auto place = std::ranges::find_if(group, [&](const TOtherObject* trigger) {
    return objects_.KeyOf(kind, trigger->name) == objects_.KeyOf(kind, beside);
  });
  if (place == group.end() && !other.empty()) RaiseError(Format(kNoSuchTrigger, made.name, beside));
  if (place != group.end() && word == "follows") ++place;
  group.insert(place, &added);
  for (std::size_t i = 0; i < group.size(); ++i) group[i]->order = static_cast<int>(i) + 1;
}

// Read once.
const TObjectProof::TMoment& TObjectProof::FiresAt(const TOtherObject& trigger) {
  const auto [found, added] = fires_at_.try_emplace(trigger.text);
  if (!added) return found->second;
  try {
    const TObjectText text = ReadObject(trigger, objects_.database);
    found->second = {text.table, text.moment};
  } catch (const EVelmora&) {  // nobody knows, and so it is left where it is
    found->second.moment = trigger.name;
  }
  return found->second;
}

}  // namespace velmora

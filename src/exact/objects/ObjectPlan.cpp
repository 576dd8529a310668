#include "exact/objects/ObjectPlan.h"

#include <algorithm>
#include <array>
#include <map>
#include <set>

#include "mysqltext/KeyText.h"
#include "mysqltext/Lexer.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kNotFollowed[] = "the statement is none that changes an object: %s";

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

// Names in a text, as servers have them.
std::set<std::string> NamesIn(const std::string& text) {
  std::set<std::string> names;
  for (const TToken& token : Tokens(text))
    if (IsName(token)) names.insert(NameOf(token));
  return names;
}

// Views after those that they name.
std::vector<const TObjectChange*> InOrder(std::vector<const TObjectChange*> views) {
  std::map<std::string, std::set<std::string>> named;
  for (const TObjectChange* view : views) named.emplace(view->name, NamesIn(view->new_text->body));
  std::vector<const TObjectChange*> ordered;
  while (!views.empty()) {
    auto next = std::ranges::find_if(views, [&](const TObjectChange* view) {
      return std::ranges::none_of(
          views, [&](const TObjectChange* other) { return other != view && named[view->name].contains(other->name); });
    });
    if (next == views.end()) next = views.begin();  // a circle
    ordered.push_back(*next);
    views.erase(next);
  }
  return ordered;
}

class TMaker {
 public:
  explicit TMaker(const TPlanServer& server) : server_(server) {}

  std::vector<TPlanStatement> statements;

  void Make(const TObjectChange& change) {
    SetContext(change);
    const bool replaces = change.action == saChangeObject;
    if (!replaces || server_.mariadb || change.kind == "view")
      Add(change, Creation(change, replaces));
    else if (change.kind == "event")
      Add(change, "alter" + Creation(change, false).substr(std::string_view("create").size()));
    else
      DropAndMake(change);
  }

  // The session as it was.
  void PutBack() {
    for (const TSetting& setting : {kMode, kCollation, kZone})
      if (kept_.contains(setting.variable)) Set(setting, std::string(setting.kept));
  }

 private:
  static std::string Creation(const TObjectChange& change, bool or_replace) {
    return change.new_text->Creation({change.definer, or_replace, change.order});
  }

  void Add(const TObjectChange& change, std::string text, std::vector<std::string> put_back = {}) {
    TPlanStatement statement{std::move(text), {change.id}, {}, {}, change.Object(), std::move(put_back)};
    if (!change.unsafe.empty()) statement.unsafe.push_back(change.Object() + ": " + change.unsafe);
    statements.push_back(std::move(statement));
  }

  void DropAndMake(const TObjectChange& change) {
    const bool trigger = change.kind == "trigger";
    const std::vector<std::string> unlock =
        trigger ? std::vector<std::string>{"unlock tables"} : std::vector<std::string>();
    if (trigger) Add(change, "lock tables " + Locked(change));
    Add(change, DropText(change), unlock);
    std::vector<std::string> put_back = {
        change.old_text->Creation({change.old_text->definer, false, change.old_text->order})};
    put_back.insert(put_back.end(), unlock.begin(), unlock.end());
    Add(change, Creation(change, false), put_back);
    if (trigger) Add(change, "unlock tables");
  }

  static std::string Locked(const TObjectChange& change) {
    std::string tables = QuotedName(change.new_text->table) + " write";
    if (change.old_text->table != change.new_text->table)
      tables += ", " + QuotedName(change.old_text->table) + " write";
    return tables;
  }

  void SetContext(const TObjectChange& change) {
    const TObjectContext& context = change.new_object.context;
    if (context.sql_mode) Need(kMode, QuotedText(*context.sql_mode));
    if (!context.collation.empty()) Need(kCollation, QuotedText(context.collation));
    if (change.kind == "event" && !context.time_zone.empty()) Need(kZone, QuotedText(context.time_zone));
  }

  void Need(const TSetting& setting, const std::string& value) {
    std::string& now = kept_[setting.variable];
    if (now == value) return;
    if (now.empty()) Session(Format("set %s = @@%s", std::string(setting.kept), std::string(setting.variable)));
    now = value;
    Set(setting, value);
  }

  void Set(const TSetting& setting, const std::string& value) {
    Session(Format("set %s = %s", std::string(setting.variable), value));
  }

  void Session(std::string text) { statements.push_back({std::move(text), {}, {}, {}, "session", {}}); }

  const TPlanServer& server_;
  std::map<std::string_view, std::string> kept_;  // what settings are now, as written
};

bool IsObject(const TOtherObject& object, std::string_view kind, const std::string& name) {
  return object.kind == kind && object.name == name;
}

}  // namespace

TObjectPlan MakeObjectPlan(const std::vector<TObjectChange>& changes, const TPlanServer& server) {
  TObjectPlan plan;
  TMaker maker(server);
  for (const TObjectChange& change : changes)
    if (change.action == saDropObject)
      plan.before.push_back(
          {DropText(change), {change.id}, {change.Object() + ": " + change.unsafe}, {}, change.Object(), {}});
  for (const std::string_view kind : kOrder) {
    std::vector<const TObjectChange*> made;
    for (const TObjectChange& change : changes)
      if (change.kind == kind && change.action != saDropObject) made.push_back(&change);
    for (const TObjectChange* change : kind == "view" ? InOrder(made) : made) maker.Make(*change);
  }
  maker.PutBack();
  plan.after = std::move(maker.statements);
  return plan;
}

void ApplyObjectStatement(const std::string& statement, TDatabaseObjects& objects) {
  const std::vector<TToken> tokens = Tokens(statement);
  const auto forget = [&](const std::string& kind, const std::string& name) {
    std::erase_if(objects.objects, [&](const TOtherObject& object) { return IsObject(object, kind, name); });
  };
  if (tokens[0].Is("set") || tokens[0].Is("lock") || tokens[0].Is("unlock")) return;
  if (tokens[0].Is("drop")) return forget(LowerText(TokenAt(tokens, 1).text), NameOf(TokenAt(tokens, 2)));
  const bool alters = tokens[0].Is("alter");
  if (!alters && !tokens[0].Is("create")) RaiseError(Format(kNotFollowed, statement));
  const std::string text = alters ? "create" + statement.substr(tokens[0].End()) : statement;
  const TObjectText read = ReadObjectText(text, objects.database);
  forget(read.kind, read.name);
  objects.objects.push_back({read.kind, read.name, text});
}

}  // namespace velmora

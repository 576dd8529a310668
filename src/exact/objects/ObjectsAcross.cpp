// SPDX-License-Identifier: GPL-3.0-or-later
#include "exact/objects/ObjectsAcross.h"

#include <algorithm>
#include <array>
#include <initializer_list>
#include <map>
#include <optional>
#include <utility>

#include "exact/compare/ServerFunctions.h"
#include "exact/objects/ObjectContext.h"
#include "exact/objects/TableMentions.h"
#include "mysqltext/KeyText.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kLeftAlone[] = "left alone: %s";
constexpr char kMissing[] = "%s does not have: %s";
constexpr char kNoTable[] = "it names table %s, which %s";
constexpr char kNoElement[] = "it names table %s, which %s, and %s, which the target's table does not have";
constexpr char kNoObject[] = "it names %s %s, which is left alone";
constexpr std::string_view kView = "view";
constexpr std::string_view kJsonInMariaDb = "longtext CHARSET utf8mb4 COLLATE utf8mb4_bin";

// --- Words that not every server has
//
// MySQL 8.4 Reference Manual, 15.2.15.9 Lateral Derived Tables, 14.17.3 Functions That Search JSON Values, 14.10 Cast
// Functions and Operators, 14.20 Window Functions; MariaDB Documentation, "System-Versioned Tables", "Sequences".
struct TPhrase {
  std::string_view name;
  std::initializer_list<std::string_view> words;
  int mysql;    // the first version that has it; 0 for none
  int mariadb;  // likewise
};
const std::array<TPhrase, 10> kPhrases = {{{"lateral", {"lateral", "("}, 80014, 0},
                                           {"member of", {"member", "of"}, 80017, 0},
                                           {"casts to json", {"as", "json", ")"}, 50708, 0},
                                           {"the operator ->", {"->"}, 50709, 0},
                                           {"the operator ->>", {"->>"}, 50713, 0},
                                           {"window functions", {"over", "("}, 80002, 100200},
                                           {"for system_time", {"for", "system_time"}, 0, 100304},
                                           {"next value for", {"next", "value", "for"}, 0, 100300},
                                           {"previous value for", {"previous", "value", "for"}, 0, 100300},
                                           {"%rowtype", {"%", "rowtype"}, 0, 100300}}};

bool Lacks(const TServerTraits& server, const TPhrase& phrase) {
  const int since = server.mysql ? phrase.mysql : phrase.mariadb;
  return since == 0 || (server.version != 0 && server.version < since);
}

bool StandsAt(TTokens tokens, std::size_t at, const TPhrase& phrase) {
  return std::ranges::all_of(phrase.words, [&](std::string_view word) { return TokenAt(tokens, at++).Is(word); });
}

std::vector<TToken> TokensIn(std::string_view text, const TOtherObject& object) {
  return TokensByMode(text, QuotesNames(object.context.sql_mode.value_or("")));
}

// --- What an object names

// Names in lower case.
struct TNamed {
  std::set<std::string> tables;  // or views
  std::set<std::string> functions;
  std::set<std::string> procedures;
  std::set<std::string> names;  // of whatever it is
};

// Of the own database, or told without one.
bool IsOwn(TTokens tokens, std::size_t name, const std::string& database) {
  const bool qualified = name >= 2 && tokens[name - 1].Is(".");
  return !qualified || (IsName(tokens[name - 2]) && NameOf(tokens[name - 2]) == database);
}

void TakeCalls(TTokens tokens, const std::string& database, TNamed& named) {
  for (std::size_t at = 0; at + 1 < tokens.size(); ++at) {
    if (!IsName(tokens[at])) continue;
    const std::string name = LowerText(NameOf(tokens[at]));
    named.names.insert(name);
    if (!IsOwn(tokens, at, database)) continue;
    const std::size_t begin = at >= 2 && tokens[at - 1].Is(".") ? at - 2 : at;
    if (begin > 0 && tokens[begin - 1].Is("call"))
      named.procedures.insert(name);
    else if (tokens[at + 1].Is("("))
      named.functions.insert(name);
  }
}

TNamed NamedBy(const TObjectChange& change, const std::string& database) {
  TNamed named;
  const std::vector<TToken> tokens = TokensIn(change.new_text->body, change.new_object);
  TakeCalls(tokens, database, named);
  if (!change.new_text->table.empty()) named.tables.insert(LowerText(change.new_text->table));
  for (const TTableMention& name : TableMentions(tokens))
    if (!name.qualified || IsOwn(tokens, name.at, database)) named.tables.insert(LowerText(NameOf(tokens[name.at])));
  return named;
}

// --- Translation

struct TReplacement {
  std::size_t start;
  std::size_t end;
  std::string text;
};

std::string Replaced(std::string text, std::vector<TReplacement> parts) {
  std::ranges::sort(parts, std::greater(), &TReplacement::start);
  for (const TReplacement& part : parts) text.replace(part.start, part.end - part.start, part.text);
  return text;
}

// "regexp_like(a,b)", as MySQL prints the operator, becomes "(a regexp b)".
void SpellRegexp(std::string& text) {
  std::vector<TReplacement> parts;
  const std::vector<TToken> tokens = Tokens(text);
  for (std::size_t at = 0; at + 1 < tokens.size(); ++at) {
    const bool call = tokens[at].kind == EToken::Word && tokens[at].Is("regexp_like") && tokens[at + 1].Is("(");
    if (!call || (at > 0 && tokens[at - 1].Is("."))) continue;
    const std::vector<TTokenRange> operands = ListParts(tokens, at + 1);
    if (operands.size() != 2) continue;
    const TToken& comma = tokens[operands[0].last];
    parts.push_back({tokens[at].start, tokens[at].End(), ""});
    parts.push_back({comma.start, comma.End(), " regexp "});
  }
  text = Replaced(std::move(text), std::move(parts));
}

bool IsCacheWord(const TToken& token) { return IsKeyword(token, "sql_no_cache") || IsKeyword(token, "sql_cache"); }

// Whether nothing but other such words stands between it and "select": elsewhere it is a name.
bool BeginsItems(TTokens tokens, std::size_t at) {
  static constexpr std::array<std::string_view, 9> kWords = {"all",
                                                             "distinct",
                                                             "distinctrow",
                                                             "high_priority",
                                                             "straight_join",
                                                             "sql_small_result",
                                                             "sql_big_result",
                                                             "sql_buffer_result",
                                                             "sql_calc_found_rows"};
  const auto passes = [](const TToken& token) {
    return IsCacheWord(token) ||
           std::ranges::any_of(kWords, [&token](std::string_view word) { return IsKeyword(token, word); });
  };
  while (at > 0 && passes(tokens[at - 1])) --at;
  return at > 0 && tokens[at - 1].Is("select");
}

// MySQL has no cache of queries any more, and forgets what is said of it: the words behind "select".
void DropCacheWords(std::string& text) {
  std::vector<TReplacement> parts;
  const std::vector<TToken> tokens = Tokens(text);
  for (std::size_t at = 1; at < tokens.size(); ++at)
    if (IsCacheWord(tokens[at]) && BeginsItems(tokens, at))
      parts.push_back({tokens[at].start, tokens[at + 1].start, ""});
  text = Replaced(std::move(text), std::move(parts));
}

// Of a function's text: where its result's type stands; nothing where it has none.
std::optional<TReplacement> ResultPlace(const std::string& text) {
  const std::vector<TToken> tokens = Tokens(text);
  const std::size_t open = NextBracket(tokens, 0);
  const std::size_t at = AfterGroup(tokens, open);
  if (!TokenAt(tokens, at).Is("returns")) return std::nullopt;
  const TToken& type = TokenAt(tokens, at + 1);
  if (type.Is("json")) return TReplacement{type.start, type.End(), "json"};
  const bool longtext = SameText(text.substr(type.start, kJsonInMariaDb.size()), kJsonInMariaDb);
  if (longtext) return TReplacement{type.start, type.start + kJsonInMariaDb.size(), std::string(kJsonInMariaDb)};
  return std::nullopt;
}

// MariaDB has no JSON of its own: a result of this type is a text there.
void SpellResult(const TServerPair& servers, const TOtherObject* there, std::string& text) {
  std::optional<TReplacement> place = ResultPlace(text);
  if (!place) return;
  const bool json = place->text == "json";
  const auto theirs = there == nullptr ? std::nullopt : ResultPlace(there->text);
  if (json && !servers.target.mysql) place->text = kJsonInMariaDb;
  if (!json && servers.target.mysql && theirs && theirs->text == "json") place->text = "json";
  text = Replaced(std::move(text), {*place});
}

// Of one side, to be found by kind and name.
class TListedObjects {
 public:
  explicit TListedObjects(const TDatabaseObjects& objects) {
    for (const TOtherObject& object : objects.objects) objects_.emplace(ObjectKey(object.kind, object.name), &object);
  }
  const TOtherObject* Find(const std::string& kind, const std::string& name) const {
    const auto found = objects_.find(ObjectKey(kind, name));
    return found == objects_.end() ? nullptr : found->second;
  }

 private:
  std::map<TObjectKey, const TOtherObject*> objects_;
};

void TranslateView(const TServerTraits& to, std::string& text) {
  constexpr int kFirstWithoutCache = 80003;
  if (!to.mysql) return SpellRegexp(text);
  if (to.version == 0 || to.version >= kFirstWithoutCache) DropCacheWords(text);
}

void Translate(const TServerPair& servers, const TOtherObject* there, TOtherObject& object) {
  const TPlanServer server{.mysql = servers.target.mysql, .mariadb = !servers.target.mysql};
  std::optional<std::string>& mode = object.context.sql_mode;
  if (mode && MissingMode(*mode, server).empty()) mode = ModesFor(*mode, server);
  if (servers.reference.mysql == servers.target.mysql) return;
  try {
    if (object.kind == kView) TranslateView(servers.target, object.text);
    if (object.kind == "function") SpellResult(servers, there, object.text);
  } catch (const EVelmora&) {  // what cannot be read is told as such
  }
}

// --- What is left alone

class TLeaving {
 public:
  TLeaving(const TObjectObstacles& obstacles, const TDatabaseObjects& reference, const TDatabaseObjects& target,
           TObjectComparison& objects)
      : obstacles_(obstacles), reference_(reference), objects_(objects) {
    for (const TOtherObject& object : reference.objects)
      if (object.kind == "function") own_functions_.insert(LowerText(object.name));
    const TListedObjects wanted(reference), there(target);
    for (const TObjectDifference& told : objects.differences)
      if (wanted.Find(told.kind, told.name) != nullptr && there.Find(told.kind, told.name) == nullptr) Remember(told);
    for (const TTableNotMade& table : obstacles.tables) tables_.emplace(LowerText(table.name), &table);
  }

  void Leave() {
    LeaveWhere([this](const TObjectChange& change) { return MissingIn(change); });
    LeaveWhere([this](const TObjectChange& change) { return TableMissingTo(change); });
    while (LeaveWhere([this](const TObjectChange& change) { return ObjectMissingTo(change); })) {
    }
  }

 private:
  // Whether there was a reason for any.
  template <class Reason>
  bool LeaveWhere(Reason reason) {
    const auto left = std::erase_if(objects_.changes, [&](const TObjectChange& change) {
      const std::string why = change.action == saDropObject ? std::string() : reason(change);
      if (why.empty()) return false;
      objects_.differences.push_back({change.kind, change.name, Format(kLeftAlone, why)});
      Remember(objects_.differences.back());
      return true;
    });
    return left > 0;
  }

  void Remember(const TObjectDifference& told) { left_[told.kind].emplace(LowerText(told.name), told); }

  // Words of the reference's server that the target's does not have.
  std::string MissingIn(const TObjectChange& change) const {
    if (!obstacles_.servers.differ) return {};
    const TServerTraits& server = obstacles_.servers.target;
    TStringList missing;
    const auto add = [&missing](std::string what) {
      if (IndexOf(missing, what) == kNotInList) missing.push_back(std::move(what));
    };
    const std::vector<TToken> tokens = TokensIn(change.new_text->body, change.new_object);
    for (std::size_t at = 0; at + 1 < tokens.size(); ++at) {
      if (IsOwnCall(tokens, at) && FunctionOn(server, tokens[at].text) == EFunctionOn::Elsewhere)
        add(LowerText(tokens[at].text) + "()");
      for (const TPhrase& phrase : kPhrases)
        if (Lacks(server, phrase) && StandsAt(tokens, at, phrase)) add(std::string(phrase.name));
    }
    for (std::string& type : MissingTypes(change)) add(std::move(type));
    std::string sets = obstacles_.sets.UnknownIn(change.new_object.text);
    if (missing.empty()) return sets;
    return Format(kMissing, ServerName(server), JoinList(missing, ", ")) + (sets.empty() ? "" : "; ") + sets;
  }

  // A call of what the server brings along, and not of a function of the reference's.
  bool IsOwnCall(TTokens tokens, std::size_t at) const {
    const bool call = tokens[at].kind == EToken::Word && tokens[at + 1].Is("(") && !(at > 0 && tokens[at - 1].Is("."));
    return call && !own_functions_.contains(LowerText(tokens[at].text));
  }

  // Of parameters and results.
  TStringList MissingTypes(const TObjectChange& change) const {
    TStringList missing;
    if (change.kind != "function" && change.kind != "procedure") return missing;
    const std::vector<TToken> tokens = TokensIn(change.new_text->header, change.new_object);
    const auto ask = [&](const TToken& type) {
      const bool lacks = type.kind == EToken::Word && !HasType(obstacles_.servers.target, type.text);
      if (lacks) missing.push_back("type " + LowerText(type.text));
    };
    const std::size_t open = NextBracket(tokens, 0);
    for (const TTokenRange part : ListParts(tokens, open)) {
      const bool directed =
          tokens[part.first].Is("in") || tokens[part.first].Is("out") || tokens[part.first].Is("inout");
      const std::size_t type = part.first + (directed ? 2 : 1);
      if (type < part.last) ask(tokens[type]);
    }
    const std::size_t result = AfterGroup(tokens, open);
    if (TokenAt(tokens, result).Is("returns")) ask(TokenAt(tokens, result + 1));
    return missing;
  }

  std::string TableMissingTo(const TObjectChange& change) const {
    if (tables_.empty()) return {};
    const TNamed& named = NamedByIt(change);
    for (const std::string& name : named.tables) {
      const auto found = tables_.find(name);
      if (found == tables_.end()) continue;
      const TTableNotMade& table = *found->second;
      if (!table.there) return Format(kNoTable, table.name, table.why);
      for (const std::string& element : table.lacks)
        if (named.names.contains(element)) return Format(kNoElement, table.name, table.why, element);
    }
    return {};
  }

  std::string ObjectMissingTo(const TObjectChange& change) const {
    if (left_.empty()) return {};
    const TNamed& named = NamedByIt(change);
    const std::pair<const char*, const std::set<std::string>*> kinds[] = {
        {"view", &named.tables}, {"function", &named.functions}, {"procedure", &named.procedures}};
    for (const auto& [kind, names] : kinds)
      if (const auto left = left_.find(kind); left != left_.end())
        for (const std::string& name : *names)
          if (const auto found = left->second.find(name); found != left->second.end())
            return Format(kNoObject, found->second.kind, found->second.name);
    return {};
  }

  // Read once, however often it is asked for.
  const TNamed& NamedByIt(const TObjectChange& change) const {
    const auto [named, is_new] = named_.try_emplace(change.Object());
    if (is_new) named->second = NamedBy(change, reference_.database);
    return named->second;
  }

  const TObjectObstacles& obstacles_;
  const TDatabaseObjects& reference_;
  TObjectComparison& objects_;
  std::set<std::string> own_functions_;
  mutable std::map<std::string, TNamed> named_;                           // by object
  std::map<std::string, const TTableNotMade*> tables_;                    // by name in lower case, as all of these
  std::map<std::string, std::map<std::string, TObjectDifference>> left_;  // alone: by kind and name
};

}  // namespace

void TranslateObjects(const TServerPair& servers, const TDatabaseObjects& target, TDatabaseObjects& reference) {
  const TListedObjects there(target);
  for (TOtherObject& object : reference.objects) Translate(servers, there.Find(object.kind, object.name), object);
}

void MapCollations(const TCollationMap& map, TDatabaseObjects& reference) {
  for (TOtherObject& object : reference.objects) {
    const auto found = map.find(object.context.collation);
    if (found != map.end()) object.context.collation = found->second;
    try {
      MapCollations(map, object.text);
    } catch (const EVelmora&) {  // what cannot be read is told as such
    }
  }
}

void LeaveWhatCannotBe(const TObjectObstacles& obstacles, const TDatabaseObjects& reference,
                       const TDatabaseObjects& target, TObjectComparison& objects) {
  TLeaving(obstacles, reference, target, objects).Leave();
}

}  // namespace velmora

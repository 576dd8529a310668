// SPDX-License-Identifier: GPL-3.0-or-later
#include "exact/objects/ObjectChanges.h"

#include <algorithm>
#include <array>
#include <map>
#include <optional>
#include <set>
#include <utility>

#include "exact/objects/ObjectContext.h"
#include "exact/objects/ViewNames.h"
#include "mysqltext/KeyText.h"
#include "mysqltext/ServerVersion.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr std::string_view kTrigger = "trigger";
constexpr char kOnlyReference[] = "only in the reference";
constexpr char kOnlyTarget[] = "only in the target";
constexpr char kDiffers[] = "differs";
constexpr char kNotRead[] = "not read";
constexpr char kNotFollowed[] = "not followed, %s";
constexpr char kMayBeHidden[] = "not read: the %s may have it and does not show all of its kind";
constexpr char kNamesReference[] = "its body names the database %s, which is the reference's";
constexpr char kBothNameReference[] =
    "%s is the same on both sides, and its body names the database %s, which is the reference's";
constexpr char kOneName[] = "left alone: to the target's server its name is that of %s, which is made";
constexpr char kTextGoes[] = "the target alone has it, and nothing keeps its text";

struct TKindRow {
  std::string_view kind;
  std::string_view title;
  bool case_counts;  // in its name, on the servers where it counts in those of tables
};
constexpr std::array<TKindRow, 5> kKinds = {{{"view", "Views", true},
                                             {"trigger", "Triggers", true},
                                             {"procedure", "Procedures", false},
                                             {"function", "Functions", false},
                                             {"event", "Events", false}}};

const TKindRow* FindKind(std::string_view kind) {
  const auto* const row = std::ranges::find(kKinds, kind, &TKindRow::kind);
  return row == kKinds.end() ? nullptr : row;
}

// Whether the side may have such an object that it does not show. Who sees procedures sees packages and libraries, and
// who sees tables sees sequences.
bool MayHide(const TDatabaseObjects& side, const std::string& kind) {
  const std::string seen_as = kind.starts_with("package") || kind == "library" ? "procedure"
                              : kind == "sequence"                             ? "table"
                                                                               : kind;
  return std::ranges::find(side.not_all_seen, seen_as) != side.not_all_seen.end();
}

// Modes of a session, in order, without those that servers of today no longer know.
std::set<std::string> ModesOf(const std::string& sql_mode) {
  TStringList list;
  SplitPlain(',', sql_mode, list);
  std::set<std::string> modes(list.begin(), list.end());
  for (const char* gone : {"", "NO_AUTO_CREATE_USER"}) modes.erase(gone);
  if (modes.contains("ANSI_QUOTES")) modes.erase("ANSI");  // says nothing beside those that it stands for
  return modes;
}

// Whether names of this database stand in the tokens. An alias or a table may have the database's name: then names of
// two parts may be its columns, but for those that stand where a table or a routine does. `own` is another's name,
// which may be the same but for letter case.
bool NameDatabase(TTokens tokens, const std::string& database, const std::string& own) {
  const auto is_it = [&](std::size_t at) {
    if (!IsName(tokens[at])) return false;
    const std::string name = NameOf(tokens[at]);
    return SameText(name, database) && name != own;
  };
  const auto begins = [&](std::size_t at) { return at == 0 || !tokens[at - 1].Is("."); };
  bool alias = false;
  for (std::size_t at = 0; at < tokens.size(); ++at)
    alias = alias || (is_it(at) && begins(at) && !TokenAt(tokens, at + 1).Is("."));
  for (std::size_t at = 0; at + 2 < tokens.size(); ++at) {
    if (!is_it(at) || !begins(at) || !tokens[at + 1].Is(".")) continue;
    const TToken& behind = TokenAt(tokens, at + 3);
    const bool of_table =
        at > 0 && InList(LowerText(tokens[at - 1].text), {"from", "join", "into", "update", "call", "table"});
    if (!alias || of_table || behind.Is(".") || behind.Is("(")) return true;
  }
  return false;
}

// Names of the elements that are not the same.
TStringList DifferentElements(const TObjectText& reference, const TObjectText& target) {
  TStringList names;
  const auto compare = [&](const TObjectText& in, const TObjectText& other, bool both) {
    for (const TObjectElement& element : in.elements) {
      const TObjectElement* there = other.Find(element.name);
      const bool silent = there == nullptr && element.name == kResultLetters;
      if (!silent && (there == nullptr || (both && there->text != element.text))) names.push_back(element.name);
    }
  };
  compare(reference, target, true);
  compare(target, reference, false);
  return names;
}

class TComparison {
 public:
  TComparison(const TDatabaseObjects& reference, const TDatabaseObjects& target, const TDefinerWishes& wishes,
              TEquivalenceUse* use)
      : reference_(reference),
        target_(target),
        wishes_(wishes),
        use_(use),
        reference_names_(reference),
        target_names_(target) {}

  TObjectComparison Compare() {
    std::map<TObjectKey, const TOtherObject*> there;
    std::map<TObjectKey, std::string> wanted;
    for (const TOtherObject& object : target_.objects) there.emplace(KeyOf(object), &object);
    for (const TOtherObject& object : reference_.objects) {
      const auto [first, is_new] = wanted.emplace(KeyOf(object), object.name);
      if (!is_new && first->second != object.name) Tell(object, Format(kOneName, first->second));
      if (!is_new) continue;
      const auto found = there.find(KeyOf(object));
      if (found == there.end())
        OnlyReference(object);
      else
        Both(object, *found->second);
    }
    PlaceTriggers();
    for (const TOtherObject& object : target_.objects)
      if (!wanted.contains(KeyOf(object))) OnlyTarget(object);
    return std::move(result_);
  }

 private:
  // As the target tells them apart.
  TObjectKey KeyOf(const TOtherObject& object) const { return target_.KeyOf(object.kind, object.name); }

  void Tell(const TOtherObject& object, std::string difference) {
    result_.differences.push_back({object.kind, object.name, std::move(difference)});
  }

  void TellUnread(const TOtherObject& object, const std::string& reason) {
    Tell(object, reason.empty() ? kNotRead : Format(kNotFollowed, reason));
  }

  // Null after it was told why there is none.
  std::shared_ptr<const TObjectText> Read(const TOtherObject& object, const TDatabaseObjects& side) {
    if (object.text.empty()) {
      TellUnread(object, object.unread);
      return nullptr;
    }
    const std::string mode = object.context.sql_mode.value_or("");
    if (const std::string reason = UnreadableIn(mode, object.text); !reason.empty()) {
      Tell(object, Format(kNotFollowed, reason));
      return nullptr;
    }
    try {
      return std::make_shared<const TObjectText>(ReadObject(object, side.database));
    } catch (const EVelmora& error) {
      Tell(object, Format(kNotFollowed, error.what()));
      return nullptr;
    }
  }

  void OnlyReference(const TOtherObject& object) {
    if (MayHide(target_, object.kind)) return Tell(object, Format(kMayBeHidden, "target"));
    if (FindKind(object.kind) == nullptr) return Tell(object, kOnlyReference);
    TObjectChange change{0, saCreateObject, object.kind, object.name};
    change.new_text = Read(object, reference_);
    change.new_object = object;
    if (change.new_text == nullptr) return;
    if (wishes_.policy != EDefiners::Strip) change.definer = MappedAccount(change.new_text->definer, wishes_);
    if (NamesReference(change)) change.unsafe = Format(kNamesReference, reference_.database);
    result_.changes.push_back(std::move(change));
  }

  void OnlyTarget(const TOtherObject& object) {
    if (MayHide(reference_, object.kind)) return Tell(object, Format(kMayBeHidden, "reference"));
    if (FindKind(object.kind) == nullptr) return Tell(object, kOnlyTarget);
    TObjectChange change{0, saDropObject, object.kind, object.name};
    change.old_text = Read(object, target_);
    change.old_object = object;
    if (change.old_text == nullptr) return;
    change.unsafe = kTextGoes;
    result_.changes.push_back(std::move(change));
  }

  void Both(const TOtherObject& object, const TOtherObject& other) {
    if (object.text.empty() || other.text.empty())
      return TellUnread(object, object.unread.empty() ? other.unread : object.unread);
    if (FindKind(object.kind) == nullptr) {
      if (!SayTheSame(object, other)) Tell(object, kDiffers);
      return;
    }
    TObjectChange change{0, saChangeObject, object.kind, object.name};
    change.new_text = Read(object, reference_);
    change.old_text = change.new_text == nullptr ? nullptr : Read(other, target_);
    if (change.old_text == nullptr) return;
    change.new_object = object;
    change.old_object = other;
    change.elements = DifferentElements(*change.new_text, *change.old_text);
    if (SameQueries(change)) std::erase(change.elements, kViewQuery);
    CompareContexts(change);
    CompareStarts(change);
    SettleDefiner(change);
    CompareCollations(change);
    if (NamesReference(change)) TellOfReference(change);
    if (!change.elements.empty())
      result_.changes.push_back(std::move(change));
    else if (change.kind == kTrigger)
      same_triggers_.push_back(std::move(change));
  }

  // Bodies go letter by letter. Views have their own database's name taken out.
  bool NamesReference(const TObjectChange& change) const {
    const std::string& database = reference_.database;
    const bool other = !database.empty() && !target_.database.empty() && database != target_.database;
    if (!other || change.kind == "view" || PosNoCase(database, change.new_text->body) == 0) return false;
    const bool ansi = QuotesNames(change.new_object.context.sql_mode.value_or(""));
    return NameDatabase(TokensByMode(change.new_text->body, ansi), database, target_.database);
  }

  void TellOfReference(TObjectChange& change) {
    if (std::ranges::find(change.elements, "body") != change.elements.end())
      change.unsafe = Format(kNamesReference, reference_.database);
    else
      result_.remarks.push_back(Format(kBothNameReference, change.Object(), reference_.database));
  }

  // Of views whose queries differ as they are written.
  bool SameQueries(const TObjectChange& change) const {
    if (std::ranges::find(change.elements, kViewQuery) == change.elements.end()) return false;
    const std::string wanted = reference_names_.Meaning(*change.new_text);
    return !wanted.empty() && wanted == target_names_.Meaning(*change.old_text);
  }

  // Those whose place alone is another become changes, too.
  void PlaceTriggers() {
    std::map<std::string, std::size_t> listed;
    for (const TOtherObject& object : target_.objects)
      if (object.kind == kTrigger) listed.emplace(object.name, listed.size());
    std::map<std::string, TObjectChange*> all;
    for (auto* changes : {&result_.changes, &same_triggers_})
      for (TObjectChange& change : *changes)
        if (change.kind == kTrigger) all.emplace(change.name, &change);
    std::vector<TOrderedTrigger> triggers;
    for (const TOtherObject& object : reference_.objects) {
      const auto found = object.kind == kTrigger ? all.find(object.name) : all.end();
      if (found == all.end()) continue;
      const TObjectChange& change = *found->second;
      triggers.push_back({change.name, change.new_text.get(), change.old_text.get(), change.new_object.order,
                          change.old_object.order, listed[change.old_object.name],
                          !change.elements.empty() || change.action == saCreateObject});
    }
    OrderTriggers(triggers);
    for (TOrderedTrigger& trigger : triggers) {
      TObjectChange& change = *all[trigger.name];
      change.place = std::move(trigger.place);
      if (trigger.moved) change.elements.emplace_back("order");
    }
    for (TObjectChange& change : same_triggers_)
      if (!change.elements.empty()) result_.changes.push_back(std::move(change));
  }

  bool SayTheSame(const TOtherObject& object, const TOtherObject& other) const {
    if (object.kind == "library") return object.text == other.text;  // of JavaScript
    try {
      return PlainMeaning(object.text, reference_.database) == PlainMeaning(other.text, target_.database);
    } catch (const EVelmora&) {  // no text that can be taken apart
      return object.text == other.text;
    }
  }

  // Nothing where nobody knows.
  std::optional<std::string> ModeOf(const TOtherObject& object) const {
    if (object.context.sql_mode || !object.context.of_client) return object.context.sql_mode;
    return target_.clients_mode ? target_.clients_mode : reference_.clients_mode;
  }

  void CompareContexts(TObjectChange& change) const {
    const TObjectContext& reference = change.new_object.context;
    const TObjectContext& target = change.old_object.context;
    const std::optional<std::string> wanted = ModeOf(change.new_object);
    const std::optional<std::string> there = ModeOf(change.old_object);
    if (change.kind != "view" && wanted && there && ModesOf(*wanted) != ModesOf(*there))
      change.elements.emplace_back("sql_mode");
    const bool zones = !reference.time_zone.empty() && !target.time_zone.empty();
    if (zones && reference.time_zone != target.time_zone) change.elements.emplace_back("time zone");
  }

  // It is that of texts without a character set of their own.
  void CompareCollations(TObjectChange& change) {
    const std::string& wanted = change.new_object.context.collation;
    const std::string& there = change.old_object.context.collation;
    if (use_ == nullptr || wanted.empty() || there.empty() || SameText(wanted, there)) return;
    const bool ansi = QuotesNames(change.new_object.context.sql_mode.value_or(""));
    const std::vector<TToken> tokens = TokensByMode(change.new_text->body, ansi);
    const auto is_text = [](const TToken& token) { return token.kind == EToken::String && PrefixOf(token).empty(); };
    if (std::ranges::none_of(tokens, is_text)) return;
    if (!use_->On(EEquivalence::LiteralCollation))
      change.elements.emplace_back("collation");
    else if (change.elements.empty())
      use_->Add(EEquivalence::LiteralCollation);
  }

  static void CompareStarts(TObjectChange& change) {
    const std::string wanted = change.WantedStart();
    const bool other = !wanted.empty() && wanted != change.old_text->start;
    if (other && IndexOf(change.elements, "schedule") == kNotInList) change.elements.emplace_back("schedule");
  }

  void SettleDefiner(TObjectChange& change) const {
    const std::string wanted = MappedAccount(change.new_text->definer, wishes_);
    const bool compares = wishes_.policy == EDefiners::Compare || wishes_.policy == EDefiners::Map;
    if (wishes_.policy != EDefiners::Strip) change.definer = compares ? wanted : change.old_text->definer;
    if (compares && !wanted.empty() && wanted != change.old_text->definer) change.elements.emplace_back("definer");
  }

  const TDatabaseObjects& reference_;
  const TDatabaseObjects& target_;
  const TDefinerWishes& wishes_;
  TEquivalenceUse* use_;
  TObjectComparison result_;
  TViewNames reference_names_, target_names_;
  std::vector<TObjectChange> same_triggers_;  // but for their places
};

}  // namespace

std::string TObjectChange::LogText() const {
  const std::string text = SyncAction(action).LogText({}, Object());
  return elements.empty() ? text : text + ": " + JoinList(elements, ", ");
}

std::string TObjectChange::Description() const {
  std::string text = old_object.text;
  if (!old_object.text.empty() && !new_object.text.empty()) text += "\n->\n";
  text += new_object.text;
  return unsafe.empty() ? text : text + "\nunsafe: " + unsafe;
}

TObjectComparison CompareObjects(const TDatabaseObjects& reference, const TDatabaseObjects& target,
                                 const TDefinerWishes& wishes, TEquivalenceUse* use) {
  return TComparison(reference, target, wishes, use).Compare();
}

// MySQL has them in its dictionary since 8.0, and had a file for each before.
bool TriggerCaseCounts(const std::string& version) {
  constexpr int kFirstWithDictionary = 80000;
  const TServerVersion read = ReadServerVersion(version);
  return version.empty() || read.mariadb || read.version < kFirstWithDictionary;
}

TObjectKey TDatabaseObjects::KeyOf(const std::string& kind, const std::string& name) const {
  return kind == kTrigger && !trigger_case ? TObjectKey(kind, LowerText(name)) : ObjectKey(kind, name);
}

TObjectKey ObjectKey(const std::string& kind, const std::string& name) {
  const TKindRow* row = FindKind(kind);
  return {kind, row == nullptr || row->case_counts ? name : LowerText(name)};
}

bool IsScriptedKind(std::string_view kind) { return FindKind(kind) != nullptr; }

TStringList ScriptedKinds() {
  TStringList kinds;
  for (const TKindRow& row : kKinds) kinds.emplace_back(row.kind);
  return kinds;
}

std::string_view KindsTitle(std::string_view kind) {
  const TKindRow* row = FindKind(kind);
  return row == nullptr ? kind : row->title;
}

}  // namespace velmora

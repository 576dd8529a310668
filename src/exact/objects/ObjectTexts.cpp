#include "exact/objects/ObjectTexts.h"

#include <map>
#include <string_view>
#include <utility>

#include "mysqltext/KeyText.h"
#include "mysqltext/Lexer.h"
#include "util/Errors.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kOnlyReference[] = "only in the reference";
constexpr char kOnlyTarget[] = "only in the target";
constexpr char kDiffers[] = "differs";
constexpr char kNotRead[] = "not read";

bool IsKindWord(const TToken& token) {
  return token.kind == EToken::Word &&
         InList(LowerText(token.text), {"view", "sequence", "trigger", "procedure", "function", "event", "package"});
}

// Words of which servers print some by themselves: in them letter case says nothing. In others it may, as in names of
// tables.
bool IsFixedWord(std::string_view lower) {
  return InList(lower, {"after",   "as",       "at",       "before",     "begin",    "body",     "call",
                        "collate", "comment",  "contains", "completion", "data",     "delete",   "deterministic",
                        "disable", "do",       "each",     "enable",     "end",      "every",    "for",
                        "from",    "in",       "inout",    "insert",     "language", "modifies", "no",
                        "not",     "on",       "out",      "preserve",   "reads",    "return",   "returns",
                        "row",     "schedule", "select",   "set",        "sql",      "starts",   "ends",
                        "update",  "where",    "charset",  "procedure",  "function", "trigger",  "event",
                        "view",    "sequence", "invoker",  "definer",    "security", "package"});
}

// Reads a creation text into what it says, in a spelling of its own.
class TMeaning {
 public:
  TMeaning(std::string_view text, const std::string& database)
      : tokens_(Tokens(text)), end_(tokens_.size() - 1), database_(database) {
    // A script may end a body by one that servers do not keep.
    while (end_ > 0 && tokens_[end_ - 1].Is(";")) --end_;
  }

  std::string Read() {
    while (at_ < end_ && !IsKindWord(tokens_[at_])) ReadHead();
    if (at_ < end_) Say(tokens_[at_++]);
    Skip({"if", "not", "exists"});
    while (at_ < end_)
      if (!SkipOwnDatabase()) Say(tokens_[at_++]);
    return std::move(meaning_);
  }

 private:
  // What stands before the word for the kind: who defined it, and defaults, are left out.
  void ReadHead() {
    if (SkipDefiner() || Skip({"create"}) || Skip({"or", "replace"}) || Skip({"algorithm", "=", "undefined"}) ||
        Skip({"sql", "security", "definer"}))
      return;
    meaning_ += LowerText(tokens_[at_++].text) + '\n';
  }

  bool Skip(std::initializer_list<std::string_view> words) {
    std::size_t at = at_;
    for (const std::string_view word : words)
      if (!TokenAt(tokens_, at++).Is(word)) return false;
    at_ = at;
    return true;
  }

  // "definer = user@host", "definer = current_user()", "definer = role".
  bool SkipDefiner() {
    if (!Skip({"definer", "="})) return false;
    if (at_ < end_) ++at_;
    Skip({"(", ")"});
    while (TokenAt(tokens_, at_).Is("@")) at_ = std::min(at_ + 2, end_);
    return true;
  }

  bool SkipOwnDatabase() {
    if (database_.empty() || !IsName(tokens_[at_]) || !TokenAt(tokens_, at_ + 1).Is(".")) return false;
    if (NameOf(tokens_[at_]) != database_) return false;
    at_ += 2;
    return true;
  }

  void Say(const TToken& token) {
    const std::string lower = LowerText(token.text);
    if (token.kind == EToken::Word)
      meaning_ += IsFixedWord(lower) ? lower : std::string(token.text);
    else if (token.kind == EToken::Name)
      meaning_ += NameOf(token);
    else if (token.kind == EToken::String)
      meaning_ += LowerText(PrefixOf(token)) + QuotedText(ValueOf(token));
    else
      meaning_ += token.text;
    meaning_ += '\n';
  }

  std::vector<TToken> tokens_;
  std::size_t end_;
  const std::string& database_;
  std::size_t at_ = 0;
  std::string meaning_;
};

bool SameObject(const TOtherObject& a, const std::string& database_a, const TOtherObject& b,
                const std::string& database_b) {
  if (a.text == b.text && database_a == database_b) return true;
  try {
    return TMeaning(a.text, database_a).Read() == TMeaning(b.text, database_b).Read();
  } catch (const EVelmora&) {  // no text that can be taken apart
    return a.text == b.text;
  }
}

using TObjectKey = std::pair<std::string, std::string>;
using TObjectIndex = std::map<TObjectKey, const TOtherObject*>;

TObjectIndex IndexOf(const TDatabaseObjects& side) {
  TObjectIndex index;
  for (const TOtherObject& object : side.objects) index.emplace(TObjectKey(object.kind, object.name), &object);
  return index;
}

}  // namespace

std::vector<TObjectDifference> CompareObjects(const TDatabaseObjects& reference, const TDatabaseObjects& target) {
  std::vector<TObjectDifference> differences;
  const auto add = [&](const TOtherObject& object, const char* difference) {
    differences.push_back({object.kind, object.name, difference});
  };
  TObjectIndex there = IndexOf(target);
  for (const TOtherObject& object : reference.objects) {
    const auto found = there.find({object.kind, object.name});
    if (found == there.end()) {
      add(object, kOnlyReference);
      continue;
    }
    const TOtherObject& other = *found->second;
    if (object.text.empty() || other.text.empty())
      add(object, kNotRead);
    else if (!SameObject(object, reference.database, other, target.database))
      add(object, kDiffers);
  }
  const TObjectIndex wanted = IndexOf(reference);
  for (const TOtherObject& object : target.objects)
    if (!wanted.contains({object.kind, object.name})) add(object, kOnlyTarget);
  return differences;
}

}  // namespace velmora

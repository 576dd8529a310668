// SPDX-License-Identifier: GPL-3.0-or-later
#include "exact/objects/ObjectText.h"

#include <algorithm>
#include <array>
#include <initializer_list>
#include <set>
#include <utility>

#include "exact/objects/Definers.h"
#include "exact/objects/ViewQuery.h"
#include "mysqltext/ColumnParts.h"
#include "mysqltext/KeyText.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kHidden[] = "a query of \"with\" has the name of a table that is told apart by its database alone";
constexpr char kNotPreserve[] = "on completion not preserve";
constexpr char kNoObject[] = "line %d: neither a view, trigger, procedure, function nor event is created here";
constexpr char kUnexpected[] = "line %d: \"%s\" is not what can follow here in a creation text of a %s";
constexpr std::size_t kShown = 40;

// The words of a routine's characteristics, each with the element that it says and what servers take where nothing is
// said.
struct TCharacteristic {
  std::initializer_list<std::string_view> words;
  std::string_view element;
  std::string_view text;  // empty for the default
};
const std::array<TCharacteristic, 11> kCharacteristics = {
    {{{"language", "sql"}, "language", ""},
     {{"not", "deterministic"}, "deterministic", ""},
     {{"deterministic"}, "deterministic", "yes"},
     {{"contains", "sql"}, "data access", ""},
     {{"no", "sql"}, "data access", "no sql"},
     {{"reads", "sql", "data"}, "data access", "reads sql data"},
     {{"modifies", "sql", "data"}, "data access", "modifies sql data"},
     {{"sql", "security", "definer"}, "sql security", ""},
     {{"sql", "security", "invoker"}, "sql security", "invoker"},
     {{"comment"}, "comment", ""},
     {{"language"}, "language", ""}}};

std::string WithLineFeeds(std::string_view text) { return StrReplace(StrReplace(text, "\r\n", "\n"), "\r", "\n"); }

// Every token in a spelling of its own: names without quotes, keywords of a few places in lower case, texts in single
// quotes.
std::string Meaning(TTokens tokens) {
  std::string meaning;
  for (const TToken& token : tokens) {
    if (!meaning.empty()) meaning += ' ';
    if (token.kind == EToken::Word)
      meaning += LowerText(token.text);
    else if (token.kind == EToken::Name)
      meaning += QuotedName(NameOf(token));
    else if (token.kind == EToken::String)
      meaning += LowerText(PrefixOf(token)) + QuotedText(ValueOf(token));
    else
      meaning += token.text;
  }
  return meaning;
}

std::string Joined(std::initializer_list<std::string_view> parts) {
  std::string text;
  for (const std::string_view part : parts) {
    if (!part.empty() && !text.empty() && text.back() != '\n') text += ' ';
    text += part;
  }
  return text;
}

// Whether it is what a server takes for a character set by itself; which one that is hangs on the server.
bool IsOwnCollation(const std::string& collation) {
  return collation.ends_with("_general_ci") ||
         InList(collation, {"utf8mb4_0900_ai_ci", "utf8mb4_uca1400_ai_ci", "latin1_swedish_ci", "binary"});
}

// Of types as servers of either product print them: how wide integers are shown, and a collation that goes without
// saying, do not count.
std::string TypeMeaning(TTokens tokens) {
  std::vector<TToken> counted;
  for (std::size_t at = 0; at < tokens.size(); ++at) {
    const bool shown = tokens[at].Is("(") && at > 0 && TokenAt(tokens, at + 2).Is(")") &&
                       InList(LowerText(tokens[at - 1].text), {"tinyint", "smallint", "mediumint", "int", "bigint"});
    const bool filled = TokenAt(tokens, at + 3).Is("zerofill") || TokenAt(tokens, at + 4).Is("zerofill");
    if (shown && !filled)
      at += 2;
    else if (tokens[at].Is("collate") && IsOwnCollation(LowerText(TokenAt(tokens, at + 1).text)))
      ++at;
    else
      counted.push_back(tokens[at]);
  }
  return Meaning(counted);
}

// What servers put where a type says no size.
struct TUsualSize {
  std::string_view type;
  std::string_view size;
};
constexpr std::array<TUsualSize, 4> kUsualSizes = {
    {{"decimal", "10 , 0"}, {"char", "1"}, {"binary", "1"}, {"bit", "1"}}};

// A result's type, without its character set: synonyms are one, however wide integers are shown.
std::string ResultMeaning(TTokens type, const TColumnParts& parts) {
  std::string size = Meaning(type.subspan(parts.arguments.first, parts.arguments.last - parts.arguments.first));
  for (const TUsualSize& row : kUsualSizes)
    if (size.empty() && row.type == parts.type) size = row.size;
  if (parts.type == "decimal" && size.find(',') == std::string::npos) size += " , 0";
  if ((IsWholeType(parts.type) && !parts.zerofill) || parts.type == "year") size.clear();
  std::string meaning = parts.type;
  if (!size.empty()) meaning += " ( " + size + " )";
  return meaning + (parts.is_unsigned ? " unsigned" : "") + (parts.zerofill ? " zerofill" : "");
}

class TReader {
 public:
  TReader(std::string_view text, const std::string& database, bool quotes_names)
      : text_(text), tokens_(TokensByMode(text, quotes_names)), end_(tokens_.size() - 1), database_(database) {
    // A script may end a body by one that servers do not keep.
    while (end_ > 0 && tokens_[end_ - 1].Is(";")) --end_;
  }

  TObjectText Read() {
    Take({"create"});
    Take({"or", "replace"});
    while (ReadHead()) {
    }
    ReadKind();
    Take({"if", "not", "exists"});
    read_.name = TakeOwnName();
    header_ = at_;
    if (read_.kind == "view")
      ReadView();
    else if (read_.kind == "trigger")
      ReadTrigger();
    else if (read_.kind == "event")
      ReadEvent();
    else
      ReadRoutine();
    return std::move(read_);
  }

 private:
  const TToken& Token(std::size_t ahead = 0) const {
    return at_ + ahead < end_ ? tokens_[at_ + ahead] : tokens_.back();
  }
  bool AtEnd() const { return at_ >= end_; }
  std::string Written(std::size_t first, std::size_t last) const {
    return first >= last ? std::string() : TextOf(text_, tokens_, first, last);
  }
  TTokens Span(std::size_t first, std::size_t last) const {
    return TTokens(tokens_).subspan(first, std::max(first, last) - first);
  }

  bool Take(std::initializer_list<std::string_view> words) {
    std::size_t at = at_;
    for (const std::string_view word : words)
      if (at >= end_ || !tokens_[at++].Is(word)) return false;
    at_ = at;
    return true;
  }

  [[noreturn]] void Unexpected() const {
    const std::size_t place = AtEnd() ? text_.size() : Token().start;
    const std::string shown = AtEnd() ? "its end" : CutChars(std::string(text_.substr(place, 4 * kShown)), kShown);
    RaiseError(Format(kUnexpected, LineOf(text_, place), shown, read_.kind));
  }

  void Expect(std::initializer_list<std::string_view> words) {
    if (!Take(words)) Unexpected();
  }

  void Say(std::string_view element, std::string text) {
    if (!text.empty()) read_.elements.push_back({std::string(element), std::move(text)});
  }

  // What may stand before the word for the kind, one of them.
  bool ReadHead() {
    const std::size_t first = at_;
    if (Take({"algorithm", "="})) {
      const std::string value = LowerText(Token().text);
      ++at_;
      read_.algorithm = Written(first, at_);
      Say("algorithm", value == "undefined" ? "" : value);
    } else if (Take({"definer", "="})) {
      const std::size_t from = at_++;
      Take({"(", ")"});
      if (Take({"@"})) PassHost();
      read_.definer = AccountOf(Written(from, at_));
    } else if (Take({"sql", "security"})) {
      const std::string value = LowerText(Token().text);
      ++at_;
      read_.security = Written(first, at_);
      Say("sql security", value == "definer" ? "" : value);
    } else if (Take({"aggregate"})) {
      read_.algorithm = "aggregate";
      Say("aggregate", "yes");
    } else {
      return false;
    }
    return true;
  }

  // A host without quotes may have points, hyphens and a "%" in it, which are tokens of their own.
  void PassHost() {
    std::size_t end = Token().End();
    ++at_;
    while (!AtEnd() && Token().start == end) {
      end = Token().End();
      ++at_;
    }
  }

  void ReadKind() {
    for (const std::string_view kind : {"view", "trigger", "procedure", "function", "event"})
      if (Take({kind})) {
        read_.kind = kind;
        return;
      }
    RaiseError(Format(kNoObject, LineOf(text_, Token().start)));
  }

  // A name, with its database before it or without.
  std::string TakeOwnName() {
    if (!IsName(Token())) Unexpected();
    if (Token(1).Is(".")) at_ += 2;
    if (!IsName(Token())) Unexpected();
    return NameOf(tokens_[at_++]);
  }

  void ReadView() {
    if (Token().Is("(")) {
      for (const TTokenRange part : ListParts(tokens_, at_)) read_.columns.push_back(NameOf(tokens_[part.first]));
      at_ = std::min(AfterGroup(tokens_, at_), end_);
    }
    Expect({"as"});
    read_.header = Written(header_, at_);
    const std::size_t first = at_;
    std::size_t last = end_;
    std::string option;
    if (last > first + 2 && tokens_[last - 1].Is("option") && tokens_[last - 2].Is("check")) {
      last -= 2;
      option = "cascaded";
      if (tokens_[last - 1].Is("cascaded") || tokens_[last - 1].Is("local")) option = LowerText(tokens_[--last].text);
      if (tokens_[last - 1].Is("with")) --last;
    }
    if (first >= last) Unexpected();
    if (HidesTable({first, last})) RaiseError(kHidden);
    read_.body = WithoutDatabase(text_, tokens_, {first, end_}, database_);
    read_.query = WithoutDatabase(text_, tokens_, {first, last}, database_);
    Say(kViewQuery, QueryMeaning(read_.query, read_.columns));
    Say("check option", option);
  }

  // "with s as (...) ... from db.s": without the database another table is meant.
  bool HidesTable(TTokenRange range) const {
    std::set<std::string> named, qualified;
    for (std::size_t at = range.first; at < range.last; ++at) {
      if (!IsName(tokens_[at])) continue;
      const bool begins = at > range.first &&
                          (tokens_[at - 1].Is("with") || tokens_[at - 1].Is("recursive") || tokens_[at - 1].Is(","));
      const bool own = NameOf(tokens_[at]) == database_ && TokenAt(tokens_, at + 1).Is(".");
      const std::size_t next = TokenAt(tokens_, at + 1).Is("(") ? AfterGroup(tokens_, at + 1) : at + 1;
      const bool queries = TokenAt(tokens_, next).Is("as") && TokenAt(tokens_, next + 1).Is("(");
      if (begins && queries) named.insert(NameOf(tokens_[at]));
      if (own) qualified.insert(NameOf(TokenAt(tokens_, at + 2)));
    }
    const bool with = std::ranges::any_of(tokens_, [](const TToken& token) { return token.Is("with"); });
    return with && std::ranges::any_of(qualified, [&](const std::string& name) { return named.contains(name); });
  }

  void ReadTrigger() {
    const std::string time = LowerText(Token().text);
    if (!Take({"before"}) && !Take({"after"})) Unexpected();
    const std::size_t first = at_;
    while (!AtEnd() && !Token().Is("on")) ++at_;  // MariaDB of today has several: insert or update of a, b
    read_.moment = time + " " + Meaning(Span(first, at_));
    Expect({"on"});
    read_.table = TakeOwnName();
    Say("moment", read_.moment);
    Say("table", read_.table);
    Expect({"for", "each", "row"});
    if (Token().Is("follows") || Token().Is("precedes")) {
      const std::string word = LowerText(Token().text);
      ++at_;
      read_.order = word + " " + QuotedName(TakeOwnName());
    }
    ReadBody();
  }

  void ReadEvent() {
    Expect({"on", "schedule"});
    const std::size_t first = at_;
    std::size_t last = at_;
    const auto ends = [this] {
      const TToken& token = Token();
      return token.Is("do") || token.Is("enable") || token.Is("disable") || token.Is("comment") ||
             (token.Is("on") && Token(1).Is("completion"));
    };
    std::size_t starts = 0;
    std::size_t stops = 0;
    for (; !AtEnd() && !ends(); last = ++at_) {
      if (Token().Is("starts")) starts = at_;
      if (Token().Is("ends")) stops = at_;
    }
    SaySchedule(first, last, starts, stops);
    ReadEventRest(stops != 0 ? Written(stops, last) : std::string());
    ReadBody();
  }

  // What an event is altered to says all of it, as what is left out stays as it is.
  void ReadEventRest(const std::string& ends) {
    bool preserves = false;
    if (Take({"on", "completion"})) {
      preserves = !Take({"not"});
      if (preserves) Say("on completion", "preserve");
      Expect({"preserve"});
    }
    const std::string status = ReadStatus();
    Say("status", status == "enable" ? "" : status);
    std::string comment = "''";
    std::string written = comment;  // which its mode may read otherwise
    if (Take({"comment"})) {
      comment = QuotedText(ValueOf(Token()));
      written = Token().text;
      ++at_;
    }
    if (comment != "''") Say("comment", comment);
    Expect({"do"});
    read_.ends = ends;
    read_.completion = preserves ? "on completion preserve" : kNotPreserve;
    read_.rest = Joined({status, "comment", written, "do"});
  }

  // A server writes the start of a repeated event where nobody has: who compares has to know.
  void SaySchedule(std::size_t first, std::size_t last, std::size_t starts, std::size_t stops) {
    const std::size_t interval_end = starts != 0 ? starts : stops != 0 ? stops : last;
    std::string schedule = Meaning(Span(first, interval_end));
    if (stops != 0) schedule += " " + Meaning(Span(stops, last));
    Say("schedule", schedule);
    read_.interval = "on schedule " + Written(first, interval_end);
    if (starts == 0) return;
    read_.starts = Written(starts, stops != 0 ? stops : last);
    const bool said = tokens_[starts + 1].kind == EToken::String && starts + 2 == (stops != 0 ? stops : last);
    if (said) read_.start = PrintedMoment(ValueOf(tokens_[starts + 1]));
  }

  // '2030-01-01' and '2030-01-01T02:00' by hand: the second with its time whole.
  static std::string PrintedMoment(std::string moment) {
    constexpr std::size_t kDate = 10;
    if (moment.size() > kDate && moment[kDate] == 'T') moment[kDate] = ' ';
    if (moment.size() == kDate) moment += " 00:00";
    if (moment.size() == std::string_view("2030-01-01 00:00").size()) moment += ":00";
    return moment;
  }

  // In words that every server takes.
  std::string ReadStatus() {
    if (Take({"enable"}) || !Take({"disable"})) return "enable";
    if (!Take({"on"})) return "disable";
    if (!Take({"slave"}) && !Take({"replica"})) Unexpected();
    return "disable on slave";
  }

  void ReadRoutine() {
    if (!Token().Is("(")) Unexpected();
    const std::size_t open = at_;
    at_ = std::min(AfterGroup(tokens_, open), end_);
    Say("parameters", TypeMeaning(Span(open + 1, at_ - 1)));
    if (Take({"returns"})) {
      const std::size_t first = at_;
      PassType();
      SayResult(first);
    }
    while (ReadCharacteristic()) {
    }
    read_.header = Written(header_, at_);
    ReadLibraries();
    ReadBody();
  }

  // Of a routine in JavaScript: using (`db`.`library` as `name`). Those of its own database come from that of the
  // target.
  void ReadLibraries() {
    if (!Token().Is("using") || !TokenAt(tokens_, at_ + 1).Is("(")) return;
    const std::size_t first = at_;
    at_ = std::min(AfterGroup(tokens_, at_ + 1), end_);
    const std::string libraries = WithoutDatabase(text_, tokens_, {first, at_}, database_);
    Say("libraries", LowerText(StrReplace(libraries, "`", "")));
    read_.header += " " + libraries;
  }

  // As a column's type is read, which has a name before it.
  void SayResult(std::size_t first) {
    const TTokens type = Span(first - 1, at_);
    const TColumnParts parts = ReadColumnParts(type);
    Say("returns", ResultMeaning(type, parts));
    const std::string own = IsOwnCollation(parts.collation) ? std::string() : parts.collation;
    Say(kResultLetters, Trim(parts.charset + " " + own));
  }

  void PassType() {
    ++at_;
    while (!AtEnd())
      if (Token().Is("("))
        at_ = std::min(AfterGroup(tokens_, at_), end_);
      else if (Take({"character", "set"}) || Take({"charset"}) || Take({"collate"}))
        ++at_;
      else if (!Take({"unsigned"}) && !Take({"signed"}) && !Take({"zerofill"}) && !Take({"binary"}) &&
               !Take({"ascii"}) && !Take({"unicode"}) && !Take({"precision"}) && !Take({"varying"}))
        return;
  }

  bool ReadCharacteristic() {
    for (const TCharacteristic& row : kCharacteristics) {
      if (!Take(row.words)) continue;
      std::string text(row.text);
      if (*row.words.begin() == std::string_view("comment")) text = QuotedText(ValueOf(Token()));
      if (row.words.size() == 1 && row.element == "language") text = LowerText(Token().text);
      if (row.words.size() == 1 && row.element != "deterministic") ++at_;
      std::erase_if(read_.elements, [&](const TObjectElement& said) { return said.name == row.element; });
      if (text != "''") Say(row.element, std::move(text));
      return true;
    }
    return false;
  }

  void ReadBody() {
    if (AtEnd()) Unexpected();
    const std::size_t first = Token().start;
    read_.body = WithLineFeeds(text_.substr(first, tokens_[end_ - 1].End() - first));
    Say("body", read_.body);
  }

  std::string_view text_;
  std::vector<TToken> tokens_;
  std::size_t end_;
  const std::string& database_;
  std::size_t at_ = 0;
  std::size_t header_ = 0;  // the first token after the name
  TObjectText read_;
};

}  // namespace

const TObjectElement* TObjectText::Find(std::string_view element) const {
  const auto found = std::ranges::find(elements, element, &TObjectElement::name);
  return found == elements.end() ? nullptr : &*found;
}

std::string TObjectText::Creation(const TObjectSpelling& spelling) const {
  const std::string by = spelling.definer.empty() ? std::string() : "definer = " + QuotedAccount(spelling.definer);
  const std::string shown = QuotedName(name);
  const std::string& when = spelling.starts.empty() ? starts : spelling.starts;
  const std::string kept = completion == kNotPreserve && !spelling.says_not ? std::string() : completion;
  std::string said = header;
  if (kind == "event") said = Joined({interval, when, ends, kept, rest});
  if (kind == "trigger") said = Joined({moment, "on", QuotedName(table), "for each row"});
  const bool tight = header.starts_with("(") && kind != "view";  // procedure `p`(a int)
  const std::string head = Joined({"create", spelling.or_replace ? "or replace" : "", algorithm, by, security, kind,
                                   tight ? shown + said : Joined({shown, said}), spelling.order});
  return head + (kind == "view" ? " " : "\n") + body;
}

std::vector<TToken> TokensByMode(std::string_view text, bool quotes_names) {
  std::vector<TToken> tokens = Tokens(text);
  for (TToken& token : tokens)
    if (quotes_names && token.text.starts_with('"')) token.kind = EToken::Name;
  return tokens;
}

TObjectText ReadObjectText(std::string_view text, const std::string& database, bool quotes_names) {
  return TReader(text, database, quotes_names).Read();
}

std::string PlainMeaning(std::string_view text, const std::string& database) {
  const std::vector<TToken> tokens = Tokens(text);
  if (tokens.size() < 2) return {};
  const std::string own = WithoutDatabase(text, tokens, {0, tokens.size() - 1}, database);
  const std::vector<TToken> left = Tokens(own);
  return Meaning(TTokens(left).first(left.size() - 1));
}

// An alias may have the database's name: then names of two parts may be its columns.
std::string WithoutDatabase(std::string_view text, TTokens tokens, TTokenRange range, const std::string& database) {
  const auto is_database = [&](std::size_t at) {
    return !database.empty() && at < range.last && IsName(tokens[at]) && NameOf(tokens[at]) == database;
  };
  bool alias = false;
  for (std::size_t at = range.first; at < range.last; ++at)
    alias =
        alias || (is_database(at) && !TokenAt(tokens, at + 1).Is(".") && !(at > range.first && tokens[at - 1].Is(".")));
  std::string result;
  std::size_t from = tokens[range.first].start;
  for (std::size_t at = range.first; at < range.last; ++at) {
    const bool qualifies =
        is_database(at) && TokenAt(tokens, at + 1).Is(".") && !(at > range.first && tokens[at - 1].Is("."));
    if (!qualifies) continue;
    const bool three_parts = TokenAt(tokens, at + 3).Is(".");
    const bool of_table = at > range.first && (tokens[at - 1].Is("from") || tokens[at - 1].Is("join"));
    if (alias && !three_parts && !of_table) continue;
    result += text.substr(from, tokens[at].start - from);
    from = tokens[at + 1].End();
    ++at;
  }
  return result + std::string(text.substr(from, tokens[range.last - 1].End() - from));
}

}  // namespace velmora

// SPDX-License-Identifier: GPL-3.0-or-later
#include "exact/run/ExactWishes.h"

#include <algorithm>
#include <array>

#include "mysqltext/ServerVersion.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kNoEquivalence[] = "\"%s\" is nothing that can be taken as equal; there are: %s";
constexpr char kNeverCounts[] = "\"%s\" cannot be asked for strictly: no statement changes it";
constexpr char kNoWish[] = "The task asks for \"%s\", which this version does not know";

// As a message lists them.
std::string EquivalenceNames(bool strict) {
  TStringList names;
  for (const TEquivalence& row : Equivalences())
    if (row.follows || !strict) names.emplace_back(row.name);
  return JoinList(names, ", ");
}

void TakeEquivalence(const std::string& name, bool strict, TStringList& names) {
  const TEquivalence* row = FindEquivalence(name);
  if (row == nullptr) RaiseError(Format(kNoEquivalence, name, EquivalenceNames(strict)));
  if (strict && !row->follows) RaiseError(Format(kNeverCounts, name));
  if (std::string known(row->name); IndexOf(names, known) == kNotInList) names.push_back(std::move(known));
}

TStringList TextsOf(const std::vector<TPattern>& patterns) {
  TStringList texts;
  for (const TPattern& pattern : patterns) texts.push_back(pattern.text);
  return texts;
}

constexpr char kNoAlgorithm[] = "There is no algorithm \"%s\": instant and inplace can be asked for";
constexpr char kNoVersion[] = "\"%s\" is no server: give its product and version, as in \"mysql 8.0.36\"";

void TakeAlgorithm(TExactWishes& wishes, const std::string& text) {
  if (text != "instant" && text != "inplace") RaiseError(Format(kNoAlgorithm, text));
  wishes.locks.algorithm = text == "instant" ? ELockClass::Instant : ELockClass::InPlace;
}

TStringList AlgorithmGiven(const TExactWishes& wishes) {
  if (wishes.locks.algorithm == ELockClass::Unknown) return {};
  return {wishes.locks.algorithm == ELockClass::Instant ? "instant" : "inplace"};
}

void TakeVersion(std::string& version, const std::string& text) {
  const bool named = PosNoCase("mysql", text) == 1 || PosNoCase("mariadb", text) == 1;
  if (!named || ReadServerVersion(text).version == 0) RaiseError(Format(kNoVersion, text));
  version = text;
}

TStringList Switch(bool on) { return on ? TStringList{""} : TStringList(); }

void TakeRename(const std::string& text, std::vector<TRename>& renames) {
  TRename rename = ReadRename(text);
  if (std::ranges::find(renames, rename) == renames.end()) renames.push_back(std::move(rename));
}

TStringList TextsOf(const std::vector<TRename>& renames) {
  TStringList texts;
  for (const TRename& rename : renames) texts.push_back(rename.Text());
  return texts;
}

constexpr char kNoNumber[] = "\"%s\" is no whole number from 0 to %d";
constexpr int kLongestLockWait = 86400;  // seconds
constexpr int kMostRetries = 1000;

int NumberTo(int most, const std::string& text) {
  const std::optional<std::int64_t> number = TryStrToInt(text);
  if (!number || *number < 0 || *number > most) RaiseError(Format(kNoNumber, text, most));
  return static_cast<int>(*number);
}

TStringList NumberGiven(const std::optional<int>& number) {
  return number ? TStringList{Format("%d", *number)} : TStringList();
}

constexpr std::array kOptions = {
    TExactOption{
        "only", "PATTERN", true, "Only",
        "Compare only what such a pattern names, as in 'orders*' (tables, with their triggers), 'view:v_*', "
        "'orders.total', 'index:orders.ix_*'; * stands for any letters, ? for one",
        [](TExactWishes& wishes, const std::string& text) { wishes.selection.only.push_back(ReadPattern(text)); },
        [](const TExactWishes& wishes) { return TextsOf(wishes.selection.only); }},
    TExactOption{
        "except", "PATTERN", true, "Except", "Leave out what such a pattern names, as in 'tmp_*', 'triggers:*'",
        [](TExactWishes& wishes, const std::string& text) { wishes.selection.except.push_back(ReadPattern(text)); },
        [](const TExactWishes& wishes) { return TextsOf(wishes.selection.except); }},
    TExactOption{"rename", "OLD=NEW", true, "Renames",
                 "What the target has under the one name is what the reference has under the other: TABLE.COLUMN=NAME "
                 "or TABLE=NAME",
                 [](TExactWishes& wishes, const std::string& text) { TakeRename(text, wishes.renames); },
                 [](const TExactWishes& wishes) { return TextsOf(wishes.renames); }},
    TExactOption{"ignore", "NAME", true, "Take as equal",
                 "What need not be the same: column-order, comments, partitions, charset",
                 [](TExactWishes& wishes, const std::string& text) { TakeEquivalence(text, false, wishes.ignored); },
                 [](const TExactWishes& wishes) { return wishes.ignored; }},
    TExactOption{"strict", "NAME", true, "Strictly",
                 "What is otherwise taken as equal and is to differ, as in display-width, auto-increment, "
                 "inherited-charset",
                 [](TExactWishes& wishes, const std::string& text) { TakeEquivalence(text, true, wishes.strict); },
                 [](const TExactWishes& wishes) { return wishes.strict; }},
    TExactOption{"definer", "POLICY", true, "Definers",
                 "The definers of views, triggers, routines and events: ignore (as it is), compare, strip (the script "
                 "names none), or 'map A@B=C@D', which may be given several times",
                 [](TExactWishes& wishes, const std::string& text) { TakeDefinerWish(text, wishes.definers); },
                 [](const TExactWishes& wishes) { return DefinerWishTexts(wishes.definers); }},
    TExactOption{"target-version", "SERVER", false, "Server of a target file",
                 "What a target that is a file will run on, as in 'mysql 8.0.36' or 'mariadb 10.11': "
                 "it is read as such a server would, and what its statements lock is told of that; a server is asked",
                 [](TExactWishes& wishes, const std::string& text) { TakeVersion(wishes.locks.target_version, text); },
                 [](const TExactWishes& wishes) {
                   const std::string& version = wishes.locks.target_version;
                   return version.empty() ? TStringList() : TStringList{version};
                 }},
    TExactOption{
        "reference-version", "SERVER", false, "Server of a reference file",
        "The server of which a reference that is a file is a dump, as in 'mysql 8.4.0': where the target is of "
        "another product or release, it is compared in that one's words, as between two servers; a server is asked",
        [](TExactWishes& wishes, const std::string& text) { TakeVersion(wishes.reference_version, text); },
        [](const TExactWishes& wishes) {
          const std::string& version = wishes.reference_version;
          return version.empty() ? TStringList() : TStringList{version};
        }},
    TExactOption{"algorithm", "NAME", false, "Algorithm",
                 "Write it into each change of a table, so that the server refuses what it cannot do "
                 "that way: instant, or inplace; nothing runs where a statement is known to need more",
                 TakeAlgorithm, AlgorithmGiven},
    TExactOption{"row-counts", "", false, "Ask for rows and sizes of tables that are made anew",
                 "Ask the target's server for rows and sizes of the tables that are made anew or copied",
                 [](TExactWishes& wishes, const std::string&) { wishes.locks.row_counts = true; },
                 [](const TExactWishes& wishes) { return Switch(wishes.locks.row_counts); }},
    TExactOption{"fast-foreign-keys", "", false, "Add foreign keys fast",
                 "Look for orphans with a query before the run, and then add foreign keys with the "
                 "server's own checks off, which does not copy the table",
                 [](TExactWishes& wishes, const std::string&) { wishes.locks.fast_foreign_keys = true; },
                 [](const TExactWishes& wishes) { return Switch(wishes.locks.fast_foreign_keys); }},
    TExactOption{"lock-wait", "N", false, "Seconds to wait for a lock",
                 "A statement of a run waits at most N seconds for its lock (10); 0: as long as the server has it",
                 [](TExactWishes& wishes, const std::string& text) {
                   wishes.waits.lock_wait = NumberTo(kLongestLockWait, text);
                 },
                 [](const TExactWishes& wishes) { return NumberGiven(wishes.waits.lock_wait); }, true},
    TExactOption{
        "retries", "N", false, "Further tries",
        "A change of structure that did not get its lock is tried N times more, after pauses that grow (5)",
        [](TExactWishes& wishes, const std::string& text) { wishes.waits.retries = NumberTo(kMostRetries, text); },
        [](const TExactWishes& wishes) { return NumberGiven(wishes.waits.retries); }, true},
};

void TakeLine(const std::string& line, TExactWishes& wishes) {
  std::string argument = line;
  const std::string word = StrChop(" ", argument, true);
  for (const TExactOption& option : kOptions) {
    if (option.word != (option.argument.empty() ? line : word)) continue;
    return option.take(wishes, option.argument.empty() ? std::string() : argument);
  }
  RaiseError(Format(kNoWish, line));
}

}  // namespace

std::span<const TExactOption> ExactOptions() { return kOptions; }

TEquivalenceUse SwitchedEquivalences(const TExactWishes& wishes) {
  TEquivalenceUse use;
  for (const std::string& name : wishes.ignored) use.Switch(FindEquivalence(name)->id, true);
  for (const std::string& name : wishes.strict) use.Switch(FindEquivalence(name)->id, false);
  return use;
}

std::string ExactWishesText(const TExactWishes& wishes) {
  TStringList lines;
  for (const TExactOption& option : kOptions)
    for (const std::string& argument : option.given(wishes))
      lines.push_back(Trim(std::string(option.word) + " " + argument));
  return JoinList(lines, "\n");
}

TExactWishes ReadExactWishes(const std::string& text) {
  TExactWishes wishes;
  TStringList lines;
  SplitText("\n", text, lines);
  for (const std::string& line : lines)
    if (!Trim(line).empty()) TakeLine(Trim(line), wishes);
  return wishes;
}

TExactWishes JoinWishes(const TExactWishes& now, const TExactWishes& kept) {
  TExactWishes joined = now;
  for (const TExactOption& option : kOptions)
    if (option.given(now).empty())
      for (const std::string& argument : option.given(kept)) option.take(joined, argument);
  return joined;
}

}  // namespace velmora

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "mysqlnet/MySqlSession.h"
#include "support/CaseFile.h"
#include "support/MySqlDialogue.h"

namespace velmora::testing {

// A session whose server plays a script.
class TSessionRig {
 public:
  explicit TSessionRig(const TDialogue& script, bool current = true);

  void Connect() { session.Connect("host", "joe", password, database, 0, argument, ""); }
  void Query(const std::string& sql);
  void ExpectDone() const;  // all was said, and nothing else

  std::string password = "secret", database = "db";
  std::uint32_t argument = 0;  // capabilities asked for at Connect
  TDialogue dialogue;
  TMySqlSession session;
};

// A case of tests/data/dialogues, where it stands how they are written.
class TDialogueCase {
 public:
  TDialogueCase(const TCaseText& text, const TWireNames& names);

  TDialogue Dialogue() const;                                    // from its beginning
  std::string Bytes(bool server) const;                          // all that one of both says
  void SetUp(TSessionRig& rig) const;                            // the client as the case has it
  TStringList Play(TSessionRig& rig, bool whole = false) const;  // what comes of it; `whole`: rows are read at once

  std::string name;
  std::string guard;    // what a careful client needs
  TStringList outcome;  // what has to come of it

 private:
  void Take(const std::string& line, const TWireNames& names);
  void Say(bool server, std::string notation, const TWireNames& names);

  std::vector<std::pair<bool, std::string>> packets_;  // of the server?
  std::vector<std::pair<std::string, std::string>> settings_;
  TStringList queries_;
  int number_ = 0;
  bool tells_login_ = true;
};

std::vector<TDialogueCase> DialogueCases(const std::string& file, const TWireNames& more_names = {});
// One that a test has written itself, with the names that the file defines.
TDialogueCase WrittenCase(const std::string& file, const std::string& text);

}  // namespace velmora::testing

// SPDX-License-Identifier: GPL-3.0-or-later
#include "mysqlnet/SessionRig.h"

#include <gtest/gtest.h>

#include <functional>

#include "mysqlnet/MySqlResultSet.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora::testing {

TSessionRig::TSessionRig(const TDialogue& script, bool current) : dialogue(script) {
  session.protocol = 2;  // the transport is given
  session.net.vio = dialogue.NewVio();
  session.current_protocol = current;
  session.connect_timeout = 7;
  session.command_timeout = 70;
}

void TSessionRig::Query(const std::string& sql) {
  session.SimpleCommand(kQuery, sql, true, sql.size());
  session.ReadQueryResult();
}

void TSessionRig::ExpectDone() const {
  EXPECT_EQ(dialogue.Fault(), "");
  EXPECT_TRUE(dialogue.Done());
}

namespace {

std::uint32_t Hex(const std::string& text) { return static_cast<std::uint32_t>(std::stoul(text, nullptr, 16)); }

using TSetting = std::function<void(TSessionRig& rig, const std::string& value)>;
const std::map<std::string, TSetting> kSettings = {
    {"password", [](TSessionRig& rig, const std::string& value) { rig.password = value; }},
    {"database", [](TSessionRig& rig, const std::string& value) { rig.database = value; }},
    {"argument", [](TSessionRig& rig, const std::string& value) { rig.argument = Hex(value); }},
    {"property", [](TSessionRig& rig, const std::string& value) { rig.session.client_flag = Hex(value); }},
    {"offer", [](TSessionRig& rig, const std::string& value) { rig.session.local_file = value; }},
    {"older", [](TSessionRig& rig, const std::string&) { rig.session.current_protocol = false; }},
    {"after", [](TSessionRig& rig, const std::string& form) { rig.session.current_protocol = form != "old"; }},
    {"tls", [](TSessionRig& rig, const std::string&) { rig.session.tls.mode = EMySqlTls::Required; }},
    {"private", [](TSessionRig& rig, const std::string&) { rig.dialogue.OnPrivateLine(true); }},
    {"allowed", [](TSessionRig& rig, const std::string&) { rig.session.login_rules.old_logins = true; }},
};

std::string Expanded(std::string text, const TWireNames& names) {
  for (const auto& [name, bytes] : names) text = StrReplace(text, "{" + name + "}", bytes);
  return text;
}

// --- What comes of it, as text

std::string LoginLine(const TMySqlSession& session) {
  return Format("in: %s thread %d language %d status %x flags %X", session.server_version, session.thread_id,
                session.server_language, session.server_status, session.client_flag) +
         (session.net.compress ? " compressed" : "");
}

std::string ErrorLine(const EVelmora& error, const TMySqlSession& session) {
  const auto* numbered = dynamic_cast<const EMySqlException*>(&error);
  const int number = numbered != nullptr ? numbered->Number() : 0;
  return (number != 0 ? Format("%d ", number) : "") + error.what() + (session.net.Lost() ? ", lost" : "");
}

std::string ColumnLine(const TMySqlColumn& column) {
  return Format("column %s: type %d, flags %x, length %d, decimals %d, charset %d, %s.%s", column.name, column.type,
                column.flags, column.length, column.decimals, column.charset, column.org_table, column.org_name);
}

std::string RowLine(const TMySqlResultSet& rows) {
  constexpr std::size_t kShown = 10;
  std::string line = "row ";
  for (std::size_t i = 0; i < rows.Columns().size(); ++i) {
    const std::string_view value = rows.Value(i).value_or("null");
    line += (i == 0 ? "" : "|") + std::string(value.substr(0, kShown));
    if (value.size() > kShown) line += Format("... %d bytes", value.size());
  }
  return line;
}

void TellRows(TMySqlSession& session, bool whole, TStringList& told) {
  TMySqlResultSet rows(session);
  for (const TMySqlColumn& column : rows.Columns()) told.push_back(ColumnLine(column));
  if (whole) rows.FetchAll();
  std::size_t count = 0;
  for (; rows.Next(); ++count) told.push_back(RowLine(rows));
  EXPECT_THROW(rows.Value(0), EListError);
  told.push_back(Format("end: status %x, %d warnings", session.server_status, session.warning_count));
  EXPECT_FALSE(session.has_result);
  EXPECT_EQ(rows.RowCount(), whole ? count : 0U);
  rows.First();
  EXPECT_EQ(rows.Next(), whole && count > 0);
}

void TellAnswer(TMySqlSession& session, bool whole, TStringList& told) {
  if (session.has_result)
    TellRows(session, whole, told);
  else
    told.push_back(Format("done: %d rows, id %d, status %x, %d warnings", session.affected_rows, session.insert_id,
                          session.server_status, session.warning_count) +
                   (session.info.empty() ? "" : ", " + ShownText(session.info)));
  if (!session.HasMoreResults()) return;
  session.ReadQueryResult();
  TellAnswer(session, whole, told);
}

}  // namespace

// --- Cases

TDialogueCase::TDialogueCase(const TCaseText& text, const TWireNames& names) : name(text.name) {
  for (const std::string& line : text.lines) Take(line, names);
}

void TDialogueCase::Take(const std::string& line, const TWireNames& names) {
  const std::size_t end = std::min(line.find(' '), line.size());
  const std::string word = line.substr(0, end);
  const std::string rest = line.substr(std::min(end + 1, line.size()));
  if (word == "<" || word == ">") {
    Say(word == "<", rest, names);
  } else if (word == "=") {
    outcome.push_back(Expanded(rest, names));
  } else if (word == "guard") {
    guard = rest;
  } else if (word == "query") {
    queries_.push_back(rest);
    number_ = 0;
    Say(false, "03 '" + rest + "'", names);
  } else {
    settings_.emplace_back(word, Expanded(rest, names));
    if (word != "after") return;
    Say(true, "{" + rest + " greeting}", names);
    Say(false, "{" + rest + " login}", names);
    Say(true, "{" + rest + " ok}", names);
    tells_login_ = false;
  }
}

void TDialogueCase::Say(bool server, std::string notation, const TWireNames& names) {
  if (notation.starts_with('#')) {
    number_ = std::stoi(notation.substr(1));
    notation.erase(0, 2);
  }
  packets_.emplace_back(server, Packet(number_++, Wire(notation, names)));
}

TDialogue TDialogueCase::Dialogue() const {
  TDialogue dialogue;
  for (const auto& [server, bytes] : packets_) server ? dialogue.Server(bytes) : dialogue.Client(bytes);
  return dialogue;
}

std::string TDialogueCase::Bytes(bool server) const {
  std::string all;
  for (const auto& [is_server, bytes] : packets_)
    if (is_server == server) all += bytes;
  return all;
}

void TDialogueCase::SetUp(TSessionRig& rig) const {
  for (const auto& [word, value] : settings_) kSettings.at(word)(rig, value);
}

TStringList TDialogueCase::Play(TSessionRig& rig, bool whole) const {
  TStringList told;
  const auto attempt = [&](const std::function<void()>& step) {
    try {
      step();
    } catch (const EVelmora& error) {
      told.push_back(ErrorLine(error, rig.session));
    }
  };
  attempt([&] {
    rig.Connect();
    if (tells_login_) told.push_back(LoginLine(rig.session));
  });
  for (const std::string& query : queries_)
    attempt([&] {
      rig.Query(query);
      TellAnswer(rig.session, whole, told);
    });
  return told;
}

namespace {

TWireNames NamesOf(const TCaseFile& file, TWireNames names) {
  constexpr std::string_view kLet = "let ";
  for (const std::string& line : file.heading) {
    const std::size_t end = line.find("  ");
    if (line.starts_with(kLet)) names[line.substr(kLet.size(), end - kLet.size())] = Wire(line.substr(end), names);
  }
  return names;
}

}  // namespace

std::vector<TDialogueCase> DialogueCases(const std::string& file, const TWireNames& more_names) {
  const TCaseFile read = ReadCaseFile("dialogues/" + file);
  const TWireNames names = NamesOf(read, more_names);
  std::vector<TDialogueCase> cases;
  for (const TCaseText& text : read.cases) cases.emplace_back(text, names);
  return cases;
}

TDialogueCase WrittenCase(const std::string& file, const std::string& text) {
  return {{"written", LinesOf(text)}, NamesOf(ReadCaseFile("dialogues/" + file), {})};
}

}  // namespace velmora::testing

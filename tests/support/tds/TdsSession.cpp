#include "support/tds/TdsSession.h"

#include <algorithm>
#include <iterator>

#include "util/Format.h"
#include "util/Text.h"

namespace velmora::testing {

namespace {

// What the server takes note of, and does not carry out.
constexpr std::string_view kAccepted[] = {"set ", "create ", "alter ", "drop ", "truncate ", "exec sp_rename"};

constexpr unsigned kBeginRequest = 5, kCommitRequest = 7;
constexpr unsigned kNVarChar = 0xE7, kNullSize = 0xFFFF;
constexpr std::size_t kCollationSize = 5;

bool BeginsWith(std::string_view sql, std::string_view word) { return SameText(sql.substr(0, word.size()), word); }

}  // namespace

TTdsSession::TTdsSession(TFakeTdsServer& server, int connection)
    : server_(server), connection_(connection), catalog_(server.folder_.Path()) {}

void TTdsSession::Serve() {
  for (int left = server_.answers; left > 0 && !ended_; --left) {
    const std::optional<TTdsRequest> request = ReceiveRequest(connection_);
    if (!request) return;
    std::string tokens = Answer(*request);
    if (server_.tamper && request->type != kPrelogin && request->type != kLogin) {
      server_.tamper(tokens);
      ended_ = true;
    }
    SendReply(connection_, tokens);
  }
}

std::string TTdsSession::Answer(const TTdsRequest& request) {
  TTdsReader in(request.body);
  const bool headed = request.type == kBatch || request.type == kRpc || request.type == kTransaction;
  if (headed && version_ >= 0x702) in.Raw(in.Number<std::uint32_t>() - 4);  // ALL_HEADERS
  switch (request.type) {
    case kPrelogin:
      return Prelogin();
    case kLogin:
      return Login(request.body);
    case kBatch:
      return Batch(FromUtf16(in.Rest()));
    case kTransaction:
      return Transaction(std::string(in.Rest()));
    case kRpc:
      return Procedure(std::string(in.Rest()));
    case kAttention: {
      TTdsReply reply(version_);
      reply.Done(kDoneAttention);
      return reply.Tokens();
    }
    default:
      ended_ = true;
      return {};
  }
}

// Version 12.0, no encryption, no instance, nothing more.
std::string TTdsSession::Prelogin() const {
  return std::string("\x00\x00\x0B\x00\x06\x01\x00\x11\x00\x01\xFF\x0C\x00\x00\x00\x00\x00\x02", 18);
}

std::string TTdsSession::Login(const std::string& body) {
  const TTdsLogin login = ReadLogin(body);
  version_ = std::min<int>(login.version, server_.newest);
  server_.Note(Format("(login 7.%d %s %s)", version_ & 0xF, login.trusted ? "trusted" : login.user, login.database));
  const std::string database = login.database.empty() ? "master" : login.database;
  const TTdsError failed{18456, 14, "Login failed for user '" + login.user + "'."};
  ended_ = true;
  if (login.trusted || login.user != server_.user || login.password != server_.password) return Refused(failed);
  if (std::find(server_.databases.begin(), server_.databases.end(), database) == server_.databases.end())
    return Refused({4060, 11, "Cannot open database \"" + database + "\" requested by the login. The login failed."});
  ended_ = false;
  TTdsReply reply(version_);
  reply.DatabaseChanged(database);
  reply.LoginAccepted();
  reply.Done(0);
  return reply.Tokens();
}

std::string TTdsSession::Refused(const TTdsError& error) const {
  TTdsReply reply(version_);
  reply.Error(error);
  reply.Done(kDoneError);
  return reply.Tokens();
}

std::string TTdsSession::Batch(const std::string& sql) {
  const bool transaction = TransactionWords(sql);
  if (!transaction) server_.Note(sql);
  if (!server_.refused.empty() && sql.find(server_.refused) != std::string::npos) return Refused(server_.refusal);
  const bool accepted = std::any_of(std::begin(kAccepted), std::end(kAccepted),
                                    [&](std::string_view word) { return BeginsWith(sql, word); });
  if (!accepted && !transaction) return Statements(sql);
  TTdsReply reply(version_);
  reply.Done(0);
  return reply.Tokens();
}

std::string TTdsSession::Statements(const std::string& sql) {
  try {
    TTdsReply reply(version_);
    const std::vector<TTdsResult> results = catalog_.Run(sql);
    for (std::size_t i = 0; i < results.size(); ++i) {
      const bool query = !results[i].columns.empty();
      if (query) reply.Rows(results[i]);
      const auto count = query ? static_cast<std::int64_t>(results[i].rows.size()) : results[i].affected;
      reply.Done(kDoneCount | (i + 1 < results.size() ? kDoneMore : 0u), count);
    }
    return reply.Tokens();
  } catch (const std::runtime_error& error) {
    const std::string text = error.what(), missing = "no such table: ";
    if (!text.starts_with(missing)) return Refused({102, 15, text});
    return Refused({208, 16, "Invalid object name '" + text.substr(missing.size()) + "'."});
  }
}

// A request of the transaction manager.
std::string TTdsSession::Transaction(const std::string& body) {
  TTdsReader in(body);
  const unsigned kind = in.U16();
  TTdsReply reply(version_);
  bool begin = kind == kBeginRequest;
  if (!begin) {
    ChangeTransaction(kind == kCommitRequest ? "commit" : "rollback", &reply);
    in.Text(in.U8());  // the transaction's name
    begin = (in.U8() & 1) != 0;
  }
  if (begin) ChangeTransaction("begin", &reply);
  reply.Done(0);
  return reply.Tokens();
}

// Before 7.2 drivers send words: "IF @@TRANCOUNT > 0 COMMIT BEGIN TRANSACTION", or parts of that.
bool TTdsSession::TransactionWords(const std::string& sql) {
  if (!BeginsWith(sql, "IF @@TRANCOUNT") && !BeginsWith(sql, "BEGIN TRAN")) return false;
  for (const char* word : {"commit", "rollback", "begin"})
    if (PosNoCase(word, sql) > 0) ChangeTransaction(word, nullptr);
  return true;
}

void TTdsSession::ChangeTransaction(const std::string& word, TTdsReply* reply) {
  server_.Note("(" + word + ")");
  catalog_.Run(word);
  if (reply != nullptr)
    reply->TransactionChanged(word == "begin" ? kBegun : word == "commit" ? kCommitted : kRolledBack);
}

// A call by name, with texts as its arguments: what drivers send for lists of tables.
std::string TTdsSession::Procedure(const std::string& body) {
  TTdsReader in(body);
  const std::string name = in.Text(in.U16());
  in.U16();  // options
  std::map<std::string, std::string> arguments;
  std::string note = "exec " + name;
  while (!in.AtEnd()) {
    const std::string argument = in.Text(in.U8());
    in.U8();  // it is no result
    if (in.U8() != kNVarChar) return Refused({8009, 16, "Only texts are taken as arguments."});
    in.Raw(2 + kCollationSize);
    const unsigned size = in.U16();
    if (size == kNullSize) continue;
    arguments[argument] = in.Text(size / 2);
    note += Format(arguments.size() == 1 ? " %s='%s'" : ", %s='%s'", argument, arguments[argument]);
  }
  server_.Note(note);
  if (!name.ends_with("sp_tables")) return Refused({2812, 16, "Could not find stored procedure '" + name + "'."});
  return Tables(arguments);
}

// Of the qualifier "%" with empty names, the databases; else the tables of this one.
std::string TTdsSession::Tables(std::map<std::string, std::string>& arguments) {
  TTdsResult result;
  for (const char* name : {"TABLE_QUALIFIER", "TABLE_OWNER", "TABLE_NAME", "TABLE_TYPE", "REMARKS"})
    result.columns.push_back({name, TTdsType("nvarchar(128)")});
  if (arguments["@table_qualifier"] == "%" && arguments.contains("@table_name"))
    for (const std::string& database : server_.databases) result.rows.push_back({database, {}, {}, {}, {}});
  else
    result.rows = catalog_
                      .RunOne(
                          "select 'shop', 'dbo', name, case xtype when 'U' then 'TABLE' when 'V' then 'VIEW' else"
                          " 'SYSTEM TABLE' end, null from sysobjects where xtype in ('U', 'V', 'S') order by 4, 3")
                      .rows;
  TTdsReply reply(version_);
  reply.Rows(result);
  reply.ReturnStatus(0);
  reply.Done(0, 0, true);
  return reply.Tokens();
}

}  // namespace velmora::testing

// SPDX-License-Identifier: GPL-3.0-or-later
#include "mysqlnet/MySqlSession.h"

#include <algorithm>
#include <fstream>
#include <memory>
#include <utility>

#include "mysqlnet/MySqlCurrentHandshake.h"
#include "mysqlnet/MySqlErrors.h"
#include "mysqlnet/MySqlTokens.h"
#include "mysqlnet/MySqlVioPipe.h"
#include "mysqlnet/MySqlVioTcp.h"
#include "util/MySqlFacts.h"

namespace velmora {

namespace {

constexpr int kProtocolVersion = 10;
constexpr int kNamedPipe = 3;
constexpr std::size_t kFirstScramble = 8;
constexpr std::size_t kScramble = 20;
constexpr std::size_t kFilePiece = 8192;
constexpr char kOldLogin[] =
    "the server wants it by the scheme before 4.1, which is no secret to who hears it; --allow-old-login allows that, "
    "and TLS makes it needless";
constexpr char kUnreadableFile[] = "The local file %s cannot be read";

const std::string& Given(const std::string& argument, const std::string& stored) {
  return argument.empty() ? stored : argument;
}

}  // namespace

// --- Connecting

void TMySqlSession::Connect(const std::string& new_host, const std::string& new_user, const std::string& new_password,
                            const std::string& new_database, int new_port, std::uint32_t flags,
                            const std::string& pipe) {
  if (connected_) Close();
  login_ = {Given(new_user, user), Given(new_password, password), Given(new_database, database)};
  host = Given(new_host, host);
  if (new_port != 0) port = new_port;
  ResetTold();
  try {
    OpenTransport(pipe);
    net.vio->SetTimeout(connect_timeout);
    net.vio->Connect();
    net.ReadPacket();
    ReadGreeting();
    LogIn(flags);
  } catch (...) {
    Close();
    throw;
  }
  connected_ = true;
}

void TMySqlSession::ResetTold() {
  std::unique_ptr<TMySqlVio> given = std::move(net.vio);
  net = TMySqlNet();
  net.vio = std::move(given);
  net.current_protocol = current_protocol;
  server_capabilities = 0;
  server_language = 0;
  server_status = kAutocommit;
  has_result = false;
  current_ = false;
}

void TMySqlSession::OpenTransport(const std::string& pipe) {
  if (protocol == 0 || protocol == 1 || protocol == kNamedPipe) {
    if (port == 0) port = kMySqlPort;
    if (host.empty()) host = kMySqlHost;
    if (protocol == kNamedPipe)
      net.vio = std::make_unique<TMySqlVioPipe>(host, pipe, port);
    else
      net.vio = std::make_unique<TMySqlVioTcp>(host, port);
  }
  if (!net.vio) throw ClientError(kUnknownProtocol);
}

// 1 byte version of the protocol, the server's version and a NUL, 4 bytes thread id, 8 bytes scramble, 1 byte filler;
// then, as far as the server goes: 2 bytes capabilities, 1 byte language, 2 bytes status and 13 bytes more, 12 bytes
// scramble. Stays after the status, as current servers say more in the 13 bytes.
void TMySqlSession::ReadGreeting() {
  constexpr std::size_t kLanguageEnd = 18, kScrambleStart = 19, kScrambleEnd = 30;
  const int version = net.ReadByte();
  if (version != kProtocolVersion) throw ClientError(kProtocolMismatch, version, kProtocolVersion);
  server_version = net.ReadString();
  thread_id = net.ReadInt4();
  scramble = net.ReadBytes(kFirstScramble);
  const std::size_t after = net.Position();
  const auto reaches = [&](std::size_t place) { return net.Packet().size() > after + place; };
  if (reaches(0)) net.Skip(1);
  if (reaches(1)) server_capabilities = net.ReadInt2();
  if (reaches(kLanguageEnd)) {
    server_language = net.ReadByte();
    server_status = net.ReadInt2();
  }
  has_full_scramble_ = reaches(kScrambleEnd);
  if (has_full_scramble_) scramble += net.Packet().substr(after + kScrambleStart, kScramble - kFirstScramble);
}

// Servers from 4.1.1 on take the older login for that of a user without a name, so that they have to be told apart.
void TMySqlSession::LogIn(std::uint32_t flags) {
  if (current_protocol && TMySqlCurrentHandshake::IsAnnounced(server_capabilities)) {
    current_ = true;
    TMySqlCurrentHandshake(*this).Run(flags | client_flag);
    if ((client_flag & kConnectWithDatabase) != 0) database = login_.database;
  } else {
    if (tls.IsChecked()) RefusePlainServer();
    constexpr std::uint32_t kAskedFor = 0xE08D;
    constexpr std::uint32_t kOnlyWhereOffered = kProtocol41 | kTls | kCompression;
    client_flag = (server_capabilities | ~kOnlyWhereOffered) & (flags | client_flag | kAskedFor);
    SendLogin();
    CheckAuth();
  }
  net.compress = (client_flag & kCompression) != 0;
}

// Deliberate: three bytes cut the announced packet size to 0, and the last byte, usually the closing NUL of the last
// text, does not go out. Servers of that time expect it.
void TMySqlSession::SendLogin() {
  net.Clear();
  if ((client_flag & kProtocol41) != 0) {
    net.WriteInt4(client_flag);
    net.WriteInt4(max_allowed_packet);
  } else {
    net.WriteInt2(client_flag);
    net.WriteInt3(max_allowed_packet);
  }
  net.WriteString(login_.user);
  WritePassword();
  if ((server_capabilities & kConnectWithDatabase) != 0) {
    net.WriteString(login_.database);
    database = login_.database;
  }
  net.DropLast();
  net.Flush();
}

// Who knows both schemes but has sent half a scramble asks again, and is told more then.
void TMySqlSession::WritePassword() {
  const std::string& secret = login_.password;
  if (secret.empty()) {
    net.WriteFill('\0', 1);
  } else if ((server_capabilities & kSecureConnection) == 0) {
    AllowOldLogin();
    net.WriteBytes(OldToken(secret, scramble));
  } else if (has_full_scramble_) {
    net.WriteFill(static_cast<char>(kScramble), 1);
    net.WriteBytes(NewToken(secret, scramble));
  } else {
    net.WriteFill('x', kFirstScramble);
    net.WriteFill('\0', 1);
  }
}

// Whoever hears the scheme before 4.1 a few times knows the password.
void TMySqlSession::AllowOldLogin() const {
  const bool shows = login_rules.guarded && !login_rules.old_logins && !login_.password.empty();
  if (shows && !net.vio->IsPrivate()) throw ClientError(kLoginRefused, kOldLogin);
}

// The reply is read from every server: otherwise a refusal would be taken for the answer to the first command.
void TMySqlSession::CheckAuth() {
  constexpr std::uint8_t kWantsOldToken = 254;
  constexpr std::size_t kLongRequest = 24;
  net.ReadPacket();
  if ((server_capabilities & kSecureConnection) == 0) return;
  const std::string_view reply = net.Packet();
  if (reply.size() == 1 && static_cast<std::uint8_t>(reply[0]) == kWantsOldToken) {
    AllowOldLogin();
    net.Clear();
    net.WriteBytes(OldToken(login_.password, scramble));
  } else if (reply.size() == kLongRequest && reply[0] != '\0') {
    AnswerLongRequest();
  } else {
    return;
  }
  net.Flush();
  net.ReadPacket();
}

// 4 bytes salt and 20 bytes scramble; a salt that begins with "*" asks for the old token.
void TMySqlSession::AnswerLongRequest() {
  constexpr std::size_t kSalt = 4;
  AllowOldLogin();
  const std::string salt(net.Packet().substr(0, kSalt));
  scramble = net.Packet().substr(kSalt);
  net.Clear();
  if (salt[0] == '*') {
    net.WriteBytes(OldToken(login_.password, scramble));
    return;
  }
  const std::string hash = Sha1(WithoutBlanks(login_.password));
  scramble = XorTexts(scramble, Sha1(salt + hash));
  net.WriteBytes(XorTexts(scramble, hash));
}

void TMySqlSession::Close() {
  if (!net.vio) return;
  if (connected_ && !has_result && !net.Lost()) {
    try {
      SimpleCommand(kQuit, {}, true, 0);
    } catch (const EVelmora&) {  // who is gone needs no farewell
    }
  }
  net.vio->Close();
  net.vio.reset();
  connected_ = false;
  has_result = false;
}

// --- Commands

void TMySqlSession::SimpleCommand(std::uint8_t command, std::string_view data, bool skip_check, std::size_t length) {
  if (!net.vio) return;
  net.vio->SetTimeout(command_timeout);
  if (has_result) throw ClientError(kOutOfSync);
  ResetReply();
  net.StartCommand();
  net.WriteFill(static_cast<char>(command), 1);
  net.WriteBytes(data.substr(0, length));
  net.Flush();
  if (!skip_check) net.ReadPacket();
}

void TMySqlSession::ResetReply() {
  info.clear();
  affected_rows = 0;
  insert_id = 0;
  server_status &= static_cast<std::uint16_t>(~kMoreResults);
}

void TMySqlSession::AwaitReply() {
  if (has_result) throw ClientError(kOutOfSync);
  ResetReply();
  net.pkt_nr = 1;
}

void TMySqlSession::ReadQueryResult() {
  for (;;) {
    net.ReadPacket();
    field_count = net.ReadFieldLength();
    if (field_count == 0) {
      ReadOk();
      return;
    }
    if (field_count != NULL_LENGTH) break;
    SendLocalFile(net.ReadString());
  }
  if ((server_status & kAutocommit) == 0) server_status |= kInTransaction;
  extra_info = net.Rest() > 0 ? net.ReadFieldLength() : 0;
  warning_count = 0;
  has_result = true;
}

// After the mark: affected rows, last inserted id, 2 bytes status, with 4.1 2 bytes warnings, a message.
void TMySqlSession::ReadOk() {
  affected_rows = net.ReadFieldLength();
  insert_id = net.ReadFieldLength();
  const bool has_status = UsesProtocol41() || (server_capabilities & kTransactions) != 0;
  if (has_status && net.Rest() > 0) server_status = net.ReadInt2();
  if (UsesProtocol41() && net.Rest() > 0) warning_count = net.ReadInt2();
  if (!current_) {
    info = net.ReadString();  // Deliberate: with the byte that these servers put in front, the message's length
    return;
  }
  const std::uint64_t length = net.Rest() > 0 ? net.ReadFieldLength() : 0;
  info = net.ReadBytes(static_cast<std::size_t>(std::min<std::uint64_t>(length, net.Rest())));
}

// --- The local file

// A server can ask for any file that it likes, so it gets the one that was named to it, and that only once.
void TMySqlSession::SendLocalFile(const std::string& name) {
  if (name.empty() || name != local_file) RefuseLocalFile(name);
  local_file.clear();
  std::ifstream file(name, std::ios::binary);
  char piece[kFilePiece];
  for (;;) {
    file.read(piece, sizeof(piece));
    const auto count = static_cast<std::size_t>(file.gcount());
    if (count == 0) break;
    net.Clear();
    net.WriteBytes({piece, count});
    net.Flush();
  }
  EndLocalFile();
  if (file.bad() || !file.eof()) {
    net.ReadPacket();
    throw EMySqlException(Format(kUnreadableFile, name));
  }
}

void TMySqlSession::EndLocalFile() {
  net.Clear();
  net.Flush();
}

void TMySqlSession::RefuseLocalFile(const std::string& name) {
  EndLocalFile();
  net.ReadPacket();
  if (net.ReadByte() != 0) net.FailMalformed();
  throw ClientError(kFileRefused, name);
}

}  // namespace velmora

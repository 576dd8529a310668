// SPDX-License-Identifier: GPL-3.0-or-later
#include "mysqlnet/MySqlCurrentHandshake.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "mysqlnet/MySqlErrors.h"
#include "mysqlnet/MySqlTokens.h"

namespace velmora {

namespace {

constexpr char kNative[] = "mysql_native_password";
constexpr char kOld[] = "mysql_old_password";
constexpr char kSha2[] = "caching_sha2_password";
constexpr char kEd25519[] = "client_ed25519";
constexpr char kSha256[] = "sha256_password";
constexpr char kClear[] = "mysql_clear_password";
constexpr const char* kKnown[] = {kNative, kOld, kSha2, kEd25519, kSha256};

constexpr std::size_t kHeadFiller = 23;
constexpr std::size_t kGreetingFiller = 10;
constexpr std::size_t kScramble = 20;
constexpr std::size_t kEd25519Nonce = 32;
constexpr int kMostReplies = 16;  // no server has so much to say; a broken one could go on for ever

constexpr std::uint8_t kOk = 0, kMoreData = 1, kNextFactor = 2, kSwitch = 254;
constexpr char kSha2Quick = 3, kSha2Full = 4, kSha2WantKey = 2, kSha256WantKey = 1;

constexpr char kUncheckedKey[] =
    "it would be sealed with a key that anybody may have sent; --get-server-public-key allows that, "
    "--server-public-key FILE names the server's own key, and TLS makes both needless";
constexpr char kAsItIs[] = "the server wants it as it is; --allow-old-login allows that";

std::size_t NonceLength(const std::string& plugin) {
  if (plugin == kClear) return 0;
  return plugin == kEd25519 ? kEd25519Nonce : kScramble;
}

}  // namespace

void TMySqlCurrentHandshake::Run(std::uint32_t flags) {
  ReadGreetingEnd();
  ChooseCapabilities(flags);
  if ((session_.client_flag & kTls) != 0) StartTls();
  SendResponse();
  ReadReplies();
}

void TMySqlCurrentHandshake::Refuse() { throw ClientError(kBadHandshake); }

// After `server_status`: 2 bytes the high half of the capabilities, 1 byte length of the whole scramble, 10 bytes
// filler, the rest of the scramble (at least 13 bytes, the last a NUL), and the name of the server's way to log in.
void TMySqlCurrentHandshake::ReadGreetingEnd() {
  constexpr std::size_t kFirstPart = 8, kShortestRest = 13;
  if (net_.Rest() < 3) Refuse();
  capabilities_ = static_cast<std::uint32_t>(session_.server_capabilities) | static_cast<std::uint32_t>(net_.ReadInt2())
                                                                                 << 16;
  const std::size_t length = net_.ReadByte();
  net_.Skip(std::min(kGreetingFiller, net_.Rest()));
  const std::size_t rest = std::max(kShortestRest, std::max(length, kFirstPart) - kFirstPart);
  nonce_ = session_.scramble.substr(0, kFirstPart) + net_.ReadBytes(std::min(rest, net_.Rest()));
  nonce_.resize(std::min(nonce_.size(), kScramble));
  if (nonce_.size() < kScramble) Refuse();
  session_.scramble = nonce_;
  // For any other way, too, the usual one is tried: the server then names what it wants for this user.
  const bool sha2 = (capabilities_ & kPluginAuth) != 0 && net_.ReadString() == kSha2;
  plugin_ = sha2 ? kSha2 : kNative;
}

void TMySqlCurrentHandshake::ChooseCapabilities(std::uint32_t flags) {
  constexpr std::uint32_t kAlways = kLongPassword | kLongFlag | kCurrentProtocol | kTransactions | kSecureConnection;
  constexpr std::uint32_t kWhereOffered = kPluginAuth | kDeprecateEof | kFurtherFactors;
  constexpr std::uint32_t kOnRequest = kCompression | kMultiResults;
  flags = (flags & kOnRequest) | kWhereOffered;
  if (!session_.login_.database.empty()) flags |= kConnectWithDatabase;
  if (!session_.local_file.empty()) flags |= kLocalFiles;
  if (session_.tls.mode != EMySqlTls::Off) flags |= kTls;
  session_.client_flag = (flags & capabilities_) | kAlways;
  if (session_.tls.IsChecked() && (session_.client_flag & kTls) == 0) RefusePlainServer();
}

// 4 bytes capabilities, 4 bytes packet size, 1 byte character set, 23 bytes 0.
void TMySqlCurrentHandshake::WriteHead() {
  net_.Clear();
  net_.WriteInt4(session_.client_flag);
  net_.WriteInt4(max_allowed_packet);
  net_.WriteFill(static_cast<char>(session_.charset), 1);
  net_.WriteFill('\0', kHeadFiller);
}

// The head alone says that TLS begins; the whole response then follows inside.
void TMySqlCurrentHandshake::StartTls() {
  WriteHead();
  net_.Flush();
  net_.vio = std::make_unique<TMySqlVioTls>(std::move(net_.vio), session_.tls, session_.host);
  net_.vio->Connect();
}

void TMySqlCurrentHandshake::SendResponse() {
  const std::string token = Token();
  WriteHead();
  net_.WriteString(session_.login_.user);
  net_.WriteFill(static_cast<char>(token.size()), 1);
  net_.WriteBytes(token);
  if ((session_.client_flag & kConnectWithDatabase) != 0) net_.WriteString(session_.login_.database);
  if ((session_.client_flag & kPluginAuth) != 0) net_.WriteString(plugin_);
  net_.Flush();
}

void TMySqlCurrentHandshake::ReadReplies() {
  for (int i = 0; i < kMostReplies; ++i) {
    net_.ReadPacket();
    switch (net_.ReadByte()) {
      case kOk:
        session_.ReadOk();
        return;
      case kSwitch:
        Switch();
        break;
      case kMoreData:
        if (plugin_ != kSha2) Refuse();
        ContinueSha2(net_.ReadRest());
        break;
      case kNextFactor:  // to who announces that it listens; others are only told that access is denied
        if ((session_.client_flag & kFurtherFactors) == 0) Refuse();
        throw ClientError(kSecondFactor, net_.ReadString());
      default:
        Refuse();
    }
  }
  Refuse();
}

// Another way to log in: its name and a nonce; nothing of both is the scheme before 4.1, for the scramble that is
// known.
void TMySqlCurrentHandshake::Switch() {
  plugin_ = kOld;
  if (net_.Rest() > 0) {
    plugin_ = net_.ReadString();
    nonce_ = net_.ReadRest();
  }
  if (plugin_ == kClear && session_.login_rules.guarded && !session_.login_rules.old_logins)
    throw ClientError(kLoginRefused, kAsItIs);
  const bool known = std::ranges::find(kKnown, plugin_) != std::end(kKnown);
  if (!known && (plugin_ != kClear || !session_.login_rules.old_logins)) throw ClientError(kUnknownPlugin, plugin_);
  const std::size_t length = NonceLength(plugin_);
  if (nonce_.size() < length) Refuse();
  nonce_.resize(length);
  Answer();
}

void TMySqlCurrentHandshake::Answer() {
  const std::string& password = session_.login_.password;
  if (plugin_ == kClear || (plugin_ == kSha256 && password.empty())) {
    Send(password + '\0');
  } else if (plugin_ == kSha256) {
    SendPassword(kSha256WantKey);
  } else {
    if (plugin_ == kOld) session_.AllowOldLogin();
    Send(Token());
  }
}

// The server knows the digest already, or it wants the password itself.
void TMySqlCurrentHandshake::ContinueSha2(std::string_view data) {
  if (data.size() != 1 || (data[0] != kSha2Quick && data[0] != kSha2Full)) Refuse();
  if (data[0] == kSha2Quick) return;
  SendPassword(kSha2WantKey);
}

// Over a line that nobody can read as it is, otherwise sealed with the server's key.
void TMySqlCurrentHandshake::SendPassword(char key_request) {
  const std::string& password = session_.login_.password;
  if (net_.vio->IsPrivate()) {
    Send(password + '\0');
    return;
  }
  const TMySqlLoginRules& rules = session_.login_rules;
  std::string key = rules.public_key;
  if (key.empty()) {
    if (rules.guarded && !rules.ask_for_key) throw ClientError(kLoginRefused, kUncheckedKey);
    Send(std::string(1, key_request));
    net_.ReadPacket();
    if (net_.ReadByte() != kMoreData) Refuse();
    key = net_.ReadRest();
  }
  Send(RsaPassword(password, nonce_, key));
}

std::string TMySqlCurrentHandshake::Token() const {
  const std::string& password = session_.login_.password;
  if (plugin_ == kEd25519) return Ed25519Token(password, nonce_);
  if (password.empty()) return {};
  if (plugin_ == kSha2) return Sha2Token(password, nonce_);
  if (plugin_ == kOld) return OldToken(password, nonce_);
  return NewToken(password, nonce_);
}

void TMySqlCurrentHandshake::Send(std::string_view bytes) {
  net_.Clear();
  net_.WriteBytes(bytes);
  net_.Flush();
}

}  // namespace velmora

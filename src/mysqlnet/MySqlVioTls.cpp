// SPDX-License-Identifier: GPL-3.0-or-later
#include "mysqlnet/MySqlVioTls.h"

#include <arpa/inet.h>
#include <openssl/err.h>
#include <openssl/ssl.h>

#include <algorithm>
#include <limits>
#include <map>
#include <mutex>
#include <utility>

#include "mysqlnet/MySqlErrors.h"

namespace velmora {

namespace {

constexpr char kNoCertificates[] = "no certificates could be read from ";
constexpr char kNoOwnCertificate[] = "our own certificate could not be read from ";
constexpr char kNoOwnKey[] = "no private key of our own certificate could be read from ";
constexpr char kNotVerified[] = "certificate not accepted: ";
constexpr char kServerEnded[] = "the server ended the connection";
constexpr char kNoTls[] = "the server offers none";
// Old servers know nothing better, and without a look at their certificate little is lost.
constexpr char kAnyCipher[] = "DEFAULT:@SECLEVEL=0";

struct TFree {
  void operator()(SSL_CTX* context) const { SSL_CTX_free(context); }
  void operator()(SSL* ssl) const { SSL_free(ssl); }
  void operator()(BIO_METHOD* method) const { BIO_meth_free(method); }
  void operator()(SSL_SESSION* session) const { SSL_SESSION_free(session); }
};

// Keys that were agreed on with a server, for the next connection to it, which saves both the dear part of agreeing.
// They hold for the same settings alone, so that a server whose certificate was not looked at is looked at. Each is
// used once: the server sends new ones with every connection. Whoever knows nothing of them agrees anew.
class TAgreedKeys {
 public:
  using TSession = std::unique_ptr<SSL_SESSION, TFree>;

  static TAgreedKeys& OfProgram() {
    static TAgreedKeys keys;
    return keys;
  }
  static std::string NameOf(const TMySqlTls& settings, const std::string& host) {
    constexpr char kParted = '\0';
    std::string name = host;
    for (const std::string& part :
         {std::to_string(static_cast<int>(settings.mode)), settings.ca_file, settings.cert_file, settings.key_file})
      name += kParted + part;
    return name;
  }

  void Keep(const std::string& name, SSL_SESSION* session) {
    const std::lock_guard lock(guard_);
    sessions_[name].reset(session);
  }
  TSession Take(const std::string& name) {
    const std::lock_guard lock(guard_);
    return std::exchange(sessions_[name], nullptr);
  }

 private:
  std::mutex guard_;
  std::map<std::string, TSession> sessions_;
};

[[noreturn]] void FailTls(const std::string& reason) {
  throw SocketException(kTlsFailed, std::string(MySqlErrorText(kTlsFailed)) + ": " + reason);
}

std::string LibraryReason() {
  const char* reason = ERR_reason_error_string(ERR_get_error());
  return reason == nullptr ? kServerEnded : reason;
}

bool IsAddress(const std::string& host) {
  unsigned char bytes[sizeof(in6_addr)];
  return inet_pton(AF_INET, host.c_str(), bytes) == 1 || inet_pton(AF_INET6, host.c_str(), bytes) == 1;
}

int Portion(std::size_t count) {
  return static_cast<int>(std::min<std::size_t>(count, std::numeric_limits<int>::max()));
}

TMySqlVio& Transport(BIO* bio) { return *static_cast<TMySqlVio*>(BIO_get_data(bio)); }

// The library reads exactly what a record needs, so that a transport which gives all or nothing fits.
int ReadTransport(BIO* bio, char* to, int count) {
  return static_cast<int>(Transport(bio).Read(to, 0, static_cast<std::size_t>(count)));
}

int WriteTransport(BIO* bio, const char* from, int count) {
  const std::size_t wanted = static_cast<std::size_t>(count);
  return Transport(bio).Write(from, 0, wanted) == wanted ? count : -1;
}

long ControlTransport(BIO*, int command, long, void*) { return command == BIO_CTRL_FLUSH ? 1 : 0; }

BIO* TransportBio(TMySqlVio& transport) {
  static const std::unique_ptr<BIO_METHOD, TFree> method = [] {
    BIO_METHOD* made = BIO_meth_new(BIO_get_new_index() | BIO_TYPE_SOURCE_SINK, "transport");
    BIO_meth_set_read(made, ReadTransport);
    BIO_meth_set_write(made, WriteTransport);
    BIO_meth_set_ctrl(made, ControlTransport);
    return std::unique_ptr<BIO_METHOD, TFree>(made);
  }();
  BIO* bio = BIO_new(method.get());
  if (bio == nullptr) FailTls(LibraryReason());
  BIO_set_data(bio, &transport);
  BIO_set_init(bio, 1);
  return bio;
}

}  // namespace

void RefusePlainServer() { FailTls(kNoTls); }

class TMySqlVioTls::TState {
 public:
  TState(TMySqlVio& transport, const TMySqlTls& settings, const std::string& host) : transport_(transport) {
    ERR_clear_error();
    context_.reset(SSL_CTX_new(TLS_client_method()));
    if (!context_) FailTls(LibraryReason());
    if (settings.IsChecked())
      TrustOnly(settings.ca_file);
    else
      TakeAnything();
    if (!settings.cert_file.empty()) ShowOwn(settings);
    ssl_.reset(SSL_new(context_.get()));
    if (!ssl_) FailTls(LibraryReason());
    NameHost(settings, host);
    GoOnWhere(TAgreedKeys::NameOf(settings, host));
    BIO* bio = TransportBio(transport);
    SSL_set_bio(ssl_.get(), bio, bio);
  }

  void Agree() {
    if (SSL_connect(ssl_.get()) == 1) return;
    const long verdict = SSL_get_verify_result(ssl_.get());
    broken_ = true;
    if (verdict != X509_V_OK) FailTls(std::string(kNotVerified) + X509_verify_cert_error_string(verdict));
    const std::string fault = transport_.Fault();
    FailTls(fault.empty() ? LibraryReason() : fault);
  }

  std::size_t Read(char* to, std::size_t count) {
    return Repeat(count, [&](std::size_t done) { return SSL_read(ssl_.get(), to + done, Portion(count - done)); });
  }
  std::size_t Write(const char* from, std::size_t count) {
    return Repeat(count, [&](std::size_t done) { return SSL_write(ssl_.get(), from + done, Portion(count - done)); });
  }
  void SayGoodbye() {
    if (!broken_) SSL_shutdown(ssl_.get());
    ERR_clear_error();
  }
  const std::string& Fault() const { return fault_; }

 private:
  void TrustOnly(const std::string& ca_file) {
    SSL_CTX_set_verify(context_.get(), SSL_VERIFY_PEER, nullptr);
    const int trusted = ca_file.empty() ? SSL_CTX_set_default_verify_paths(context_.get())
                                        : SSL_CTX_load_verify_locations(context_.get(), ca_file.c_str(), nullptr);
    if (trusted != 1) FailTls(kNoCertificates + (ca_file.empty() ? "the system's store" : ca_file));
  }
  // A key that asks for a pass phrase is refused: the library would ask for it on the terminal by itself.
  void ShowOwn(const TMySqlTls& settings) {
    const std::string& key = settings.key_file.empty() ? settings.cert_file : settings.key_file;
    SSL_CTX_set_default_passwd_cb(context_.get(), [](char*, int, int, void*) { return 0; });
    if (SSL_CTX_use_certificate_chain_file(context_.get(), settings.cert_file.c_str()) != 1)
      FailTls(kNoOwnCertificate + settings.cert_file);
    if (SSL_CTX_use_PrivateKey_file(context_.get(), key.c_str(), SSL_FILETYPE_PEM) != 1) FailTls(kNoOwnKey + key);
  }
  void TakeAnything() {
    SSL_CTX_set_verify(context_.get(), SSL_VERIFY_NONE, nullptr);
    SSL_CTX_set_min_proto_version(context_.get(), TLS1_VERSION);
    SSL_CTX_set_options(context_.get(), SSL_OP_LEGACY_SERVER_CONNECT);
    SSL_CTX_set_cipher_list(context_.get(), kAnyCipher);
  }
  void NameHost(const TMySqlTls& settings, const std::string& host) {
    const bool address = IsAddress(host);
    if (!address)
      SSL_ctrl(ssl_.get(), SSL_CTRL_SET_TLSEXT_HOSTNAME, TLSEXT_NAMETYPE_host_name, const_cast<char*>(host.c_str()));
    if (settings.mode != EMySqlTls::Required) return;
    const int set = address ? X509_VERIFY_PARAM_set1_ip_asc(SSL_get0_param(ssl_.get()), host.c_str())
                            : SSL_set1_host(ssl_.get(), host.c_str());
    if (set != 1) FailTls(LibraryReason());
  }

  void GoOnWhere(const std::string& name) {
    keys_ = name;
    SSL_CTX_set_session_cache_mode(context_.get(), SSL_SESS_CACHE_CLIENT | SSL_SESS_CACHE_NO_INTERNAL);
    SSL_CTX_sess_set_new_cb(context_.get(), [](SSL* ssl, SSL_SESSION* session) {
      TAgreedKeys::OfProgram().Keep(static_cast<TState*>(SSL_get_app_data(ssl))->keys_, session);
      return 1;  // it is kept
    });
    SSL_set_app_data(ssl_.get(), this);
    if (const TAgreedKeys::TSession agreed = TAgreedKeys::OfProgram().Take(name); agreed)
      SSL_set_session(ssl_.get(), agreed.get());
  }

  template <class Step>
  std::size_t Repeat(std::size_t count, Step step) {
    std::size_t done = 0;
    while (done < count && !broken_) {
      ERR_clear_error();
      const int moved = step(done);
      if (moved > 0) {
        done += static_cast<std::size_t>(moved);
      } else {
        broken_ = true;
        const int error = SSL_get_error(ssl_.get(), moved);
        fault_ = error == SSL_ERROR_SSL ? LibraryReason() : transport_.Fault();
      }
    }
    return done;
  }

  TMySqlVio& transport_;
  std::unique_ptr<SSL_CTX, TFree> context_;
  std::unique_ptr<SSL, TFree> ssl_;
  std::string keys_;  // under which name they are kept
  bool broken_ = false;
  std::string fault_;
};

TMySqlVioTls::TMySqlVioTls(std::unique_ptr<TMySqlVio> inner, TMySqlTls settings, std::string host)
    : inner_(std::move(inner)), settings_(std::move(settings)), host_(host.empty() ? kMySqlHost : std::move(host)) {}

TMySqlVioTls::~TMySqlVioTls() { TMySqlVioTls::Close(); }

void TMySqlVioTls::SetTimeout(int seconds) { inner_->SetTimeout(seconds); }

void TMySqlVioTls::Connect() {
  state_.reset();
  state_ = std::make_unique<TState>(*inner_, settings_, host_);
  state_->Agree();
}

void TMySqlVioTls::Close() {
  if (state_) state_->SayGoodbye();
  state_.reset();
  inner_->Close();
}

std::size_t TMySqlVioTls::Read(char* buffer, std::size_t offset, std::size_t count) {
  return state_ ? state_->Read(buffer + offset, count) : 0;
}

std::size_t TMySqlVioTls::Write(const char* buffer, std::size_t offset, std::size_t count) {
  return state_ ? state_->Write(buffer + offset, count) : 0;
}

std::string TMySqlVioTls::Fault() const { return state_ ? state_->Fault() : inner_->Fault(); }

}  // namespace velmora

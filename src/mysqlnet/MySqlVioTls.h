// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>
#include <string>

#include "mysqlnet/MySqlVio.h"

namespace velmora {

enum class EMySqlTls {
  Off,
  Preferred,  // encrypted where the server offers it, whoever it is
  VerifyCa,   // or there is no connection; the server's certificate must be valid, whatever it names
  Required    // the same, and it must name the host
};

struct TMySqlTls {
  EMySqlTls mode = EMySqlTls::Off;
  std::string ca_file;    // certificates to trust; empty means those of the system
  std::string cert_file;  // our own, for a server that asks for one; empty means none
  std::string key_file;   // its private key; empty means that it stands in `cert_file`

  bool IsChecked() const { return mode == EMySqlTls::VerifyCa || mode == EMySqlTls::Required; }
};

// Raises SocketException 2026: TLS is required, and the server has none.
[[noreturn]] void RefusePlainServer();

// TLS over any other transport.
class TMySqlVioTls final : public TMySqlVio {
 public:
  // Takes over a connected transport. `host` is the name or address that the certificate has to be for.
  TMySqlVioTls(std::unique_ptr<TMySqlVio> inner, TMySqlTls settings, std::string host);
  ~TMySqlVioTls() override;

  void SetTimeout(int seconds) override;
  void Connect() override;  // agrees on keys; raises SocketException 2026
  void Close() override;
  std::size_t Read(char* buffer, std::size_t offset, std::size_t count) override;
  std::size_t Write(const char* buffer, std::size_t offset, std::size_t count) override;
  std::string Fault() const override;
  bool IsPrivate() const override { return true; }
  int Handle() const override { return inner_->Handle(); }

 private:
  class TState;

  std::unique_ptr<TMySqlVio> inner_;
  TMySqlTls settings_;
  std::string host_;
  std::unique_ptr<TState> state_;  // while the keys are agreed on
};

}  // namespace velmora

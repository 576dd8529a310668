// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/PrivateFirebird.h"

#include <arpa/inet.h>
#include <firebird/Interface.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <thread>

#include "engines/server/FirebirdLibrary.h"
#include "support/PrivateServer.h"
#include "util/Lists.h"

// What the libraries below the Firebird client make once and keep to the end of the process. Its own objects are not
// among them.
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() {  // NOLINT: the name is the sanitizer's
  return "leak:libtommath.so\nleak:libicuuc.so\nleak:iconv_open\nleak:gconv\n";
}

namespace velmora::testing {

namespace {

namespace fb = Firebird;
namespace fs = std::filesystem;
using namespace std::chrono_literals;

std::string Environment(const char* name) { return getenv(name) != nullptr ? getenv(name) : ""; }

// The character sets; a server looks for them in its own folder.
fs::path International() {
  for (const fs::directory_entry& folder : fs::directory_iterator("/usr/lib"))
    if (const fs::path found = folder.path() / "firebird/3.0/intl"; fs::exists(found)) return found;
  throw std::runtime_error("private server: firebird3.0-server-core is not installed");
}

// Where ./setup unpacks the server: its package would start a service.
std::string ServerProgram() {
  const std::string cache = Environment("XDG_CACHE_HOME");
  const std::string base = cache.empty() ? Environment("HOME") + "/.cache" : cache;
  return FindProgram("firebird", "firebird3.0-server", base + "/velmora/firebird-server/usr/sbin");
}

// Makes a database with the options of a configuration besides the usual ones, and runs the statements in it.
void MakeDatabase(const std::string& path, const std::string& options, const std::vector<std::string>& statements) {
  fb::IMaster& master = LoadFirebirdLibrary();
  fb::IUtil& util = *master.getUtilInterface();
  fb::ThrowStatusWrapper status(master.getStatus());
  try {
    fb::IXpbBuilder* parameters = util.getXpbBuilder(&status, fb::IXpbBuilder::DPB, nullptr, 0);
    parameters->insertTag(&status, isc_dpb_utf8_filename);
    parameters->insertString(&status, isc_dpb_user_name, "SYSDBA");
    parameters->insertString(&status, isc_dpb_lc_ctype, "UTF8");
    parameters->insertString(&status, isc_dpb_set_db_charset, "UTF8");
    parameters->insertInt(&status, isc_dpb_force_write, 0);
    if (!options.empty()) parameters->insertString(&status, isc_dpb_config, options.c_str());
    fb::IProvider* provider = master.getDispatcher();
    fb::IAttachment* attachment = provider->createDatabase(&status, path.c_str(), parameters->getBufferLength(&status),
                                                           parameters->getBuffer(&status));
    provider->release();
    parameters->dispose();
    for (const std::string& statement : statements) {
      fb::ITransaction* transaction = attachment->startTransaction(&status, 0, nullptr);
      attachment->execute(&status, transaction, static_cast<unsigned>(statement.size()), statement.c_str(), 3, nullptr,
                          nullptr, nullptr, nullptr);
      transaction->commit(&status);
    }
    attachment->detach(&status);
    status.dispose();
  } catch (const fb::FbException& error) {
    std::string text(2000, '\0');
    text.resize(util.formatStatus(text.data(), static_cast<unsigned>(text.size()), error.getStatus()));
    throw std::runtime_error(path + ": " + text);
  }
}

}  // namespace

// The library keeps to the lock folder that it finds at its first call.
TFirebirdFolder::TFirebirdFolder() {
  static const TScratchFolder locks;
  setenv("FIREBIRD_LOCK", locks.Path().c_str(), 0);
}

std::string TFirebirdFolder::NewDatabase(const std::string& name, const std::vector<std::string>& statements) {
  const std::string path = folder_ / name;
  MakeDatabase(path, {}, statements);
  return path;
}

std::string TFirebirdFolder::NewDatabaseOf(const std::string& name, const std::string& script) {
  TStringList statements;
  SplitText(";\n", script, statements);
  if (!statements.empty()) statements.pop_back();
  return NewDatabase(name, statements);
}

TPrivateFirebird::TPrivateFirebird() : home_(folder_.Path() + "/home") {
  const std::string program = ServerProgram();
  fs::create_directory(home_);
  fs::copy(International(), home_ + "/intl");
  fs::copy("/etc/firebird/3.0/plugins.conf", home_);
  std::ofstream(home_ + "/databases.conf");
  const std::string users = home_ + "/security.fdb";
  MakeDatabase(users, "SecurityDatabase=" + users + "\nUserManager=Srp\n",
               {std::string("create user sysdba password '") + kPassword + "'"});
  constexpr int kTries = 3;  // somebody else may take the port between its choice and its use
  for (int i = 0; i < kTries; ++i) {
    const int port = FreePort();
    WriteConfiguration(port);
    server_ = "127.0.0.1/" + std::to_string(port);
    process_.Start({"/usr/bin/env", "FIREBIRD=" + home_, "FIREBIRD_LOCK=" + home_, program}, home_ + "/log");
    if (Ready(port)) return;
    process_.Kill();
  }
  throw std::runtime_error("private server: Firebird did not start:\n" + FileEnd(home_ + "/log"));
}

void TPrivateFirebird::WriteConfiguration(int port) {
  std::ofstream(home_ + "/firebird.conf") << "RemoteBindAddress = 127.0.0.1\n"
                                          << "RemoteServicePort = " << port << "\n"
                                          << "SecurityDatabase = " << home_ << "/security.fdb\n"
                                          << "AuthServer = Srp\n"
                                          << "UserManager = Srp\n"
                                          << "ServerMode = Super\n";
}

// Waits until the server takes connections; false when it ended instead.
bool TPrivateFirebird::Ready(int port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<std::uint16_t>(port));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  for (auto waited = 0ms; waited < 30s && process_.Running(); waited += 10ms) {
    const int connection = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const bool taken = connect(connection, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0;
    close(connection);
    if (taken) return true;
    std::this_thread::sleep_for(10ms);
  }
  return false;
}

}  // namespace velmora::testing

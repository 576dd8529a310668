// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <vector>

#include "support/ScratchFolder.h"
#include "support/ServerProcess.h"

namespace velmora::testing {

// A folder for databases of the embedded engine, with its lock files. It must be there before the first call of the
// Firebird library in the process. Faults are std::runtime_error with the library's text.
class TFirebirdFolder {
 public:
  TFirebirdFolder();

  const std::string& Path() const { return folder_.Path(); }
  // A new database of SYSDBA's, in UTF8, in which these statements have run, each in a transaction of its own. Gives
  // its path.
  std::string NewDatabase(const std::string& name, const std::vector<std::string>& statements = {});
  // The same by a script, whose statements end in ";" at the end of a line.
  std::string NewDatabaseOf(const std::string& name, const std::string& script);

 private:
  TScratchFolder folder_;
};

// A Firebird server of the test program's own: on loopback, with a folder, a configuration and users of its own, ended
// with this object, and with the program should that die. Its one user is SYSDBA with the password kPassword.
class TPrivateFirebird {
 public:
  static constexpr char kPassword[] = "sesam";

  TPrivateFirebird();
  // Not as an administrator does it: that can wait out the delay that the server puts on failed logins.
  ~TPrivateFirebird() { Kill(); }
  TPrivateFirebird(const TPrivateFirebird&) = delete;
  TPrivateFirebird& operator=(const TPrivateFirebird&) = delete;

  const std::string& Server() const { return server_; }  // as a client writes it
  TFirebirdFolder& Folder() { return folder_; }
  void Kill() { process_.Kill(); }
  void Freeze(bool frozen) const { process_.Freeze(frozen); }

 private:
  void WriteConfiguration(int port);
  bool Ready(int port);

  TFirebirdFolder folder_;
  std::string home_;
  std::string server_;
  TServerProcess process_;
};

}  // namespace velmora::testing

// SPDX-License-Identifier: GPL-3.0-or-later
#include "mysqlclient/MyConnection.h"

#include "util/Errors.h"

namespace velmora {

namespace {

constexpr char kNotConnected[] = "Not connected";
constexpr int kAccessDenied = 1045;

}  // namespace

void TMyConnection::Login() {
  if (!LatePassword || !Password.empty() || Username.empty()) {
    DoConnect();
    return;
  }
  Password = LatePassword->Known();
  try {
    DoConnect();
  } catch (const EMySqlException& error) {
    if (error.Number() != kAccessDenied || !Password.empty()) throw;
    Password = LatePassword->Ask(Username + "@" + (Server.empty() ? "localhost" : Server));
    if (Password.empty()) throw;
    DoConnect();
    LatePassword->Keep(Password);
  }
}

std::unique_ptr<TMyConnection> TMyConnection::NewSibling() const {
  std::unique_ptr<TMyConnection> sibling = NewConnection();
  sibling->Server = Server;
  sibling->Port = Port;
  sibling->Username = Username;
  sibling->Password = Password;
  return sibling;
}

void TMyConnection::BreakOff(const std::function<bool()>& came_back) {
  try {
    CancelRunning();
  } catch (const std::exception&) {  // the server can't be asked
    Sever();
    return;
  }
  if (!came_back()) Sever();
}

void TMyConnection::CheckConnected() const {
  if (!GetConnected()) RaiseError(kNotConnected);
}

void TMyConnection::CopyOptions(const TMyConnection& source) {
  ConnectionTimeout = source.ConnectionTimeout;
  IsolationLevel = source.IsolationLevel;
  Options = source.Options;
  LatePassword = source.LatePassword;
  Waiting = source.Waiting;
}

std::string TMyConnection::ServerVersion() {
  const std::unique_ptr<TMyQuery> query = NewQuery();
  query->SQL = "select version()";
  query->Open();
  return VarToText(query->Value(0));
}

void TMyQuery::Open() {
  Close();
  Show(DoOpen());
}

void TMyQuery::Execute() {
  Close();
  rows_affected_ = DoExecute();
}

}  // namespace velmora

#include "mysqlclient/MyConnection.h"

#include "util/Errors.h"

namespace velmora {

namespace {

constexpr char kNotConnected[] = "Not connected";
constexpr int kAccessDenied = 1045;

}  // namespace

void TMyConnection::SetConnected(bool connected) {
  if (connected == GetConnected()) return;
  if (!connected) {
    DoDisconnect();
    return;
  }
  if (BeforeConnect) BeforeConnect();
  Login();
}

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

void TMyConnection::CheckConnected() const {
  if (!GetConnected()) RaiseError(kNotConnected);
}

void TMyConnection::CopyOptions(const TMyConnection& source) {
  ConnectionTimeout = source.ConnectionTimeout;
  IsolationLevel = source.IsolationLevel;
  Options = source.Options;
  LatePassword = source.LatePassword;
}

void TMyQuery::Open() {
  Close();
  rows_ = DoOpen();
  active_ = true;
}

void TMyQuery::Execute() {
  Close();
  rows_affected_ = DoExecute();
}

const std::vector<TFieldDef>& TMyQuery::Fields() const {
  static const std::vector<TFieldDef> kNoFields;
  return rows_ ? rows_->Fields() : kNoFields;
}

std::int64_t TMyQuery::RecordCount() const { return active_ ? rows_->RecordCount() : 0; }

bool TMyQuery::Eof() const { return !active_ || rows_->Eof(); }

void TMyQuery::First() {
  if (active_) rows_->First();
}

void TMyQuery::Next() {
  if (active_) rows_->Next();
}

const TVariant& TMyQuery::Value(std::size_t field) const {
  static const TVariant kNull;
  return active_ ? rows_->Value(field) : kNull;
}

void TMyQuery::Close() {
  if (!active_) return;
  active_ = false;
  rows_->Close();
}

}  // namespace velmora

#include "engines/server/IBOClient.h"

namespace velmora {

std::string TIBODatabase::Param(std::string_view name) const {
  const auto found = params_.find(name);
  return found == params_.end() ? std::string() : found->second;
}

void TIBODatabase::SetConnected(bool connected) {
  if (connected == GetConnected()) return;
  if (!connected) {
    DoDisconnect();
    return;
  }
  if (BeforeConnect) BeforeConnect();
  DoConnect();
}

void TIBOQuery::Open() {
  Close();
  rows_ = IB_Connection.Read(SQL);
}

void TIBOQuery::ExecuteDirect(const std::string& sql) {
  Close();
  rows_affected_ = IB_Connection.Execute(sql);
}

const std::vector<TFieldDef>& TIBOQuery::Fields() const {
  static const std::vector<TFieldDef> kNoFields;
  return rows_ ? rows_->Fields() : kNoFields;
}

std::int64_t TIBOQuery::RecordCount() const { return rows_ ? rows_->RecordCount() : 0; }

bool TIBOQuery::Eof() const { return !rows_ || rows_->Eof(); }

void TIBOQuery::First() {
  if (rows_) rows_->First();
}

void TIBOQuery::Next() {
  if (rows_) rows_->Next();
}

const TVariant& TIBOQuery::Value(std::size_t field) const {
  static const TVariant kNull;
  return rows_ ? rows_->Value(field) : kNull;
}

void TIBOQuery::Close() {
  if (rows_) rows_->Close();
}

}  // namespace velmora

// SPDX-License-Identifier: GPL-3.0-or-later
#include "engines/oledb/DBConnDBF.h"

#include <utility>

#include "formats/port/InitString.h"
#include "util/Format.h"
#include "xml/XMLAccess.h"

namespace velmora {

namespace {

constexpr char kConnection[] =
    "Provider=Microsoft.Jet.OLEDB.4.0;Extended Properties=dBASE IV;Persist Security Info=False;Data Source=%s;";

}  // namespace

TDBConnDBF::TDBConnDBF(std::string folder, std::string code_page, TOLEDBProviderMaker maker)
    : TDBConnOLEDB(std::move(maker)), folder_(std::move(folder)), code_page_(std::move(code_page)) {
  NationalTypes = false;
}

void TDBConnDBF::SaveParams(const std::string& path, TXMLAccess& store) {
  store.xmlSetVal(path + "/folder", folder_);
  if (!code_page_.empty()) store.xmlSetVal(path + "/codepage", code_page_);
}

void TDBConnDBF::ApplyParams() {
  GetConnectionObject().SetInitializationString(Format(kConnection, InitValue(folder_)) + CodePageProperty(code_page_));
}

int TDBConnDBF::GetEngine() { return kEngineDBF; }

std::unique_ptr<TDBConn> TDBConnDBF::Clone() {
  return ConnectedAsThis(std::make_unique<TDBConnDBF>(folder_, code_page_, maker()));
}

}  // namespace velmora

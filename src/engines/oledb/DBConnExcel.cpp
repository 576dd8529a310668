// SPDX-License-Identifier: GPL-3.0-or-later
#include "engines/oledb/DBConnExcel.h"

#include <utility>

#include "formats/port/InitString.h"
#include "util/Format.h"
#include "xml/XMLAccess.h"

namespace velmora {

namespace {

constexpr char kConnection[] =
    "Provider=Microsoft.Jet.OLEDB.4.0;Data Source=%s;Extended Properties=\"Excel 8.0;HDR=%s;IMEX=%s\"";

}  // namespace

TDBConnExcel::TDBConnExcel(std::string filename, bool HDR, bool IMEX, TOLEDBProviderMaker maker)
    : TDBConnOLEDB(std::move(maker)), filename_(std::move(filename)), hdr_(HDR), imex_(IMEX) {
  NationalTypes = false;
}

void TDBConnExcel::SaveParams(const std::string& path, TXMLAccess& store) {
  store.xmlSetVal(path + "/filename", filename_);
  store.xmlSetBool(path + "/HDR", hdr_);
  store.xmlSetBool(path + "/IMEX", imex_);
}

void TDBConnExcel::ApplyParams() {
  GetConnectionObject().SetInitializationString(
      Format(kConnection, InitValue(filename_), hdr_ ? "Yes" : "No", imex_ ? "1" : "0"));
}

int TDBConnExcel::GetEngine() { return kEngineExcel; }

std::unique_ptr<TDBConn> TDBConnExcel::Clone() {
  return ConnectedAsThis(std::make_unique<TDBConnExcel>(filename_, hdr_, imex_, maker()));
}

}  // namespace velmora

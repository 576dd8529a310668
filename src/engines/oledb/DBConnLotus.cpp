// SPDX-License-Identifier: GPL-3.0-or-later
#include "engines/oledb/DBConnLotus.h"

#include <utility>

#include "formats/port/InitString.h"
#include "util/Format.h"
#include "xml/XMLAccess.h"

namespace velmora {

namespace {

constexpr char kConnection[] = "Provider=Microsoft.Jet.OLEDB.4.0;Data Source=%s;Jet OLEDB:Engine Type=66";

}  // namespace

TDBConnLotus::TDBConnLotus(std::string filename, TOLEDBProviderMaker maker)
    : TDBConnOLEDB(std::move(maker)), filename_(std::move(filename)) {}

void TDBConnLotus::SaveParams(const std::string& path, TXMLAccess& store) {
  store.xmlSetVal(path + "/filename", filename_);
}

void TDBConnLotus::ApplyParams() {
  GetConnectionObject().SetInitializationString(Format(kConnection, InitValue(filename_)));
}

int TDBConnLotus::GetEngine() { return kEngineLotus; }

std::unique_ptr<TDBConn> TDBConnLotus::Clone() {
  return ConnectedAsThis(std::make_unique<TDBConnLotus>(filename_, maker()));
}

}  // namespace velmora

// SPDX-License-Identifier: GPL-3.0-or-later
#include "engines/oledb/DBConnODBC.h"

#include <utility>

#include "formats/port/InitString.h"
#include "util/Format.h"
#include "xml/XMLAccess.h"

namespace velmora {

namespace {

constexpr char kConnection[] = "Provider=MSDASQL;Data Source=%s";

}  // namespace

TDBConnODBC::TDBConnODBC(std::string dsn, TOLEDBProviderMaker maker)
    : TDBConnOLEDB(std::move(maker)), dsn_(std::move(dsn)) {}

void TDBConnODBC::SaveParams(const std::string& path, TXMLAccess& store) { store.xmlSetVal(path + "/dsn", dsn_); }

void TDBConnODBC::ApplyParams() { GetConnectionObject().SetInitializationString(Format(kConnection, InitValue(dsn_))); }

void TDBConnODBC::GetDisplayName(std::string& text) { text = dsn_; }

int TDBConnODBC::GetEngine() { return kEngineODBC; }

std::unique_ptr<TDBConn> TDBConnODBC::Clone() { return ConnectedAsThis(std::make_unique<TDBConnODBC>(dsn_, maker())); }

}  // namespace velmora

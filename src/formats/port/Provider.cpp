// SPDX-License-Identifier: GPL-3.0-or-later
#include "formats/port/Provider.h"

#include "util/Errors.h"

namespace velmora {

namespace {

constexpr char kNoCatalogCalls[] = "This provider has no catalog calls";
constexpr char kCannotCreate[] = "A new database cannot be made here";

}  // namespace

void TOLEDBProvider::CreateDataSource() { RaiseError(kCannotCreate); }

TOLEDBRowset TOLEDBProvider::CatalogRows(ECatalogRows /*kind*/, const std::string& /*table*/) {
  RaiseError(kNoCatalogCalls);
}

}  // namespace velmora

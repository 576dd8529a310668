// SPDX-License-Identifier: GPL-3.0-or-later
#include "engines/oledb/DBConnFoxPro.h"

#include <utility>

#include "core/Host.h"
#include "formats/port/InitString.h"
#include "util/Addresses.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Text.h"
#include "xml/XMLAccess.h"

namespace velmora {

namespace {

constexpr char kConnection[] =
    "Provider=VFPOLEDB.1;Password=\"\";Data Source=%s;Collating Sequence=MACHINE;Persist Security Info=False";
constexpr char kMissingProvider[] = "Class not registered";
constexpr char kGetProvider[] =
    "To use FoxPro in this application, Microsoft FoxPro OLEDB provider must be installed. Would you like to be taken "
    "to Microsoft web page to download the file?";

}  // namespace

TDBConnFoxPro::TDBConnFoxPro(std::string folder, std::string code_page, TOLEDBProviderMaker maker)
    : TDBConnOLEDB(std::move(maker)), folder_(std::move(folder)), code_page_(std::move(code_page)) {
  NationalTypes = false;
}

// --- Connection

void TDBConnFoxPro::Connect() {
  try {
    TDBConnOLEDB::Connect();
  } catch (const EVelmora& error) {
    if (Trim(error.what()) != kMissingProvider) throw;
    if (Host().ConfirmOk(kGetProvider)) OpenURL(ProviderPage());
    throw EAbort();
  }
}

void TDBConnFoxPro::SaveParams(const std::string& path, TXMLAccess& store) {
  store.xmlSetVal(path + "/folder", folder_);
  if (!code_page_.empty()) store.xmlSetVal(path + "/codepage", code_page_);
}

void TDBConnFoxPro::ApplyParams() {
  GetConnectionObject().SetInitializationString(Format(kConnection, InitValue(folder_)) + CodePageProperty(code_page_));
}

void TDBConnFoxPro::GetDisplayName(std::string& text) { text = folder_; }

// --- Rows

bool TDBConnFoxPro::SupportsChunks(const std::string& /*table*/) { return true; }

std::unique_ptr<TDataset> TDBConnFoxPro::OpenTableDataChunk(const std::string& table, std::int64_t first,
                                                            std::int64_t count) {
  return OpenQuery(
      Format("select * from %s where recno() between %d and %d", QuoteName(table), first, first + count - 1));
}

int TDBConnFoxPro::GetEngine() { return kEngineFoxPro; }

std::unique_ptr<TDBConn> TDBConnFoxPro::Clone() {
  return ConnectedAsThis(std::make_unique<TDBConnFoxPro>(folder_, code_page_, maker()));
}

}  // namespace velmora

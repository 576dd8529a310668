// SPDX-License-Identifier: GPL-3.0-or-later
#include "sandbox/OwnProcessReaders.h"

#include "formats/sheet/ExcelFile.h"
#include "sandbox/ReaderProcess.h"
#include "util/InputFile.h"
#ifdef VELMORA_MDB
#include "formats/mdb/MdbReader.h"
#endif
#ifdef VELMORA_LOTUS
#include "formats/sheet/LotusFile.h"
#endif

namespace velmora {

#ifdef VELMORA_MDB
std::unique_ptr<TFileReader> OpenMdbFile(const std::string& path) {
  const std::uint64_t size = TInputFile(path, ESharing::Full).Size();
  return ReadInOwnProcess([path] { return OpenMdbFileHere(path); }, path, "mdbtools", ReaderLimits(size));
}
#endif

std::unique_ptr<TFileReader> OpenExcelFile(const std::string& path, bool names, bool mixed_as_text) {
  return ReadInOwnProcess([=] { return OpenExcelFileHere(path, names, mixed_as_text); }, path, "its reader",
                          ReaderLimits(TInputFile(path).Size()));
}

#ifdef VELMORA_LOTUS
std::unique_ptr<TFileReader> OpenLotusFile(const std::string& path) {
  return ReadInOwnProcess([path] { return OpenLotusFileHere(path); }, path, "libwps",
                          ReaderLimits(TInputFile(path).Size()));
}
#endif

}  // namespace velmora

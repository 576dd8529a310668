#include "engines/oledb/FileReaders.h"
#include "engines/oledb/LotusFile.h"
#include "engines/oledb/ReaderProcess.h"
#include "util/InputFile.h"

namespace velmora {

std::unique_ptr<TFileReader> OpenLotusFile(const std::string& path) {
  return ReadInOwnProcess([path] { return OpenLotusFileHere(path); }, path, "libwps",
                          ReaderLimits(TInputFile(path).Size()));
}

}  // namespace velmora

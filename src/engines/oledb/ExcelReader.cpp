#include "engines/oledb/ExcelFile.h"
#include "engines/oledb/FileReaders.h"
#include "engines/oledb/ReaderProcess.h"
#include "util/InputFile.h"

namespace velmora {

std::unique_ptr<TFileReader> OpenExcelFile(const std::string& path, bool names, bool mixed_as_text) {
  return ReadInOwnProcess([=] { return OpenExcelFileHere(path, names, mixed_as_text); }, path, "freexl",
                          ReaderLimits(TInputFile(path).Size()));
}

}  // namespace velmora

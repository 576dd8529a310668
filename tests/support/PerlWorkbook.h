#pragma once

#include <stdio.h>

#include <stdexcept>
#include <string>

namespace velmora::testing {

// Writes a workbook of BIFF8 with Perl's Spreadsheet::WriteExcel; `description` is the input of workbook.pl. Throws
// where Perl or the module is missing.
inline void WriteWorkbook(const std::string& path, const std::string& description) {
  const std::string command = "perl '" VELMORA_SOURCE_DIR "/tests/formats/data/workbook.pl' '" + path + "'";
  FILE* perl = popen(command.c_str(), "w");
  if (perl == nullptr) throw std::runtime_error("no perl");
  const bool written = fwrite(description.data(), 1, description.size(), perl) == description.size();
  if (pclose(perl) != 0 || !written) throw std::runtime_error("no workbook: is Perl's Spreadsheet::WriteExcel there?");
}

}  // namespace velmora::testing

#pragma once

// Excel workbooks laid out by hand, by the published descriptions of the compound file ("[MS-CFB]") and of the binary
// interchange format ("[MS-XLS]", "OpenOffice.org's Documentation of the Microsoft Excel File Format").

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace velmora::testing {

// A record of the binary interchange format; numbers are to be given with the lowest byte first.
std::string BiffRecord(std::uint16_t type, const std::string& data);
std::string BiffNumber(std::uint64_t number, std::size_t size);

struct TBiffSheet {
  std::string name;
  std::string records;                           // of its cells
  std::uint16_t end_row = 100, end_column = 10;  // what it claims to have
};

// A workbook of BIFF5 (Excel 5 and 95) in a compound file. Texts are letters of Windows-1252. Cell format 0 is
// general, 1 a date.
std::string Biff5File(const std::vector<TBiffSheet>& sheets, const std::string& more_globals = {});
// A compound file with one stream.
std::string CompoundFile(const std::string& stream_name, const std::string& stream);

}  // namespace velmora::testing

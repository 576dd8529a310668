#include "formats/sheet/ExcelFile.h"

#include <freexl.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <string_view>
#include <utility>

#include "formats/sheet/SheetReader.h"
#include "util/Dates.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/InputFile.h"

namespace velmora {

namespace {

constexpr char kFault[] = "Cannot read %s: %s";
constexpr char kAdvice[] = "%s. Open it in a spreadsheet program and save it as an Excel 97-2003 workbook (.xls)";
constexpr char kDamaged[] = "the workbook is damaged (freexl's error %d)";
constexpr char kEmptyFile[] = "the file is empty";
constexpr char kNoMemory[] = "the workbook is damaged or too large for the memory that is left";
constexpr char kMiniStream[] = "its workbook is stored in a form for small files that freexl does not read";
constexpr char kNoWorkbook[] =
    "it holds no workbook that can be read: it is of another program, or of Excel 2007 or later and protected by a "
    "password";
constexpr char kProtected[] =
    "the workbook is protected by a password. Open it in a spreadsheet program and save it without one";
// The library may say that all is well, and have nothing.
constexpr char kNothing[] =
    "freexl cannot take the workbook apart. It is damaged, or has cells that hold an empty text (as pasted results of "
    "formulas do): clear those, and save it as an Excel 97-2003 workbook (.xls)";

constexpr TSheetNaming kExcelNaming = {.suffix = "$", .quotes = true};

// --- Files that are no such workbook, told by how they begin

struct TOtherKind {
  std::string_view start;
  std::string_view text;
};

constexpr TOtherKind kOtherKinds[] = {
    {"PK\x03\x04", "it is a workbook of Excel 2007 or later, or another Zip archive"},
    {"<", "it is a web page or an XML document, whatever its name says"},
    {"\xEF\xBB\xBF<", "it is a web page or an XML document, whatever its name says"},
    {"{\\rtf", "it is a text document, whatever its name says"},
    {"", "it is no Excel workbook"},
};

constexpr std::string_view kCompoundFile = "\xD0\xCF\x11\xE0";

[[noreturn]] void RaiseFault(const std::string& path, std::string_view fault) {
  RaiseError(Format(kFault, path, fault));
}

[[noreturn]] void RaiseOther(const std::string& path, std::string_view kind) {
  RaiseFault(path, Format(kAdvice, kind));
}

void CheckStart(const std::string& path) {
  const TInputFile file(path);
  if (file.Size() == 0) RaiseFault(path, kEmptyFile);
  std::array<char, 64> buffer;
  std::string_view start(buffer.data(), file.ReadAt(0, buffer));
  if (start.starts_with(kCompoundFile)) return;
  start.remove_prefix(std::min(start.find_first_not_of(" \t\r\n"), start.size()));
  RaiseOther(path, std::ranges::find_if(kOtherKinds, [&](const TOtherKind& each) {
                     return start.starts_with(each.start);
                   })->text);
}

// --- The library's handle

class TExcelFile {
 public:
  explicit TExcelFile(const std::string& path) : path_(path) {
    const int error = freexl_open(path.c_str(), &handle_);
    if (error != FREEXL_OK) {
      freexl_close(handle_);
      RaiseOpening(error);
    }
  }
  ~TExcelFile() { freexl_close(handle_); }
  TExcelFile(const TExcelFile&) = delete;
  TExcelFile& operator=(const TExcelFile&) = delete;

  unsigned Info(unsigned short what) const {
    unsigned info = 0;
    if (freexl_get_info(handle_, what, &info) != FREEXL_OK) RaiseFault(path_, kNothing);
    return info;
  }
  TSheet Sheet(unsigned short index) const;

 private:
  [[noreturn]] void RaiseOpening(int error) const;
  void Check(int error) const {
    if (error != FREEXL_OK) RaiseFault(path_, Format(kDamaged, error));
  }

  const std::string& path_;
  const void* handle_ = nullptr;
};

void TExcelFile::RaiseOpening(int error) const {
  switch (error) {
    case FREEXL_BIFF_WORKBOOK_NOT_FOUND:
      RaiseOther(path_, kNoWorkbook);
    case FREEXL_INVALID_MINI_STREAM:
      RaiseOther(path_, kMiniStream);
    case FREEXL_INSUFFICIENT_MEMORY:
      RaiseFault(path_, kNoMemory);
    default:
      RaiseFault(path_, Format(kDamaged, error));
  }
}

// Dates and times come as texts. What is none that the calendar has is kept as it stands.
TVariant MomentOf(std::string_view text) {
  constexpr std::string_view kNextDay = "24:00:00";  // the last half of a second of a day, rounded
  constexpr std::string_view kDayZero = "1899-12-30 ";
  const bool next_day = text.ends_with(kNextDay);
  const bool is_time = text.find('-') == std::string_view::npos;
  if (next_day) text.remove_suffix(kNextDay.size());
  try {
    if (next_day && is_time) return TMoment{0};
    const TDateTime value = ParseDateTime(is_time ? std::string(kDayZero) + std::string(text) : std::string(text));
    return TMoment{value + (next_day ? 1 : 0)};
  } catch (const EVelmora&) {
    return std::string(text);
  }
}

TVariant ValueOf(const FreeXL_CellValue& cell) {
  switch (cell.type) {
    case FREEXL_CELL_INT:
      return static_cast<double>(cell.value.int_value);
    case FREEXL_CELL_DOUBLE:
      if (!std::isfinite(cell.value.double_value)) return {};
      return cell.value.double_value;
    case FREEXL_CELL_TEXT:
    case FREEXL_CELL_SST_TEXT:
      if (cell.value.text_value == nullptr || *cell.value.text_value == '\0') return {};
      return std::string(cell.value.text_value);
    case FREEXL_CELL_DATE:
    case FREEXL_CELL_DATETIME:
    case FREEXL_CELL_TIME:
      return MomentOf(cell.value.text_value);
    default:
      return {};
  }
}

// The library keeps a place for every cell that the sheet claims to have; here are those that hold something.
TSheet TExcelFile::Sheet(unsigned short index) const {
  const char* name = nullptr;
  Check(freexl_get_worksheet_name(handle_, index, &name));
  TSheet sheet{.name = name == nullptr ? "" : name};
  Check(freexl_select_active_worksheet(handle_, index));
  unsigned rows = 0;
  unsigned short columns = 0;
  Check(freexl_worksheet_dimensions(handle_, &rows, &columns));
  for (unsigned row = 0; row < rows; ++row) {
    for (unsigned short column = 0; column < columns; ++column) {
      FreeXL_CellValue cell;
      Check(freexl_get_cell_value(handle_, row, column, &cell));
      TVariant value = ValueOf(cell);
      if (!VarIsNull(value)) sheet.cells.push_back({row, column, std::move(value)});
    }
  }
  return sheet;
}

}  // namespace

std::vector<TSheet> ReadExcelSheets(const std::string& path) {
  CheckStart(path);
  const TExcelFile file(path);
  if (file.Info(FREEXL_BIFF_PASSWORD) == FREEXL_BIFF_OBFUSCATED) RaiseFault(path, kProtected);
  std::vector<TSheet> sheets;
  const unsigned count = file.Info(FREEXL_BIFF_SHEET_COUNT);
  if (count == 0) RaiseFault(path, kNothing);
  for (unsigned i = 0; i < count; ++i) sheets.push_back(file.Sheet(static_cast<unsigned short>(i)));
  return sheets;
}

std::unique_ptr<TFileReader> OpenExcelFileHere(const std::string& path, bool names, bool mixed_as_text) {
  return std::make_unique<TSheetReader>(path, ReadExcelSheets(path), kExcelNaming, TSheetRule{names, mixed_as_text});
}

}  // namespace velmora

// SPDX-License-Identifier: GPL-3.0-or-later
#include "formats/sheet/ExcelFile.h"

#include <algorithm>
#include <optional>
#include <string_view>

#include "formats/sheet/BiffWorkbook.h"
#include "formats/sheet/CompoundFile.h"
#include "formats/sheet/SheetReader.h"
#include "formats/sheet/XlsxWorkbook.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/InputFile.h"

namespace velmora {

namespace {

constexpr char kFault[] = "Cannot read %s: %s";
constexpr char kAdvice[] = "%s. Open it in a spreadsheet program and save it as an Excel workbook (.xlsx or .xls)";
constexpr char kEmptyFile[] = "the file is empty";
constexpr char kNoWorkbook[] = "it holds no workbook: it is of another program";
constexpr char kProtected[] =
    "the workbook is protected by a password. Open it in a spreadsheet program and save it without one";

constexpr std::string_view kZipStart = "PK";

constexpr TSheetNaming kExcelNaming = {.suffix = "$", .quotes = true};

// --- Files that are no such workbook, told by how they begin

struct TOtherKind {
  std::string_view start;
  std::string_view text;
};

constexpr TOtherKind kOtherKinds[] = {
    {"<", "it is a web page or an XML document, whatever its name says"},
    {"\xEF\xBB\xBF<", "it is a web page or an XML document, whatever its name says"},
    {"{\\rtf", "it is a text document, whatever its name says"},
    {"", "it is no Excel workbook"},
};

[[noreturn]] void RaiseOther(std::string_view kind) { RaiseError(Format(kAdvice, kind)); }

[[noreturn]] void RaiseOtherKind(std::string_view bytes) {
  bytes.remove_prefix(std::min(bytes.find_first_not_of(" \t\r\n"), bytes.size()));
  RaiseOther(
      std::ranges::find_if(kOtherKinds, [&](const TOtherKind& each) { return bytes.starts_with(each.start); })->text);
}

// A record that begins a workbook or, before Excel 5, a sheet: the stream without a compound file around it.
bool IsBareStream(std::string_view bytes) {
  return bytes.size() > 4 && bytes[0] == '\x09' && std::string_view("\0\2\4\x08", 4).find(bytes[1]) != bytes.npos &&
         bytes[3] == '\0';
}

// Excel 97 wrote, where asked to, a workbook for itself and one for its elder kin.
std::string WorkbookStream(std::string_view bytes) {
  const TCompoundFile file(bytes);
  for (const std::string_view name : {"Workbook", "Book"})
    if (std::optional<std::string> stream = file.Stream(name)) return std::move(*stream);
  if (file.Stream("EncryptedPackage")) RaiseError(kProtected);  // a workbook of Excel 2007 or later
  RaiseOther(kNoWorkbook);
}

std::vector<TSheet> SheetsOf(std::string_view bytes) {
  if (bytes.empty()) RaiseError(kEmptyFile);
  if (bytes.starts_with(kZipStart)) return ReadXlsxWorkbook(bytes);
  if (IsBareStream(bytes)) return ReadBiffWorkbook(bytes);
  if (!bytes.starts_with(kCompoundFileStart.substr(0, 4))) RaiseOtherKind(bytes);
  return ReadBiffWorkbook(WorkbookStream(bytes));
}

}  // namespace

std::vector<TSheet> ReadExcelSheets(const std::string& path) {
  const TInputFile file(path);
  std::string bytes(file.Size(), '\0');
  bytes.resize(file.ReadAt(0, bytes));
  try {
    return SheetsOf(bytes);
  } catch (const EVelmora& error) {
    RaiseError(Format(kFault, path, error.what()));
  }
}

std::unique_ptr<TFileReader> OpenExcelFileHere(const std::string& path, bool names, bool mixed_as_text) {
  return std::make_unique<TSheetReader>(path, ReadExcelSheets(path), kExcelNaming, TSheetRule{names, mixed_as_text});
}

}  // namespace velmora

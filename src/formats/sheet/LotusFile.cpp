// SPDX-License-Identifier: GPL-3.0-or-later
#include "formats/sheet/LotusFile.h"

#include <librevenge-stream/librevenge-stream.h>
#include <librevenge/librevenge.h>
#include <libwps/libwps.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <utility>

#include "formats/sheet/SheetReader.h"
#include "util/Dates.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/InputFile.h"
#include "util/LittleEndian.h"

namespace velmora {

namespace {

using TProperties = librevenge::RVNGPropertyList;

constexpr char kFault[] = "Cannot read %s: %s";
constexpr char kEmptyFile[] = "the file is empty";
constexpr char kOther[] =
    "it is no Lotus 1-2-3 sheet. Open it in a spreadsheet program and save it as a 1-2-3 sheet (.wk4 or .wk3)";
constexpr char kProtected[] = "the sheet is protected by a password. Open it in 1-2-3 and save it without one";
constexpr char kDamaged[] = "the sheet is damaged (libwps's error %d)";
constexpr char kStray[] = "the sheet is damaged (it has a cell at row %d, column %d)";

constexpr TSheetNaming kLotusNaming = {.suffix = ":"};

constexpr int kMostRows = 65536;
constexpr int kMostColumns = 256;

// From this format of the file on (release 3) texts are in the Lotus multi-byte set, whose letters of one byte are
// those of code page 850. The library takes them for Windows letters if it is not told so.
constexpr std::size_t kFormatOffset = 4;
constexpr std::uint16_t kRelease3 = 0x1000;
constexpr char kRelease3Letters[] = "CP850";

[[noreturn]] void RaiseFault(const std::string& path, const std::string& fault) {
  RaiseError(Format(kFault, path, fault));
}

// --- The file's bytes as the library wants them

class TByteStream final : public librevenge::RVNGInputStream {
 public:
  explicit TByteStream(const std::string& bytes) : bytes_(bytes.begin(), bytes.end()) {}

  bool isStructured() override { return false; }
  unsigned subStreamCount() override { return 0; }
  const char* subStreamName(unsigned /*id*/) override { return nullptr; }
  bool existsSubStream(const char* /*name*/) override { return false; }
  RVNGInputStream* getSubStreamByName(const char* /*name*/) override { return nullptr; }
  RVNGInputStream* getSubStreamById(unsigned /*id*/) override { return nullptr; }

  const unsigned char* read(unsigned long count, unsigned long& got) override {
    got = std::min<unsigned long>(count, bytes_.size() - at_);
    if (got == 0) return nullptr;
    const unsigned char* start = bytes_.data() + at_;
    at_ += got;
    return start;
  }
  // Past either end it goes to that end and says that it failed.
  int seek(long offset, librevenge::RVNG_SEEK_TYPE type) override {
    const long size = static_cast<long>(bytes_.size());
    const long from = type == librevenge::RVNG_SEEK_CUR ? tell() : type == librevenge::RVNG_SEEK_END ? size : 0;
    const long low = -from, high = size - from;
    at_ = static_cast<std::size_t>(from + std::clamp(offset, low, high));
    return offset < low || offset > high ? 1 : 0;
  }
  long tell() override { return static_cast<long>(at_); }
  bool isEnd() override { return at_ >= bytes_.size(); }

 private:
  std::vector<unsigned char> bytes_;
  std::size_t at_ = 0;
};

// --- What the library tells of a document. Most of it is not about cells.

class TDocumentEvents : public librevenge::RVNGSpreadsheetInterface {
 public:
  void setDocumentMetaData(const TProperties&) override {}
  void startDocument(const TProperties&) override {}
  void endDocument() override {}
  void definePageStyle(const TProperties&) override {}
  void defineEmbeddedFont(const TProperties&) override {}
  void openPageSpan(const TProperties&) override {}
  void closePageSpan() override {}
  void openHeader(const TProperties&) override {}
  void closeHeader() override {}
  void openFooter(const TProperties&) override {}
  void closeFooter() override {}
  void defineSheetNumberingStyle(const TProperties&) override {}
  void closeSheet() override {}
  void openSheetRow(const TProperties&) override {}
  void closeSheetRow() override {}
  void defineChartStyle(const TProperties&) override {}
  void openChartTextObject(const TProperties&) override {}
  void closeChartTextObject() override {}
  void openChartPlotArea(const TProperties&) override {}
  void closeChartPlotArea() override {}
  void insertChartAxis(const TProperties&) override {}
  void openChartSerie(const TProperties&) override {}
  void closeChartSerie() override {}
  void defineParagraphStyle(const TProperties&) override {}
  void closeParagraph() override {}
  void defineCharacterStyle(const TProperties&) override {}
  void openSpan(const TProperties&) override {}
  void closeSpan() override {}
  void openLink(const TProperties&) override {}
  void closeLink() override {}
  void defineSectionStyle(const TProperties&) override {}
  void openSection(const TProperties&) override {}
  void closeSection() override {}
  void insertField(const TProperties&) override {}
  void openOrderedListLevel(const TProperties&) override {}
  void openUnorderedListLevel(const TProperties&) override {}
  void closeOrderedListLevel() override {}
  void closeUnorderedListLevel() override {}
  void openListElement(const TProperties&) override {}
  void closeListElement() override {}
  void insertBinaryObject(const TProperties&) override {}
  void openTable(const TProperties&) override {}
  void openTableRow(const TProperties&) override {}
  void closeTableRow() override {}
  void openTableCell(const TProperties&) override {}
  void closeTableCell() override {}
  void insertCoveredTableCell(const TProperties&) override {}
  void closeTable() override {}
  void openGroup(const TProperties&) override {}
  void closeGroup() override {}
  void defineGraphicStyle(const TProperties&) override {}
  void drawRectangle(const TProperties&) override {}
  void drawEllipse(const TProperties&) override {}
  void drawPolygon(const TProperties&) override {}
  void drawPolyline(const TProperties&) override {}
  void drawPath(const TProperties&) override {}
  void drawConnector(const TProperties&) override {}
  void insertEquation(const TProperties&) override {}
};

int IntegerOf(const TProperties& properties, const char* name) {
  const librevenge::RVNGProperty* property = properties[name];
  return property == nullptr ? 0 : property->getInt();
}

std::string TextOf(const TProperties& properties, const char* name) {
  const librevenge::RVNGProperty* property = properties[name];
  return property == nullptr ? std::string() : property->getStr().cstr();
}

// A day that is no date gives no value, and neither does a time that the library leaves out.
TVariant MomentOf(const TProperties& cell) {
  try {
    if (cell["librevenge:year"] != nullptr) {
      return TMoment{EncodeDate(IntegerOf(cell, "librevenge:year"), IntegerOf(cell, "librevenge:month"),
                                IntegerOf(cell, "librevenge:day"))};
    }
    if (cell["librevenge:hours"] == nullptr) return {};
    // The last half of a second of a day is rounded to hour 24.
    return TMoment{EncodeTime(IntegerOf(cell, "librevenge:hours") % 24, IntegerOf(cell, "librevenge:minutes"),
                              IntegerOf(cell, "librevenge:seconds"))};
  } catch (const EConvertError&) {
    return {};
  }
}

TVariant ValueOf(const TProperties& cell) {
  const std::string type = TextOf(cell, "librevenge:value-type");
  if (type == "date" || type == "time") return MomentOf(cell);
  const librevenge::RVNGProperty* value = cell["librevenge:value"];
  // The number itself: its printed form has four decimals.
  if (value == nullptr || !std::isfinite(value->getDouble())) return {};
  return value->getDouble();
}

class TCellCollector final : public TDocumentEvents {
 public:
  std::vector<TSheet> Take() { return std::move(sheets_); }
  const std::string& Fault() const { return fault_; }  // not raised, since the library would swallow it

  void openSheet(const TProperties& sheet) override {
    sheets_.push_back({.name = TextOf(sheet, "librevenge:sheet-name")});
  }
  void openSheetCell(const TProperties& cell) override {
    const int row = IntegerOf(cell, "librevenge:row"), column = IntegerOf(cell, "librevenge:column");
    if (row < 0 || row >= kMostRows || column < 0 || column >= kMostColumns) {
      fault_ = Format(kStray, row + 1, column + 1);
      return;
    }
    cell_ = TSheetCell{static_cast<std::uint32_t>(row), static_cast<std::uint32_t>(column), ValueOf(cell)};
    text_.clear();
  }
  void closeSheetCell() override {
    if (!cell_ || sheets_.empty()) return;
    if (VarIsNull(cell_->value) && !text_.empty()) cell_->value = std::move(text_);
    if (!VarIsNull(cell_->value)) sheets_.back().cells.push_back(std::move(*cell_));
    cell_.reset();
  }

  void openParagraph(const TProperties& /*properties*/) override {
    if (!text_.empty()) Add("\n");
  }
  void insertTab() override { Add("\t"); }
  void insertSpace() override { Add(" "); }
  void insertText(const librevenge::RVNGString& text) override { Add(text.cstr()); }
  void insertLineBreak() override { Add("\n"); }

  // Their texts are no part of a cell's.
  void openChart(const TProperties& /*properties*/) override { ++aside_; }
  void closeChart() override { --aside_; }
  void openFootnote(const TProperties& /*properties*/) override { ++aside_; }
  void closeFootnote() override { --aside_; }
  void openComment(const TProperties& /*properties*/) override { ++aside_; }
  void closeComment() override { --aside_; }
  void openFrame(const TProperties& /*properties*/) override { ++aside_; }
  void closeFrame() override { --aside_; }
  void openTextBox(const TProperties& /*properties*/) override { ++aside_; }
  void closeTextBox() override { --aside_; }

 private:
  void Add(std::string_view text) {
    if (cell_ && aside_ == 0) text_ += text;
  }

  std::vector<TSheet> sheets_;
  std::string fault_;
  std::optional<TSheetCell> cell_;  // the one that is open
  std::string text_;                // its own
  int aside_ = 0;
};

void CheckKind(const std::string& path, TByteStream& stream) {
  libwps::WPSKind kind = libwps::WPS_TEXT;
  libwps::WPSCreator creator = libwps::WPS_MSWORKS;
  bool needs_encoding = false;
  const auto confidence = libwps::WPSDocument::isFileFormatSupported(&stream, kind, creator, needs_encoding);
  if (confidence == libwps::WPS_CONFIDENCE_NONE || kind != libwps::WPS_SPREADSHEET || creator != libwps::WPS_LOTUS)
    RaiseFault(path, kOther);
  if (confidence == libwps::WPS_CONFIDENCE_SUPPORTED_ENCRYPTION) RaiseFault(path, kProtected);
}

const char* EncodingOf(std::string_view bytes) {
  const bool has_format = bytes.size() >= kFormatOffset + sizeof(std::uint16_t);
  const bool is_release3 = has_format && LittleAt<std::uint16_t>(bytes.data() + kFormatOffset) >= kRelease3;
  return is_release3 ? kRelease3Letters : "";
}

}  // namespace

std::vector<TSheet> ReadLotusSheets(const std::string& path) {
  const TInputFile file(path);
  std::string bytes(file.Size(), '\0');
  bytes.resize(file.ReadAt(0, bytes));
  if (bytes.empty()) RaiseFault(path, kEmptyFile);
  TByteStream stream(bytes);
  CheckKind(path, stream);
  stream.seek(0, librevenge::RVNG_SEEK_SET);
  TCellCollector cells;
  const libwps::WPSResult result = libwps::WPSDocument::parse(&stream, &cells, "", EncodingOf(bytes));
  if (result == libwps::WPS_ENCRYPTION_ERROR) RaiseFault(path, kProtected);
  if (result != libwps::WPS_OK) RaiseFault(path, Format(kDamaged, static_cast<int>(result)));
  if (!cells.Fault().empty()) RaiseFault(path, cells.Fault());
  return cells.Take();
}

std::unique_ptr<TFileReader> OpenLotusFileHere(const std::string& path) {
  return std::make_unique<TSheetReader>(path, ReadLotusSheets(path), kLotusNaming, TSheetRule{});
}

}  // namespace velmora

// SPDX-License-Identifier: GPL-3.0-or-later

// Every format, cut at every byte and with every byte spoilt: the files end in rows or in an error with a message. All
// is read in a process of its own, since libraries may not survive it; what is read here does.

#include <algorithm>
#include <chrono>
#include <filesystem>

#include "core/Meta.h"
#include "engines/file/DBConnParadox.h"
#include "engines/file/DBConnTextDelim.h"
#include "engines/file/DBConnTextFixed.h"
#include "formats/dbf/DBaseFolder.h"
#include "formats/dbf/FoxProFolder.h"
#include "formats/mdb/MdbReader.h"
#include "formats/sheet/ExcelFile.h"
#include "formats/sheet/LotusFile.h"
#include "sandbox/ReaderProcess.h"
#include "support/FormatCase.h"
#include "support/MessageOf.h"
#include "support/ScratchFolder.h"
#include "util/Errors.h"
#include "util/Files.h"

namespace velmora::testing {
namespace {

// Reads all there is in the folder; gives how many tables could not be read, or raises.
using TRead = std::function<int(const std::string& folder)>;

int Refused(const std::string& folder, const std::function<void()>& read) {
  try {
    read();
    return 0;
  } catch (const EVelmora& error) {
    if (std::string_view(error.what()).empty()) throw std::logic_error("no message in " + folder);
    return 1;
  }
}

TRead ByReader(std::unique_ptr<TFileReader> (*open)(const std::string& path), const std::string& file = "") {
  return [=](const std::string& folder) {
    const auto reader = open(file.empty() ? folder : folder + "/" + file);
    int refused = 0;
    for (const TOLEDBTableRow& table : reader->Tables())
      refused += Refused(folder, [&] {
        const TFileTable found = reader->Structure(table.TABLE_NAME);
        if (found.fields.size() != found.columns.size()) throw std::logic_error("fields and columns differ");
        for (const auto& row : reader->Rows(table.TABLE_NAME, kAllRows).rows)
          for (const TVariant& value : row) VarToText(value);
      });
    return refused;
  };
}

// The structure, the rows and their count agree.
int ReadTables(TDBConn& conn, const std::string& folder) {
  conn.Connect();
  int refused = 0;
  const auto tables = conn.meta().tTables.Rows();
  for (const TTableRow& table : tables)
    refused += Refused(folder, [&] {
      conn.meta().GotoTable(table.name);
      conn.FetchIfNeeded();
      TTableGuard rows(conn, table.name);
      if (rows->Fields().size() != conn.meta().tColumns.Rows().size()) throw std::logic_error("other columns");
      std::int64_t count = 0;
      for (; !rows->Eof(); rows->Next(), ++count)
        for (std::size_t i = 0; i < rows->Fields().size(); ++i) VarToText(rows->Value(i));
      if (count != rows->RecordCount() || count != conn.GetRecordCount(table.name))
        throw std::logic_error("another count of rows");
    });
  return refused;
}

template <class TConn, class... TMore>
TRead ByEngine(TMore... more) {
  return [=](const std::string& folder) {
    TConn conn(folder, more...);
    return ReadTables(conn, folder);
  };
}

struct TSource {
  const char* name;  // of the case
  TRead read;
  bool library = false;
  bool takes_all = false;  // there is nothing that it refuses

  friend void PrintTo(const TSource& source, std::ostream* out) { *out << source.name; }
};

// A place in a file: all but zeros far from anything that is none.
struct TPlace {
  std::size_t file, at;
};

std::vector<TPlace> PlacesIn(const TFormatCase& files) {
  constexpr std::size_t kNear = 4;
  std::vector<TPlace> places;
  for (std::size_t file = 0; file < files.files.size(); ++file) {
    const std::string& bytes = files.files[file].second;
    for (std::size_t at = 0; at < bytes.size(); ++at) {
      const std::size_t from = at - std::min(at, kNear);
      if (bytes.substr(from, 2 * kNear).find_first_not_of('\0') != std::string::npos) places.push_back({file, at});
    }
  }
  return places;
}

// Three changes for each place: a cut, another value, a bit.
std::string Changed(std::string bytes, std::size_t at, std::size_t kind) {
  constexpr unsigned char kValues[] = {0x00, 0x01, 0x0A, 0x20, 0x22, 0x2C, 0x7F, 0x80, 0xFF};
  if (kind == 0) return bytes.substr(0, at);
  bytes[at] = static_cast<char>(kind == 1 ? kValues[at % std::size(kValues)] : bytes[at] ^ 1 << at % 8);
  return bytes;
}

// Its "rows" of table N are one row: how many of so many changes from number N on were read, and how many refused.
class TBatchReader final : public TFileReader {
 public:
  TBatchReader(const TSource& source, const TFormatCase& files, const std::string& folder, std::size_t step)
      : source_(source), files_(files), folder_(folder), step_(step), places_(PlacesIn(files)) {
    files.PutInto(folder);
  }

  std::vector<TOLEDBTableRow> Tables() override { return {}; }
  TFileTable Structure(const std::string& /*table*/) override { return {}; }
  TFileRows Rows(const std::string& first, std::int64_t count) override {
    std::int64_t read = 0, refused = 0;
    const auto end = std::min(static_cast<std::size_t>(std::stol(first) + count), places_.size() * 3);
    for (auto i = static_cast<std::size_t>(std::stol(first)); i < end; i += step_) (Reads(i) ? read : refused) += 1;
    return {.rows = {{read, refused, static_cast<std::int64_t>(places_.size() * 3)}}, .numbers = {}};
  }

 private:
  bool Reads(std::size_t number) const {
    const auto [file, at] = places_[number / 3];
    const auto& [name, bytes] = files_.files[file];
    files_.With(name, Changed(bytes, at, number % 3)).PutInto(folder_);
    int refused = 0;
    refused += Refused(folder_, [&] { refused += source_.read(folder_); });
    return refused == 0;
  }

  const TSource& source_;
  const TFormatCase& files_;
  const std::string folder_;
  std::size_t step_;
  std::vector<TPlace> places_;
};

class SpoiltFiles : public ::testing::TestWithParam<TSource> {};

TEST_P(SpoiltFiles, EndInRowsOrInAMessage) {
  constexpr std::int64_t kBatch = 300;
  const TSource& source = GetParam();
  const TScratchFolder folder;
  const TFormatCase files = FormatCase(source.name);
  const TChildLimits limits{.silence = std::chrono::seconds(3), .memory = std::uint64_t{1} << 30U};
  // What takes a library its time is read less often.
  const auto reader = ReadInOwnProcess(
      [&] { return std::make_unique<TBatchReader>(source, files, folder.Path(), source.library ? 11 : 1); },
      folder.Path(), "the library", limits);
  std::int64_t read = 0, refused = 0, ended = 0, count = 1;
  for (std::int64_t first = 0; first < count; first += kBatch) {
    const std::string message = MessageOf([&] {
      const TMemDataset::TRow row = reader->Rows(std::to_string(first), kBatch).rows.at(0);
      read += VarToInt(row[0]);
      refused += VarToInt(row[1]);
      count = VarToInt(row[2]);
    });
    ended += message == "nothing raised" ? 0 : 1;
    EXPECT_TRUE(message == "nothing raised" || source.library) << first << ": " << message;
  }
  EXPECT_GT(read, 100);
  EXPECT_EQ(refused == 0, source.takes_all);
  EXPECT_LT(ended, count / kBatch / 2 + 1) << "most must be read to the end";
}

TRead ReadExcel(const std::string& file) {
  return ByReader([](const auto& path) { return OpenExcelFileHere(path, true, true); }, file);
}

const TSource kSources[] = {
    {"dbase-iii", ByReader([](const std::string& path) { return OpenDBaseFolder(path); })},
    {"dbase-iv", ByReader([](const std::string& path) { return OpenDBaseFolder(path); })},
    {"foxpro-2", ByReader([](const std::string& path) { return OpenFoxProFolder(path); })},
    {"foxpro-visual", ByReader([](const std::string& path) { return OpenFoxProFolder(path); })},
    {"paradox-types", ByEngine<TDBConnParadox>()},
#ifdef VELMORA_MDB
    {"jet4", ByReader(OpenMdbFileHere, "shop.mdb"), true},
    {"jet3", ByReader(OpenMdbFileHere, "shop.mdb"), true},
#endif
    {"excel-5", ReadExcel("shop.xls")},
    {"excel-95", ReadExcel("shop.xls")},
    {"excel-97", ReadExcel("shop.xls")},
    {"excel-2007", ReadExcel("shop.xlsx")},
#ifdef VELMORA_LOTUS
    {"lotus", ByReader(OpenLotusFileHere, "shop.wk4"), true},
#endif
    {"text-delimited", ByEngine<TDBConnTextDelim>(std::string(","), true)},
    {"text-fixed", ByEngine<TDBConnTextFixed>(true), false, true},
};

INSTANTIATE_TEST_SUITE_P(All, SpoiltFiles, ::testing::ValuesIn(kSources), [](const auto& test) {
  std::string name = test.param.name;
  std::ranges::replace(name, '-', '_');
  return name;
});

}  // namespace
}  // namespace velmora::testing

// SPDX-License-Identifier: GPL-3.0-or-later

// Readers over libraries, in processes of their own, give what they give in this one.

#include "sandbox/OwnProcessReaders.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>

#include "support/FormatCase.h"
#include "support/MessageOf.h"
#include "support/ReaderText.h"
#include "support/ScratchFolder.h"
#include "util/Lists.h"
#include "util/Text.h"

namespace velmora::testing {
namespace {

using ::testing::HasSubstr;

struct TSource {
  const char *name, *ask, *file;
  std::unique_ptr<TFileReader> (*open)(const std::string& path);
};

const std::vector<TSource> kSources = {
#ifdef VELMORA_MDB
    {"jet4", "access shop.mdb", "shop.mdb", OpenMdbFile},
#endif
    {"excel-5", "excel shop.xls HDR IMEX", "shop.xls",
     [](const auto& path) { return OpenExcelFile(path, true, true); }},
#ifdef VELMORA_LOTUS
    {"lotus", "lotus shop.wk4", "shop.wk4", OpenLotusFile},
#endif
};

TEST(OwnProcessReadersTest, TablesRowsAndFaults) {
  for (const TSource& source : kSources) {
    SCOPED_TRACE(source.name);
    const TScratchFolder folder;
    const std::string path = folder / source.file;
    const TFormatCase files = FormatCase(source.name);
    const auto ask =
        std::ranges::find_if(files.asks, [&](const auto& each) { return JoinList(each.words, " ") == source.ask; });
    files.PutInto(folder.Path());
    const auto reader = source.open(path);
    EXPECT_EQ(ReaderText(*reader), ask->answer);
    const std::string table = reader->Tables().at(0).TABLE_NAME;
    EXPECT_EQ(reader->Rows(table, 1).rows.size(), 1U);
    EXPECT_EQ(reader->Rows(table, 0).rows.size(), 0U);
    EXPECT_EQ(reader->Structure(LowerText(table)).columns[0].TABLE_NAME, table) << "names ignore case";
    EXPECT_THAT(MessageOf([&] { reader->Structure("none"); }), HasSubstr(path));

    std::filesystem::remove(path);
    EXPECT_EQ(MessageOf([&] { source.open(path); }), "Cannot open " + path + ": No such file or directory");
    std::filesystem::create_directory(path);
    EXPECT_EQ(MessageOf([&] { source.open(path); }), "Cannot open " + path + ": it is no regular file");
    std::filesystem::remove(path);
    mkfifo(path.c_str(), 0600);
    EXPECT_EQ(MessageOf([&] { source.open(path); }), "Cannot open " + path + ": it is no regular file");
  }
}

#ifdef VELMORA_MDB
TEST(OwnProcessReadersTest, OthersMayHaveAnAccessFileOpen) {
  const TScratchFolder folder;
  FormatCase("jet4").PutInto(folder.Path());
  const std::string path = folder / "shop.mdb";
  const int writer = open(path.c_str(), O_RDWR);
  ASSERT_EQ(flock(writer, LOCK_EX), 0);
  EXPECT_EQ(OpenMdbFile(path)->Tables().size(), 2U);
  close(writer);
  const auto reader = OpenMdbFile(path);
  const int later = open(path.c_str(), O_RDWR);
  EXPECT_EQ(flock(later, LOCK_EX | LOCK_NB), 0) << "a reader holds nobody off";
  close(later);
}
#endif

}  // namespace
}  // namespace velmora::testing

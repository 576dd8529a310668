// SPDX-License-Identifier: GPL-3.0-or-later

// New Access files; and what we write and read, held against an independent reader.

#include <gtest/gtest.h>
#include <stdio.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>

#include "formats/mdb/MdbReader.h"
#include "formats/mdb/MdbWriter.h"
#include "support/AceFile.h"
#include "support/FormatCase.h"
#include "support/MessageOf.h"
#include "support/ScratchFolder.h"
#include "util/Files.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora::testing {
namespace {

namespace fs = std::filesystem;

class MdbWriterTest : public ::testing::Test {
 protected:
  std::string Failure(const std::function<void()>& body) const { return StrReplace(MessageOf(body), path_, "FILE"); }
  std::string CreateFailure() const {
    return Failure([&] { CreateMdbFile(path_); });
  }

  TScratchFolder folder_;
  const std::string path_ = folder_ / "shop.mdb";
};

TEST_F(MdbWriterTest, NewDatabase) {
  CreateMdbFile(path_);
  EXPECT_EQ(fs::file_size(path_), 45056U);
  EXPECT_TRUE(OpenMdbFileHere(path_)->Tables().empty());
  EXPECT_EQ(std::distance(fs::directory_iterator(folder_.Path()), fs::directory_iterator()), 1);
}

TEST_F(MdbWriterTest, NothingIsReplaced) {
  const std::string exists = "Cannot create FILE: there is a file of that name";
  PutFile(path_, "mine");
  EXPECT_EQ(CreateFailure(), exists);
  EXPECT_EQ(ReadFileBytes(path_), "mine");
  fs::remove(path_);
  fs::create_symlink(folder_ / "nowhere", path_);
  EXPECT_EQ(CreateFailure(), exists);
  fs::remove(path_);
  fs::create_directory(path_);
  EXPECT_EQ(CreateFailure(), exists);
}

TEST_F(MdbWriterTest, WhereNothingCanBeWritten) {
  EXPECT_EQ(Failure([&] { CreateMdbFile(path_ + "/x.mdb"); }), "Cannot write FILE/x.mdb: No such file or directory");
  if (geteuid() == 0) GTEST_SKIP() << "nothing is protected from the superuser";
  fs::create_directory(path_);
  fs::permissions(path_, fs::perms::owner_read | fs::perms::owner_exec);
  EXPECT_EQ(Failure([&] { CreateMdbFile(path_ + "/x.mdb"); }), "Cannot write FILE/x.mdb: Permission denied");
}

class MdbNodeTest : public MdbWriterTest {
 protected:
  void SetUp() override {
    const char* cache = std::getenv("XDG_CACHE_HOME");
    const char* home = std::getenv("HOME");
    package_ =
        (cache != nullptr ? std::string(cache) : std::string(home != nullptr ? home : "") + "/.cache") + "/velmora/npm";
    if (std::system("node --version >/dev/null 2>&1") != 0 || !fs::exists(package_ + "/node_modules/mdb-reader"))
      GTEST_SKIP() << "not held against a second reader: that needs node, and npm install --prefix '" << package_
                   << "' mdb-reader";
  }

  // The file as npm's mdb-reader shows it.
  std::string Shown() const {
    const std::string command =
        "node '" VELMORA_SOURCE_DIR "/tests/formats/data/read-mdb.mjs' '" + package_ + "' '" + path_ + "' 2>&1";
    FILE* node = popen(command.c_str(), "r");
    std::string text(1 << 20, '\0');
    text.resize(node == nullptr ? 0 : fread(text.data(), 1, text.size(), node));
    EXPECT_EQ(node == nullptr ? -1 : pclose(node), 0) << text;
    return text;
  }

  std::string package_;
};

TEST_F(MdbNodeTest, NewDatabase) {
  CreateMdbFile(path_);
  EXPECT_EQ(Shown(), "");
}

// Our rows as that reader's program shows them.
std::string OurRows(TFileReader& reader, const std::string& table) {
  const std::vector<TFieldDef> fields = reader.Structure(table).fields;
  std::string text;
  for (const TMemDataset::TRow& row : reader.Rows(table, kAllRows).rows)
    for (std::size_t i = 0; i < row.size(); ++i) {
      const bool bytes = fields[i].kind == EFieldKind::Blob || fields[i].kind == EFieldKind::VarBytes;
      std::string shown = VarIsNull(row[i]) ? "-" : bytes ? "" : VarToText(row[i]);
      if (bytes && !VarIsNull(row[i]))
        for (const char byte : VarToText(row[i])) shown += Format("%02x", static_cast<unsigned char>(byte));
      text += shown + (i + 1 < row.size() ? "|" : "\n");
    }
  return text;
}

TEST_F(MdbNodeTest, SameRows) {
  for (const auto& [name, number] : {std::pair{"jet4", "|number(12,3)"}, {"jet3", ""}}) {
    PutFile(path_, FormatCase(name).Bytes("shop.mdb"));
    const auto reader = OpenMdbFileHere(path_);
    const std::string expected = "Kinds: id|yes|tiny|small|price|single|double|day|bytes|naïve|fixed|note|object|guid" +
                                 std::string(number) + "\n" + OurRows(*reader, "Kinds") + "Words: id|word|left|late\n" +
                                 OurRows(*reader, "Words");
    EXPECT_EQ(Shown(), expected);
    if (std::string_view(number).empty()) continue;
    PutFile(path_, AsAce(FormatCase(name).Bytes("shop.mdb")));
    EXPECT_EQ(Shown(), expected) << "as .accdb";
  }
}

}  // namespace
}  // namespace velmora::testing

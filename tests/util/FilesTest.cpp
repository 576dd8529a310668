// SPDX-License-Identifier: GPL-3.0-or-later
#include "util/Files.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <thread>

#include "support/MessageOf.h"
#include "support/ScratchFolder.h"
#include "support/SizeLimit.h"

namespace velmora {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing::MessageOf;
using ::testing::StartsWith;

unsigned ModeOf(const std::string& path) {
  struct stat info {};
  return stat(path.c_str(), &info) == 0 ? info.st_mode & 07777U : 0;
}

TStringList EntriesOf(const std::string& folder) {
  TStringList names;
  for (const auto& entry : fs::directory_iterator(folder)) names.push_back(entry.path().filename().string());
  std::sort(names.begin(), names.end());
  return names;
}

class FilesTest : public ::testing::Test {
 protected:
  testing::TScratchFolder folder_;
  const std::string file_ = folder_ / "file.txt";
};

TEST_F(FilesTest, TextsComeBackByteForByte) {
  const std::string large(300000, 'x');
  for (const std::string& text : {std::string(), std::string("a\r\nb\0c\xE9\n", 8), large}) {
    WriteFileText(file_, text);
    EXPECT_TRUE(ReadFileText(file_) == text) << text.size();
  }
  EXPECT_THAT(EntriesOf(folder_.Path()), ElementsAre("file.txt"));
}

TEST_F(FilesTest, AByteOrderMarkIsSkipped) {
  WriteFileText(file_, "\xEF\xBB\xBFx\xEF\xBB\xBF");
  EXPECT_EQ(ReadFileText(file_), "x\xEF\xBB\xBF");
  EXPECT_EQ(ReadFileBytes(file_), "\xEF\xBB\xBFx\xEF\xBB\xBF") << "but not where bytes are read as they are";
  EXPECT_EQ(ReadFileBytes(file_, 4), "\xEF\xBB\xBFx");
  WriteFileText(file_, "\xEF\xBB");
  EXPECT_EQ(ReadFileText(file_), "\xEF\xBB");
}

TEST_F(FilesTest, ReadsFilesThatTellNoSize) { EXPECT_THAT(ReadFileText("/proc/self/status"), StartsWith("Name:")); }

TEST_F(FilesTest, AppendsToAFileOrStartsIt) {
  WriteFileText(file_, "a", true);
  WriteFileText(file_, "b", true);
  EXPECT_EQ(ReadFileText(file_), "ab");
}

TEST_F(FilesTest, FailuresNameTheFileAndTheReason) {
  const std::string missing = folder_ / "no/file";
  EXPECT_EQ(MessageOf([&] { ReadFileText(missing); }), "Cannot read " + missing + ": No such file or directory");
  EXPECT_EQ(MessageOf([&] { ReadFileText(folder_.Path()); }), "Cannot read " + folder_.Path() + ": Is a directory");
  for (const bool append : {false, true}) {
    EXPECT_EQ(MessageOf([&] { WriteFileText(missing, "", append); }),
              "Cannot write " + missing + ": No such file or directory");
    EXPECT_EQ(MessageOf([&] { WriteFileText(folder_.Path(), "", append); }),
              "Cannot write " + folder_.Path() + ": Is a directory");
  }
  EXPECT_THAT(EntriesOf(folder_.Path()), IsEmpty());
}

TEST_F(FilesTest, NewFilesGetTheModeAndOldOnesKeepTheirs) {
  const mode_t mask = umask(022);
  WriteFileText(file_, "a");
  EXPECT_EQ(ModeOf(file_), 0644U);
  const std::string secret = folder_ / "secret";
  WriteFileText(secret, "a", false, 0600);
  EXPECT_EQ(ModeOf(secret), 0600U);
  chmod(file_.c_str(), 0664);
  WriteFileText(file_, "b");
  EXPECT_EQ(ModeOf(file_), 0664U);
  WriteFileText(file_, "c", false, 0600);
  EXPECT_EQ(ModeOf(file_), 0600U) << "what is meant for its owner alone does not stay open to others";
  umask(mask);
}

TEST_F(FilesTest, LinksStayAndTheFilesBehindThemAreReplaced) {
  fs::create_directory(folder_ / "real");
  fs::create_symlink("real/file", folder_ / "inner");
  fs::create_symlink("inner", folder_ / "outer");
  for (const char* text : {"new", "replaced"}) {  // at first the link leads nowhere
    WriteFileText(folder_ / "outer", text);
    EXPECT_EQ(ReadFileText(folder_ / "real/file"), text);
  }
  EXPECT_TRUE(fs::is_symlink(folder_ / "outer"));
  EXPECT_THAT(EntriesOf(folder_ / "real"), ElementsAre("file"));

  fs::create_symlink("circle", folder_ / "circle");
  EXPECT_THAT(MessageOf([&] { WriteFileText(folder_ / "circle", "x"); }), StartsWith("Cannot write "));
}

TEST_F(FilesTest, LinksAreNotFollowedWhereOthersMayHaveMadeThem) {
  WriteFileText(file_, "old");
  fs::create_directory(folder_ / "open");
  fs::create_symlink(file_, folder_ / "open/link");
  fs::create_symlink(folder_.Path(), folder_ / "open/way");
  const auto refusal = [](const std::string& path) {
    return "Cannot write " + path +
           ": it is a link in a folder that others may write; name the file itself, or another folder";
  };
  chmod((folder_ / "open").c_str(), 01777);
  EXPECT_EQ(MessageOf([&] { WriteFileText(folder_ / "open/link", "new"); }), refusal(folder_ / "open/link"));
  EXPECT_EQ(MessageOf([&] { WriteFileText(folder_ / "open/way/file.txt", "new"); }), refusal(folder_ / "open/way"));
  EXPECT_EQ(ReadFileText(file_), "old");
  chmod((folder_ / "open").c_str(), 0770);
  WriteFileText(folder_ / "open/link", "ours among a group");
  EXPECT_EQ(ReadFileText(file_), "ours among a group");
}

// Beside files, links and pipes of another user, which only the superuser can make.
TEST_F(FilesTest, NothingIsHandedToAnotherUser) {
  if (geteuid() != 0) GTEST_SKIP() << "only the superuser can give files away";
  constexpr uid_t kNobody = 65534;
  const auto owner = [this] {
    struct stat info {};
    return stat(file_.c_str(), &info) == 0 ? info.st_uid : uid_t(-1);
  };
  struct TCase {
    mode_t folder;
    unsigned mode;
    bool stays;  // with its owner
  };
  for (const TCase& c : {TCase{0755, 0666, true}, {0775, 0666, true}, {01777, 0666, false}, {0755, 0600, false}}) {
    chmod(folder_.Path().c_str(), 0755);
    WriteFileText(file_, "old");
    ASSERT_EQ(chown(file_.c_str(), kNobody, kNobody), 0);
    chmod(file_.c_str(), 0666);
    chmod(folder_.Path().c_str(), c.folder);
    WriteFileText(file_, "new", false, c.mode);
    EXPECT_EQ(owner(), c.stays ? kNobody : 0) << c.folder << ' ' << c.mode;
    EXPECT_EQ(ModeOf(file_) & 022, c.stays ? 022 : 0) << c.folder << ' ' << c.mode;
    fs::remove(file_);
  }
  fs::create_symlink("elsewhere", file_);
  ASSERT_EQ(lchown(file_.c_str(), kNobody, kNobody), 0);
  chmod(folder_.Path().c_str(), 0770);
  EXPECT_THAT(MessageOf([&] { WriteFileText(file_, "x"); }), StartsWith("Cannot write " + file_ + ": it is a link"));
  fs::remove(file_);
  ASSERT_EQ(mkfifo(file_.c_str(), 0666), 0);
  ASSERT_EQ(chown(file_.c_str(), kNobody, kNobody), 0);
  EXPECT_EQ(MessageOf([&] { WriteFileText(file_, "x"); }), "Cannot write " + file_ + ": it is a pipe of another user");
}

TEST_F(FilesTest, WritesStraightToWhatIsNoFile) {
  const std::string fifo = folder_ / "fifo";
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  std::string received;
  std::thread reader([&] { received = ReadFileText(fifo); });
  WriteFileText(fifo, "through the pipe");
  reader.join();
  EXPECT_EQ(received, "through the pipe");
  EXPECT_TRUE(fs::is_fifo(fifo));
  WriteFileText("/dev/null", "gone");
  EXPECT_TRUE(fs::is_character_file("/dev/null"));
}

TEST_F(FilesTest, AFileThatIsOpenAlreadyIsAddedToByItsNumber) {
  WriteFileText(file_, "before ");
  const int fd = open(file_.c_str(), O_WRONLY | O_APPEND | O_CLOEXEC);
  ASSERT_GE(fd, 0);
  WriteFileText("/dev/fd/" + std::to_string(fd), "after");
  close(fd);
  EXPECT_EQ(ReadFileText(file_), "before after");
}

TEST_F(FilesTest, AFailedWriteLeavesTheOldFileWholeAndNothingBesideIt) {
  WriteFileText(file_, "old");
  for (const bool append : {false, true}) {
    std::string message;
    {
      const testing::TSizeLimit limit(4096);
      message = MessageOf([&] { WriteFileText(file_, std::string(10000, 'x'), append); });
    }
    EXPECT_EQ(message, "Cannot write " + file_ + ": File too large");
    EXPECT_EQ(ReadFileText(file_), "old");
    EXPECT_THAT(EntriesOf(folder_.Path()), ElementsAre("file.txt"));
  }
}

TEST_F(FilesTest, OldLeftoversOfKilledWritersGoWithTheNextWrite) {
  for (const char* name : {".~0123abcd", ".~89efaaaa", ".~0123ABCD", ".~0123abcd5", ".~notes"})
    WriteFileText(folder_ / name, "x", true);
  for (const char* old : {".~0123abcd", ".~0123ABCD", ".~0123abcd5", ".~notes"})
    fs::last_write_time(folder_ / old, fs::file_time_type::clock::now() - std::chrono::hours(25));
  fs::create_directory(folder_ / ".~00000000");
  WriteFileText(file_, "new");
  EXPECT_THAT(EntriesOf(folder_.Path()),
              ElementsAre(".~00000000", ".~0123ABCD", ".~0123abcd5", ".~89efaaaa", ".~notes", "file.txt"));
}

TEST_F(FilesTest, WriteProtectedFilesStay) {
  if (geteuid() == 0) GTEST_SKIP() << "nothing is protected from the superuser";
  WriteFileText(file_, "old");
  chmod(file_.c_str(), 0444);
  EXPECT_EQ(MessageOf([&] { WriteFileText(file_, "new"); }), "Cannot write " + file_ + ": Permission denied");
  EXPECT_EQ(ReadFileText(file_), "old");
}

class FindFilesTest : public FilesTest {
 protected:
  FindFilesTest() {
    fs::create_directories(folder_ / "sub.txt/deep");
    fs::create_directory_symlink(".", folder_ / "sub.txt/circle");
    for (const char* name : {"b.txt", "A.TXT", "a.txt", "c.csv", "plain", "b~.txt", "\xC3\xA9.txt", ".txt", "...",
                             "sub.txt/x", "sub.txt/deep/y.db"})
      WriteFileText(folder_ / name, "");
  }

  // What the mask finds, without the folder in front.
  TStringList Found(const std::string& mask, bool recurse = false) const {
    TStringList list;
    const std::size_t count = FindFiles(list, folder_ / mask, recurse, true);
    EXPECT_EQ(count, list.size());
    for (std::string& line : list) {
      EXPECT_THAT(line, StartsWith(folder_.Path() + "/"));
      line.erase(0, folder_.Path().size() + 1);
    }
    return list;
  }
};

TEST_F(FindFilesTest, MasksIgnoreCaseAndFilesComeByName) {
  struct TCase {
    std::string_view mask;
    TStringList names;
  };
  const TCase cases[] = {
      {"*.txt", {".txt", "A.TXT", "a.txt", "b.txt", "\xC3\xA9.txt"}},
      {"?.TxT", {"A.TXT", "a.txt", "b.txt", "\xC3\xA9.txt"}},
      {"*.*", {".txt", "A.TXT", "a.txt", "b.txt", "c.csv", "plain", "\xC3\xA9.txt"}},
      {"*", {".txt", "A.TXT", "a.txt", "b.txt", "c.csv", "plain", "\xC3\xA9.txt"}},
      {"PLAIN", {"plain"}},
      {"*l*i*", {"plain"}},
      {"plain?", {}},
      {"no/*.*", {}},
      {"", {}},
  };
  for (const TCase& c : cases) EXPECT_EQ(Found(std::string(c.mask)), c.names) << c.mask;
}

TEST_F(FindFilesTest, MatchingFoldersAreGoneThroughWhole) {
  EXPECT_THAT(Found("s*.txt", true), ElementsAre("sub.txt/deep/y.db", "sub.txt/x"));
  EXPECT_THAT(Found("*.csv", true), ElementsAre("c.csv"));
}

TEST_F(FindFilesTest, AddsToTheListUnlessItIsCleared) {
  TStringList list = {"old"};
  EXPECT_EQ(FindFiles(list, folder_ / "*.none", false, false), 1U);
  EXPECT_EQ(FindFiles(list, folder_ / "*.csv", false, false), 2U);
  EXPECT_EQ(FindFiles(list, folder_ / "*.none", false, true), 0U);
}

TEST(FoldersTest, JoinsFolderAndName) {
  EXPECT_EQ(JoinPath("a", "b"), "a/b");
  EXPECT_EQ(JoinPath("a/", "b"), "a/b");
  EXPECT_EQ(JoinPath("a/", "/b"), "a/b");
  EXPECT_EQ(JoinPath("/", "b"), "/b");
  EXPECT_EQ(JoinPath("", "b"), "b");
  EXPECT_TRUE(fs::is_directory(ExeFolder()));
  EXPECT_EQ(ExeFolder().back(), '/');
}

}  // namespace
}  // namespace velmora

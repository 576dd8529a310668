// SPDX-License-Identifier: GPL-3.0-or-later
#include "persist/Settings.h"

#include <gmock/gmock.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <map>

#include "persist/UserFolder.h"
#include "support/MessageOf.h"
#include "support/ScratchFolder.h"
#include "util/Errors.h"
#include "util/Files.h"
#include "util/Format.h"

namespace velmora {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing::MessageOf;

class TMemoryOptions : public TOptionStore {
 public:
  std::map<std::string, std::string> texts;
  std::map<std::string, std::int64_t> integers;
  TStringList written;
  bool fails = false;

  std::optional<std::string> ReadText(const std::string& name) const override {
    return texts.contains(name) ? std::optional(texts.at(name)) : std::nullopt;
  }
  std::optional<std::int64_t> ReadInteger(const std::string& name) const override {
    return integers.contains(name) ? std::optional(integers.at(name)) : std::nullopt;
  }
  void WriteText(const std::string& name, const std::string& value) override { written.push_back(name + "=" + value); }
  void WriteInteger(const std::string& name, std::int64_t value) override {
    written.push_back(name + "=" + std::to_string(value));
  }
  void Flush() override {
    if (fails) RaiseError("no room");
    written.emplace_back("flush");
  }
};

class SettingsTest : public ::testing::Test {
 protected:
  void Save() { SaveSettings(file_, window_, recent_, TOptions(), options_); }
  // As a fresh start of the program, whose form has a place of its own.
  void Load() {
    window_ = {kWindowNormal, 1, 2, 3, 4};
    recent_ = {};
    LoadSettings(file_, window_, recent_);
  }
  std::string Window() const {
    const auto& [state, left, top, width, height] = window_;
    return Format("%d: %d %d %d %d", state, left, top, width, height);
  }
  TStringList Recent() const {
    TStringList list;
    recent_.RecentRead(list);
    return list;
  }

  testing::TScratchFolder folder_;
  std::string file_ = folder_ / "Velmora.settings";
  TWindowPlace window_;
  TRecentList recent_;
  TMemoryOptions options_;
};

TEST(RecentListTest, TheLatestStandsAtTheHead) {
  TRecentList list;
  for (const char* path : {"/a", "/b", "/c", "/d", "/e", "/f", "/c", "/D"}) list.RecentAdd(path);
  TStringList paths;
  list.RecentRead(paths);
  EXPECT_THAT(paths, ElementsAre("/D", "/c", "/f", "/e", "/b"));
  EXPECT_EQ(list.Caption(1), "&2 /c");
  list.RecentShow({"1", "2", "3", "4", "5", "6"});
  EXPECT_EQ(list.Count(), 5U);
  list.RecentShow({});
  EXPECT_EQ(list.Count(), 0U);
}

TEST_F(SettingsTest, ComeBack) {
  window_ = {kWindowNormal, -10, 20, 800, 600};
  recent_.RecentShow({"/a b/\xC4\x8D.vlt", "/cut;here", "\xFF no text", "/<&>"});
  Save();
  Load();
  EXPECT_EQ(Window(), "0: -10 20 800 600");
  EXPECT_THAT(Recent(), ElementsAre("/a b/\xC4\x8D.vlt", "/cut", "/<&>"));
  recent_.RecentShow({});
  Save();
  EXPECT_NE(ReadFileText(file_).find("<RecentDocuments"), std::string::npos) << "the parent stands without entries too";
}

TEST_F(SettingsTest, OnlyANormalWindowKeepsItsPlace) {
  for (const auto& [state, loaded] : {std::pair(kWindowMaximised, "2: 1 2 3 4"), {kWindowMinimised, "0: 1 2 3 4"}}) {
    window_ = {state, 10, 20, 800, 600};
    Save();
    EXPECT_EQ(ReadFileText(file_).find("<Left>"), std::string::npos);
    Load();
    EXPECT_EQ(Window(), loaded);
  }
}

TEST_F(SettingsTest, LoadingEndsInSilenceAtTheFirstFault) {
  constexpr char kRecent[] = "<RecentDocuments><Document><filename>/a</filename></Document></RecentDocuments></root>";
  const struct {
    const char *begin, *window;
    std::size_t recent;
  } kCases[] = {
      {"<root", "0: 1 2 3 4", 0},
      {"<root>", "0: 1 2 3 4", 0},
      {"<root><Window><State>0</State></Window>", "0: 1 2 3 4", 0},
      {"<root><Window><State>0</State><Left>7</Left><Top>8</Top><Width>x</Width></Window>", "0: 7 8 3 4", 0},
      {"<root><Window><State>2</State></Window>", "2: 1 2 3 4", 1},
      {"<root><Window><State>9</State></Window>", "0: 1 2 3 4", 1},
      {"<root><Window><State>99999999999</State></Window>", "0: 1 2 3 4", 0},
  };
  for (const auto& c : kCases) {
    WriteFileText(file_, std::string(c.begin) + kRecent);
    Load();
    EXPECT_EQ(Window(), c.window) << c.begin;
    EXPECT_EQ(Recent().size(), c.recent) << c.begin;
  }
  WriteFileText(file_, "");
  for (const std::string& file : {file_, folder_ / "none", folder_.Path()}) {
    file_ = file;
    Load();
    EXPECT_THAT(Recent(), IsEmpty());
  }
}

TEST_F(SettingsTest, ADamagedFileNeverRaises) {
  window_ = {kWindowNormal, 10, 20, 800, 600};
  recent_.RecentShow({"/a", "/b"});
  Save();
  const std::string text = ReadFileText(file_);
  for (std::size_t i = 0; i < text.size(); ++i) {
    std::string flipped = text;
    flipped[i] = static_cast<char>(flipped[i] ^ 0x55);
    for (const std::string& damaged : {text.substr(0, i), flipped}) {
      std::ofstream(file_) << damaged;  // nobody waits for the disk here
      EXPECT_NO_THROW(Load()) << i;
    }
  }
}

TEST_F(SettingsTest, AFileThatCannotBeWrittenIsPassedOverButOptionsAreNot) {
  WriteFileText(folder_ / "file", "");
  file_ = folder_ / "file/Velmora.settings";
  Save();
  EXPECT_EQ(options_.written.back(), "flush");
  options_.fails = true;
  EXPECT_EQ(MessageOf([&] { Save(); }), "no room");
}

TEST_F(SettingsTest, AnInstalledProgramKeepsThemWithTheUser) {
  std::filesystem::create_directories(folder_ / "usr/bin");
  setenv("XDG_CONFIG_HOME", (folder_ / "config").c_str(), 1);
  EXPECT_EQ(SettingsFileOf(folder_ / "usr/bin/", folder_ / "usr/../usr/bin"),
            folder_ / "config/velmora/Velmora.settings");
  EXPECT_EQ(SettingsFileOf(folder_.Path() + "/", folder_ / "usr/bin"), file_);
  EXPECT_EQ(SettingsFileOf(folder_.Path() + "/", folder_ / "none"), file_);
  file_ = SettingsFileOf(folder_ / "usr/bin/", folder_ / "usr/bin");
  recent_.RecentAdd("/a");
  Save();
  Load();
  EXPECT_THAT(Recent(), ElementsAre("/a")) << "the folder is made when it is needed";
}

TEST(UserFolderTest, OnlyAbsolutePathsCount) {
  setenv("HOME", "/home/u", 1);
  for (const auto& [config, folder] :
       {std::pair("/etc/u", "/etc/u/velmora"), {"rel", "/home/u/.config/velmora"}, {"", "/home/u/.config/velmora"}}) {
    setenv("XDG_CONFIG_HOME", config, 1);
    EXPECT_EQ(UserConfigFolder(), folder);
    EXPECT_EQ(UserConfigFile("x"), std::string(folder) + "/x");
  }
}

// --- Options
constexpr char kStandardOptions[] =
    "DropExtraColumns=0 DropExtraIndices=0 DropExtraConstraints=0 DropExtraTables=0 SyncRunUnprompted=0 "
    "ConnectOnStartup=0 ScriptToClipboard=0 AllowTblTypeChg=1 UseBackticks=0 VerboseLog=0 SelectSyncTables=1 "
    "NoForeignKeyChecks=0 LogFontName=Tahoma LogFontSize=8 ScriptFontName=Courier New ScriptFontSize=9 flush";

TEST(OptionsTest, AFirstStartSavesTheStandardValuesInOrder) {
  for (const TOptions& options : {TOptions(), LoadOptions(TMemoryOptions())}) {
    TMemoryOptions store;
    SaveOptions(options, store);
    EXPECT_EQ(JoinList(store.written, " "), kStandardOptions);
  }
}

TEST(OptionsTest, OnlyTheIntegerOneIsTrueAndOddValuesAreStandard) {
  TMemoryOptions store;
  store.integers = {{"UseBackticks", 1}, {"VerboseLog", 2},   {"AllowTblTypeChg", -1},
                    {"LogFontName", 7},  {"LogFontSize", -3}, {"ScriptFontSize", 1LL << 40}};
  store.texts = {{"SelectSyncTables", "0"}, {"ScriptFontName", ""}};
  SaveOptions(LoadOptions(store), store);
  EXPECT_EQ(JoinList(store.written, " "),
            "DropExtraColumns=0 DropExtraIndices=0 DropExtraConstraints=0 DropExtraTables=0 SyncRunUnprompted=0 "
            "ConnectOnStartup=0 ScriptToClipboard=0 AllowTblTypeChg=0 UseBackticks=1 VerboseLog=0 SelectSyncTables=1 "
            "NoForeignKeyChecks=0 LogFontName=Tahoma LogFontSize=-3 ScriptFontName= ScriptFontSize=9 flush");
}

TEST(OptionsTest, TheUsersFileKeepsWhatIsNotOurs) {
  const testing::TScratchFolder folder;
  const std::string path = folder / "sub/options.values";
  {
    TValueStore other(path);
    other.SetInteger("Other", "x", 5);
    other.SetText(kOptionsKey, "LogFontName", "Serif");
    other.Save();
  }
  TUserOptions store(path);
  TOptions options = LoadOptions(store);
  EXPECT_EQ(options.LogFontName, "Serif");
  options.UseBackticks = true;
  SaveOptions(options, store);
  EXPECT_TRUE(LoadOptions(TUserOptions(path)).UseBackticks);
  EXPECT_EQ(TValueStore(path).Integer("Other", "x"), 5);

  WriteFileText(folder / "file", "");
  TUserOptions nowhere(folder / "file/options.values");
  EXPECT_THAT(MessageOf([&] { SaveOptions(options, nowhere); }), ::testing::StartsWith("Cannot write "));
  EXPECT_FALSE(LoadOptions(nowhere).UseBackticks) << "what could not be written is not there";
}

}  // namespace
}  // namespace velmora

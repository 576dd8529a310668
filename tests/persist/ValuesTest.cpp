// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include "persist/MachineValues.h"
#include "persist/ScrambledText.h"
#include "persist/ValueStore.h"
#include "support/MessageOf.h"
#include "support/ScratchFolder.h"
#include "util/Files.h"

namespace velmora {
namespace {

TEST(ScrambledTextTest, IsItsOwnInverseAndFlipsEveryHighBit) {
  std::string all;
  for (int i = 0; i < 256; ++i) all += static_cast<char>(i);
  const std::string scrambled = DecodeStr(all);
  EXPECT_EQ(DecodeStr(scrambled), all);
  for (std::size_t i = 0; i < all.size(); ++i) EXPECT_LT(all[i] ^ scrambled[i], 0) << i;
  EXPECT_EQ(DecodeStr("AAAA").substr(0, 2), DecodeStr("AA")) << "each text starts anew";
  EXPECT_NE(DecodeStr("AAAA"), std::string(4, DecodeStr("A")[0])) << "the other bits vary";
}

TEST(ValueStoreTest, ValuesComeBack) {
  const testing::TScratchFolder folder;
  const std::string path = folder / "made/on/the/way";
  const std::string odd = "a\\b \"c\"\r\nd=[e] \xC3\xA4";
  {
    TValueStore store(path);
    store.SetText("A\\B", "text", odd);
    store.SetText("A\\B", "empty", "");
    store.SetInteger("A", "number", -12);
    store.Save();
  }
  const TValueStore store(path);
  EXPECT_EQ(store.Text("A\\B", "text"), odd);
  EXPECT_EQ(store.Text("A\\B", "empty"), "");
  EXPECT_EQ(store.Integer("A", "number"), -12);
  EXPECT_EQ(store.Text("A", "number"), std::nullopt) << "kinds are kept apart";
  EXPECT_EQ(store.Integer("A\\B", "text"), std::nullopt);
  EXPECT_FALSE(store.HasKey("B"));
}

TEST(ValueStoreTest, ADamagedFileLosesItsDamagedLinesOnly) {
  const testing::TScratchFolder folder;
  using std::string_literals::operator""s;
  WriteFileText(folder / "v", "before=1\n[K]\nopen=\"x\nhalf=\"a\\\"\nbad=1x\n=3\nnone\ngood=7\r\n\0\xFF=\n"s);
  const TValueStore store(folder / "v");
  EXPECT_EQ(store.Integer("K", "good"), 7);
  for (const char* name : {"open", "half", "bad", "none", "before"}) {
    EXPECT_EQ(store.Text("K", name), std::nullopt) << name;
    EXPECT_EQ(store.Integer("K", name), std::nullopt) << name;
  }
}

TEST(ValueStoreTest, WhatIsNoFileOrTooLargeIsEmpty) {
  const testing::TScratchFolder folder;
  WriteFileText(folder / "large", "[K]\nn=1\n" + std::string(1 << 20, '#'));
  for (const std::string& path : {folder / "large", folder.Path(), std::string("/dev/zero"), folder / "none"})
    EXPECT_FALSE(TValueStore(path).HasKey("K")) << path;
}

TEST(ValueStoreTest, NamesThatWouldNotComeBackAreRefused) {
  const testing::TScratchFolder folder;
  TValueStore store(folder / "v");
  for (const char* name : {"", "a=b", "[a", "a\nb", " a", "a "})
    EXPECT_EQ(testing::MessageOf([&] { store.SetInteger("K", name, 1); }),
              "A value cannot be named \"" + std::string(name) + "\"");
}

TEST(MachineValuesTest, KeyAndNameStandInOnePath) {
  const testing::TScratchFolder folder;
  const std::string file = folder / "machine.values";
  WriteFileText(file, "[SOFTWARE\\ORACLE]\nORACLE_HOME=\"/opt/oracle\"\n");
  EXPECT_EQ(ReadRegStringHKLM("SOFTWARE\\ORACLE\\ORACLE_HOME", file), "/opt/oracle");
  EXPECT_EQ(ReadRegStringHKLM("SOFTWARE\\ORACLE\\missing", file), "");
  EXPECT_EQ(testing::MessageOf([&] { ReadRegStringHKLM("ORACLE_HOME", file); }), "ReadRegStringHKLM - neispravan key");
  for (const std::string& where : {file, folder / "none"})
    EXPECT_EQ(testing::MessageOf([&] { ReadRegStringHKLM("SOFTWARE\\ORACLE", where); }),
              "ReadRegStringHKLM - ne postoji key");
}

}  // namespace
}  // namespace velmora

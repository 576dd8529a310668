// SPDX-License-Identifier: GPL-3.0-or-later
#include "persist/TaskPack.h"

#include <gtest/gtest.h>

#include "persist/Blowfish.h"
#include "persist/ZipItem.h"
#include "support/MessageOf.h"
#include "util/Errors.h"
#include "util/Files.h"
#include "util/Format.h"

namespace velmora {
namespace {

using testing::MessageOf;
using std::string_literals::operator""s;

std::string Bytes(std::string_view hex) {
  std::string bytes;
  for (std::size_t i = 0; i < hex.size(); i += 2)
    bytes += static_cast<char>(std::stoi(std::string(hex.substr(i, 2)), nullptr, 16));
  return bytes;
}

// What follows the magic in a file of tests/data/tasks, which others than this program have made.
std::string PackedFile(const std::string& name) {
  const std::string bytes = ReadFileBytes(std::string(VELMORA_SOURCE_DIR "/tests/data/tasks/") + name);
  EXPECT_EQ(bytes.substr(0, 4), kTaskMagic);
  return bytes.substr(4);
}

std::string Enciphered(const std::string& bytes) { return BlowfishEncrypted(bytes, TaskFileKey()); }

// A text whose archive is `over` bytes longer than a number of whole blocks.
std::string TextOfSize(std::size_t over) {
  std::string text = "<root>";
  for (char c = 'a'; ZipItem(text).size() % kBlowfishBlock != over; ++c) text += c;
  return text;
}

// Damage gives the text or one message, and never another text.
void ExpectTextOrMessage(const std::string& packed, const std::string& text, const std::string& what) {
  try {
    EXPECT_EQ(UnpackTask(packed), text) << what;
  } catch (const EVelmora& error) {
    EXPECT_STRNE(error.what(), "") << what;
  }
}

TEST(BlowfishTest, GivesThePublishedVectors) {
  constexpr struct {
    const char *key, *clear, *cipher;
  } kCases[] = {
      {"0000000000000000", "0000000000000000", "4EF997456198DD78"},
      {"FFFFFFFFFFFFFFFF", "FFFFFFFFFFFFFFFF", "51866FD5B85ECB8A"},
      {"3000000000000000", "1000000000000001", "7D856F9A613063F2"},
      {"0123456789ABCDEF", "1111111111111111", "61F9C3802281B096"},
      {"FEDCBA9876543210", "0123456789ABCDEF", "0ACEAB0FC6A0A28D"},
      {"F0E1D2C3B4A5968778695A4B3C2D1E0F", "FEDCBA9876543210", "93142887EE3BE15C"},
      {"F0E1D2C3B4A5968778695A4B3C2D1E0F0011223344", "FEDCBA9876543210", "E6F51ED79B9DB21F"},
      // Blocks do not depend on each other.
      {"0123456789ABCDEF", "11111111111111111111111111111111", "61F9C3802281B09661F9C3802281B096"},
  };
  for (const auto& c : kCases) {
    EXPECT_EQ(BlowfishEncrypted(Bytes(c.clear), Bytes(c.key)), Bytes(c.cipher)) << c.key;
    EXPECT_EQ(BlowfishDecrypted(Bytes(c.cipher), Bytes(c.key)), Bytes(c.clear)) << c.key;
  }
}

TEST(TaskPackTest, EveryTextComesBack) {
  std::string all;
  for (int i = 0; i < 1024; ++i) all += static_cast<char>(i);
  for (const std::string& text : {""s, "x"s, all, std::string(kMaxItemSize, ' ')}) {
    const std::string packed = PackTask(text);
    EXPECT_EQ(packed.size() % kBlowfishBlock, 0U);
    EXPECT_TRUE(UnpackTask(packed) == text) << text.size();
    EXPECT_EQ(PackTask(text), packed) << "the same text gives the same bytes";
  }
}

TEST(TaskPackTest, EachLengthIsPaddedByOneToEightBytesOfTheirNumber) {
  for (std::size_t over = 0; over < kBlowfishBlock; ++over) {
    const std::string text = TextOfSize(over);
    const std::size_t count = kBlowfishBlock - over;
    EXPECT_EQ(BlowfishDecrypted(PackTask(text), TaskFileKey()),
              ZipItem(text) + std::string(count, static_cast<char>(count)));
    EXPECT_EQ(UnpackTask(PackTask(text)), text);
  }
}

TEST(TaskPackTest, WhatIsNoPaddingIsLeftForTheArchiveReader) {
  const std::string text = TextOfSize(0);
  const std::string archive = ZipItem(text);
  ASSERT_EQ(archive.back(), '\0');
  EXPECT_EQ(UnpackTask(Enciphered(archive)), text) << "none at all";
  for (int last = 0; last < 256; ++last) {
    for (const char before : {'\0', '\7', static_cast<char>(last)}) {
      const std::string tail = std::string(7, before) + static_cast<char>(last);
      ExpectTextOrMessage(Enciphered(archive + tail), text, Format("%d after %d", last, before));
    }
  }
}

TEST(TaskPackTest, RefusesWhatIsNoTask) {
  EXPECT_EQ(UnpackTask(""), "");
  const struct {
    std::string packed, message;
  } kCases[] = {
      {"1234567", "7 bytes of cipher text are no whole number of blocks of 8 bytes"},
      {std::string(64, 'x'), "Not a zip archive"},
      {PackedFile("other-entry.vlt"), "No such file"},
      {PackedFile("two-entries.vlt"), "The task file holds 2 entries instead of one"},
      {PackedFile("too-large.vlt"), "The task file holds more than 16777216 bytes of text"},
      {BlowfishEncrypted(BlowfishDecrypted(PackedFile("text.vlt"), TaskFileKey()), "another key"), "Not a zip archive"},
  };
  for (const auto& c : kCases) EXPECT_EQ(MessageOf([&] { UnpackTask(c.packed); }), c.message);
  EXPECT_EQ(MessageOf([] { PackTask(std::string(kMaxItemSize + 1, ' ')); }),
            "The task file holds more than 16777216 bytes of text");
}

TEST(TaskPackTest, DamageOfEachByteIsSurvived) {
  for (const char* name : {"mysql.vlt", "text.vlt"}) {
    const std::string packed = PackedFile(name);
    const std::string text = UnpackTask(packed);
    const std::string archive = BlowfishDecrypted(packed, TaskFileKey());
    for (std::size_t i = 0; i < packed.size(); ++i) {
      const std::string what = Format("%s, byte %d", name, i);
      const std::string cut = packed.substr(0, i);
      EXPECT_EQ(MessageOf([&] { UnpackTask(cut); }) == "nothing raised", cut.empty()) << what;
      for (const int flip : {0x01, 0x80, 0xFF}) {
        for (const bool inside : {false, true}) {
          std::string damaged = inside ? archive : packed;
          damaged[i] = static_cast<char>(damaged[i] ^ flip);
          ExpectTextOrMessage(inside ? Enciphered(damaged) : damaged, text, what);
        }
      }
    }
  }
}

}  // namespace
}  // namespace velmora

// SPDX-License-Identifier: GPL-3.0-or-later
#include "sandbox/ReaderProcess.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <new>
#include <string>
#include <utility>

#include "sandbox/ChildWait.h"
#include "support/MessageOf.h"
#include "util/Errors.h"

namespace velmora::testing {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;

std::size_t OpenFiles() {
  std::size_t count = 0;
  for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) ++count;
  return count;
}

// A library that does with a table what the table's name says.
class TBadReader : public TFileReader {
 public:
  std::vector<TOLEDBTableRow> Tables() override { return {{"ü", "TABLE"}, {"", "VIEW"}}; }

  TFileTable Structure(const std::string& table) override {
    if (table == "crash") raise(SIGSEGV);
    if (table == "exit") _exit(3);
    if (table == "hang") pause();
    if (table == "leave") CloseAllAndStay();
    if (table == "spin") SpinForEver();
    if (table == "memory") throw std::bad_alloc();
    if (table == "error") RaiseError("shop.mdb: page 7 is no page");
    if (table == "output") std::printf("noise\n");
    if (table == "files") return OfFiles();
    return Rich();
  }

  TFileRows Rows(const std::string& table, std::int64_t limit) override {
    TFileRows rows;
    for (std::int64_t i = 0; i < limit; ++i) {
      rows.rows.push_back(
          {TVariant(), true, i, 0.1 * static_cast<double>(i), TMoment{1.5}, table + std::string(3, '\0')});
      rows.numbers.push_back(i * 2);
    }
    return rows;
  }

 private:
  [[noreturn]] static void SpinForEver() {
    for (volatile int i = 0;;) i = i + 1;
  }

  [[noreturn]] static void CloseAllAndStay() {
    close_range(3, ~0U, 0);
    for (;;) pause();
  }

  static TFileTable OfFiles() {
    TFileTable table;
    table.columns.resize(OpenFiles());
    return table;
  }

  static TFileTable Rich() {
    TFileTable table;
    table.columns.push_back({.TABLE_NAME = "t",
                             .COLUMN_NAME = "c",
                             .ORDINAL_POSITION = 4294967295U,
                             .COLUMN_DEFAULT = "",
                             .COLUMN_FLAGS = 144,
                             .IS_NULLABLE = false,
                             .DATA_TYPE = 130,
                             .CHARACTER_MAXIMUM_LENGTH = 4294967295U,
                             .NUMERIC_PRECISION = 65535,
                             .NUMERIC_SCALE = -32768});
    table.columns.push_back({});
    table.indexes.push_back({"t", "i", true, false, 2, "c"});
    table.fields = {{"c", EFieldKind::OraClob, -1}};
    table.is_autoincrement = {true, false};
    return table;
  }
};

constexpr TChildLimits kLimits{.silence = std::chrono::milliseconds(500), .memory = 1ULL << 31};

std::unique_ptr<TFileReader> NewReader() {
  return ReadInOwnProcess([] { return std::make_unique<TBadReader>(); }, "/data/shop.mdb", "thelib", kLimits);
}

TEST(ReaderProcessTest, EveryValueComesThroughWhole) {
  const auto reader = NewReader();
  TBadReader direct;
  EXPECT_EQ(reader->Tables().at(0).TABLE_NAME, "ü");
  EXPECT_EQ(reader->Tables().at(1).TABLE_TYPE, "VIEW");
  const TFileTable far = reader->Structure("t");
  const TFileTable near = direct.Structure("t");
  ASSERT_EQ(far.columns.size(), 2U);
  const TOLEDBColumnRow& column = far.columns[0];
  EXPECT_EQ(std::tie(column.TABLE_NAME, column.COLUMN_NAME, column.ORDINAL_POSITION, column.COLUMN_DEFAULT,
                     column.COLUMN_FLAGS, column.IS_NULLABLE, column.DATA_TYPE, column.CHARACTER_MAXIMUM_LENGTH,
                     column.NUMERIC_PRECISION, column.NUMERIC_SCALE),
            std::tie(near.columns[0].TABLE_NAME, near.columns[0].COLUMN_NAME, near.columns[0].ORDINAL_POSITION,
                     near.columns[0].COLUMN_DEFAULT, near.columns[0].COLUMN_FLAGS, near.columns[0].IS_NULLABLE,
                     near.columns[0].DATA_TYPE, near.columns[0].CHARACTER_MAXIMUM_LENGTH,
                     near.columns[0].NUMERIC_PRECISION, near.columns[0].NUMERIC_SCALE));
  EXPECT_FALSE(far.columns[1].COLUMN_DEFAULT.has_value());
  const TOLEDBIndexRow& index = far.indexes.at(0);
  EXPECT_TRUE(index.INDEX_NAME == "i" && index.PRIMARY_KEY && !index.UNIQUE && index.ORDINAL_POSITION == 2);
  EXPECT_TRUE(far.fields.at(0).kind == EFieldKind::OraClob && far.fields[0].size == -1);
  EXPECT_EQ(far.is_autoincrement, near.is_autoincrement);
  const TFileRows rows = reader->Rows("x", 50000);  // more than any buffer on the way holds
  const TFileRows same = direct.Rows("x", 50000);
  EXPECT_EQ(rows.rows, same.rows);
  EXPECT_EQ(rows.numbers, same.numbers);
}

TEST(ReaderProcessTest, WhatGoesWrongBecomesAnErrorAndTheNextCallWorks) {
  constexpr std::pair<const char*, const char*> kFaults[] = {
      {"crash", "Cannot read /data/shop.mdb: the file is damaged or of a kind that thelib cannot read"},
      {"exit", "(its process ended with status 3)"},
      {"leave", "(its process ended by signal 9)"},
      {"hang", "too large for thelib (no answer for 1 seconds)"},
      {"spin", "too large for thelib (no answer for 1 seconds)"},
      {"memory", "too large for the memory that thelib may use"},
      {"error", "shop.mdb: page 7 is no page"}};
  const auto reader = NewReader();
  const std::size_t open_files = OpenFiles();
  for (const auto& [table, message] : kFaults) {
    EXPECT_THAT(MessageOf([&, &table = table] { reader->Structure(table); }), HasSubstr(message)) << table;
    EXPECT_EQ(reader->Structure("t").columns.size(), 2U) << "after " << table;
  }
  EXPECT_EQ(OpenFiles(), open_files);
}

TEST(ReaderProcessTest, AFileThatCannotBeOpenedSaysWhy) {
  EXPECT_EQ(MessageOf([] {
              ReadInOwnProcess([]() -> std::unique_ptr<TFileReader> { RaiseError("shop.mdb: no such file"); },
                               "shop.mdb", "thelib", kLimits);
            }),
            "shop.mdb: no such file");
  EXPECT_THAT(MessageOf([] {
                ReadInOwnProcess([]() -> std::unique_ptr<TFileReader> { abort(); }, "shop.mdb", "thelib", kLimits);
              }),
              AllOf(HasSubstr("shop.mdb"), HasSubstr("thelib")));
}

TEST(ReaderProcessTest, AWaitThatIsGivenUpEndsTheChildAndTheNextCallWorks) {
  struct TImpatient final : TChildWait {
    int rounds = 0;
    void WaitFor(const TCame& came) override {
      while (!came(std::chrono::milliseconds(10)))
        if (++rounds == 5) throw ECancelled();
    }
  } wait;
  const TChildWaitGuard guard(wait);
  const auto reader = NewReader();
  const std::size_t open_files = OpenFiles();
  wait.rounds = 0;
  EXPECT_THROW(reader->Structure("hang"), ECancelled);
  EXPECT_EQ(OpenFiles(), open_files - 1);
  EXPECT_EQ(reader->Structure("t").columns.size(), 2U);
}

// Its connections to servers, locks and terminals stay the program's own.
TEST(ReaderProcessTest, TheChildInheritsNothing) {
  EXPECT_LE(NewReader()->Structure("files").columns.size(), 5U) << "three standard ones, the channel, the listing";
  ::testing::internal::CaptureStdout();
  NewReader()->Structure("output");
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), "");
}

// A program that was started without standard files has others in their places.
TEST(ReaderProcessTest, TheChannelMayBeAStandardFile) {
  const int input = dup(STDIN_FILENO), output = dup(STDOUT_FILENO);
  close(STDIN_FILENO);
  close(STDOUT_FILENO);
  std::size_t tables = 0;
  const std::string message = MessageOf([&] { tables = NewReader()->Tables().size(); });
  dup2(input, STDIN_FILENO);
  dup2(output, STDOUT_FILENO);
  close(input);
  close(output);
  EXPECT_EQ(message, "nothing raised");
  EXPECT_EQ(tables, 2U);
}

TEST(ReaderProcessTest, AnEndedReaderLeavesNoProcess) {
  { const auto reader = NewReader(); }
  EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "a child is left";
}

}  // namespace
}  // namespace velmora::testing

// SPDX-License-Identifier: GPL-3.0-or-later
#include "sandbox/ProviderProcess.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <memory>
#include <string>
#include <utility>

#include "support/MessageOf.h"
#include "support/ScratchFolder.h"
#include "util/Errors.h"
#include "util/Files.h"

namespace velmora::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

// A driver that does what the statement says.
class TBadDriver : public TOLEDBProvider {
 public:
  explicit TBadDriver(std::string goodbye) : goodbye_(std::move(goodbye)) {}
  ~TBadDriver() override {
    if (!goodbye_.empty()) WriteFileText(goodbye_, "closed");
  }

  void Initialize() override { open_ = true; }
  void Uninitialize() override { open_ = false; }
  bool Initialized() const override { return open_; }
  TStringList Catalogs() override { return {"a", "ü"}; }
  std::vector<TOLEDBTableRow> Tables() override { return {{"t", "TABLE"}}; }
  std::vector<TOLEDBColumnRow> Columns(const std::string& table) override {
    return {{.TABLE_NAME = table, .COLUMN_NAME = "c", .CHARACTER_MAXIMUM_LENGTH = 7}};
  }
  std::vector<TOLEDBIndexRow> Indexes(const std::string& table) override { return {{table, "i", true, false, 2, "c"}}; }
  TOLEDBRowset Open(const std::string& sql) override {
    TOLEDBRowset rowset;
    rowset.fields = {{"c", EFieldKind::Bcd, 4}};
    rowset.is_autoincrement = {true};
    rowset.rows = {{sql}, {TVariant()}};
    if (sql == "late") rowset.read_rows = []() -> TRowsOfValues { RaiseError("no such type"); };
    return rowset;
  }
  std::int64_t Execute(const std::string& sql) override {
    if (sql == "abort") abort();
    if (sql == "hang") pause();
    if (sql == "memory") throw std::bad_alloc();
    if (sql == "lose") open_ = false;
    if (sql == "lose" || sql == "refuse") RaiseError("server: " + sql);
    return -1;
  }
  void StartTransaction(std::uint32_t isolation) override { RaiseError("level " + std::to_string(isolation)); }
  void Commit() override {}

 private:
  std::string goodbye_;
  bool open_ = false;
};

std::unique_ptr<TOLEDBProvider> NewProcess(const std::string& goodbye = {}) {
  auto provider = ProvideInOwnProcess([goodbye] { return std::make_unique<TBadDriver>(goodbye); }, "SQL Server shop",
                                      {.silence = std::chrono::milliseconds(300), .memory = 1ULL << 31});
  provider->Initialize();
  return provider;
}

TEST(ProviderProcessTest, EveryOperationComesThrough) {
  const auto provider = NewProcess();
  EXPECT_THAT(provider->Catalogs(), ElementsAre("a", "ü"));
  EXPECT_EQ(provider->Tables().at(0).TABLE_NAME, "t");
  EXPECT_EQ(provider->Columns("k").at(0).CHARACTER_MAXIMUM_LENGTH, 7U);
  EXPECT_EQ(provider->Indexes("k").at(0).TABLE_NAME, "k");
  const TOLEDBRowset rowset = provider->Open("select ü");
  EXPECT_EQ(rowset.fields.at(0).kind, EFieldKind::Bcd);
  EXPECT_THAT(rowset.is_autoincrement, ElementsAre(true));
  EXPECT_EQ(rowset.rows, (TRowsOfValues{{std::string("select ü")}, {TVariant()}}));
  EXPECT_EQ(provider->Execute("x"), -1);
  EXPECT_EQ(MessageOf([&] { provider->StartTransaction(4096); }), "level 4096");
  provider->Commit();
}

TEST(ProviderProcessTest, RowsThatCannotBeReadLeaveTheFields) {
  const TOLEDBRowset rowset = NewProcess()->Open("late");
  EXPECT_EQ(rowset.fields.size(), 1U);
  EXPECT_EQ(MessageOf([&] { rowset.read_rows(); }), "no such type");
}

TEST(ProviderProcessTest, WhatEndsTheConnectionIsSaidAndConnectingAgainHelps) {
  constexpr std::pair<const char*, const char*> kEnds[] = {
      {"abort", "The connection to SQL Server shop is lost: its driver broke off"},
      {"hang", "its driver or server is silent (no answer for 1 seconds)"},
      {"lose", "server: lose"}};
  const auto provider = NewProcess();
  for (const auto& [statement, message] : kEnds) {
    EXPECT_THAT(MessageOf([&, &statement = statement] { provider->Execute(statement); }), HasSubstr(message));
    EXPECT_FALSE(provider->Initialized()) << statement;
    EXPECT_EQ(MessageOf([&] { provider->Tables(); }), "Not connected") << statement;
    provider->Initialize();
  }
  EXPECT_THAT(MessageOf([&] { provider->Execute("memory"); }), HasSubstr("more memory than it may use"));
  EXPECT_EQ(MessageOf([&] { provider->Execute("refuse"); }), "server: refuse");
  EXPECT_TRUE(provider->Initialized()) << "an error alone ends nothing";
}

// A driver that is killed at once would leave its server to find out.
TEST(ProviderProcessTest, TheDriverClosesItsConnectionAtTheEnd) {
  const TScratchFolder folder;
  NewProcess(folder / "goodbye")->Uninitialize();
  EXPECT_EQ(ReadFileText(folder / "goodbye"), "closed");
}

}  // namespace
}  // namespace velmora::testing

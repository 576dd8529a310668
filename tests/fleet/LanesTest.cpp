// SPDX-License-Identifier: GPL-3.0-or-later
#include "fleet/Lanes.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <mutex>
#include <thread>

#include "support/MessageOf.h"

namespace velmora {
namespace {

using namespace std::chrono_literals;

constexpr std::size_t kServers = 40;
constexpr std::size_t kEach = 25;

// Servers in turn, so that the pieces of one stand far from each other.
std::vector<std::size_t> InTurn(TLanes& lanes) {
  std::vector<std::size_t> pieces;
  for (std::size_t i = 0; i < kServers * kEach; ++i) pieces.push_back(lanes.LaneOf(std::to_string(i % kServers)));
  return pieces;
}

TEST(Lanes, AServerHasAtMostSoMuchUnderWay) {
  TLanes lanes(3);
  std::atomic<int> under_way[kServers] = {};
  std::atomic<int> most = 0, first_alone = 0, done = 0;
  std::atomic<int> begun[kServers] = {};
  lanes.Run(InTurn(lanes), {[&](std::size_t piece) {
                              const std::size_t server = piece % kServers;
                              const int now = ++under_way[server];
                              if (begun[server]++ == 0) std::this_thread::sleep_for(5ms);
                              if (begun[server] == 1) ++first_alone;
                              for (int seen = most; now > seen && !most.compare_exchange_weak(seen, now);) {
                              }
                              std::this_thread::sleep_for(100us);
                              --under_way[server];
                              ++done;
                            },
                            [](std::size_t, const std::string&) { FAIL(); },
                            {}});
  EXPECT_EQ(done, static_cast<int>(kServers * kEach));
  EXPECT_EQ(first_alone, static_cast<int>(kServers));
  EXPECT_GT(most, 1);
  EXPECT_LE(most, 3);
}

// Every second server is silent for 200 ms: tried one after the other, or for each of their pieces, that were seconds.
TEST(Lanes, OneOutOfReachCostsItsTimeOnce) {
  TLanes lanes(4);
  std::atomic<int> tried = 0, given_up = 0, done = 0;
  std::atomic<bool> late = false;
  const auto begin = std::chrono::steady_clock::now();
  const auto since = [&] { return std::chrono::steady_clock::now() - begin; };
  const auto work = [&](std::size_t piece) {
    if (piece % 2 == 1) {
      ++done;
      return;
    }
    ++tried;
    std::this_thread::sleep_for(200ms);
    throw EUnreachable("silent");
  };
  const auto give_up = [&](std::size_t piece, const std::string& reason) {
    EXPECT_EQ(piece % 2, 0U);
    EXPECT_EQ(reason, "silent");
    ++given_up;
  };
  for (int run = 0; run < 2; ++run) lanes.Run(InTurn(lanes), {work, give_up, {}});
  EXPECT_LT(since(), 3s);
  EXPECT_EQ(tried, static_cast<int>(kServers / 2));
  EXPECT_EQ(given_up, static_cast<int>(kServers * kEach));  // of both runs
  EXPECT_EQ(done, static_cast<int>(kServers * kEach));
}

TEST(Lanes, NothingBeginsAfterTheEnd) {
  constexpr int kWidth = 4;
  for (const bool by_error : {false, true}) {
    TLanes lanes(kWidth);
    std::atomic<int> begun = 0;
    const auto run = [&] {
      lanes.Run(InTurn(lanes), {[&](std::size_t) {
                                  if (++begun == 100 && by_error) throw EVelmora("broken");
                                },
                                [](std::size_t, const std::string&) {}, [&] { return !by_error && begun >= 100; }});
    };
    EXPECT_EQ(testing::MessageOf(run), by_error ? "broken" : "nothing raised");
    EXPECT_GE(begun, 100);
    if (!by_error) EXPECT_LT(begun, 100 + kWidth * static_cast<int>(kServers)) << "beside those under way";
  }
}

}  // namespace
}  // namespace velmora

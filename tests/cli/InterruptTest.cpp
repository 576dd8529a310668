// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/Interrupt.h"

#include <gtest/gtest.h>
#include <signal.h>

#include <atomic>
#include <chrono>
#include <optional>
#include <thread>

#include "support/FakeMyConnection.h"
#include "support/MessageOf.h"
#include "util/Errors.h"

namespace velmora {
namespace {

using testing::MessageOf;

class TCancelled final : public testing::TFakeMyConnection {
 public:
  explicit TCancelled(bool listens)
      : TFakeMyConnection(std::make_shared<testing::TFakeMyServer>()), listens_(listens) {}
  void CancelRunning() override {
    ++cancelled;
    if (!listens_) throw EMySqlException("nobody there");
  }
  void Sever() override { ++severed; }

  std::atomic<int> cancelled = 0;
  std::atomic<int> severed = 0;

 private:
  bool listens_;
};

void (*HandlerOf(int signal))(int) {
  struct sigaction now {};
  sigaction(signal, nullptr, &now);
  return now.sa_handler;
}

void WaitFor(const std::atomic<int>& count) {
  for (int i = 0; i < 3000 && count == 0; ++i) std::this_thread::sleep_for(std::chrono::milliseconds(1));
  EXPECT_EQ(count, 1);
}

TEST(InterruptTest, EachSignalEndsTheWorkAtItsNextPauseOnce) {
  for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
    signal(number, SIG_DFL);  // nohup has one of them ignored
    TInterruptHost host(nullptr);
    host.ProcessMessages();
    raise(number);
    EXPECT_EQ(MessageOf([&] { host.ProcessMessages(); }), "Cancelled");
    host.ProcessMessages();
  }
}

TEST(InterruptTest, ASecondCtrlCCutsAConnectionWhoseStatementDoesNotComeBack) {
  for (const bool listens : {true, false}) {
    TCancelled connection(listens);
    TInterruptHost host(&connection, 1);
    raise(SIGINT);
    EXPECT_EQ(connection.cancelled, 0);
    raise(SIGINT);
    WaitFor(connection.severed);
    EXPECT_EQ(connection.cancelled, 1);
    EXPECT_EQ(HandlerOf(SIGINT), SIG_DFL) << "a third one ends the process";
  }
}

TEST(InterruptTest, ASignalToEndBreaksOffWhatDoesNotEnd) {
  TCancelled connection(true);
  std::optional<TInterruptHost> host(std::in_place, &connection, 300);
  raise(SIGTERM);
  WaitFor(connection.cancelled);
  WaitFor(connection.severed);
  host.reset();  // the work has come back; otherwise the process would end
  EXPECT_EXIT(
      {
        TInterruptHost waiting(nullptr, 1);
        raise(SIGTERM);
        std::this_thread::sleep_for(std::chrono::seconds(30));
      },
      ::testing::KilledBySignal(SIGTERM), "");
}

TEST(InterruptTest, WhatCanBeThrownAwayIsBrokenOffByASignalToEndAndLeftAloneAfterwards) {
  {
    TInterruptHost host(nullptr, 60000, TInterruptHost::EToldToEnd::BreakOff);
    raise(SIGTERM);
    EXPECT_EQ(MessageOf([&] { host.ProcessMessages(); }), "Cancelled");
  }
  TCancelled connection(true);
  TInterruptHost host(nullptr, 60000, TInterruptHost::EToldToEnd::BreakOff);
  host.RunsOn(&connection);
  raise(SIGHUP);
  WaitFor(connection.cancelled);
  host.RunsOn(nullptr);
  raise(SIGTERM);
  EXPECT_EQ(connection.severed, 0);
  EXPECT_EQ(connection.cancelled, 1);
}

TEST(InterruptTest, AStatementThatComesBackKeepsItsConnection) {
  TCancelled connection(true);
  std::optional<TInterruptHost> host(std::in_place, &connection, 60000);
  raise(SIGINT);
  raise(SIGINT);
  WaitFor(connection.cancelled);
  host.reset();
  EXPECT_EQ(connection.severed, 0);
}

TEST(InterruptTest, HandlersOfBeforeComeBackAndIgnoredSignalsStayIgnored) {
  void (*const before)(int) = HandlerOf(SIGINT);
  void (*const hup)(int) = signal(SIGHUP, SIG_IGN);
  {
    TInterruptHost host(nullptr);
    EXPECT_NE(HandlerOf(SIGINT), before);
    EXPECT_EQ(HandlerOf(SIGHUP), SIG_IGN);
    raise(SIGHUP);
    host.ProcessMessages();
  }
  EXPECT_EQ(HandlerOf(SIGINT), before);
  signal(SIGHUP, hup);
}

}  // namespace
}  // namespace velmora

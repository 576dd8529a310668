// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// A reference that is not MySQL, made equal on the shared server.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <utility>

#include "exact/run/ExactSync.h"
#include "foreign/ForeignTexts.h"
#include "support/LiveDatabase.h"
#include "support/RecordingPorts.h"
#include "sync/ScriptEditor.h"

namespace velmora::testing {

class TForeignSync {
 protected:
  TForeignSync() { connections_.target = target_.NewEngine(); }

  // Compares, tries the script in a scratch database, runs it, and compares again.
  void Sync() {
    sync_.Compare();
    EXPECT_EQ(sync_.DifferencesLeft(), 0) << JoinList(sync_.ActionLog, "\n");
    EXPECT_EQ(sync_.VerifyOnServer(), 0);
    for (const TPlanStatement& statement : sync_.Plan()) target_.Run(statement.text);
    sync_.Compare();
  }
  // The same for what this connection leads to, into an empty database; nothing differs then.
  void SyncFrom(std::unique_ptr<TDBConn> reference) {
    connections_.reference = std::move(reference);
    sync_.MakeTexts = [](TDBConn& source) { return std::make_unique<TForeignTexts>(source, TForeignWishes()); };
    Sync();
    EXPECT_THAT(sync_.Changes(), ::testing::IsEmpty()) << JoinList(sync_.ActionLog, "\n");
    EXPECT_NE(
        Answer(target_.Connection(), "select count(*) from information_schema.tables where table_schema = database()"),
        "0");
  }

  TLiveDatabase target_;
  TTaskConnections connections_;
  TdmData data_;
  TActionTree tree_;
  TRecordingProgress progress_;
  TRecordingLog log_;
  TExactSync sync_{connections_, data_, tree_, progress_, log_};
};

}  // namespace velmora::testing

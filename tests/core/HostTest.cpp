// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/Host.h"

#include <gtest/gtest.h>

#include "core/Engines.h"
#include "support/CaseFile.h"
#include "support/MessageOf.h"
#include "support/RecordingHost.h"
#include "util/Format.h"

namespace velmora {
namespace {

using testing::MessageOf;
using testing::TRecordingHost;

TEST(HostTest, WithoutWindowsTheAnswerIsNo) {
  std::string path = "as it was";
  EXPECT_FALSE(ConfirmYes("Sure?"));
  EXPECT_FALSE(Host().ConfirmOk("Sure?"));
  EXPECT_FALSE(OpenDatabaseFile(kEngineAccess, path));
  EXPECT_EQ(path, "as it was");
  EXPECT_EQ(BrowseFolder("Folder", "/tmp"), "");
  Host().ProcessMessages();
  OpenURL("example.org");
}

TEST(HostTest, GuardsNest) {
  TRecordingHost outer, inner;
  inner.yes_answer = true;
  {
    const THostGuard outer_guard(outer);
    {
      const THostGuard inner_guard(inner);
      EXPECT_TRUE(ConfirmYes("inner"));
    }
    EXPECT_FALSE(ConfirmYes("outer"));
  }
  EXPECT_FALSE(ConfirmYes("nobody"));
  EXPECT_EQ(outer.calls, TStringList{"ConfirmYes: outer"});
  EXPECT_EQ(inner.calls, TStringList{"ConfirmYes: inner"});
}

TEST(HostTest, AddressesAndFolders) {
  TRecordingHost host;
  host.chosen = "/data";
  const THostGuard guard(host);
  OpenURL("example.org/page");
  OpenURL("ftp://example.org");
  EXPECT_EQ(BrowseFolder("Folder", "/tmp"), "/data");
  EXPECT_EQ(host.calls, (TStringList{"ShellOpen: http://example.org/page", "ShellOpen: ftp://example.org",
                                     "BrowseFolder: Folder from /tmp"}));
}

// Of a name, and of the filter of a dialog; an error where there is none.
TEST(EnginesTest, NamesInBothDirectionsAndFilters) {
  for (const TStringList& row : testing::CaseRows("core/engines.txt")) {
    SCOPED_TRACE(row[0]);
    const int engine = StrToInt(row[0]);
    std::string name = "-";
    const std::string fault = MessageOf([&] { StrEngine(engine, name); });
    EXPECT_EQ(name, row[1]);
    if (name == "-")
      EXPECT_EQ(fault, "StrEngine error");
    else if (engine != kEngineNone)
      EXPECT_EQ(StrToEngine(name), engine);

    TRecordingHost host;
    host.chosen = "/picked";
    const THostGuard guard(host);
    std::string path;
    const std::string refusal = MessageOf([&] { EXPECT_TRUE(OpenDatabaseFile(engine, path)); });
    const bool none = row.at(2) == "-";
    EXPECT_EQ(refusal, none ? "Open database file: unhandled engine" : "nothing raised");
    EXPECT_EQ(path, none ? "" : "/picked");
    EXPECT_EQ(host.calls, none ? TStringList() : TStringList{"OpenFile: " + row[2]});
  }
  for (const char* unknown : {"", "mysql", "MySQL ", "MySQL script"})
    EXPECT_EQ(MessageOf([&] { StrToEngine(unknown); }), "StrToEngine error") << unknown;
}

}  // namespace
}  // namespace velmora

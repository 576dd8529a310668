#include "core/Host.h"

#include <gtest/gtest.h>

#include "core/Engines.h"
#include "support/MessageOf.h"
#include "support/RecordingHost.h"

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

struct TEngineCase {
  int engine;
  const char* name;    // null: none
  const char* filter;  // null: none
};

constexpr TEngineCase kEngineCases[] = {
    {0, "", nullptr},
    {1, nullptr, nullptr},
    {2, "DBF", nullptr},
    {3, "Lotus 1-2-3", "Lotus 1-2-3|*.wk4;*.wk3"},
    {4, nullptr, nullptr},
    {5, "Interbase/Firebird", "Interbase or Firebird database|*.gdb;*.fdb"},
    {6, "Access", "Access database|*.mdb"},
    {7, "SQL Server", nullptr},
    {8, "MySQL", nullptr},
    {9, nullptr, "MySQL script|*.sql"},  // a script is nothing that a task file names
    {10, "Oracle", nullptr},
    {11, "Paradox", nullptr},
    {12, "Text", "Text file|*.txt"},
    {13, nullptr, "XML file|*.xml"},
    {14, "Excel", "Excel document|*.xls"},
    {15, "FoxPro", "FoxPro database|*.dbc"},
    {16, "ODBC", nullptr},
    {17, nullptr, nullptr},
};

TEST(EnginesTest, NamesInBothDirections) {
  for (const TEngineCase& each : kEngineCases) {
    SCOPED_TRACE(each.engine);
    std::string name = "untouched";
    if (each.name == nullptr) {
      EXPECT_EQ(MessageOf([&] { StrEngine(each.engine, name); }), "StrEngine error");
      EXPECT_EQ(name, "untouched");
      continue;
    }
    StrEngine(each.engine, name);
    EXPECT_EQ(name, each.name);
    if (each.engine != kEngineNone) EXPECT_EQ(StrToEngine(name), each.engine);
  }
  for (const char* unknown : {"", "mysql", "MySQL ", "MySQL script"})
    EXPECT_EQ(MessageOf([&] { StrToEngine(unknown); }), "StrToEngine error") << unknown;
}

TEST(EnginesTest, OpenDatabaseFileFilters) {
  for (const TEngineCase& each : kEngineCases) {
    SCOPED_TRACE(each.engine);
    TRecordingHost host;
    host.chosen = "/picked";
    const THostGuard guard(host);
    std::string path;
    if (each.filter == nullptr) {
      EXPECT_EQ(MessageOf([&] { OpenDatabaseFile(each.engine, path); }), "Open database file: unhandled engine");
      EXPECT_TRUE(host.calls.empty());
      continue;
    }
    EXPECT_TRUE(OpenDatabaseFile(each.engine, path));
    EXPECT_EQ(path, "/picked");
    EXPECT_EQ(host.calls, TStringList{"OpenFile: " + std::string(each.filter)});
  }
}

}  // namespace
}  // namespace velmora

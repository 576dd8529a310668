// SPDX-License-Identifier: GPL-3.0-or-later

// The companion on files: "cli" in the cases of tests/data/formats, with "#" for a blank within an argument; then its
// output, what it says besides, and its status where that is not 0.

#include <gtest/gtest.h>

#include "cli/Json.h"
#include "support/CompanionRun.h"
#include "support/FormatCase.h"
#include "support/LineDiff.h"
#include "support/ScratchFolder.h"
#include "util/Files.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora::testing {
namespace {

// An object or row on each line; four letters that stand twenty times or more in a row as in "{AQEB*1666}".
std::string Folded(const std::string& text) {
  constexpr std::size_t kUnit = 4, kMany = 20;
  std::string folded;
  for (std::size_t at = 0; at < text.size();) {
    const std::string one = text.substr(at, kUnit);
    std::size_t count = 1;
    while (at + (count + 1) * kUnit <= text.size() && text.compare(at + count * kUnit, kUnit, one) == 0) ++count;
    folded += count < kMany ? std::string(1, text[at]) : "{" + one + "*" + std::to_string(count) + "}";
    at += count < kMany ? 1 : count * kUnit;
  }
  return StrReplace(StrReplace(folded, "},{", "},\n{"), "],[", "],\n[");
}

TEST(FileFormatsTest, Cases) {
  for (const std::string& name : FormatCaseNames()) {
    const TScratchFolder folder;
    const TFormatCase files = FormatCase(name);
    for (const auto& [words, expected] : files.asks) {
      if (words[0] != "cli") continue;
      files.PutInto(folder.Path());
      TStringList arguments;
      for (const std::string& word : words)
        arguments.push_back(StrReplace(StrReplace(word, "@", folder.Path()), "#", " "));
      arguments.erase(arguments.begin());
      const TAnswer answer = RunInProcess(arguments);
      std::string found = Folded(answer.out) + answer.err;
      if (answer.status != 0) found += Format("status %d\n", answer.status);
      found = StrReplace(found, folder.Path(), "@");
      if (found != expected) ADD_FAILURE() << name << ": " << JoinList(words, " ") << "\n" << LineDiff(expected, found);
    }
  }
}

// --- Text files: the folders of tests/data/text against the documents beside them

TEST(FileFormatsTest, TextFiles) {
  const std::string folder = VELMORA_SOURCE_DIR "/tests/data/text/";
  for (const std::string name : {"delimited", "fixed"}) {
    const std::string source = "Text:folder=" + folder + name + ";HDR=Y;separator=" + (name == "fixed" ? "" : ",");
    const TAnswer answer = RunInProcess({"schema", source, "--format", "json"});
    EXPECT_EQ(TJson::parse(StrReplace(answer.out, folder, "")).dump(1),
              TJson::parse(ReadFileText(folder + name + ".json")).dump(1));
    EXPECT_EQ(answer.status, name == "fixed" ? 0 : 2) << "broken.txt holds text without quotes";
    const TAnswer rows = RunInProcess({"rows", source, name == "fixed" ? "people.txt" : "people.csv"});
    EXPECT_NE(rows.out.find(name == "fixed" ? "12\tBjörn\t1999-12-31\t7\t2001-02-04\n"
                                            : "\n1\tAnn Čech\t1980-05-17\t1200.5\t31\n2\tO Neil\tNULL\tNULL\t2\n"),
              std::string::npos)
        << rows.out;
    EXPECT_EQ(RunInProcess({"rows", source, "none.txt"}).err,
              "velmora-cli: Cannot read " + folder + name + "/none.txt: No such file or directory\n");
  }
}

TEST(FileFormatsTest, AFolderWithoutTablesIsWorthAWarning) {
  for (const std::string engine : {"Paradox", "Text"}) {
    const TAnswer answer = RunInProcess({"schema", engine + ":folder=/nowhere"});
    EXPECT_EQ(answer.status, 0) << engine;
    EXPECT_NE(answer.err.find("warning: "), std::string::npos) << engine;
    EXPECT_NE(answer.err.find("no table was found"), std::string::npos) << engine;
  }
}

}  // namespace
}  // namespace velmora::testing

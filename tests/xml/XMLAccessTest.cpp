// SPDX-License-Identifier: GPL-3.0-or-later
#include "xml/XMLAccess.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>

#include "support/CaseFile.h"
#include "support/MessageOf.h"
#include "support/ScratchFolder.h"
#include "util/Files.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using testing::MessageOf;

constexpr char kNothingRaised[] = "nothing raised";
constexpr char kTree[] =
    "<?xml version=\"1.0\"?><root><one>1</one><twin>a</twin><twin>b</twin><empty/><outer><inner>i</inner></outer>"
    "</root>";
constexpr char kTreeText[] =
    "<?xml version=\"1.0\"?>\r\n<root><one>1</one><twin>a</twin><twin>b</twin><empty/><outer><inner>i</inner></outer>"
    "</root>";

class XMLAccessTest : public ::testing::Test {
 protected:
  void Load(const std::string& text) { store_.xmlLoadText(text, false); }
  std::string Body() {  // the document without its declaration
    const std::string text = store_.xmlGetText();
    const std::string declaration = "<?xml version=\"1.0\"?>\r\n";
    return text.starts_with(declaration) ? text.substr(declaration.size()) : text;
  }
  TStringList List(const std::string& path, const std::string& columns) {
    TStringList list{"old"};
    store_.xmlGetList(path, columns, list);
    return list;
  }

  TXMLAccess store_;
};

// --- Values and lists

std::string Shown(const TStringList& lines) { return lines.empty() ? "nothing" : JoinList(lines, "·"); }

TEST_F(XMLAccessTest, PathsAreReadAndWritten) {
  std::string document;
  const auto outcome = [&](const std::string& what, const std::string& path, const std::string& with) {
    Load(document);
    if (what == "get") return store_.xmlGetVal(path);
    if (what == "list") return Shown(List(path, with));
    if (what == "set") store_.xmlSetVal(path, with);
    if (what != "fill") return Body();
    std::string rest = path;
    const std::string list = StrChop(" ", rest), item = StrChop(" ", rest);
    TStringList lines;
    if (with != "nothing") SplitPlain('|', StrReplace(with, "·", "|"), lines);
    store_.xmlSetList(list, item, lines, rest);
    return Body();
  };
  for (TStringList& row : testing::CaseRows("xml/paths.txt")) {
    SCOPED_TRACE(JoinList(row, " | "));
    for (std::string& cell : row) cell = testing::Unshown(cell);
    row.resize(4);
    if (row[0] == "document") {
      document = row[1];
      continue;
    }
    std::string found;
    const std::string message = MessageOf([&] { found = outcome(row[0], row[1], row[2]); });
    EXPECT_EQ(message == kNothingRaised ? found : "! " + message, row[3]);
    const std::string after = Body();
    Load(document);
    if (row[3].starts_with("! ")) EXPECT_EQ(after, Body()) << "nothing has changed";
  }
}

TEST_F(XMLAccessTest, NumbersAndTruthValues) {
  store_.xmlSetInt("/root/i", INT64_MIN);
  store_.xmlSetBool("/root/y", true);
  store_.xmlSetBool("/root/n", false);
  EXPECT_EQ(Body(), "<root><i>-9223372036854775808</i><y>Y</y><n>N</n></root>");
}

TEST_F(XMLAccessTest, CreatePath) {
  EXPECT_EQ(MessageOf([&] { store_.xmlCreatePath(""); }), "xmlCreatePath: empty path!");
  EXPECT_EQ(MessageOf([&] { store_.xmlCreatePath("root"); }), "xmlCreatePath: path must start with \"/\": root");
  std::string deep;
  for (int i = 0; i < 256; ++i) deep += i == 0 ? "/root" : "/d";
  EXPECT_EQ(MessageOf([&] { store_.xmlCreatePath(deep + "/d"); }), "xmlCreatePath: path is too deep: " + deep + "/d");
  EXPECT_EQ(Body(), "<root/>");
  store_.xmlSetVal(deep, "v");
  Load(store_.xmlGetText());
  EXPECT_EQ(store_.xmlGetVal(deep), "v") << "the deepest path that can be made can be loaded: " << store_.LoadFault();

  Load("<root><a/><a><b/></a></root>");
  store_.xmlCreatePath("/root/a/b");
  EXPECT_EQ(Body(), "<root><a/><a><b/></a></root>") << "the path exists in the second element";
  store_.xmlCreatePath("/root/a/c");
  EXPECT_EQ(Body(), "<root><a><c/></a><a><b/></a></root>") << "what is missing goes below the first";
}

TEST_F(XMLAccessTest, WithoutARootReadsFailAndWritesMakeOne) {
  TStringList list{"kept"};
  struct {
    std::function<void()> access;
    const char* message;
  } cases[] = {
      {[&] { store_.xmlGetVal("/root"); }, "Document.DocumentElement=nil"},
      {[&] { store_.xmlGetVal(""); }, "Document.DocumentElement=nil"},
      {[&] { store_.xmlGetList("", "", list); }, "xmlGetList: Document.DocumentElement=nil"},
      {[&] { store_.xmlSetList("", "", list, ""); }, "xmlSetList: Document.DocumentElement=nil"},
  };
  Load("<root>");
  for (const auto& c : cases) EXPECT_EQ(MessageOf(c.access), c.message);
  EXPECT_THAT(list, ElementsAre("kept"));
  EXPECT_EQ(store_.xmlGetText(), "");
  store_.xmlSetVal("/other/key", "v");
  EXPECT_EQ(store_.xmlGetText(), "<other><key>v</key></other>");
}

TEST_F(XMLAccessTest, EntityTextsAreMappedOnEveryReadAndOnMappedLoads) {
  const std::string letters = "\u0160\u0110\u010C\u0106\u017D\u0161\u0111\u010D\u0107\u017E";
  struct {
    std::string written, read;
  } cases[] = {
      {"a & b", "a & b"},
      {"&amp;", "&"},
      {"&amp;amp;", "&amp;"},
      {"&amp;Scaron;", "&Scaron;"},
      {"&scaron;&SCARON;", "\u0161&SCARON;"},
      {"&Scaron;&Dstrok;&Ccaron;&Cacute;&Zcaron;&scaron;&dstrok;&ccaron;&cacute;&zcaron;", letters},
      {letters, letters},
  };
  for (const auto& c : cases) {
    store_.xmlSetVal("/root/v", c.written);
    EXPECT_EQ(store_.xmlGetVal("/root/v"), c.read) << c.written;
  }
  store_.xmlLoadText("<root><v>" + letters + " &amp; &</v></root>", true);
  EXPECT_EQ(store_.xmlGetVal("/root/v"), letters + " & &") << "even what is no XML before the mapping";
  EXPECT_THAT(store_.xmlGetText(), HasSubstr("<v>&amp;Scaron;&amp;Dstrok;"));
  EXPECT_THAT((List("/root", "v")), ElementsAre(HasSubstr("&Scaron;&Dstrok;"))) << "lists are not mapped";
}

TEST_F(XMLAccessTest, ListsThatCannotBeWritten) {
  Load("<root><list>old<i/></list></root>");
  EXPECT_EQ(
      MessageOf([&] { store_.xmlSetList("/root/list", "i", {"1;2\x01"}, "a;b"); }),
      "xmlSetList: the value of /root/list/i/b cannot be stored: byte 2 of it is a character that XML does not allow");
  EXPECT_EQ(MessageOf([&] { store_.xmlSetList("", "", {}, ""); }), "xmlSetList: Invalid path");
  EXPECT_EQ(MessageOf([&] { store_.xmlSetList("/root", "", {}, ""); }), "xmlSetList: Invalid item");
  EXPECT_EQ(MessageOf([&] { store_.xmlSetList("/root", "<", {}, "a"); }),
            "xmlSetList: \"<\" is no name of an element: /root");
  EXPECT_EQ(MessageOf([&] { store_.xmlSetList("/root/none", "i", {}, "a"); }),
            "xmlSetList: no item with path /root/none");
  EXPECT_EQ(Body(), "<root><list>old<i/></list></root>");
}

// --- Values in and out
TEST_F(XMLAccessTest, ValuesSurviveTextAndFile) {
  using std::string_literals::operator""s;
  const std::string values[] = {
      "",
      "\t",
      " ",
      "\r\n",
      "\r",
      "\n",
      " a ",
      "<b attr='\"'>&lt;",
      "]]>",
      "a;b",
      "\u0160\u20AC\U0001F600",
      "--",
      "\x7F",
      "\u0085\u2028",
      "\uFFFD",
      "\xEF\xBB\xBF",
      std::string(100000, 'x'),
  };
  const testing::TScratchFolder folder;
  for (const std::string& value : values) {
    store_.xmlSetVal("/root/v", value);
    store_.xmlLoadText(store_.xmlGetText(), false);
    EXPECT_EQ(store_.xmlGetVal("/root/v"), value);
    ASSERT_TRUE(store_.xmlSave(folder / "f"));
    TXMLAccess other;
    other.xmlLoad(folder / "f");
    EXPECT_EQ(other.xmlGetVal("/root/v"), value);
    EXPECT_EQ(other.xmlGetText(), store_.xmlGetText());
  }
  store_.xmlSetVal("/root/v", "\t \u0160\r");
  EXPECT_EQ(store_.xmlGetText(), "<?xml version=\"1.0\"?>\r\n<root><v>\t \u0160&#13;</v></root>");
}

TEST_F(XMLAccessTest, ValuesThatXmlCannotHoldAreRefusedBeforeAnythingChanges) {
  using std::string_literals::operator""s;
  struct {
    std::string value, fault;
  } cases[] = {
      {"a\0b"s, "byte 2 of it is a character that XML does not allow"},
      {"\x1B", "byte 1 of it is a character that XML does not allow"},
      {"\uFFFE", "byte 1 of it is a character that XML does not allow"},
      {"ab\xE4", "byte 3 of it is not UTF-8"},
      {"\xC0\x80", "byte 1 of it is not UTF-8"},
      {"\xC1\x81", "byte 1 of it is not UTF-8"},
      {"\xE2\x82", "byte 1 of it is not UTF-8"},
      {"\xED\xA0\x80", "byte 1 of it is not UTF-8"},
      {"\xF4\x90\x80\x80", "byte 1 of it is not UTF-8"},
      {std::string((16U << 20U) + 1, 'x'), "it is larger than 16 MB"},
  };
  Load("<root/>");
  for (const auto& c : cases) {
    EXPECT_EQ(MessageOf([&] { store_.xmlSetVal("/root/target/password", c.value); }),
              "xmlSetVal: the value of /root/target/password cannot be stored: " + c.fault);
    EXPECT_EQ(store_.xmlGetText(), "<root/>");
  }
}

// --- Loads
TEST_F(XMLAccessTest, TextOfTheWholeDocument) {
  struct {
    const char *loaded, *text;
  } cases[] = {
      {"<root/>", "<root/>"},
      {"<?xml version='1.0' encoding='ISO-8859-1' standalone='yes'?>\r\n<r>\xE4</r>\n",
       "<?xml version=\"1.0\"?>\r\n<r>\u00E4</r>"},
      {"\xEF\xBB\xBF<?xml version=\"1.0\"?><!--c--><?p i?>\n<r a=\"1\">\n <b/>\r\n</r><!--d-->",
       "<?xml version=\"1.0\"?>\r\n<!--c-->\r\n<?p i?>\r\n<r a=\"1\">\n <b/>\n</r>\r\n<!--d-->"},
  };
  EXPECT_EQ(store_.xmlGetText(), "<?xml version=\"1.0\"?>\r\n<root/>");
  for (const auto& c : cases) {
    Load(c.loaded);
    EXPECT_EQ(store_.xmlGetText(), c.text);
  }
}

std::string Nested(int depth) {
  std::string text;
  for (int i = 0; i < depth; ++i) text += "<root>";
  for (int i = 0; i < depth; ++i) text += "</root>";
  return text;
}

std::string Attributes(int count, const std::string& prefix) {
  std::string text;
  for (int i = 0; i < count; ++i) text += Format(" %s%d = '>'", prefix, i);
  return text;
}

TEST_F(XMLAccessTest, RefusedTextsLeaveNoRootAndNoNoise) {
  using std::string_literals::operator""s;
  struct TCase {
    std::string name, text, fault;
  };
  std::vector<TCase> cases = {
      {"empty", "", ""},
      {"blank", " \r\n", ""},
      {"no XML", "PK\x03\x04", ""},
      {"not UTF-8", "<root>\xE4</root>", "line 1: "},
      {"not what it declares", "<?xml version=\"1.0\" encoding=\"UTF-16\"?><root>\xE4</root>", ""},
      {"many attributes", "<root" + Attributes(257, "a") + "/>", "more than 256 attributes"},
      {"very many", "<!-- ' --><root" + Attributes(100000, "a"), "more than 256 attributes"},
      {"many namespaces", "<root" + Attributes(30, "xmlns:a") + "><a" + Attributes(3, "xmlns:b") + "/></root>",
       "32 namespaces"},
      {"zero byte inside", "<root>\0</root>"s, "zero byte"},
      {"zero byte after it", "<root/>\0<"s, "zero byte"},
      {"control character", "<root>\x01</root>", "line 1: "},
      {"too deep", Nested(257), "deeper than 256"},
      {"much too deep", Nested(100000), "deeper than 256"},
      {"never closed", Nested(200000).substr(0, 600000), "deeper than 256"},
      {"too large", "<root>" + std::string(16U << 20U, ' ') + "</root>", "larger than 16 MB"},
  };
  for (TStringList& row : testing::CaseRows("xml/refused.txt")) {
    row.resize(3);
    cases.push_back({row[0], testing::Unshown(row[1]), row[2]});
  }
  for (const auto& c : cases) {
    Load(kTree);
    ::testing::internal::CaptureStderr();
    ::testing::internal::CaptureStdout();
    Load(c.text);
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "") << c.name;
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "") << c.name;
    EXPECT_EQ(MessageOf([&] { store_.xmlGetVal("/root"); }), "Document.DocumentElement=nil") << c.name;
    EXPECT_THAT(store_.LoadFault(), HasSubstr(c.fault)) << c.name;
    EXPECT_NE(store_.LoadFault(), "") << c.name;
  }
  Load("<root" + Attributes(256, "a") + "><!-- <" + Attributes(300, "a") + " --></root>");
  EXPECT_EQ(store_.xmlGetVal("/root"), "") << store_.LoadFault();
  Load(Nested(256));
  EXPECT_EQ(store_.xmlGetText(), Nested(255).insert(255 * 6, "<root/>")) << store_.LoadFault();
  Load("<root>" + std::string((16U << 20U) - 13, ' ') + "</root>");
  EXPECT_EQ(store_.xmlGetVal("/root").size(), (16U << 20U) - 13) << store_.LoadFault();
  EXPECT_THAT(store_.LoadFault(), IsEmpty());
}

// Whatever is missing at the end or changed in one byte, a load gives a whole document or none, and raises nothing.
TEST_F(XMLAccessTest, DamagedTexts) {
  const std::string sample =
      "<?xml version=\"1.0\"?>\r\n<root a=\"b\"><!--c--><v>\u0160&amp;&#9;</v><![CDATA[d]]><?p i?><e/></root>";
  for (std::size_t size = 0; size < sample.size(); ++size) {
    Load(sample.substr(0, size));
    EXPECT_EQ(MessageOf([&] { store_.xmlGetVal("/root/v"); }), "Document.DocumentElement=nil") << size;
  }
  for (std::size_t at = 0; at < sample.size(); ++at) {
    for (const char byte : {'\0', '<', '>', '&', ';', '/', '!', '"', '\x80', '\xFF'}) {
      std::string text = sample;
      text[at] = byte;
      Load(text);
      EXPECT_EQ(store_.xmlGetText().empty(), !store_.LoadFault().empty()) << text;
      const std::string once = store_.xmlGetText();
      Load(once);
      EXPECT_EQ(store_.xmlGetText(), once);
    }
  }
}

// --- Files
TEST_F(XMLAccessTest, Files) {
  const testing::TScratchFolder folder;
  EXPECT_EQ(MessageOf([&] { store_.xmlLoad(folder / "none"); }),
            Format("xmlLoad: file \"%s\" does not exist!", folder / "none"));
  EXPECT_EQ(MessageOf([&] { store_.xmlLoad(folder.Path()); }),
            Format("xmlLoad: file \"%s\" does not exist!", folder.Path()));
  EXPECT_EQ(Body(), "<root/>") << "a file that is not there changes nothing";

  store_.xmlSetVal("/root/v", "1");
  EXPECT_FALSE(store_.xmlSave(folder / "none/f"));
  EXPECT_TRUE(store_.xmlSave(folder / "f"));
  EXPECT_EQ(ReadFileText(folder / "f"), store_.xmlGetText());

  WriteFileText(folder / "broken", "<root>");
  store_.xmlLoad(folder / "broken");
  EXPECT_EQ(MessageOf([&] { store_.xmlGetVal("/root/v"); }), "Document.DocumentElement=nil");
  EXPECT_FALSE(store_.xmlSave(folder / "f")) << "no document never replaces one";
  EXPECT_EQ(ReadFileText(folder / "f"), "<?xml version=\"1.0\"?>\r\n<root><v>1</v></root>");

  WriteFileText(folder / "large", "<root/>");
  std::filesystem::resize_file(folder / "large", std::uintmax_t{1} << 40U);
  store_.xmlLoad(folder / "large");
  EXPECT_EQ(store_.LoadFault(), "it is larger than 16 MB");
  store_.xmlLoad("/dev/zero");
  EXPECT_EQ(store_.LoadFault(), "it is no regular file");
}

// --- The shared document
TEST(SharedDocumentTest, KeysAreBelowTheRoot) {
  cfgReset();
  EXPECT_EQ(cfgText(), "<?xml version=\"1.0\"?>\r\n<root/>");
  cfgSetStr("s/t", "\t");
  cfgSetInt("i", -5);
  cfgSetBool("y", true);
  cfgSetBool("n", false);
  cfgSetList("Recent/Document", {"a", "b;c"}, "filename");
  cfgSetStr("l", "y");
  const std::string text =
      "<?xml "
      "version=\"1.0\"?>\r\n<root><s><t>\t</t></s><i>-5</i><y>Y</y><n>N</n><Recent><Document><filename>a</filename>"
      "</Document><Document><filename>b</filename></Document></Recent><l>y</l></root>";
  EXPECT_EQ(cfgText(), text);

  const testing::TScratchFolder folder;
  ASSERT_TRUE(cfgSave(folder / "f"));
  cfgLoadText("<root>");
  EXPECT_EQ(MessageOf([] { cfgGetStr("i"); }), "Document.DocumentElement=nil");
  cfgLoad(folder / "f");
  EXPECT_EQ(cfgText(), text);

  EXPECT_EQ(cfgGetStr("s/t"), "\t");
  EXPECT_EQ(cfgGetInt("i"), -5);
  EXPECT_TRUE(cfgGetBool("y"));
  EXPECT_FALSE(cfgGetBool("n"));
  EXPECT_FALSE(cfgGetBool("l")) << "Y alone is true";
  TStringList list;
  cfgGetList("Recent/Document", "filename", list);
  EXPECT_THAT(list, ElementsAre("a", "b"));

  EXPECT_EQ(MessageOf([] { cfgGetStr("none"); }), "xmlGetVal: no item with path /root/none");
  EXPECT_EQ(MessageOf([] { cfgGetInt("y"); }), "'Y' is not a valid integer value");
  EXPECT_EQ(MessageOf([] { cfgSetList("Recent", {}, "filename"); }), "Nothing to StrChop!");
}

}  // namespace
}  // namespace velmora

#include <gtest/gtest.h>

#include <iterator>
#include <random>
#include <string_view>

#include "engines/file/DBConnTextDelim.h"
#include "engines/file/DBConnTextFixed.h"
#include "engines/file/TextRig.h"
#include "support/ParadoxFile.h"
#include "support/ScratchFolder.h"
#include "util/Errors.h"

namespace velmora {
namespace {

constexpr char kTable[] = "t.txt";
constexpr std::string_view kTexts[] = {
    "id,name,at,n\n1,\"Ann\",2001-02-03 04:05:06,1.5\n2,\"it's\",12:30,\n3,\"\xC4\x8D\xE2\x82\xAC\",,$1F\n,,,\n",
    "a,'b',\"c\",7\r\n'x',\"y,z\",1\r\n\r\n\"q\"\r",
    "id First Name  at\n 1 Joe Fox    2001-02-03 04:05\n12 Ann        2001-02-04\n\n007 \xE4\xF6\xFC 12:30\n",
};
constexpr std::string_view kPieces[] = {",",     "\"",   "'",        "\n", "\r",       " ",       "\t",
                                        "\xFF",  "\xC4", "\xE2\x82", "$7", "1e99",     "-",       "2001-02-03",
                                        "12:30", ":",    "\0",       "00", "99999999", "\xF0\x9F"};

std::string Mutated(std::mt19937& random) {
  std::string text(kTexts[random() % std::size(kTexts)]);
  for (auto changes = 1 + random() % 6; changes > 0; --changes) {
    const std::size_t at = random() % (text.size() + 1);
    switch (random() % 4) {
      case 0:
        text.erase(at, random() % 9);
        break;
      case 1:
        text += text.substr(at, random() % 40);
        break;
      case 2:
        if (at < text.size()) text[at] = static_cast<char>(random());
        break;
      default:
        text.insert(at, kPieces[random() % std::size(kPieces)]);
    }
  }
  return text;
}

// Structure, rows and count of the table agree, or there is an error with a message.
void Check(TDBConn& conn, const std::string& text, bool whole_lines) {
  try {
    conn.Connect();
    conn.FetchIfNeeded();
    const std::size_t columns = conn.meta().tColumns.Rows().size();
    TTableGuard rows(conn, kTable);
    EXPECT_EQ(rows->Fields().size(), columns) << text;
    EXPECT_EQ(rows->RecordCount(), conn.GetRecordCount(kTable)) << text;
    std::int64_t count = 0;
    for (; !rows->Eof(); rows->Next(), ++count)
      for (std::size_t i = 0; i < columns; ++i) VarToText(rows->Value(i));
    EXPECT_EQ(count, rows->RecordCount());
  } catch (const EVelmora& error) {
    EXPECT_NE(std::string_view(error.what()), "");
    EXPECT_TRUE(whole_lines) << "columns of fixed width take every text: " << error.what() << "\n" << text;
  }
}

TEST(TextMutationTest, DamagedFilesGiveATableOrAMessage) {
  const testing::TScratchFolder folder;
  std::mt19937 random(20240817);
  for (int i = 0; i < 5000; ++i) {
    const std::string text = Mutated(random);
    testing::PutFile(folder / kTable, text);
    const bool hdr = random() % 2 == 0;
    TDBConnTextFixed fixed(folder.Path(), hdr);
    Check(fixed, text, false);
    TDBConnTextDelim delimited(folder.Path(), std::string(kPieces[random() % 9]), hdr);
    Check(delimited, text, true);
  }
}

}  // namespace
}  // namespace velmora

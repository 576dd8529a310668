// Tables that an independent library has written.

#include <cstdlib>

#include "formats/dbf/DbfRig.h"

namespace velmora {
namespace {

using namespace std::string_literals;

// By the name of the system's own interpreter, whose packages count.
class DbfPythonTest : public testing::TDbfRig {
 protected:
  void SetUp() override {
    const std::string command =
        "/usr/bin/python3 " VELMORA_SOURCE_DIR "/tests/formats/data/write_dbf.py " + folder_.Path();
    ASSERT_EQ(std::system(command.c_str()), 0) << "the package python3-dbf is needed";
  }
};

TEST_F(DbfPythonTest, EveryTypeItWrites) {
  EXPECT_EQ(Columns(*DBase(), "third"),
            "NAME 130 0 12 0,0 null string\nN 5 16 0 15,0 null float\nWHOLE 5 16 0 15,0 null float\n"
            "F 5 16 0 15,0 null float\nL 11 16 0 0,0 null boolean\nD 7 16 0 0,0 null date\n"
            "M 130 128 0 0,0 null memo\n");
  const std::string long_memo(1500, 'x');
  EXPECT_EQ(Rows(*DBase(), "third"),
            "text Grün|float 12.25|float -7|float 1.5|truth True|moment 2024-02-29|text memo ä;"
            "text |null|null|null|null|null|text ;"
            "text last|float 9999999.99|float 99999|float -0.125|truth False|moment 9999-12-31|text " +
                long_memo + ";");
  EXPECT_EQ(Rows(*FoxPro(), "third"),
            "1: text Grün|text 12.25|text -7|text 1.500|truth True|moment 2024-02-29|text memo ä;"
            "3: text last|text 9999999.99|text 99999|text -0.125|truth False|moment 9999-12-31|text " +
                long_memo + ";");
  EXPECT_EQ(Rows(*DBase(), "clip"), "text " + std::string(299, 'l') + "|text abc;text ö|text ;");
  std::string euros;
  for (int i = 0; i < 400; ++i) euros += "€ ";
  EXPECT_EQ(Rows(*FoxPro(), "fox"),
            "text Größe|text -0.50|moment 2024-02-29|text " + euros + ";text |null|null|text ;");
}

TEST_F(DbfPythonTest, VisualFoxPro) {
  EXPECT_EQ(Columns(*FoxPro(), "visual"),
            "A 129 16 5 0,0 null fixed char\nI 3 16 0 0,0 null integer\nN 131 16 0 10,2 null BCD\n"
            "D 133 16 0 0,0 null date\nB 5 16 0 15,0 float\nY 6 16 0 0,0 currency\nT 135 16 0 0,0 date-time\n"
            "L 11 16 0 0,0 boolean\nM 129 128 0 0,0 memo\nG 128 128 0 0,0 blob\nBIN 128 16 4 0,0 bytes\n");
  EXPECT_EQ(Rows(*FoxPro(), "visual"),
            "text héé|int -2147483647|text 1.25|moment 2024-02-29|float -1.5E300|text -922337203685477.5807|"
            "moment 1999-12-31 23:59:59|truth True|text mémo|text \0\xFF\x1A|text \1\0 \xFF;"s
            "null|null|null|null|float 0|text 0.0001|null|truth False|text |text |text abcd;"
            "text |int 0|null|null|float 0.1|text 0.0000|moment 0001-01-01|null|text "s +
                std::string(5000, 'm') + "|text " + std::string(600, 'g') + "|text     ;");
  const TFileRows rows = FoxPro()->Rows("many", kAllRows);
  ASSERT_EQ(rows.rows.size(), 1000U);
  EXPECT_EQ(rows.numbers[999], 2000);
  EXPECT_EQ(Shown(rows.rows[999][0]), "int 1999");
  EXPECT_EQ(Shown(rows.rows[999][1]), "text row 1999");
}

}  // namespace
}  // namespace velmora

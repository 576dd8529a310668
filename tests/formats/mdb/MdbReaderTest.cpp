// Access files, put together by hand, as the reader over libmdb shows them.

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <limits>

#include "formats/mdb/MdbRig.h"
#include "formats/mdb/MdbText.h"
#include "sandbox/OwnProcessReaders.h"
#include "util/LittleEndian.h"

namespace velmora {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;
using namespace testing;  // NOLINT: the rig and the makers of files

const TDateTime kDay = EncodeDate(2001, 2, 3);

// A database with one table, T.
std::string WithTable(const TMdbTable& table, std::optional<std::string> properties = {}) {
  TMdbBuilder builder(kMdbJet4, kDay);
  builder.AddTable("T", table, std::move(properties));
  return std::move(builder).Bytes();
}

TMdbTable TableOf(std::vector<TMdbColumn> columns, const std::vector<TMdbValues>& rows) {
  TMdbTable table;
  table.columns = PlacedColumns(std::move(columns));
  for (const TMdbValues& values : rows) table.rows.push_back({kMdbJet4.row(table.columns, values)});
  return table;
}

class MdbReaderTest : public TMdbRig {
 protected:
  // T with one memo, as `stored`.
  std::string Memo(const std::string& stored) {
    Put(WithTable(TableOf({MdbVarColumn("m", EMdbType::Memo)}, {{stored}})));
    return Rows("T");
  }
};

struct TSample {
  const char* name;
  const TMdbLayout& layout;
  std::string bytes;
};

std::vector<TSample> Samples() {
  return {{"Jet 4", kMdbJet4, MdbSample(kMdbJet4)},
          {"Jet 3", kMdbJet3, MdbSample(kMdbJet3)},
          {"Jet 4, encoded", kMdbJet4, MdbEncoded(kMdbJet4, 0x12345678)},
          {"Jet 3, encoded", kMdbJet3, MdbEncoded(kMdbJet3, 0x87654321)}};
}

TEST_F(MdbReaderTest, Samples) {
  for (const TSample& sample : Samples()) {
    SCOPED_TRACE(sample.name);
    const bool wide = sample.layout.wide;
    Put(sample.bytes);
    EXPECT_EQ(Tables(), "Kinds TABLE;Words TABLE;");
    EXPECT_EQ(Columns("Kinds"), std::string("id 3 16 0 0,0 auto-increment auto\n"
                                            "yes 11 16 0 0,0 null ==No boolean\n"
                                            "tiny 17 16 0 0,0 null word\n"
                                            "small 2 16 0 0,0 =5 small integer\n"
                                            "price 6 16 0 0,0 null currency\n"
                                            "single 4 16 0 7,0 null float\n"
                                            "double 5 16 0 15,0 null float\n"
                                            "day 7 16 0 0,0 null =Now() date-time\n"
                                            "bytes 128 0 20 0,0 null varbytes\n"
                                            "naïve 130 0 50 0,0 null =\"x\" wide string\n"
                                            "fixed 130 16 4 0,0 null fixed char\n"
                                            "note 130 128 0 0,0 null memo\n"
                                            "object 128 128 0 0,0 null blob\n") +
                                    (wide ? "guid 72 16 0 0,0 GUID\n"
                                            // libmdb 1.0.0 says 3,12
                                            "number 131 16 0 12,3 null BCD\n"
                                          : "guid 72 16 0 0,0 null GUID\n"));
    std::string object;
    for (int i = 0; i < 5000; ++i) object += "01";
    EXPECT_EQ(Rows("Kinds"), "1|True|254|-2|-12345.6789|1.5|-2.25|2001-02-03 06:00:00|00ff10|Größe|abcd|a note|" +
                                 object + "|{00112233-4455-6677-8899-AABBCCDDEEFF}" + (wide ? "|-12.340\n" : "\n") +
                                 "2|False|-|-|-|-|-|-|-|-|-|-|-|-" + (wide ? "|-\n" : "\n"));
    EXPECT_EQ(Columns("Words"), Format("id 3 16 0 0,0 null integer\nword 130 0 %d 0,0 null wide string\n"
                                       "left 2 16 0 0,0 null small integer\nlate 2 16 0 0,0 null small integer\n",
                                       wide ? 255 : 510));
    EXPECT_EQ(Rows("Words"), "1|early|7|-\n2||7|8\n4|" + std::string(250, 'w') + "|7|9\n");
    EXPECT_EQ(Indexes("Words"), "PrimaryKey id primary unique;unique word unique;two word id;other left late;");
    EXPECT_EQ(Indexes("Kinds"), "");
  }
}

TEST_F(MdbReaderTest, InAProcessOfItsOwn) {
  Put(MdbSample(kMdbJet4));
  const auto reader = OpenMdbFile(path_);
  EXPECT_EQ(reader->Tables().size(), 2U);
  EXPECT_EQ(Columns(reader->Structure("Kinds")), Columns("Kinds"));
  EXPECT_EQ(Rows(*reader, "Kinds"), Rows("Kinds"));
  EXPECT_EQ(Rows(*reader, "Words", 1), "1|early|7|-\n");
  EXPECT_EQ(Rows(*reader, "Words", 0), "");
  EXPECT_EQ(Rows(*reader, "wORDS", 1), "1|early|7|-\n") << "names ignore case";
  EXPECT_EQ(reader->Structure("words").columns[0].TABLE_NAME, "Words");
  EXPECT_EQ(Failure([&] { reader->Rows("Sold", kAllRows); }), "There is no table Sold in FILE");
}

TEST_F(MdbReaderTest, OthersMayHaveItOpen) {
  Put(MdbSample(kMdbJet4));
  const int writer = open(path_.c_str(), O_RDWR);
  ASSERT_EQ(flock(writer, LOCK_EX), 0);
  EXPECT_EQ(OpenMdbFile(path_)->Tables().size(), 2U);
  close(writer);
  const auto reader = OpenMdbFile(path_);
  const int later = open(path_.c_str(), O_RDWR);
  EXPECT_EQ(flock(later, LOCK_EX | LOCK_NB), 0) << "a reader holds nobody off";
  close(later);
}

// The letters of Jet 3 are those of the code page that the file names.
TEST_F(MdbReaderTest, CodePages) {
  const struct {
    unsigned number;
    const char *bytes, *text;
  } kPages[] = {{1252,
                 "Gr\xF6\xDF"
                 "e",
                 "Größe"},
                {1251, "\xD6\xE5\xED\xE0", "Цена"},
                {932, "\x96\xBC\x91O", "名前"},
                {936, "\xC3\xFB", "名"},
                {949, "\xC0\xCC\xB8\xA7", "이름"},
                {0, "caf\xE9", "café"}};
  constexpr std::size_t kCodePageAt = 0x3C;
  for (const auto& [number, bytes, text] : kPages) {
    std::string file = MdbSample(kMdbJet3);
    // Enciphered, but by a stream of bytes that depends on nothing.
    PutAt(file, kCodePageAt, LittleAt<std::uint16_t>(file.data() + kCodePageAt) ^ kMdbCodePage ^ number, 2);
    std::string name = bytes;
    name.resize(5, ' ');
    Put(StrReplace(file, "na\xEFve", name));
    EXPECT_THAT(Columns("Kinds"), HasSubstr("\n" + std::string(text))) << number;
  }
}

TEST_F(MdbReaderTest, LongValues) {
  constexpr ELongValue kForms[] = {ELongValue::Inline, ELongValue::OneRow, ELongValue::Chain};
  for (const std::size_t size : {0U, 1U, 600U, 1900U, 70000U, 1000000U}) {
    for (const ELongValue form : kForms) {
      if (size > (form == ELongValue::Inline ? 600 : form == ELongValue::OneRow ? 1900 : size)) continue;  // no room
      if (form == ELongValue::Chain && size == 0) continue;                                                // has none
      SCOPED_TRACE(Format("%d %d", size, static_cast<int>(form)));
      std::string text;
      while (text.size() < size) text += "An ö in each. ";
      text.resize(size);
      TMdbBuilder builder(kMdbJet4, kDay);
      TMdbTable table = TableOf({MdbVarColumn("m", EMdbType::Memo), MdbVarColumn("o", EMdbType::Ole)}, {});
      const std::string memo = MdbLongValue(builder, Utf16OfText(text), form);
      const std::string object = MdbLongValue(builder, text, form);
      table.rows = {{kMdbJet4.row(table.columns, {memo, object})}};
      builder.AddTable("T", table);
      Put(std::move(builder).Bytes());
      const TFileRows found = Open()->Rows("T", kAllRows);
      ASSERT_EQ(found.rows.size(), 1U);
      EXPECT_EQ(VarToText(found.rows[0][0]), *TextOfUtf16(Utf16OfText(text)));
      EXPECT_EQ(VarToText(found.rows[0][1]), text);
    }
  }
  const auto inlined = [](const std::string& bytes) {
    return LittleBytes(bytes.size() | 0x80000000U, 4) + std::string(8, '\0') + bytes;
  };
  EXPECT_EQ(Memo(inlined(MdbCompressed("packed"))), "packed\n");
  EXPECT_EQ(Memo(""), "\n");
}

// 700 rows on as many pages, so that the map of the table's pages takes pages of its own; a definition on several.
TEST_F(MdbReaderTest, ManyPagesAndColumns) {
  std::vector<TMdbValues> rows;
  for (int i = 0; i < 700; ++i) rows.push_back({MdbLong(i), std::string(3000, static_cast<char>(i))});
  TMdbBuilder builder(kMdbJet4, kDay);
  builder.AddTable("Rows",
                   TableOf({MdbFixedColumn("id", EMdbType::LongInt), MdbVarColumn("b", EMdbType::Binary, 3000)}, rows));
  std::vector<TMdbColumn> columns;
  TMdbValues values;
  for (int i = 0; i < 255; ++i) {
    columns.push_back(i % 2 == 0 ? MdbFixedColumn(Format("a rather long name for column %d", i), EMdbType::Int)
                                 : MdbVarColumn(Format("a rather long name for column %d", i), EMdbType::Text, 20));
    values.push_back(i % 2 == 0 ? LittleBytes(static_cast<std::uint64_t>(i), 2) : Utf16OfText(std::to_string(i)));
  }
  TMdbTable wide = TableOf(columns, {values});
  TMdbIndex index;
  index.name = "last";
  index.parts = {{254}, {253, true}};
  wide.indexes.push_back(index);
  builder.AddTable("Wide", wide);
  Put(std::move(builder).Bytes());

  const auto reader = Open();
  const TFileRows found = reader->Rows("Rows", kAllRows);
  ASSERT_EQ(found.rows.size(), 700U);
  for (std::size_t i = 0; i < 700; ++i) {
    EXPECT_EQ(VarToInt(found.rows[i][0]), static_cast<std::int64_t>(i));
    EXPECT_EQ(VarToText(found.rows[i][1]), std::string(3000, static_cast<char>(i)));
  }
  const TFileTable structure = reader->Structure("Wide");
  ASSERT_EQ(structure.columns.size(), 255U);
  EXPECT_EQ(structure.columns[254].COLUMN_NAME, "a rather long name for column 254");
  EXPECT_EQ(Indexes("Wide"), "last a rather long name for column 254 a rather long name for column 253;");
  const TFileRows wide_rows = reader->Rows("Wide", kAllRows);
  for (int i = 0; const TVariant& value : wide_rows.rows.at(0)) EXPECT_EQ(VarToText(value), std::to_string(i++));
}

TEST_F(MdbReaderTest, NotAnAccessFile) {
  const auto named = [](const std::string& name, char version) {
    std::string bytes(8192, '\0');
    bytes[1] = 1;
    bytes.replace(4, name.size(), name);
    bytes[0x14] = version;
    return bytes;
  };
  const struct {
    std::string bytes;
    const char* fault;
  } kFiles[] = {
      {"", "the file is empty"},
      {"id;name\n1;Ann\n", "it is no Access database"},
      {std::string(1, '\0'), "it is no Access database"},
      {std::string(100000, '\xFF'), "it is no Access database"},
      {MdbSample(kMdbJet4).substr(0, 100), "the file is damaged: there is no page 2"},
      {named("Standard ACE DB", 2),
       "it is an Access database of the newer kind (.accdb); only those of Access 97 to 2003 (.mdb) can be read"},
      {named("Standard Jet DB", 5),
       "it is an Access database of the newer kind (.accdb); only those of Access 97 to 2003 (.mdb) can be read"},
      {named("MSISAM Database", 1), "it is a database of another program, though its format is akin to that of Access"},
  };
  for (const auto& [bytes, fault] : kFiles) {
    Put(bytes);
    EXPECT_EQ(OpenFailure(), Format("Cannot read FILE: %s", fault));
  }
  std::string other_cipher = MdbEncoded(kMdbJet4, 0x12345678);
  other_cipher[2 * 4096] ^= 1;
  Put(other_cipher);
  EXPECT_EQ(OpenFailure(), "Cannot read FILE: it is encrypted, in a way that is not known here");

  std::filesystem::remove(path_);
  const auto failure = [&] { return Failure([&] { OpenMdbFile(path_); }); };
  EXPECT_EQ(failure(), "Cannot open FILE: No such file or directory");
  std::filesystem::create_directory(path_);
  EXPECT_EQ(failure(), "Cannot open FILE: it is no regular file");
  std::filesystem::remove(path_);
  ASSERT_EQ(mkfifo(path_.c_str(), 0600), 0);
  EXPECT_EQ(failure(), "Cannot open FILE: it is no regular file");
}

// One fault each, in a table of three rows with a memo in a chain of pages.
TEST_F(MdbReaderTest, Damage) {
  TMdbBuilder builder(kMdbJet4, kDay);
  TMdbTable table = TableOf({MdbFixedColumn("id", EMdbType::LongInt), MdbVarColumn("m", EMdbType::Memo)}, {});
  const std::string chain = MdbLongValue(builder, std::string(5000, 'a'), ELongValue::Chain);
  const std::size_t piece = (LittleAt<std::uint32_t>(chain.data() + 4) >> 8) * std::size_t{4096} + 4096 - 1904;
  table.rows = {{kMdbJet4.row(table.columns, {MdbLong(1), chain})}, {kMdbJet4.row(table.columns, {MdbLong(2), {}})}};
  TMdbIndex index;
  index.name = "key";
  index.parts = {{0}};
  table.indexes = {index};
  const std::uint32_t page = builder.AddTable("T", table, MdbProperties(kMdbJet4, {{"id", {"7"}}}));
  const std::size_t definition = page * std::size_t{4096};
  const std::size_t column = definition + 63 + 12;
  const std::size_t tree = column + 2 * 25 + 2 + 4 + 2 + 2;
  const std::size_t rows = definition + 4096;
  const std::size_t row = rows + 4096 - table.rows[0].bytes.size();
  const std::string sound = std::move(builder).Bytes();
  ASSERT_EQ(sound.substr(tree + 4, 2), LittleBytes(0, 2));
  const struct {
    std::size_t at;
    std::string bytes;
    const char* fault;
  } kFaults[] = {
      {piece, chain.substr(4, 4), "a value of column m runs in a circle"},
      {piece, LittleBytes(0, 4), "a value of column m is cut short"},
      {piece, LittleBytes(0x00FFFF00, 4), "there is no page 65535"},
      {piece, LittleBytes(page << 8, 4), "there is no row 0 on page "},
      {piece, LittleBytes((page + 1) << 8 | 9, 4), "there is no row 9 on page "},
      {row + 6, LittleBytes(0x00FFFFFF, 4), "a value of column m is longer than the file"},
      {row + 6, LittleBytes(4900 | 0x40000000, 4), "a value of column m is cut short"},
      {row + 6, LittleBytes(4900 | 0x80000000U, 4), "a value of column m is cut short"},
      {row, LittleBytes(999, 2), "one of its rows is broken"},
      {rows + 12, LittleBytes(5000, 2), "a page has more rows than fit on it"},
      {rows + 14, LittleBytes(4000, 2), "table T: "},
      {rows + 4, LittleBytes(2, 4), "table T: 0 rows were found instead of 2"},
      {rows, "\x02", "table T: 0 rows were found instead of 2"},
      {definition, "\x01", "is no table definition"},
      {definition + 4, LittleBytes(page, 4), "table T: its definition runs in a circle"},
      {definition + 4, LittleBytes(60000, 4), "there is no page 60000"},
      {definition + 45, LittleBytes(60000, 2), "table T: its definition counts more than it holds"},
      {definition + 47, LittleBytes(0xFFFFFFF0, 4), "table T: an index has no columns"},
      {definition + 51, LittleBytes(0xFFFFFFF0, 4), "table T: its definition counts more than it holds"},
      {definition + 55, LittleBytes(0x00FFFF00, 4), "table T: its definition is broken"},
      {definition + 55, LittleBytes((page + 1) << 8, 4), "table T: "},
      {column, "\x11", "table T: column id has an unknown type: 17"},
      {tree + 4, LittleBytes(5, 2), "table T: index key has a column that is not there"},
      {tree + 52 + 8, LittleBytes(1, 4), "table T: an index has no columns"},
      {sound.find("MR2"), "XR2", "table T: its properties are broken"},
      {sound.find("MR2") + 4, LittleBytes(0xFFFFFFFF, 4), "table T: its properties are broken"},
      {sound.size() - 1, "", "there is no page "},
  };
  Put(sound);
  EXPECT_EQ(Rows("T"), "1|" + *TextOfUtf16(std::string(5000, 'a')) + "\n2|-\n");
  EXPECT_EQ(Indexes("T"), "key id;");
  for (const auto& [at, bytes, fault] : kFaults) {
    SCOPED_TRACE(fault);
    std::string spoilt = sound;
    spoilt.replace(at, bytes.empty() ? 1 : bytes.size(), bytes);
    Put(spoilt);
    const std::string failure = Failure([&] { Rows("T"); });
    EXPECT_THAT(failure, StartsWith("Cannot read FILE: the file is damaged: "));
    EXPECT_THAT(failure, HasSubstr(fault));
  }
}

TEST_F(MdbReaderTest, ValuesThatAreNone) {
  const struct {
    TMdbColumn column;
    std::string bytes;
  } kValues[] = {
      {MdbFixedColumn("v", EMdbType::DateTime), DoubleBytes(1e9)},
      {MdbFixedColumn("v", EMdbType::DateTime), DoubleBytes(std::numeric_limits<double>::quiet_NaN())},
      {MdbVarColumn("v", EMdbType::Text, 20), "odd"},
      {MdbVarColumn("v", EMdbType::Memo), "short"},
  };
  for (const auto& [column, bytes] : kValues) {
    Put(WithTable(TableOf({column}, {{bytes}})));
    EXPECT_EQ(Failure([&] { Rows("T"); }),
              "Cannot read FILE: the file is damaged: table T: a value of column v is broken");
  }
}

}  // namespace
}  // namespace velmora

// Spoilt files end in an error with a message or in rows, and never in more than that.

#include <random>

#include "formats/dbf/DbfRig.h"
#include "util/Errors.h"

namespace velmora {
namespace {

using namespace std::string_literals;
using testing::CdxBytes;
using testing::DbfLeft;
using testing::DbfLittle;
using testing::DbfMomentBytes;
using testing::DbfRight;
using testing::NdxBytes;
using testing::TDbcDraft;
using testing::TDbfDraft;
using testing::TDbfMemoDraft;

constexpr int kRounds = 2000;

struct TSpoilable {
  std::string name;
  std::string bytes;
};

class DbfMutationTest : public testing::TDbfRig {
 protected:
  // Few bytes, in the first part of a file, which says where all else is, as often as anywhere; at times a cut.
  std::string Spoilt(std::string bytes) {
    static constexpr unsigned char kBytes[] = {0x00, 0x01, 0x20, 0x7F, 0x80, 0xFF};
    for (std::size_t count = 1 + Below(3); count > 0; --count) {
      const std::size_t at = Below(Below(2) == 0 ? std::min<std::size_t>(bytes.size(), 0x130) : bytes.size());
      bytes[at] = static_cast<char>(Below(2) == 0 ? kBytes[Below(std::size(kBytes))] : Below(256));
    }
    if (Below(16) == 0) bytes.resize(Below(bytes.size()));
    return bytes;
  }
  std::size_t Below(std::size_t end) { return random_() % end; }

  // Whether all of the table could be read; then every value has a text. An error says what it is about.
  bool CanRead(const std::function<std::unique_ptr<TFileReader>()>& open) {
    TFileRows rows;
    try {
      const auto reader = open();
      reader->Tables();
      const TFileTable table = reader->Structure("t");
      EXPECT_EQ(table.columns.size(), table.fields.size());
      rows = reader->Rows("t", kAllRows);
    } catch (const EVelmora& error) {
      EXPECT_FALSE(std::string_view(error.what()).empty());
      return false;
    }
    for (const TMemDataset::TRow& row : rows.rows)
      for (const TVariant& value : row) VarToText(value);
    return true;
  }

  void Run(const std::vector<TSpoilable>& files, const std::function<std::unique_ptr<TFileReader>()>& open) {
    for (const TSpoilable& file : files) Put(file.name, file.bytes);
    ASSERT_TRUE(CanRead(open)) << "the sound files";
    int read = 0;
    for (int i = 0; i < kRounds; ++i) {
      const TSpoilable& file = files[Below(files.size())];
      Put(file.name, Spoilt(file.bytes));
      read += CanRead(open) ? 1 : 0;
      Put(file.name, file.bytes);
    }
    EXPECT_GT(read, kRounds / 20);
    EXPECT_LT(read, kRounds - kRounds / 20);
    RecordProperty("read", read);
  }

 private:
  std::mt19937 random_{20240601};  // NOLINT: the same run each time
};

TEST_F(DbfMutationTest, DBase) {
  const struct {
    int version;
    const char* form;
  } kForms[] = {{0x83, "III"}, {0x8B, "IV"}};
  for (const auto& form : kForms) {
    TDbfMemoDraft memos(form.form);
    TDbfDraft table{.fields = {{"C", 'C', 5}, {"N", 'N', 8, 2}, {"L", 'L', 1}, {"D", 'D', 8}, {"M", 'M', 10}},
                    .version = form.version};
    for (int i = 0; i < 20; ++i) {
      const std::string memo = std::to_string(memos.Add(std::string(static_cast<std::size_t>(i) * 40, 'm')));
      table.records.push_back(" text " + DbfRight("1.25", 8) + "T20240229" + DbfRight(memo, 10));
    }
    Run({{"t.dbf", table.Bytes()},
         {"t.dbt", memos.Bytes()},
         {"t.inf", "[dBASE IV]\r\nNDX1=a.ndx\r\nUNDX2=a.ndx\r\n"},
         {"a.ndx", NdxBytes("C")}},
        [this] { return DBase(); });
  }
}

TEST_F(DbfMutationTest, FoxPro) {
  TDbfMemoDraft memos("Fox", 64);
  TDbfDraft table{.fields = {{"ID", 'I', 4, 0, 0x0C},
                             {"C", 'C', 5},
                             {"N", 'N', 8, 2, 2},
                             {"V", 'V', 6, 0, 2},
                             {"B", 'B', 8},
                             {"Y", 'Y', 8},
                             {"T", 'T', 8, 0, 2},
                             {"M", 'M', 4},
                             {"G", 'G', 4},
                             {"_NullFlags", '0', 1, 0, 5}},
                  .version = 0x32,
                  .flags = 7,
                  .database = "d.dbc"};
  for (int i = 0; i < 20; ++i) {
    const std::string memo(static_cast<std::size_t>(i) * 40, 'm');
    table.records.push_back((i % 5 == 0 ? "*" : " ") + DbfLittle(i) + "text " + DbfRight("1.25", 8) + "vary \4" +
                            DbfLittle(i, 8) + DbfLittle(i, 8) + DbfMomentBytes(2451545 + i, i * 1000) +
                            DbfLittle(memos.Add(memo)) + DbfLittle(memos.Add(memo)) + "\x02"s);
  }
  TDbcDraft database;
  const int id = database.AddTable("t", {{1, "t.dbf"}, {20, "key"}});
  for (const char* name : {"number", "text", "decimal", "vary", "double", "money", "time", "memo", "general"})
    database.AddField(id, name, {{11, "0"}});
  const std::string tags = CdxBytes({{"ALL", "text+vary"}, {"KEY", "number", 0x64}, {"TEXT", "text"}}, 2);
  Run({{"t.dbf", table.Bytes()},
       {"t.fpt", memos.Bytes()},
       {"t.cdx", tags},
       {"d.dbc", database.Table()},
       {"d.dct", database.Memos()}},
      [this] { return FoxPro(); });
}

}  // namespace
}  // namespace velmora

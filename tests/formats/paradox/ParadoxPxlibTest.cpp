// SPDX-License-Identifier: GPL-3.0-or-later

// Tables that an independent library has written.

#include <gtest/gtest.h>

extern "C" {
#include <paradox.h>
}

#include <cstring>
#include <functional>

#include "formats/paradox/ParadoxReader.h"
#include "support/ScratchFolder.h"
#include "support/ShownValues.h"
#include "util/Format.h"

namespace velmora {
namespace {

using testing::ShownRow;

struct TColumn {
  const char* name;
  int type;
  int size;
};

// Writes one table; the library's records are arrays of values that it frees itself.
class TPxWriter {
 public:
  TPxWriter(const std::string& path, const std::vector<TColumn>& columns) : doc_(PX_new()), count_(columns.size()) {
    auto* fields = static_cast<pxfield_t*>(doc_->malloc(doc_, count_ * sizeof(pxfield_t), "fields"));
    for (std::size_t i = 0; i < count_; ++i) {
      fields[i].px_fname = PX_strdup(doc_, columns[i].name);
      fields[i].px_ftype = static_cast<char>(columns[i].type);
      fields[i].px_flen = columns[i].size;
      fields[i].px_fdc = 0;
    }
    if (PX_create_file(doc_, fields, static_cast<int>(count_), path.c_str(), pxfFileTypNonIndexDB) < 0)
      throw std::runtime_error("pxlib: no table");
  }
  ~TPxWriter() {
    PX_close(doc_);
    PX_delete(doc_);
  }
  TPxWriter(const TPxWriter&) = delete;
  TPxWriter& operator=(const TPxWriter&) = delete;

  void SetKeys(int count) { PX_set_value(doc_, "numprimkeys", static_cast<float>(count)); }
  void SetBlobFile(std::string path) {
    if (PX_set_blob_file(doc_, path.c_str()) < 0) throw std::runtime_error("pxlib: no memo file");
  }
  // Each call fills in one value.
  void Add(const std::vector<std::function<void(pxval_t&)>>& fill) {
    std::vector<pxval_t> values(count_);
    std::vector<pxval_t*> pointers;
    for (std::size_t i = 0; i < count_; ++i) {
      std::memset(&values[i], 0, sizeof(pxval_t));
      fill[i](values[i]);
      pointers.push_back(&values[i]);
    }
    if (PX_insert_record(doc_, pointers.data()) < 0) throw std::runtime_error("pxlib: no record");
  }

 private:
  pxdoc_t* doc_;
  std::size_t count_;
};

std::function<void(pxval_t&)> Null() {
  return [](pxval_t& value) { value.isnull = 1; };
}
std::function<void(pxval_t&)> Whole(long number) {
  return [=](pxval_t& value) { value.value.lval = number; };
}
std::function<void(pxval_t&)> Real(double number) {
  return [=](pxval_t& value) { value.value.dval = number; };
}
std::function<void(pxval_t&)> Text(const std::string& text) {
  return [=](pxval_t& value) {
    value.value.str.val = const_cast<char*>(text.data());
    value.value.str.len = static_cast<int>(text.size());
  };
}

class ParadoxPxlibTest : public ::testing::Test {
 protected:
  testing::TScratchFolder folder_;
  const std::string path_ = folder_ / "t.db";
};

TEST_F(ParadoxPxlibTest, EveryTypeItWrites) {
  const std::vector<TColumn> columns = {
      {"Alpha", pxfAlpha, 12},      {"Date", pxfDate, 4},     {"Short", pxfShort, 2},     {"Long", pxfLong, 4},
      {"Currency", pxfCurrency, 8}, {"Number", pxfNumber, 8}, {"Logical", pxfLogical, 1}, {"Time", pxfTime, 4},
      {"Stamp", pxfTimestamp, 8},   {"Auto", pxfAutoInc, 4},  {"Bytes", pxfBytes, 5},     {"Bcd", pxfBCD, 17},
      {"Last", pxfAlpha, 3}};
  {
    TPxWriter writer(path_, columns);
    writer.SetKeys(2);
    writer.Add({Text("hello"), Whole(693594 + 2), Whole(-3), Whole(70000), Real(12.25), Real(-1e10), Whole(1),
                Whole(43200000), Real((693594.0 + 0.5) * 86400000), Whole(5), Text("bytes"), Text("1.25"),
                Text("end")});
    writer.Add({Text("12 letters.."), Whole(1), Whole(32767), Whole(-2000000000), Real(-0.5), Real(0), Whole(0),
                Whole(1), Real(86400000), Whole(6), Text("12345"), Text("-7"), Text("x")});
    writer.Add(
        {Null(), Null(), Null(), Null(), Null(), Null(), Null(), Null(), Null(), Whole(7), Null(), Null(), Null()});
  }
  TPxTable table(path_, false);
  EXPECT_EQ(table.Header().primaryKeyFields, 2);
  ASSERT_EQ(table.Fields().size(), columns.size());
  for (std::size_t i = 0; i < columns.size(); ++i) {
    EXPECT_EQ(table.Fields()[i].name, columns[i].name);
    EXPECT_EQ(table.Fields()[i].type, columns[i].type);
  }
  std::string rows;
  for (int i = 0; i < 3; ++i) {
    table.ReadRecord(i);
    rows += ShownRow(table.Values()) + "\n";
  }
  EXPECT_EQ(rows,
            "text hello|float 2|int -3|int 70000|float 12.25|float -10000000000|int 1|float 0.5|float 0.5|int 5|null|"
            "null|text end\n"
            "text 12 letters..|float -693593|int 32767|int -2000000000|float -0.5|float 0|int 0|"
            "float 1.15740740740741E-8|float -693593|int 6|null|null|text x\n"
            "text |null|null|null|null|null|null|null|null|int 7|null|null|text \n");
}

TEST_F(ParadoxPxlibTest, ManyBlocks) {
  constexpr int kRows = 5000;
  {
    TPxWriter writer(path_, {{"n", pxfLong, 4}, {"text", pxfAlpha, 30}});
    for (int i = 0; i < kRows; ++i) writer.Add({Whole(i - 2500), Text(Format("row %d", i))});
  }
  TPxTable table(path_, false);
  ASSERT_EQ(table.Header().numRecords, static_cast<std::uint32_t>(kRows));
  for (int i = 0; i < kRows; ++i) {
    table.ReadRecord(i);
    ASSERT_EQ(ShownRow(table.Values()), Format("int %d|text row %d", i - 2500, i));
  }
}

// Short memos share blocks, long ones have their own; the beginning stands in the record too. Of the other types kept
// like this the library writes no values.
TEST_F(ParadoxPxlibTest, MemosOfEverySize) {
  std::vector<std::string> memos;
  for (const std::size_t size : {1U, 9U, 10U, 11U, 100U, 500U, 2000U, 2048U, 2049U, 4096U, 5000U, 70000U}) {
    std::string memo;
    while (memo.size() < size) memo += Format("%d,", memo.size());
    memos.push_back(memo.substr(0, size));
  }
  for (const int type : {pxfMemoBLOb, pxfFmtMemoBLOb}) {
    {
      TPxWriter writer(path_, {{"n", pxfShort, 2}, {"memo", type, 20}, {"none", pxfMemoBLOb, 15}});
      writer.SetBlobFile(folder_ / "t.mb");
      for (std::size_t i = 0; i < memos.size(); ++i) writer.Add({Whole(static_cast<long>(i)), Text(memos[i]), Null()});
    }
    TPxTable table(path_, false);
    for (std::size_t i = 0; i < memos.size(); ++i) {
      table.ReadRecord(static_cast<std::int64_t>(i));
      EXPECT_TRUE(VarToText(table.Values()[1]) == memos[i]) << type << " " << memos[i].size();
      EXPECT_TRUE(VarIsNull(table.Values()[2]));
    }
  }
}

}  // namespace
}  // namespace velmora

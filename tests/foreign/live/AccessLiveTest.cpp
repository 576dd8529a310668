// Access files of random structure, made equal on a server.

#include <gtest/gtest.h>

#include <cstdlib>
#include <random>

#include "engines/oledb/DBConnAccess.h"
#include "foreign/AccessSamples.h"
#include "foreign/live/ForeignSync.h"
#include "formats/mdb/MdbPages.h"
#include "support/ByteText.h"
#include "support/ScratchFolder.h"
#include "util/Format.h"

namespace velmora {
namespace {

using testing::TAccessRelation;
using testing::TAccessTable;
using enum EMdbType;

// What a column of a type may have as default and as rule.
struct TTypeChoice {
  EMdbType type;
  std::uint16_t size;  // of one that is not fixed
  std::vector<const char*> defaults, rules;
};
const std::vector<TTypeChoice> kChoices = {
    {Bool, 0, {"No", "=True", "Yes"}, {}},
    {Byte, 0, {"0", "=12"}, {"<100", "Between 1 And 9 Or 200"}},
    {Int, 0, {"-5"}, {">=-10 And <=10"}},
    {LongInt, 0, {"1000000"}, {"<>0", "In (1,2,3) Or Is Null"}},
    {BigInt, 0, {"9000000000"}, {">0"}},
    {Money, 0, {"1.5"}, {">=0.01"}},
    {Float, 0, {".5"}, {}},
    {Double, 0, {"-2.25"}, {"<1000000"}},
    {Numeric, 0, {"3.14"}, {">0"}},
    {DateTime, 0, {"Now()", "#1/31/2024#", "Date()"}, {">=#1/1/1990#"}},
    {LongDateTime, 0, {"Now()"}, {}},
    {RepId, 0, {"GenGUID()"}, {}},
    {Text, 100, {"\"x\"", "\"it's \"\"so\"\"\"", "\"\""}, {"Like \"*a?\"", "\"A\" Or \"B\"", "Not \"x'y\""}},
    {Text, 510, {"\"\\\""}, {"Like \"[a-c]*\""}},  // a pattern that MySQL has no form for
    {Memo, 0, {"\"none\""}, {}},
    {Ole, 0, {}, {}},
    {Binary, 64, {}, {}},
};

class TRandomAccess {
 public:
  explicit TRandomAccess(unsigned seed) : random_(seed) {}

  std::string Make() {
    const std::size_t tables = 2 + Below(4);
    for (std::size_t i = 0; i < tables; ++i) tables_.push_back(Table(i));
    for (std::size_t i = 1; i < tables; ++i)
      if (Below(3) != 0) Relate(tables_[i], tables_[Below(i)]);
    return testing::AccessFile(tables_, relations_);
  }

 private:
  std::size_t Below(std::size_t end) { return std::uniform_int_distribution<std::size_t>(0, end - 1)(random_); }

  TAccessTable Table(std::size_t number) {
    TAccessTable table{.name = Format(number % 2 == 0 ? "Table %d" : "täble_%d", number), .columns = {}};
    table.columns.push_back(MdbFixedColumn("ID", LongInt, Below(2) == 0 ? kMdbAutoNumber : kMdbNullable));
    table.indexes.push_back({.name = "PrimaryKey", .parts = {{0}}, .flags = kMdbUnique, .kind = kMdbPrimaryKey});
    const std::size_t columns = 1 + Below(9);
    for (std::size_t i = 1; i <= columns; ++i) AddColumn(Format("c %d", i), table);
    if (Below(3) == 0) table.properties[""]["Description"] = "What's \"in\" it";
    return table;
  }

  void AddColumn(const std::string& name, TAccessTable& table) {
    const TTypeChoice& choice = kChoices[Below(kChoices.size())];
    const bool varies = choice.size > 0 || choice.type == Memo || choice.type == Ole;
    table.columns.push_back(varies ? MdbVarColumn(name, choice.type, choice.size) : MdbFixedColumn(name, choice.type));
    if (choice.type == Numeric) table.columns.back().precision = 12, table.columns.back().scale = 3;
    testing::TAccessProperties& properties = table.properties[name];
    if (Below(3) == 0) properties["Required"] = Below(4) == 0 ? "no" : "yes";
    if (Below(3) == 0) properties["Description"] = "a \\ description";
    if (!choice.defaults.empty() && Below(2) == 0)
      properties["DefaultValue"] = choice.defaults[Below(choice.defaults.size())];
    if (!choice.rules.empty() && Below(2) == 0) properties["ValidationRule"] = choice.rules[Below(choice.rules.size())];
    if (choice.type == Memo || choice.type == Ole || Below(3) != 0) return;
    const auto number = static_cast<std::uint16_t>(table.columns.size() - 1);
    table.indexes.push_back({.name = "by " + name,
                             .parts = {{number, Below(2) == 0}, {0}},
                             .flags = Below(2) == 0 ? kMdbUnique : std::uint8_t{0},
                             .kind = 0});
  }

  void Relate(TAccessTable& child, const TAccessTable& parent) {
    constexpr unsigned kBits[] = {0, 0x100, 0x1000, 0x1100, 0x2000, 2};
    child.columns.push_back(MdbFixedColumn("parent", LongInt));
    const std::string name = Below(2) == 0 ? "relation" : child.name + parent.name;
    relations_.push_back({name, child.name, {"parent"}, parent.name, {"ID"}, kBits[Below(std::size(kBits))]});
  }

  std::mt19937 random_;
  std::vector<TAccessTable> tables_;
  std::vector<TAccessRelation> relations_;
};

class AccessLiveTest : public testing::TForeignSync, public ::testing::TestWithParam<unsigned> {};

TEST_P(AccessLiveTest, IsThereAfterARun) {
  const testing::TScratchFolder folder;
  const std::string path = folder / "shop.mdb";
  testing::PutFile(path, TRandomAccess(GetParam()).Make());
  SyncFrom(std::make_unique<TDBConnAccess>(path, "", ""));
}

// A few dozen, or as many as are asked for.
unsigned SeedCount() {
  const char* asked = std::getenv("VELMORA_SEEDS");
  return asked == nullptr ? 24 : static_cast<unsigned>(std::max(std::atoi(asked), 1));
}

INSTANTIATE_TEST_SUITE_P(Seeds, AccessLiveTest, ::testing::Range(0U, SeedCount()));

}  // namespace
}  // namespace velmora

#pragma once

// Bytes of the files of dBASE and FoxPro, laid out by hand: with what no program would write too.

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace velmora::testing {

struct TDbfDraftField {
  std::string name;
  char type;
  int size;
  int decimals = 0;
  int flags = 0;
};

// A table (.dbf).
struct TDbfDraft {
  std::vector<TDbfDraftField> fields;
  std::vector<std::string> records = {};  // with the mark of deletion in front
  int version = 0x03;
  int flags = 0;
  int code_page = 0;
  std::string database = {};  // Visual FoxPro: the link to it
  std::optional<std::uint32_t> count = {};
  std::optional<int> record_size = {};
  std::optional<int> head_size = {};

  std::string Bytes() const;
};

// A memo file: .dbt of dBASE III ("III") or IV ("IV"), .fpt ("Fox").
class TDbfMemoDraft {
 public:
  explicit TDbfMemoDraft(std::string form, std::size_t block_size = 512);

  std::uint32_t Add(const std::string& memo);  // gives the number of its block
  std::string Bytes() const;

 private:
  std::string form_;
  std::size_t block_size_;
  std::string bytes_;
};

// The head of an index file of dBASE.
std::string NdxBytes(const std::string& expression, bool unique = false);

struct TCdxTag {
  std::string name;
  std::string expression;
  int options = 0x60;
  std::string filter = {};
};

// An index file of FoxPro with its list of tags, so many to a page; no keys.
std::string CdxBytes(const std::vector<TCdxTag>& tags, std::size_t per_page = 20);

// A database of Visual FoxPro: .dbc and .dct.
class TDbcDraft {
 public:
  TDbcDraft() { Add("Database", 1, "Database", ""); }

  // Properties are added by number. They give the number of the new object.
  int AddTable(const std::string& name, const std::vector<std::pair<int, std::string>>& properties);
  int AddField(int table, const std::string& name, const std::vector<std::pair<int, std::string>>& properties = {});
  int Add(const std::string& type, int parent, const std::string& name, const std::string& properties);
  void DeleteLast() { table_.records.back()[0] = '*'; }

  std::string Table() const { return table_.Bytes(); }
  std::string Memos() const { return memos_.Bytes(); }

 private:
  TDbfDraft table_ = {.fields = {{"OBJECTID", 'I', 4},
                                 {"PARENTID", 'I', 4},
                                 {"OBJECTTYPE", 'C', 10},
                                 {"OBJECTNAME", 'C', 128},
                                 {"PROPERTY", 'M', 4, 0, 4},
                                 {"CODE", 'M', 4, 0, 4},
                                 {"RIINFO", 'C', 6},
                                 {"USER", 'M', 4}},
                      .version = 0x30,
                      .flags = 7,
                      .code_page = 3};
  TDbfMemoDraft memos_{"Fox", 64};
};

// Field values.
std::string DbfLeft(const std::string& text, std::size_t size);   // blanks behind
std::string DbfRight(const std::string& text, std::size_t size);  // blanks in front
std::string DbfLittle(std::int64_t number, std::size_t size = 4);
std::string DbfBig(std::uint64_t number, std::size_t size = 4);
std::string DbfDoubleBytes(double number);
std::string DbfMomentBytes(int day, int milliseconds);  // days as astronomers count them

}  // namespace velmora::testing

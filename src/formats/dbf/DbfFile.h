// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The table files (.dbf) of dBASE III, IV and 5, FoxPro 2 and Visual FoxPro: head, fields, records. The layout is
// published as "dBASE Table File Format" with the format descriptions of the Library of Congress, and as "Table File
// Structure" with the documentation of Visual FoxPro; docs/dbf.md has what counts here. Failures of the system name the
// file; what is wrong in a file is told with its name, the offset or the field, and the fault.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "formats/dbf/DbfCodePage.h"
#include "util/InputFile.h"
#include "util/Lists.h"
#include "util/LittleEndian.h"

namespace velmora {

// Bits of a field's flags, which only Visual FoxPro has.
inline constexpr std::uint8_t kDbfHidden = 0x01;
inline constexpr std::uint8_t kDbfNullable = 0x02;
inline constexpr std::uint8_t kDbfBinary = 0x04;
inline constexpr std::uint8_t kDbfAutoInc = 0x0C;  // both of them

// Bits of a table's flags.
inline constexpr std::uint8_t kDbfHasTags = 0x01;

struct TDbfField {
  std::string name;        // in UTF-8
  char type = 0;           // the letter of the file; but the B of dBASE 5, a memo of bytes, is G here
  std::size_t offset = 0;  // in the record
  std::size_t size = 0;
  unsigned decimals = 0;
  std::uint8_t flags = 0;
  // Bits among the null flags of the record; none: -1.
  int null_bit = -1;    // set: the value is null
  int length_bit = -1;  // set: the value is shorter than the field, whose last byte has its length

  bool Is(std::uint8_t flag) const { return (flags & flag) == flag; }
};

enum class EDbfMemo { DBase3, DBase4, FoxPro };

struct TDbfHead {
  std::uint8_t version = 0;
  std::uint32_t records = 0;
  std::uint16_t head_size = 0;
  std::uint16_t record_size = 0;
  std::uint8_t flags = 0;
  std::uint8_t code_page = 0;

  bool IsVisualFoxPro() const { return version >= 0x30 && version <= 0x32; }
  EDbfMemo Memo() const;  // the form of its memo file
};

// The number that stands at `bytes`, highest byte first.
inline std::uint32_t DbfBigAt(const char* bytes) { return __builtin_bswap32(LittleAt<std::uint32_t>(bytes)); }

// Raises "FILE: offset 0x..: FAULT".
[[noreturn]] void RaiseDbfFault(const std::string& path, std::uint64_t offset, std::string_view fault);

// A path that stands in a file, seen from `folder`: with the delimiters of another system, in any case of letters. Of
// one that begins at a drive or a root the last part counts.
std::string DbfResolvePath(const std::string& folder, std::string_view path, TFolderNames* known = nullptr);

// An open table file. Others may go on writing to it meanwhile, as its makers' programs share their tables.
class TDbfFile {
 public:
  // Reads head and fields. Raises for what is no such file, for fields that do not fit the record, and for more records
  // than the file has bytes for. The code page is `stated`, if that is not empty; else that of a file of the same name
  // that ends in .cpg; else that of the head; else `unstated`.
  TDbfFile(const std::string& path, const char* unstated, const std::string& stated = {},
           TFolderNames* known = nullptr);

  const std::string& Path() const { return file_.Path(); }
  const TInputFile& File() const { return file_; }
  const TDbfHead& Head() const { return head_; }
  const std::vector<TDbfField>& Fields() const { return fields_; }  // hidden ones too
  const TCodePage& CodePage() const { return page_; }
  const TStringList& Warnings() const { return warnings_; }  // what was passed over
  // The field of the null flags; null where there is none.
  const TDbfField* NullFlags() const;
  // The path of the database that a table of Visual FoxPro belongs to, as it stands; empty: to none.
  std::string DatabaseLink() const;

 private:
  TCodePage CodePageOf(const char* unstated, const std::string& stated, TFolderNames* known);
  void ReadFields();
  void AddField(const char* descriptor);
  void PlaceFields();
  void NumberBits();
  void CheckRecords() const;

  TInputFile file_;
  TStringList warnings_;
  TDbfHead head_;
  TCodePage page_;
  std::vector<TDbfField> fields_;
  std::size_t fields_end_ = 0;  // in the file
};

// Walks the records of a file, which must live as long, in blocks; created in front of the first.
class TDbfRecords {
 public:
  explicit TDbfRecords(const TDbfFile& file) : file_(file) {}

  bool Next();                                      // false: there is none. Raises when the file was cut meanwhile
  std::uint32_t Number() const { return number_; }  // from 1
  bool IsDeleted() const { return Bytes().front() == '*'; }
  std::string_view Bytes() const { return std::string_view(block_).substr(at_, file_.Head().record_size); }

 private:
  const TDbfFile& file_;
  std::string block_;
  std::size_t at_ = 0;  // of the record in the block
  std::uint32_t number_ = 0;
};

}  // namespace velmora

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Bytes of Paradox files, laid out by hand.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace velmora::bench {

struct TPxFileField {
  std::string name;
  int type;
  int size;
};

struct TPxFileBlock {
  std::vector<std::string> records;
  std::optional<int> addDataSize = {};  // else that of the records
};

struct TPxFile {
  std::vector<TPxFileField> fields;
  std::vector<TPxFileBlock> blocks = {};
  int version = 12;  // fileVersionID
  int fileType = 2;
  int blockKilobytes = 1;
  int keys = 0;
  int firstBlock = 1;
  std::optional<std::uint32_t> records = {};  // else as many as the blocks hold
  std::uint32_t encryption = 0;

  int RecordSize() const;
  std::string Header() const;
  std::string Block(const TPxFileBlock& block) const;
  std::string Bytes() const;  // the whole file
};

// Field values. Null is as many zero bytes.
std::string PxInteger(std::int64_t value, std::size_t width);
std::string PxFloat(double value);
std::string PxText(const std::string& text, std::size_t size);  // padded with zeros
// A memo field of leader + 10 bytes.
std::string PxMemoField(const std::string& leader, std::uint32_t location, std::int32_t length);

}  // namespace velmora::bench

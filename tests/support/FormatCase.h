// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Files of the formats that are read, with what has to come of them: tests/data/formats. A case is a text:
//
//   --- NAME         a file; its bytes follow as ByteText.h describes them
//   --- NAME!PART    a part of a Zip archive of that name
//   --- !SCRIPT ARGS a script of tests/formats/data writes files into the folder; its input follows
//   === WORDS        something to do, as each test program knows its own; the expected text follows
//
// Lines that begin with "#" before the first section say what the case is about.

#include <string>
#include <utility>
#include <vector>

#include "support/ByteText.h"

namespace velmora::testing {

struct TFormatCase {
  struct TAsk {
    std::vector<std::string> words;
    std::string answer;
  };
  std::vector<std::pair<std::string, std::string>> files;  // names and bytes
  std::vector<TAsk> asks;

  void PutInto(const std::string& folder) const;
  TFormatCase With(const std::string& file, const std::string& bytes) const;  // in place of that file's
  const std::string& Bytes(const std::string& file) const;
};

TFormatCase FormatCase(const std::string& name);
std::vector<std::string> FormatCaseNames();  // without those of formats that the build is without

}  // namespace velmora::testing

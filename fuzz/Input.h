// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What fuzzers have in common: inputs of several parts, inputs that are files, and reading all there is.

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "formats/port/FileReader.h"

namespace velmora::fuzzing {

// Ends a part of an input.
inline constexpr std::string_view kNextPart = "<<next>>";

// Always so many; those that the input does not have are empty, the last one is the rest.
std::vector<std::string_view> Parts(std::string_view input, std::size_t count);

// Takes the first byte off, which chooses one of `count`.
std::size_t Choose(std::string_view& input, std::size_t count);

// Files in a folder that lasts as long as the program. One without bytes is taken away.
struct TInputFileBytes {
  const char* name;
  std::string_view bytes;
};
const std::string& PutFiles(const std::vector<TInputFileBytes>& files);  // gives the folder

// Runs what may end in an error. One without a message is a finding.
void Try(const std::function<void()>& read);

// Every table's structure and rows, each read as far as it can be.
void ReadAll(TFileReader& reader);

}  // namespace velmora::fuzzing

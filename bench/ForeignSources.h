// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Databases of other products, with the tables of one sample: 12 columns, up to 3 keys, and in every third table a
// reference to the one before, as far as the product has such.

#include <string>

namespace velmora::bench {

std::string AccessSample(int tables);                             // the bytes of a file
std::string FirebirdSample(int tables);                           // a script, each statement ending in ";\n"
void PutFile(const std::string& path, const std::string& bytes);  // without waiting for the disk
void WriteDbfSample(int tables, const std::string& folder);       // the folder is there

}  // namespace velmora::bench

// SPDX-License-Identifier: GPL-3.0-or-later
#include "Input.h"

#include <algorithm>
#include <filesystem>
#include <stdexcept>

#include "support/ByteText.h"
#include "support/ScratchFolder.h"
#include "util/Errors.h"
#include "util/Variant.h"

namespace velmora::fuzzing {

std::vector<std::string_view> Parts(std::string_view input, std::size_t count) {
  std::vector<std::string_view> parts;
  while (parts.size() + 1 < count) {
    const std::size_t end = std::min(input.find(kNextPart), input.size());
    parts.push_back(input.substr(0, end));
    input.remove_prefix(std::min(end + kNextPart.size(), input.size()));
  }
  parts.push_back(input);
  return parts;
}

std::size_t Choose(std::string_view& input, std::size_t count) {
  if (input.empty()) return 0;
  const auto choice = static_cast<unsigned char>(input.front());
  input.remove_prefix(1);
  return choice % count;
}

const std::string& PutFiles(const std::vector<TInputFileBytes>& files) {
  static const testing::TScratchFolder folder;
  for (const TInputFileBytes& file : files)
    if (file.bytes.empty())
      std::filesystem::remove(folder / file.name);
    else
      testing::PutFile(folder / file.name, std::string(file.bytes));
  return folder.Path();
}

void Try(const std::function<void()>& read) {
  try {
    read();
  } catch (const EVelmora& error) {
    if (std::string_view(error.what()).empty()) throw std::logic_error("an error without a message");
  }
}

void ReadAll(TFileReader& reader) {
  for (const TOLEDBTableRow& table : reader.Tables()) {
    Try([&] {
      const TFileTable found = reader.Structure(table.TABLE_NAME);
      if (found.fields.size() != found.columns.size()) throw std::logic_error("fields and columns differ");
    });
    Try([&] {
      for (const auto& row : reader.Rows(table.TABLE_NAME, kAllRows).rows)
        for (const TVariant& value : row) VarToText(value);
    });
  }
}

}  // namespace velmora::fuzzing

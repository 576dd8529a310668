// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/FormatCase.h"

#include <stdio.h>
#include <zip.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <sstream>
#include <stdexcept>

#include "util/Files.h"

namespace velmora::testing {
namespace {

const std::filesystem::path kFolder = VELMORA_SOURCE_DIR "/tests/data/formats";
const std::string kScripts = VELMORA_SOURCE_DIR "/tests/formats/data/";

// Names of cases of formats that this build is without begin so.
constexpr const char* kWithout[] = {
#ifndef VELMORA_MDB
    "jet",
#endif
#ifndef VELMORA_LOTUS
    "lotus",
#endif
    "."};

// The interpreters are the system's own, whose packages count.
void RunScript(const std::string& script, const std::string& folder, const std::string& input) {
  const std::string interpreter = script.find(".pl") != script.npos ? "/usr/bin/perl " : "/usr/bin/python3 ";
  FILE* program = popen(("cd '" + folder + "' && " + interpreter + kScripts + script).c_str(), "w");
  if (program == nullptr) throw std::runtime_error("no shell");
  const bool written = fwrite(input.data(), 1, input.size(), program) == input.size();
  if (pclose(program) != 0 || !written) throw std::runtime_error(script + ": no files; is its package there?");
}

// The archive `path` with those parts.
void PutArchive(const std::string& path, const std::vector<std::pair<std::string, std::string>>& parts) {
  std::filesystem::remove(path);
  zip_t* zip = zip_open(path.c_str(), ZIP_CREATE, nullptr);
  if (zip == nullptr) throw std::runtime_error("cannot write " + path);
  for (const auto& [name, bytes] : parts)
    zip_file_add(zip, name.c_str(), zip_source_buffer(zip, bytes.data(), bytes.size(), 0), 0);
  if (zip_close(zip) != 0) throw std::runtime_error("cannot write " + path);
}

std::vector<std::string> WordsOf(const std::string& text) {
  std::istringstream stream(text);
  std::vector<std::string> words;
  for (std::string word; stream >> word;) words.push_back(word);
  return words;
}

}  // namespace

void TFormatCase::PutInto(const std::string& folder) const {
  std::map<std::string, std::vector<std::pair<std::string, std::string>>> archives;
  for (const auto& [name, bytes] : files) {
    if (name.starts_with('!')) {
      RunScript(name.substr(1), folder, bytes);
      continue;
    }
    const std::size_t part = name.find('!');
    const std::string path = folder + "/" + name.substr(0, part);
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    if (part == name.npos)
      PutFile(path, bytes);
    else
      archives[path].emplace_back(name.substr(part + 1), bytes);
  }
  for (const auto& [path, parts] : archives) PutArchive(path, parts);
}

TFormatCase TFormatCase::With(const std::string& file, const std::string& bytes) const {
  TFormatCase changed = *this;
  std::ranges::find(changed.files, file, &std::pair<std::string, std::string>::first)->second = bytes;
  return changed;
}

const std::string& TFormatCase::Bytes(const std::string& file) const {
  return std::ranges::find(files, file, &std::pair<std::string, std::string>::first)->second;
}

TFormatCase FormatCase(const std::string& name) {
  TFormatCase found;
  std::string before;
  std::string* text = &before;
  std::istringstream lines(ReadFileText((kFolder / (name + ".txt")).string()));
  for (std::string line; std::getline(lines, line);)
    if (line.starts_with("--- "))
      text = &found.files.emplace_back(line.substr(4), "").second;
    else if (line.starts_with("=== "))
      text = &found.asks.emplace_back(WordsOf(line.substr(4)), "").answer;
    else
      text->append(line).append("\n");
  for (auto& [file, bytes] : found.files)
    if (!file.starts_with('!')) bytes = BytesOf(bytes);
  return found;
}

std::vector<std::string> FormatCaseNames() {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(kFolder)) {
    const std::string name = entry.path().stem().string();
    if (entry.path().extension() == ".txt" &&
        std::ranges::none_of(kWithout, [&](const char* without) { return name.starts_with(without); }))
      names.push_back(name);
  }
  std::ranges::sort(names);
  return names;
}

}  // namespace velmora::testing

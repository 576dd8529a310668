// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/Transcript.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <span>
#include <utility>

#include "support/LineDiff.h"
#include "support/ScratchFolder.h"
#include "util/Errors.h"
#include "util/Files.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora::testing {

namespace {

namespace fs = std::filesystem;
using TLines = std::vector<std::string>;

constexpr std::string_view kAnything = "…";
constexpr char kCr[] = "␍";
constexpr char kFolder[] = "FOLDER";
constexpr char kNoLineEnd[] = "<no line end>";
constexpr char kEndOfInput[] = "< ^D";

TLines Split(const std::string& text, char separator) {
  TLines parts;
  if (!text.empty()) SplitPlain(separator, text, parts);
  return parts;
}

// --- Bytes and what a page shows of them

bool IsShown(std::string_view character) {
  if (character.size() > 1) return character < "\u0080" || character >= "\u00A0";
  return (character[0] >= ' ' && character[0] < 0x7F) || character == "\n" || character == "\t";
}

std::string Shown(const std::string& text) {
  std::string shown;
  for (std::size_t at = 0; at < text.size();) {
    const std::string character = text.substr(at, CharSize(text, at));
    at += character.size();
    if (IsShown(character))
      shown += character;
    else if (character == "\r")
      shown += kCr;
    else
      for (const char byte : character) shown += Format("<%02X>", static_cast<unsigned char>(byte));
  }
  return shown;
}

std::string BytesOf(const std::string& shown) {
  std::string bytes = StrReplace(shown, kCr, "\r");
  const auto digit = [&](std::size_t at) { return std::isxdigit(static_cast<unsigned char>(bytes[at])) != 0; };
  for (std::size_t at = 0; at + 3 < bytes.size(); ++at)
    if (bytes[at] == '<' && digit(at + 1) && digit(at + 2) && bytes[at + 3] == '>')
      bytes.replace(at, 4, 1, static_cast<char>(std::stoi(bytes.substr(at + 1, 2), nullptr, 16)));
  return bytes;
}

// --- A step: what is to do, and the lines that belong to it

struct TStep {
  std::string head;
  TLines answers, below;
};

bool IsBelow(std::string_view line) {
  return line == "!" || std::ranges::any_of(TLines{"  ", "! ", "? ", "= "},
                                            [line](const std::string& mark) { return line.starts_with(mark); });
}

// A comment and a blank line are steps of their own. Within what stands below a step, a blank line is one of it.
std::vector<TStep> StepsOf(const std::string& text) {
  std::vector<TStep> steps;
  for (const std::string& line : Split(text, '\n')) {
    if (line.starts_with('<')) {
      steps.back().answers.push_back(line);
    } else if (IsBelow(line)) {
      std::size_t blank = 0;
      for (; steps.back().head.empty(); ++blank) steps.pop_back();
      TLines& below = steps.back().below;
      below.insert(below.end(), blank, "");
      below.push_back(line);
    } else {
      steps.push_back({line, {}, {}});
    }
  }
  return steps;
}

// A line of output as a transcript has it.
std::string Marked(const std::string& mark, const std::string& line) {
  if (line.empty()) return Trim(mark);
  if (line.starts_with("{\"")) return StrReplace(line, "{\"", "\n" + mark + "{\"").substr(1);
  return mark + (line.ends_with(' ') ? line.substr(0, line.size() - 1) + "<20>" : line);
}

TLines MarkedLines(const std::string& mark, const std::string& text) {
  TLines lines = Split(Shown(text), '\n');
  if (text.ends_with('\n')) lines.pop_back();
  for (std::string& line : lines) line = Marked(mark, line);
  if (!text.empty() && !text.ends_with('\n')) lines.push_back(mark + kNoLineEnd);
  return Split(JoinList(lines, "\n"), '\n');
}

std::string Unmarked(const TLines& below) {
  std::string text;
  for (const std::string& line : below) text += BytesOf(line.substr(std::min<std::size_t>(line.size(), 2))) + "\n";
  const std::string open = std::string("\n") + kNoLineEnd + "\n";
  return text.ends_with(open) ? text.substr(0, text.size() - open.size()) : text;
}

// --- Whether what came is what is written

bool LineFits(std::string_view written, std::string_view came) {
  const std::size_t any = written.find(kAnything);
  if (any == std::string_view::npos) return written == came;
  if (!came.starts_with(written.substr(0, any))) return false;
  written.remove_prefix(any + kAnything.size());
  for (came.remove_prefix(any); !LineFits(written, came); came.remove_prefix(1))
    if (came.empty()) return false;
  return true;
}

bool Fits(std::span<const std::string> written, std::span<const std::string> came) {
  if (written.empty()) return came.empty();
  const std::string& first = written.front();
  if (first.ends_with(kAnything) && first.size() == kAnything.size() + 2)
    for (std::size_t count = 0; count <= came.size(); ++count) {
      if (Fits(written.subspan(1), came.subspan(count))) return true;
      if (count < came.size() && !came[count].empty() && !came[count].starts_with(first.substr(0, 2))) return false;
    }
  return !came.empty() && LineFits(first, came.front()) && Fits(written.subspan(1), came.subspan(1));
}

// --- Running

// Words between blanks; what stands within '...' is part of one.
TLines WordsOf(const std::string& text) {
  TLines words;
  bool quoted = false, begun = false;
  for (const char c : text) {
    if (c == '\'') quoted = !quoted;
    const bool blank = c == ' ' && !quoted;
    if (!blank && !begun) words.emplace_back();
    if (!blank && c != '\'') words.back() += c;
    begun = !blank;
  }
  for (std::string& word : words) word = BytesOf(word);
  return words;
}

TLines RunCommand(const TStep& step, const TStepRunner& runner, const std::string& folder) {
  TLines asked;
  std::size_t given = 0;
  const TAsk ask = [&](const std::string& question, bool secret) {
    asked.push_back(Marked("? ", question + (secret ? "(not shown)" : "")));
    const std::string answer = given < step.answers.size() ? step.answers[given++] : kEndOfInput;
    if (answer == kEndOfInput) throw EAbort();
    return answer.size() > 1 ? BytesOf(answer.substr(2)) : "";
  };
  const std::string arguments = StrReplace(step.head.substr(1), kFolder, folder);
  const TAnswer answer = runner.run(WordsOf(arguments), step.answers.empty() ? TAsk() : ask);
  TLines lines = MarkedLines("  ", StrReplace(answer.out, folder, kFolder));
  const TLines errors = MarkedLines("! ", StrReplace(answer.err, folder, kFolder));
  lines.insert(lines.end(), asked.begin(), asked.end());
  lines.insert(lines.end(), errors.begin(), errors.end());
  if (answer.status != 0) lines.push_back("= " + std::to_string(answer.status));
  return lines;
}

TLines RunStep(const TStep& step, const TStepRunner& runner, const std::string& folder) {
  const std::string word = step.head.substr(0, step.head.find(' '));
  const std::string rest = step.head.substr(std::min(word.size() + 1, step.head.size()));
  if (word.empty() || word[0] == '#') return step.below;
  if (word == "$") return RunCommand(step, runner, folder);
  if (word == "show") return MarkedLines("  ", ReadFileBytes(rest));
  if (word != "file") return MarkedLines("  ", runner.further(word, rest, Unmarked(step.below)));
  if (const std::filesystem::path within = std::filesystem::path(rest).parent_path(); !within.empty())
    std::filesystem::create_directories(within);
  WriteFileText(rest, Unmarked(step.below));
  return step.below;
}

}  // namespace

std::vector<std::string> TranscriptNames(const std::string& folder) {
  std::vector<std::string> names;
  for (const auto& entry : fs::directory_iterator(folder))
    if (entry.path().extension() == ".txt") names.push_back(entry.path().stem().string());
  std::ranges::sort(names);
  return names;
}

std::string TranscriptDifference(const std::string& path, const TStepRunner& runner) {
  const TScratchFolder folder;
  const fs::path before = fs::current_path();
  const std::string written = ReadFileBytes(path);
  TLines came;
  const auto run = [&] {
    fs::current_path(folder.Path());
    for (const TStep& step : StepsOf(written)) {
      const TLines below = RunStep(step, runner, folder.Path());
      came.push_back(step.head);
      came.insert(came.end(), step.answers.begin(), step.answers.end());
      const TLines& kept = Fits(step.below, below) ? step.below : below;
      came.insert(came.end(), kept.begin(), kept.end());
    }
  };
  RunGuarded(run, [&] { fs::current_path(before); });
  const std::string whole = JoinList(came, "\n");
  if (std::getenv("VELMORA_RECORD") != nullptr) WriteFileText(path, whole);  // NOLINT(concurrency-mt-unsafe)
  return LineDiff(written, whole);
}

}  // namespace velmora::testing

// SPDX-License-Identifier: GPL-3.0-or-later
#include "sandbox/ReaderProcess.h"

#include <algorithm>
#include <utility>

#include "sandbox/ChildProcess.h"
#include "sandbox/WireFormat.h"
#include "util/Format.h"

namespace velmora {

namespace {

enum class EQuestion : std::int64_t { Tables, Structure, Rows };

TChildFaults FaultsOf(const std::string& path, const std::string& library) {
  return {.ended = Format("Cannot read %s: the file is damaged or of a kind that %s cannot read", path, library),
          .silent = Format("Cannot read %s: the file is damaged or too large for %s", path, library),
          .no_memory =
              Format("Cannot read %s: the file is damaged or too large for the memory that %s may use", path, library)};
}

std::string Answer(TFileReader& reader, const std::string& question) {
  TWireReader words(question);
  TWireWriter answer;
  const auto kind = static_cast<EQuestion>(words.Number());
  const std::string table = words.Text();
  switch (kind) {
    case EQuestion::Tables:
      answer.Tables(reader.Tables());
      break;
    case EQuestion::Structure:
      answer.Structure(reader.Structure(table));
      break;
    case EQuestion::Rows:
      answer.Rows(reader.Rows(table, words.Number()));
      break;
  }
  return answer.Take();
}

class TReaderProcess final : public TFileReader {
 public:
  TReaderProcess(const TFileReaderMaker& open, const std::string& path, const std::string& library,
                 const TChildLimits& limits)
      : child_([open] { return Answerer(open()); }, FaultsOf(path, library), limits) {
    child_.Start();
  }

  std::vector<TOLEDBTableRow> Tables() override {
    const std::string answer = Ask(EQuestion::Tables, {}, 0);
    return TWireReader(answer).Tables();
  }
  TFileTable Structure(const std::string& table) override {
    const std::string answer = Ask(EQuestion::Structure, table, 0);
    return TWireReader(answer).Structure();
  }
  TFileRows Rows(const std::string& table, std::int64_t limit) override {
    const std::string answer = Ask(EQuestion::Rows, table, limit);
    return TWireReader(answer).Rows();
  }

 private:
  static TChildProcess::TAnswerer Answerer(std::shared_ptr<TFileReader> reader) {
    return [reader = std::move(reader)](const std::string& question) { return Answer(*reader, question); };
  }

  std::string Ask(EQuestion kind, const std::string& table, std::int64_t limit) {
    TWireWriter question;
    question.Number(static_cast<std::int64_t>(kind));
    question.Text(table);
    question.Number(limit);
    return child_.Ask(question.Take());
  }

  TChildProcess child_;
};

}  // namespace

TChildLimits ReaderLimits(std::uint64_t size) {
  constexpr auto kMegabyte = std::uint64_t{1024} * 1024;
  return {.silence = std::chrono::seconds(20 + std::min<std::uint64_t>(size / kMegabyte, 600)),
          .memory = 2048 * kMegabyte + 32 * size};
}

std::unique_ptr<TFileReader> ReadInOwnProcess(const TFileReaderMaker& open, const std::string& path,
                                              const std::string& library, const TChildLimits& limits) {
  return std::make_unique<TReaderProcess>(open, path, library, limits);
}

}  // namespace velmora

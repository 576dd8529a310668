// SPDX-License-Identifier: GPL-3.0-or-later
#include "formats/text/DelimitedRecords.h"

#include <algorithm>
#include <cstddef>
#include <string_view>

#include "formats/text/TextFile.h"
#include "util/Errors.h"
#include "util/Format.h"

namespace velmora {

namespace {

constexpr char kUnclosed[] = "%s: line %d: a quote begins here that nobody closes";
constexpr char kQuote = '"';

class TRecordReader {
 public:
  TRecordReader(const std::string& path, const std::string& separator)
      : path_(path), separator_(separator), lines_(path) {}

  void Read(const std::function<void(const std::vector<TDelimitedValue>& values)>& take) {
    while (line_ < lines_.Count()) {
      if (lines_.Line(line_).empty()) {
        ++line_;
        continue;
      }
      values_.clear();
      ReadRecord();
      take(values_);
    }
  }

 private:
  void ReadRecord() {
    rest_ = lines_.Line(line_++);
    do values_.push_back(rest_.starts_with(kQuote) ? Quoted() : Plain());
    while (TakeSeparator());
  }

  TDelimitedValue Plain() {
    const std::size_t end = separator_.empty() ? rest_.size() : std::min(rest_.find(separator_), rest_.size());
    TDelimitedValue value{std::string(rest_.substr(0, end))};
    rest_.remove_prefix(end);
    return value;
  }

  // What stands between the closing quote and the separator belongs to the value.
  TDelimitedValue Quoted() {
    const std::size_t begins = line_;  // from 1
    TDelimitedValue value{{}, true};
    rest_.remove_prefix(1);
    for (;;) {
      const std::size_t end = rest_.find(kQuote);
      value.text += rest_.substr(0, end);
      if (end == std::string_view::npos) {
        if (line_ >= lines_.Count()) RaiseError(Format(kUnclosed, path_, begins));
        value.text += '\n';
        rest_ = lines_.Line(line_++);
        continue;
      }
      rest_.remove_prefix(end + 1);
      if (!rest_.starts_with(kQuote)) break;
      value.text += kQuote;
      rest_.remove_prefix(1);
    }
    value.text += Plain().text;
    return value;
  }

  bool TakeSeparator() {
    if (separator_.empty() || !rest_.starts_with(separator_)) return false;
    rest_.remove_prefix(separator_.size());
    return true;
  }

  const std::string& path_;
  const std::string& separator_;
  TTextLines lines_;
  std::size_t line_ = 0;  // the next one
  std::string_view rest_;
  std::vector<TDelimitedValue> values_;
};

}  // namespace

void ReadDelimitedRecords(const std::string& path, const std::string& separator,
                          const std::function<void(const std::vector<TDelimitedValue>& values)>& take) {
  TRecordReader(path, separator).Read(take);
}

}  // namespace velmora

// SPDX-License-Identifier: GPL-3.0-or-later
#include "formats/text/SMImportFromText.h"

#include <algorithm>
#include <limits>
#include <set>
#include <string_view>
#include <utility>

#include "formats/text/TextFile.h"
#include "formats/text/TypeGuess.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {
namespace {

constexpr std::size_t kLineEnd = std::numeric_limits<std::size_t>::max();

constexpr bool IsBlank(char c) { return static_cast<unsigned char>(c) <= ' '; }

std::size_t NextChar(std::string_view text, std::size_t at) {
  return at + (static_cast<unsigned char>(text[at]) < 0x80 ? 1 : CharSize(text, at));
}

// --- Where columns are

struct TSpan {
  std::size_t start;  // in characters
  std::size_t end;    // after the last one
};

// What stands at a position in some line.
constexpr unsigned char kName = 1;
constexpr unsigned char kData = 2;
using TPositions = std::vector<unsigned char>;

void MarkPositions(std::string_view line, unsigned char mark, TPositions& positions) {
  std::size_t position = 0;
  for (std::size_t at = 0; at < line.size(); at = NextChar(line, at), ++position) {
    if (IsBlank(line[at])) continue;
    if (position >= positions.size()) positions.resize(position + 1);
    positions[position] |= mark;
  }
}

std::vector<TSpan> SpansOf(const TPositions& positions, bool names) {
  std::vector<TSpan> spans;
  for (std::size_t i = 0; i < positions.size();) {
    if (positions[i] == 0) {
      ++i;
      continue;
    }
    TSpan span{i, i};
    unsigned char marks = 0;
    for (; i < positions.size() && positions[i] != 0; ++i) marks |= positions[i];
    span.end = i;
    const bool whole = !names || marks == (kName | kData);
    if (!whole && !spans.empty() && spans.back().end + 1 == span.start)
      spans.back().end = span.end;
    else
      spans.push_back(span);
  }
  return spans;
}

// Gives `take` the number and the trimmed value of each column that is not empty in this line.
template <class Take>
void WalkValues(std::string_view line, const std::vector<TSpan>& spans, Take take) {
  std::size_t at = 0;
  std::size_t position = 0;
  const auto move_to = [&](std::size_t wanted) {
    for (; at < line.size() && position < wanted; ++position) at = NextChar(line, at);
  };
  for (std::size_t i = 0; i < spans.size(); ++i) {
    move_to(spans[i].start);
    if (at == line.size()) return;
    const std::size_t from = at;
    move_to(i + 1 < spans.size() ? spans[i + 1].start : kLineEnd);
    const std::string_view value = TrimView(line.substr(from, at - from));
    if (!value.empty()) take(i, value);
  }
}

// --- What columns hold

TVariant ValueOf(std::string_view text, int type) {
  switch (type) {
    case kSMInteger:
      return std::int64_t{StrToInt(text)};
    case kSMFloat:
      return StrToFloat(text);
    case kSMDate:
    case kSMTime:
    case kSMDateTime:
      return TMoment{TextToDateTime(text).value_or(0)};
    default:
      return std::string(text);
  }
}

// --- The whole file

class TFixedText {
 public:
  TFixedText(const std::string& path, bool fixed, int row_first) : lines_(path) {
    lines_.DropEmptyEnd();
    first_row_ = std::min<std::size_t>(row_first > 1 ? static_cast<std::size_t>(row_first) - 1 : 0, lines_.Count());
    has_names_ = row_first > 1 && first_row_ > 0 && first_row_ == static_cast<std::size_t>(row_first) - 1;
    FindSpans(fixed);
    FindColumns();
  }

  const TSMColumns& Columns() const { return columns_; }

  // Gives `take` the values of each row, one for each column; it may move them away.
  template <class Take>
  void WalkRows(Take take) const {
    std::vector<TVariant> values;
    for (std::size_t line = first_row_; line < lines_.Count(); ++line) {
      values.assign(columns_.size(), {});
      WalkValues(lines_.Line(line), spans_,
                 [&](std::size_t i, std::string_view text) { values[i] = ValueOf(text, columns_[i].type); });
      take(values);
    }
  }

 private:
  std::string_view Names() const { return has_names_ ? lines_.Line(first_row_ - 1) : std::string_view(); }

  void FindSpans(bool fixed) {
    TPositions positions;
    MarkPositions(Names(), kName, positions);
    for (std::size_t line = first_row_; line < lines_.Count(); ++line)
      MarkPositions(lines_.Line(line), kData, positions);
    if (fixed)
      spans_ = SpansOf(positions, has_names_);
    else if (!positions.empty())
      spans_.push_back({0, positions.size()});
  }

  void FindColumns() {
    columns_.resize(spans_.size());
    WalkValues(Names(), spans_, [this](std::size_t i, std::string_view name) { columns_[i].name = name; });
    std::vector<TTypeGuess> types(spans_.size());
    for (std::size_t line = first_row_; line < lines_.Count(); ++line)
      WalkValues(lines_.Line(line), spans_, [&types](std::size_t i, std::string_view text) { types[i].See(text); });
    std::set<std::string> taken;
    for (std::size_t i = 0; i < columns_.size(); ++i) {
      TSMColumn& column = columns_[i];
      for (std::size_t number = i; column.name.empty() || taken.contains(column.name); ++number)
        column.name = Format("Column%d", number);
      taken.insert(column.name);
      column.type = types[i].Type();
      if (column.type == kSMString) column.size = static_cast<std::int64_t>(spans_[i].end - spans_[i].start);
    }
  }

  TTextLines lines_;
  std::size_t first_row_ = 0;  // from 0
  bool has_names_ = false;
  std::vector<TSpan> spans_;
  TSMColumns columns_;
};

}  // namespace

void TSMImportFromText::Execute() {
  const TFixedText text(SourceFileName, Fixed, RowFirst);
  if (OnCreateStructure) OnCreateStructure(*this, text.Columns());
  text.WalkRows([this](std::vector<TVariant>& values) {
    TMemDataset::TRow row(DataSet->Fields().size());
    for (std::size_t i = 0; i < std::min(row.size(), Mappings.size()); ++i)
      if (Mappings[i] < values.size()) row[i] = std::move(values[Mappings[i]]);
    DataSet->AddRow(std::move(row));
  });
}

}  // namespace velmora

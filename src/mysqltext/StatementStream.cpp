// SPDX-License-Identifier: GPL-3.0-or-later
#include "mysqltext/StatementStream.h"

#include <algorithm>
#include <utility>

#include "util/Errors.h"
#include "util/Format.h"

namespace velmora {

namespace {

constexpr char kTooLong[] = "line %d: what begins here has no end within 1 GB, more than any server takes";
constexpr std::size_t kLongestStatement = std::size_t{1} << 30;  // MySQL's max_allowed_packet at most
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

}  // namespace

TStatementStream::TStatementStream(std::unique_ptr<TFileParts> file, TWatch watch, std::size_t part, std::size_t whole)
    : file_(std::move(file)), watch_(std::move(watch)), part_(part) {
  if (file_->Size() > 0 && file_->Size() < whole) part_ = (most_ = file_->Size()) + 1;  // and so its end is met
  do Load();
  while (file_ != nullptr && window_.find('\n') == std::string::npos);
}

TStatementStream::TStatementStream(std::string script, const TWatch& watch) : window_(std::move(script)) {
  watch(window_);
}

void TStatementStream::Begin() {
  if (window_.starts_with(kByteOrderMark)) window_.erase(0, kByteOrderMark.size());
  // For files of old systems, whose lines end in CR alone.
  if (window_.find('\n') == std::string::npos) std::ranges::replace(window_, '\r', '\n');
  reader_ = std::make_unique<TStatementReader>(window_, true);
}

void TStatementStream::Load() {
  const std::size_t size = window_.size();
  if (!file_->Read(window_, std::max(part_, size))) file_ = nullptr;
  watch_(std::string_view(window_).substr(size));
}

// What a part ends within is taken apart once more when there is more of it.
bool TStatementStream::Next(TStatement& statement) {
  if (reader_ == nullptr) Begin();
  while (file_ != nullptr) {
    const TStatementReader before = *reader_;
    try {
      if (reader_->Next(statement) && !reader_->AtEnd()) return true;
    } catch (const EVelmora&) {  // a quote or comment that is not closed so far
    }
    *reader_ = before;
    GoOn();
  }
  return reader_->Next(statement);
}

void TStatementStream::GoOn() {
  window_.erase(0, reader_->Leave());
  if (window_.size() > kLongestStatement) RaiseError(Format(kTooLong, reader_->Line()));
  Load();
  reader_->GoOnIn(window_);
}

}  // namespace velmora

// SPDX-License-Identifier: GPL-3.0-or-later
#include "persist/ZipItem.h"

#include <zip.h>

#include <memory>

#include "util/Errors.h"
#include "util/Format.h"

namespace velmora {

namespace {

constexpr char kItem[] = "item";
constexpr char kTooLarge[] = "The task file holds more than %d bytes of text";
constexpr char kNotAlone[] = "The task file holds %d entries instead of one";
constexpr std::size_t kBlock = 65536;
constexpr zip_uint16_t kEarliestDate = 0x21;  // that an archive can hold: 1980-01-01

struct TFree {
  void operator()(zip_source_t* source) const { zip_source_free(source); }
  void operator()(zip_t* archive) const { zip_discard(archive); }
  void operator()(zip_file_t* file) const { zip_fclose(file); }
};
using TSource = std::unique_ptr<zip_source_t, TFree>;
using TArchive = std::unique_ptr<zip_t, TFree>;
using TFile = std::unique_ptr<zip_file_t, TFree>;

class TZipError {
 public:
  TZipError() { zip_error_init(&error_); }
  ~TZipError() { zip_error_fini(&error_); }
  TZipError(const TZipError&) = delete;
  TZipError& operator=(const TZipError&) = delete;

  zip_error_t* Get() { return &error_; }

 private:
  zip_error_t error_;
};

[[noreturn]] void Fail(zip_error_t* error) { RaiseError(zip_error_strerror(error)); }

[[noreturn]] void FailTooLarge() { RaiseError(Format(kTooLarge, kMaxItemSize)); }

// `bytes` has to outlive the source.
TSource SourceOf(std::string_view bytes) {
  TZipError error;
  TSource source(zip_source_buffer_create(bytes.data(), bytes.size(), 0, error.Get()));
  if (!source) Fail(error.Get());
  return source;
}

TArchive OpenArchive(zip_source_t* source, int flags) {
  TZipError error;
  TArchive archive(zip_open_from_source(source, flags, error.Get()));
  if (!archive) Fail(error.Get());
  zip_source_keep(source);  // the archive has taken the caller's hold on it
  return archive;
}

void AddItem(zip_t* archive, std::string_view text) {
  TSource source = SourceOf(text);
  const zip_int64_t index = zip_file_add(archive, kItem, source.get(), 0);
  if (index < 0) Fail(zip_get_error(archive));
  static_cast<void>(source.release());  // the archive's from here on
  // Bytes depend on the text alone.
  if (zip_file_set_dostime(archive, static_cast<zip_uint64_t>(index), 0, kEarliestDate, 0) != 0)
    Fail(zip_get_error(archive));
}

std::string BytesOf(zip_source_t* source) {
  zip_stat_t info;
  if (zip_source_stat(source, &info) != 0 || zip_source_open(source) != 0) Fail(zip_source_error(source));
  std::string bytes(info.size, '\0');
  const zip_int64_t count = zip_source_read(source, bytes.data(), bytes.size());
  zip_source_close(source);
  if (count < 0) Fail(zip_source_error(source));
  bytes.resize(static_cast<std::size_t>(count));
  return bytes;
}

// What the archive says about the size need not be true.
std::string ReadItem(zip_file_t* file) {
  std::string text;
  while (true) {
    const std::size_t size = text.size();
    text.resize(size + kBlock);
    const zip_int64_t count = zip_fread(file, text.data() + size, kBlock);
    if (count < 0) Fail(zip_file_get_error(file));
    text.resize(size + static_cast<std::size_t>(count));
    if (text.size() > kMaxItemSize) FailTooLarge();
    if (count == 0) return text;
  }
}

}  // namespace

std::string ZipItem(std::string_view text) {
  if (text.size() > kMaxItemSize) FailTooLarge();
  const TSource bytes = SourceOf({});
  TArchive archive = OpenArchive(bytes.get(), ZIP_CREATE | ZIP_TRUNCATE);
  AddItem(archive.get(), text);
  if (zip_close(archive.get()) != 0) Fail(zip_get_error(archive.get()));
  static_cast<void>(archive.release());
  return BytesOf(bytes.get());
}

std::string UnzipItem(std::string_view bytes) {
  const TSource source = SourceOf(bytes);
  const TArchive archive = OpenArchive(source.get(), ZIP_RDONLY);
  const zip_int64_t index = zip_name_locate(archive.get(), kItem, 0);
  if (index < 0) Fail(zip_get_error(archive.get()));
  const zip_int64_t entries = zip_get_num_entries(archive.get(), 0);
  if (entries != 1) RaiseError(Format(kNotAlone, entries));
  const TFile file(zip_fopen_index(archive.get(), static_cast<zip_uint64_t>(index), 0));
  if (!file) Fail(zip_get_error(archive.get()));
  return ReadItem(file.get());
}

}  // namespace velmora

// SPDX-License-Identifier: GPL-3.0-or-later
#include "formats/sheet/ZipParts.h"

#include <zip.h>

#include "util/Errors.h"
#include "util/Format.h"

namespace velmora {

namespace {

constexpr char kDamaged[] = "its Zip archive is damaged: %s";
constexpr char kNoPart[] = "the workbook is damaged: its part %s is missing";
constexpr char kTooLarge[] = "its parts unpack to more than %d bytes";
constexpr char kBomb[] = "a part of it unpacks to more than %d times its size, which no workbook does";

[[noreturn]] void Fail(zip_error_t* error) { RaiseError(Format(kDamaged, zip_error_strerror(error))); }

}  // namespace

void TZipParts::TClose::operator()(zip* archive) const { zip_discard(archive); }
void TZipPart::TClose::operator()(zip_file* file) const { zip_fclose(file); }

TZipParts::TZipParts(std::string_view bytes) {
  zip_error_t error;
  zip_error_init(&error);
  RunGuarded(
      [&] {
        zip_source_t* source = zip_source_buffer_create(bytes.data(), bytes.size(), 0, &error);
        if (source == nullptr) Fail(&error);
        archive_.reset(zip_open_from_source(source, ZIP_RDONLY, &error));
        if (archive_) return;
        zip_source_free(source);
        Fail(&error);
      },
      [&] { zip_error_fini(&error); });
}

std::int64_t TZipParts::Find(const std::string& name) const {
  const zip_int64_t index = zip_name_locate(archive_.get(), name.c_str(), 0);
  return index >= 0 ? index : zip_name_locate(archive_.get(), name.c_str(), ZIP_FL_NOCASE);
}

bool TZipParts::Has(const std::string& name) const { return Find(name) >= 0; }

TZipPart TZipParts::Open(const std::string& name) {
  const std::int64_t index = Find(name);
  if (index < 0) RaiseError(Format(kNoPart, name));
  zip_stat_t info;
  zip_file_t* file = zip_fopen_index(archive_.get(), static_cast<zip_uint64_t>(index), 0);
  if (file == nullptr) Fail(zip_get_error(archive_.get()));
  TZipPart part(*this, file, 0);
  if (zip_stat_index(archive_.get(), static_cast<zip_uint64_t>(index), 0, &info) != 0)
    Fail(zip_get_error(archive_.get()));
  part.packed_ = info.comp_size;
  return part;
}

std::size_t TZipPart::Read(std::span<char> buffer) {
  const zip_int64_t count = zip_fread(file_.get(), buffer.data(), buffer.size());
  if (count < 0) Fail(zip_file_get_error(file_.get()));
  unpacked_ += static_cast<std::uint64_t>(count);
  parts_->unpacked_ += static_cast<std::uint64_t>(count);
  if (parts_->unpacked_ > kMostUnpacked) RaiseError(Format(kTooLarge, kMostUnpacked));
  if (unpacked_ > kGrowthAtWill && unpacked_ / kMostGrowth > packed_) RaiseError(Format(kBomb, kMostGrowth));
  return static_cast<std::size_t>(count);
}

}  // namespace velmora

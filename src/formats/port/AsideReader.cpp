// SPDX-License-Identifier: GPL-3.0-or-later
#include "formats/port/AsideReader.h"

#include <utility>

#include "util/Aside.h"

namespace velmora {

namespace {

class TAsideReader final : public TFileReader {
 public:
  explicit TAsideReader(TFileReaderMaker open) : reader_(ESlow::Files, std::move(open)) {
    reader_.Do([](TFileReader&) {});
  }

  std::vector<TOLEDBTableRow> Tables() override {
    return reader_.Do([](TFileReader& reader) { return reader.Tables(); });
  }
  TFileTable Structure(const std::string& table) override {
    return reader_.Do([table](TFileReader& reader) { return reader.Structure(table); });
  }
  TFileRows Rows(const std::string& table, std::int64_t limit) override {
    return reader_.Do([table, limit](TFileReader& reader) { return reader.Rows(table, limit); });
  }

 private:
  TAsideObject<TFileReader> reader_;
};

}  // namespace

std::unique_ptr<TFileReader> ReadAside(TFileReaderMaker open) {
  return std::make_unique<TAsideReader>(std::move(open));
}

}  // namespace velmora

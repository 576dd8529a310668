// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/RowOutput.h"

#include <array>
#include <cctype>
#include <ostream>

#include "cli/Json.h"
#include "util/Dates.h"
#include "util/Text.h"
#include "util/Variant.h"

namespace velmora {

namespace {

bool IsBytes(EFieldKind kind) {
  return kind == EFieldKind::Bytes || kind == EFieldKind::VarBytes || kind == EFieldKind::Blob ||
         kind == EFieldKind::Graphic || kind == EFieldKind::OraBlob;
}

bool IsNumber(EFieldKind kind) {
  return kind == EFieldKind::Bcd || kind == EFieldKind::Currency || kind == EFieldKind::Float ||
         kind == EFieldKind::LargeInt || kind == EFieldKind::Integer;
}

std::string MomentText(const TField& field, const TMoment& moment) {
  if (field.def.kind == EFieldKind::Date) return DateText(moment.value);
  if (field.def.kind == EFieldKind::Time) return TimeText(moment.value);
  return DateTimeText(moment.value);
}

std::string Base64(std::string_view bytes) {
  static constexpr char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    std::array<unsigned, 3> group{};
    for (std::size_t k = 0; k < 3 && i + k < bytes.size(); ++k) group[k] = static_cast<unsigned char>(bytes[i + k]);
    const unsigned word = group[0] << 16 | group[1] << 8 | group[2];
    text += kDigits[word >> 18];
    text += kDigits[word >> 12 & 63];
    text += i + 1 < bytes.size() ? kDigits[word >> 6 & 63] : '=';
    text += i + 2 < bytes.size() ? kDigits[word & 63] : '=';
  }
  return text;
}

std::string ValueText(const TField& field) {
  const TMoment* moment = std::get_if<TMoment>(&field.value);
  if (moment != nullptr) return MomentText(field, *moment);
  const std::string* text = std::get_if<std::string>(&field.value);
  return text != nullptr && IsBytes(field.def.kind) ? Base64(*text) : VarToText(field.value);
}

// A number that a server fills with zeros begins with them, which JSON does not take.
std::string WithoutFilling(const std::string& text) {
  const std::size_t first = text.starts_with('-') ? 1 : 0;
  const std::size_t digit = text.find_first_not_of('0', first);
  const bool keeps_one = digit == std::string::npos || text[digit] < '0' || text[digit] > '9';
  const std::size_t zeros = (digit == std::string::npos ? text.size() : digit) - first;
  return std::string(text).erase(first, keeps_one && zeros > 0 ? zeros - 1 : zeros);
}

class TTextRows final : public TRowOutput {
 public:
  explicit TTextRows(std::ostream& out) : out_(out) {}

  void Begin(const std::vector<TFieldDef>& fields) override {
    for (std::size_t i = 0; i < fields.size(); ++i) Put(i, fields[i].name);
    out_ << '\n';
  }
  void Row(const TDataset& rows) override {
    for (std::size_t i = 0; i < rows.Fields().size(); ++i) {
      const TField field = rows.Field(i);
      if (VarIsNull(field.value))
        out_ << (i > 0 ? "\t" : "") << "NULL";
      else
        Put(i, ValueText(field));
    }
    out_ << '\n';
  }
  void End(const std::optional<std::string>& /*error*/) override {}

 private:
  void Put(std::size_t column, const std::string& text) {
    if (column > 0) out_ << '\t';
    out_ << ShownText(StrReplace(text, "\\", "\\\\"));
  }

  std::ostream& out_;
};

std::string JsonText(const TJson& value) { return value.dump(-1, ' ', false, TJson::error_handler_t::replace); }

// A number that is kept as text to be exact goes in as it stands.
std::string JsonValue(const TField& field) {
  const std::string* text = std::get_if<std::string>(&field.value);
  if (text != nullptr && IsBytes(field.def.kind)) return JsonText({{"base64", Base64(*text)}});
  if (text != nullptr && IsNumber(field.def.kind)) {
    std::string number = WithoutFilling(*text);
    if (TJson::accept(number)) return number;
  }
  if (const bool* truth = std::get_if<bool>(&field.value)) return JsonText(*truth);
  if (const auto* number = std::get_if<std::int64_t>(&field.value)) return JsonText(*number);
  if (const auto* number = std::get_if<double>(&field.value)) return JsonText(*number);
  return VarIsNull(field.value) ? "null" : JsonText(ValueText(field));
}

class TJsonRows final : public TRowOutput {
 public:
  explicit TJsonRows(std::ostream& out) : out_(out) {}

  void Begin(const std::vector<TFieldDef>& fields) override {
    TJson columns = TJson::array();
    for (const TFieldDef& field : fields)
      columns.push_back({{"name", field.name}, {"type", FieldKindName(field.kind)}});
    out_ << "{\"columns\":" << JsonText(columns) << ",\"rows\":[";
    begun_ = true;
  }
  void Row(const TDataset& rows) override {
    out_ << (first_ ? "[" : ",[");
    first_ = false;
    for (std::size_t i = 0; i < rows.Fields().size(); ++i) out_ << (i > 0 ? "," : "") << JsonValue(rows.Field(i));
    out_ << ']';
  }
  void End(const std::optional<std::string>& error) override {
    if (!begun_) Begin({});
    out_ << "],\"error\":" << JsonText(JsonOf(error)) << "}\n";
  }

 private:
  std::ostream& out_;
  bool begun_ = false;
  bool first_ = true;
};

}  // namespace

std::unique_ptr<TRowOutput> MakeRowOutput(EFormat format, std::ostream& out) {
  if (format == EFormat::Json) return std::make_unique<TJsonRows>(out);
  return std::make_unique<TTextRows>(out);
}

}  // namespace velmora

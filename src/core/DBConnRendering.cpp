// SPDX-License-Identifier: GPL-3.0-or-later

// Keys and values as SQL texts: what TDBConn gives without a dialect of its own.

#include <algorithm>

#include "core/DBConn.h"
#include "util/Dates.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {
namespace {

constexpr char kNull[] = "NULL";

// A day count up to this one is an empty date: desktop formats write such, and no target shall see them.
constexpr TDateTime kLastEmptyDate = 1000;

}  // namespace

void TDBConn::DateTimeLiteral(TDateTime value, std::string& text) { text = DateTimeText(value); }

// Deliberate: columns stand unquoted, and a full-text key reads like a plain one.
void TDBConn::KeyDescription(const TMetaKey& key, bool detailed, std::string& text) {
  if (!detailed) {
    text = key.name;
    return;
  }
  std::string whole = key.primary ? "primary key" : key.unique ? "unique key " : "key ";
  if (!key.primary) whole += QuoteName(key.name);
  whole += " (";
  const std::size_t columns = whole.size();
  whole.append(key.columns).append(")");
  std::replace(whole.begin() + static_cast<std::ptrdiff_t>(columns), whole.end(), ';', ',');
  text = std::move(whole);
}

void TDBConn::EscapeString(const std::string& text, std::string& escaped) {
  std::string doubled = StrReplace(text, "'", "''");
  std::replace(doubled.begin(), doubled.end(), '\0', ' ');
  escaped = std::move(doubled);
}

void TDBConn::FieldValParam(const TField& field, std::string& text) {
  if (VarIsNull(field.value)) {
    text = kNull;
    return;
  }
  switch (field.def.kind) {
    case EFieldKind::String:
    case EFieldKind::FixedChar:
    case EFieldKind::WideString:
    case EFieldKind::Guid:
    case EFieldKind::Bytes:
    case EFieldKind::VarBytes:
    case EFieldKind::Blob:
    case EFieldKind::Memo:
    case EFieldKind::Graphic:
    case EFieldKind::FmtMemo:
    case EFieldKind::OraBlob:
    case EFieldKind::OraClob: {
      std::string escaped;
      EscapeString(VarToText(field.value), escaped);
      text = "'" + escaped + "'";
      return;
    }
    case EFieldKind::SmallInt:
    case EFieldKind::Integer:
    case EFieldKind::Word:
    case EFieldKind::AutoInc:
    case EFieldKind::LargeInt:
      text = VarToText(field.value);
      return;
    case EFieldKind::Boolean:
      text = VarToInt(field.value) != 0 ? "1" : "0";
      return;
    case EFieldKind::Float:
    case EFieldKind::Currency:
    case EFieldKind::Bcd:
      text = FloatText(VarToFloat(field.value));
      return;
    case EFieldKind::Date:
    case EFieldKind::DateTime:
    case EFieldKind::TimeStamp:
      if (VarToFloat(field.value) > kLastEmptyDate)
        DateTimeLiteral(VarToFloat(field.value), text);
      else
        text = kNull;
      return;
    case EFieldKind::Time:
      DateTimeLiteral(VarToFloat(field.value), text);
      return;
    case EFieldKind::Other:
      break;
  }
  RaiseError("TDBConn.FieldValParam: Unsupported field type for field " + field.def.name);
}

}  // namespace velmora

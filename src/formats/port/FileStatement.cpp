// SPDX-License-Identifier: GPL-3.0-or-later
#include "formats/port/FileStatement.h"

#include <algorithm>
#include <charconv>
#include <compare>
#include <cstddef>
#include <set>
#include <utility>

#include "util/Errors.h"
#include "util/Format.h"
#include "util/Text.h"
#include "util/Variant.h"

namespace velmora {

namespace {

constexpr char kCannotRun[] = "Statements on files are those that read a table; this one cannot be run: %s";
constexpr char kNoKeyField[] = "Field '%s' not found";

// Takes texts off the front of a statement.
class TWalker {
 public:
  explicit TWalker(std::string_view text) : rest_(text) {}

  bool Take(std::string_view words) {
    if (!rest_.starts_with(words)) return false;
    rest_.remove_prefix(words.size());
    return true;
  }
  bool TakeNumber(std::int64_t& number) {
    const auto [end, error] = std::from_chars(rest_.data(), rest_.data() + rest_.size(), number);
    if (error != std::errc() || number < 0) return false;
    rest_.remove_prefix(static_cast<std::size_t>(end - rest_.data()));
    return true;
  }
  std::string_view Rest() const { return rest_; }
  bool AtEnd() const { return rest_.empty(); }

 private:
  std::string_view rest_;
};

// "where K not in (select top M K from [t])"
bool IsKeyClause(std::string_view text, TFileStatement& statement) {
  constexpr std::string_view kWhere = "where ";
  constexpr std::string_view kNotIn = " not in (select top ";
  const std::size_t end_of_key = text.find(kNotIn);
  if (!text.starts_with(kWhere) || end_of_key == std::string_view::npos) return false;
  const std::string_view key = text.substr(kWhere.size(), end_of_key - kWhere.size());
  TWalker walker(text.substr(end_of_key + kNotIn.size()));
  std::int64_t skip = 0;
  if (!walker.TakeNumber(skip) || !walker.Take(" ") || !walker.Take(key)) return false;
  if (walker.Rest() != " from [" + statement.table + "])") return false;
  statement.key = key;
  statement.skip = skip;
  return true;
}

// "where recno() between A and B"
bool IsNumberClause(std::string_view text, TFileStatement& statement) {
  TWalker walker(text);
  std::int64_t from = 0;
  if (!walker.Take("where recno() between ") || !walker.TakeNumber(from) || !walker.Take(" and ")) return false;
  if (!walker.TakeNumber(statement.to) || !walker.AtEnd()) return false;
  statement.from = from;
  return true;
}

// What may stand after the table's closing bracket, its blank included.
bool IsTail(std::string_view tail, TFileStatement& statement) {
  if (tail.empty()) return true;
  if (statement.count || !tail.starts_with(' ')) return false;
  tail.remove_prefix(1);
  if (!statement.top) return IsNumberClause(tail, statement);
  if (tail == "order by 1") return statement.by_first_column = true;
  return IsKeyClause(tail, statement);
}

// A table's name may itself hold brackets, so it ends at the last one after which the statement makes sense.
bool TakeTable(std::string_view text, TFileStatement& statement) {
  for (std::size_t end = text.rfind(']'); end != std::string_view::npos && end > 0; end = text.rfind(']', end - 1)) {
    TFileStatement candidate = statement;
    candidate.table = text.substr(0, end);
    if (!IsTail(text.substr(end + 1), candidate)) continue;
    statement = std::move(candidate);
    return true;
  }
  return false;
}

// What is compared with what: nulls stand before numbers, then moments, then texts.
int RankOf(const TVariant& value) {
  if (VarIsNull(value)) return 0;
  if (std::holds_alternative<std::string>(value)) return 3;
  return std::holds_alternative<TMoment>(value) ? 2 : 1;
}

double NumberOf(const TVariant& value) {
  const auto* moment = std::get_if<TMoment>(&value);
  return moment != nullptr ? moment->value : VarToFloat(value);
}

// Not a number has its place too, so that an order there is in any case.
bool ComesBefore(const TVariant& a, const TVariant& b) {
  const int rank = RankOf(a);
  if (rank != RankOf(b)) return rank < RankOf(b);
  if (rank == 0) return false;
  if (rank == 3) return std::get<std::string>(a) < std::get<std::string>(b);
  const auto* left = std::get_if<std::int64_t>(&a);
  const auto* right = std::get_if<std::int64_t>(&b);
  if (left != nullptr && right != nullptr) return *left < *right;
  return std::is_lt(std::weak_order(NumberOf(a), NumberOf(b)));
}

void DropRowsOfFirstKeys(const TFileStatement& statement, const std::vector<TFieldDef>& fields, TRowsOfValues& rows) {
  const auto field =
      std::ranges::find_if(fields, [&](const TFieldDef& each) { return SameText(each.name, statement.key); });
  if (field == fields.end()) RaiseError(Format(kNoKeyField, statement.key));
  const auto column = static_cast<std::size_t>(field - fields.begin());
  const std::size_t count = std::min(rows.size(), static_cast<std::size_t>(statement.skip));
  std::set<TVariant, decltype(&ComesBefore)> keys(&ComesBefore);
  for (std::size_t i = 0; i < count; ++i) keys.insert(rows[i][column]);
  std::erase_if(rows, [&](const TMemDataset::TRow& row) { return keys.contains(row[column]); });
}

void KeepNumbers(const TFileStatement& statement, TFileRows& rows) {
  TRowsOfValues kept;
  for (std::size_t i = 0; i < rows.rows.size(); ++i) {
    const std::int64_t number = rows.numbers.empty() ? static_cast<std::int64_t>(i) + 1 : rows.numbers[i];
    if (number >= *statement.from && number <= statement.to) kept.push_back(std::move(rows.rows[i]));
  }
  rows.rows = std::move(kept);
}

}  // namespace

TFileStatement ParseFileStatement(std::string_view sql) {
  TFileStatement statement;
  TWalker walker(sql);
  bool fits = walker.Take("select ");
  if (walker.Take("count(*)")) {
    statement.count = true;
  } else {
    std::int64_t top = 0;
    if (walker.Take("top ")) {
      fits = fits && walker.TakeNumber(top) && walker.Take(" ");
      statement.top = top;
    }
    fits = fits && walker.Take("*");
  }
  fits = fits && walker.Take(" from [") && TakeTable(walker.Rest(), statement);
  if (!fits) RaiseError(Format(kCannotRun, std::string(sql)));
  return statement;
}

TRowsOfValues SelectRows(const TFileStatement& statement, const std::vector<TFieldDef>& fields, TFileRows rows) {
  if (statement.from) KeepNumbers(statement, rows);
  if (!statement.key.empty()) DropRowsOfFirstKeys(statement, fields, rows.rows);
  if (statement.by_first_column && !fields.empty())
    std::ranges::stable_sort(rows.rows, [](const auto& a, const auto& b) { return ComesBefore(a[0], b[0]); });
  if (statement.top && rows.rows.size() > static_cast<std::size_t>(*statement.top))
    rows.rows.resize(static_cast<std::size_t>(*statement.top));
  return std::move(rows.rows);
}

std::int64_t RowsNeeded(const TFileStatement& statement) {
  const bool first_ones = statement.top && !statement.by_first_column && statement.key.empty();
  return first_ones ? *statement.top : kAllRows;
}

}  // namespace velmora

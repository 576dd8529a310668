// SPDX-License-Identifier: GPL-3.0-or-later
#include "exact/compare/SameExpressions.h"

#include <algorithm>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "exact/compare/ExpressionForm.h"
#include "mysqltext/ColumnParts.h"
#include "mysqltext/ElementFinder.h"
#include "mysqltext/ElementText.h"
#include "mysqltext/KeyText.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kNotKnown[] =
    "Table %s, %s: whether the expression %s says the same as %s of the other side is not known";

// An element's expressions, each at a place of its own. What only looks like one is not among them.
class TExpressions {
 public:
  explicit TExpressions(const TElement& element) : text_(element.text), tokens_(text_.Tokens()) {
    if (element.kind == EElement::Column)
      FindInColumn();
    else if (element.kind == EElement::Check)
      FindInCheck();
    else if (IsKey(element.kind))
      FindInKey();
  }

  std::size_t Count() const { return ranges_.size(); }
  bool Has(std::size_t at) const { return at < ranges_.size() && ranges_[at].has_value(); }
  TTokens At(std::size_t at) const {
    return tokens_.subspan(ranges_[at]->first, ranges_[at]->last - ranges_[at]->first);
  }
  std::string Text(std::size_t at) const { return text_.Part(*ranges_[at]); }

 private:
  void FindInColumn() {
    const TColumnParts& parts = text_.Column();
    ranges_ = {parts.generated, parts.check, std::nullopt};
    if (!parts.default_value || parts.default_value->last < parts.default_value->first + 2) return;
    const auto bracket = std::any_of(tokens_.begin() + static_cast<std::ptrdiff_t>(parts.default_value->first),
                                     tokens_.begin() + static_cast<std::ptrdiff_t>(parts.default_value->last),
                                     [](const TToken& token) { return token.Is("("); });
    if (bracket) ranges_[2] = parts.default_value;
  }
  void FindInCheck() {
    const std::size_t body = text_.Body();
    const std::size_t after = AfterGroup(tokens_, body);
    if (TokenAt(tokens_, body).Is("(") && after <= tokens_.size()) ranges_ = {TTokenRange{body + 1, after - 1}};
  }
  void FindInKey() {
    for (const TTokenRange part : ListParts(tokens_, NextBracket(tokens_, 0))) {
      ranges_.emplace_back();
      if (TokenAt(tokens_, part.first).Is("(")) ranges_.back() = {part.first, AfterGroup(tokens_, part.first)};
    }
  }

  const TElementText text_;
  const TTokens tokens_;
  std::vector<std::optional<TTokenRange>> ranges_;
};

std::string Shown(const std::string& expression) {
  constexpr std::size_t kShownChars = 200;
  const std::string shown = CutChars(expression, kShownChars);
  return shown.size() < expression.size() ? shown + "..." : shown;
}

bool AreWrittenAlike(TTokens one, TTokens other) {
  return std::equal(one.begin(), one.end(), other.begin(), other.end(), [](const TToken& a, const TToken& b) {
    if (IsName(a) && IsName(b)) return SameText(NameOf(a), NameOf(b));
    return a.kind == b.kind && a.text == b.text;
  });
}

// Whether both say the same; nothing where that is not known.
std::optional<bool> SayTheSame(TTokens one, TTokens other) {
  if (AreWrittenAlike(one, other)) return true;
  const auto form = ReadExpressionForm(one);
  const auto other_form = ReadExpressionForm(other);
  if (!form || !other_form) return std::nullopt;
  if (form->text == other_form->text) return true;
  return form->known && other_form->known ? std::optional(false) : std::nullopt;
}

void AdoptExpressions(TElement& element, const TElement& there, const std::string& table) {
  const TExpressions own(element);
  const TExpressions others(there);
  std::map<std::size_t, std::pair<std::size_t, std::string>> taken;  // by place: length and text
  for (std::size_t at = 0; at < own.Count(); ++at) {
    if (!own.Has(at) || !others.Has(at)) continue;
    const auto same = SayTheSame(own.At(at), others.At(at));
    if (!same) RaiseError(Format(kNotKnown, table, element.name, Shown(own.Text(at)), Shown(others.Text(at))));
    const std::size_t start = own.At(at).front().start;
    if (*same) taken[start] = {own.At(at).back().End() - start, others.Text(at)};
  }
  if (taken.empty()) return;
  std::string text = element.text.Str();
  std::for_each(taken.rbegin(), taken.rend(),
                [&text](const auto& place) { text.replace(place.first, place.second.first, place.second.second); });
  element.text = std::move(text);
}

}  // namespace

void AdoptExpressions(TTableText& table, const TTableText& counterpart) {
  TElementFinder others(counterpart);
  for (TElement& element : table.elements) {
    const TElement* there = others.Find(element.kind, element.name);
    if (there != nullptr && there->text != element.text) AdoptExpressions(element, *there, table.name);
  }
}

}  // namespace velmora

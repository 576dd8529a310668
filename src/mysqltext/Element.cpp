// SPDX-License-Identifier: GPL-3.0-or-later
#include "mysqltext/Element.h"

#include <optional>
#include <utility>

#include "mysqltext/ColumnParts.h"
#include "mysqltext/KeyText.h"

namespace velmora {

struct TElementText::TReading {
  explicit TReading(std::vector<TToken> read) : tokens(std::move(read)) {}

  std::vector<TToken> tokens;
  std::optional<std::size_t> body{};
  std::optional<TColumnParts> column{};
  std::optional<std::vector<TKeyPart>> key_parts{};
  std::optional<TForeignKeyParts> foreign_key{};
};

// One place in memory as long as there are copies, for tokens point into the text.
struct TElementText::TOwn {
  explicit TOwn(std::string of) : text(std::move(of)) {}

  std::string text;
  mutable std::unique_ptr<TReading> reading{};
};

namespace {

// Of an optional that is filled by its first reader.
template <class T, class TRead>
const T& AtFirstNeed(std::optional<T>& kept, TRead read) {
  if (!kept) kept = read();
  return *kept;
}

}  // namespace

bool IsKey(EElement kind) {
  return kind == EElement::PrimaryKey || kind == EElement::UniqueKey || kind == EElement::Key ||
         kind == EElement::FulltextKey || kind == EElement::SpatialKey;
}

TElementText::TElementText(std::string text) {
  if (!text.empty()) own_ = std::make_shared<const TOwn>(std::move(text));
}

TElementText::TElementText(std::string_view source, TTokens tokens) {
  const std::size_t start = tokens.front().start;
  auto own = std::make_shared<TOwn>(std::string(source.substr(start, tokens.back().End() - start)));
  const std::string_view text = own->text;
  std::vector<TToken> read;
  read.reserve(tokens.size() + 1);
  for (const TToken& token : tokens)
    read.push_back({token.kind, text.substr(token.start - start, token.text.size()), token.start - start});
  read.push_back({EToken::End, {}, text.size()});
  own->reading = std::make_unique<TReading>(std::move(read));
  own_ = std::move(own);
}

const std::string& TElementText::Str() const {
  static const std::string kEmpty;
  return own_ == nullptr ? kEmpty : own_->text;
}

TElementText::TReading& TElementText::Reading() const {
  static TReading empty({TToken()});
  if (own_ == nullptr) return empty;
  if (own_->reading == nullptr) own_->reading = std::make_unique<TReading>(velmora::Tokens(own_->text));
  return *own_->reading;
}

TTokens TElementText::Tokens() const {
  const TTokens all = Reading().tokens;
  return all.first(all.size() - 1);
}

std::string TElementText::Part(TTokenRange range) const {
  return TextOf(Str(), Reading().tokens, range.first, range.last);
}

std::size_t TElementText::Body() const {
  return AtFirstNeed(Reading().body, [this] {
    const std::optional<TElementHead> head = ReadElementHead(Tokens());
    return head ? head->body : 0;
  });
}

const TColumnParts& TElementText::Column() const {
  return AtFirstNeed(Reading().column, [this] { return ReadColumnParts(Tokens()); });
}

const std::vector<TKeyPart>& TElementText::KeyParts() const {
  return AtFirstNeed(Reading().key_parts, [this] { return ReadKeyParts(Str(), Tokens()); });
}

const TForeignKeyParts& TElementText::ForeignKey() const {
  return AtFirstNeed(Reading().foreign_key, [this] { return ReadForeignKeyParts(Tokens(), Body()); });
}

void TElementText::Forget() const {
  if (own_ != nullptr) own_->reading = nullptr;
}

}  // namespace velmora

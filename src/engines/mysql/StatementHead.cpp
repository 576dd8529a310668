#include "engines/mysql/StatementHead.h"

#include <algorithm>
#include <initializer_list>

#include "engines/mysql/StatementReader.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr std::string_view kEndsOfBareName = " \t\r\n,.<>;'()+-*/=#`\"";

bool IsWordChar(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
}

// The words and names that a statement begins with.
class THeadScanner {
 public:
  explicit THeadScanner(std::string_view text) : text_(text) {}

  std::size_t pos() const { return pos_; }

  bool Take(std::string_view word) {
    SkipBlanks();
    const auto from = text_.begin() + static_cast<std::ptrdiff_t>(pos_);
    const auto size = static_cast<std::size_t>(std::find_if_not(from, text_.end(), IsWordChar) - from);
    if (!SameText(text_.substr(pos_, size), word)) return false;
    pos_ += size;
    return true;
  }

  void TakeAny(std::initializer_list<std::string_view> words) {
    while (std::any_of(words.begin(), words.end(), [this](std::string_view word) { return Take(word); })) {
    }
  }

  bool TakePoint() {
    SkipBlanks();
    if (text_.substr(pos_, 1) != ".") return false;
    ++pos_;
    SkipBlanks();
    return true;
  }

  // A name in backticks or double quotes, or a bare one. False when there is none.
  bool TakeName() {
    SkipBlanks();
    const std::size_t start = pos_;
    if (pos_ < text_.size() && (text_[pos_] == '`' || text_[pos_] == '"'))
      TakeQuotedName();
    else
      pos_ = std::min(text_.find_first_of(kEndsOfBareName, pos_), text_.size());
    return pos_ > start;
  }

  void SkipBlanks() {
    while (pos_ < text_.size()) {
      const std::size_t end = static_cast<unsigned char>(text_[pos_]) <= ' ' ? pos_ + 1 : CommentEnd(text_, pos_);
      if (end == pos_) return;
      pos_ = std::min(end, text_.size());
    }
  }

 private:
  // A doubled quote stands for one within the name.
  void TakeQuotedName() {
    const char quote = text_[pos_];
    do {
      const std::size_t end = text_.find(quote, pos_ + 1);
      pos_ = end == std::string_view::npos ? text_.size() : end + 1;
    } while (pos_ < text_.size() && text_[pos_] == quote);
  }

  std::string_view text_;
  std::size_t pos_ = 0;
};

TStatementHead ReadTableName(THeadScanner& scanner) {
  if (scanner.Take("if")) scanner.TakeAny({"not", "exists"});
  scanner.SkipBlanks();
  TStatementHead head;
  head.qualifier = scanner.pos();
  do {
    head.name = scanner.pos();
    if (!scanner.TakeName()) return {};
    head.name_end = scanner.pos();
  } while (scanner.TakePoint());
  head.kind = EStatementKind::CreateTable;
  return head;
}

TStatementHead ReadCreate(THeadScanner& scanner) {
  if (scanner.Take("table")) return ReadTableName(scanner);
  if (scanner.Take("or"))
    return {scanner.Take("replace") && scanner.Take("table") ? EStatementKind::ReplaceTable : EStatementKind::Other};
  scanner.TakeAny({"online", "offline", "unique", "fulltext", "spatial"});
  return {scanner.Take("index") ? EStatementKind::CreateIndex : EStatementKind::Other};
}

}  // namespace

TStatementHead ReadStatementHead(std::string_view statement) {
  THeadScanner scanner(statement);
  if (scanner.Take("create")) return ReadCreate(scanner);
  if (scanner.Take("alter")) {
    scanner.TakeAny({"online", "offline", "ignore"});
    return {scanner.Take("table") ? EStatementKind::AlterTable : EStatementKind::Other};
  }
  if (scanner.Take("rename")) return {EStatementKind::Rename};
  if (scanner.Take("drop")) return {EStatementKind::Drop};
  return {};
}

}  // namespace velmora

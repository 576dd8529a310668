// SPDX-License-Identifier: GPL-3.0-or-later
#include "mysqltext/StatementHead.h"

#include <algorithm>
#include <initializer_list>

#include "mysqltext/Lexer.h"
#include "mysqltext/LexicalRules.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr std::string_view kEndsOfBareName = " \t\r\n,.<>;'()+-*/=#`\"@";

bool IsWordChar(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
}

// The words and names that a statement begins with.
class THeadScanner {
 public:
  THeadScanner(std::string_view text, bool with_versions) : text_(text), with_versions_(with_versions) {}

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

  bool TakeSymbol(std::string_view symbol) {
    SkipBlanks();
    if (text_.substr(pos_, 1) != symbol) return false;
    ++pos_;
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

  // Part of an account: in quotes of any kind, or a bare word, in which points belong to a host.
  void TakeAccountPart() {
    SkipBlanks();
    constexpr std::string_view kQuotes = "`\"'";
    constexpr std::string_view kEnds = " \t\r\n(@*/";
    if (pos_ < text_.size() && kQuotes.find(text_[pos_]) != std::string_view::npos)
      TakeQuotedName();
    else
      pos_ = std::min(text_.find_first_of(kEnds, pos_), text_.size());
  }

  void SkipBlanks() {
    while (pos_ < text_.size()) {
      const std::size_t end = AfterBlank();
      if (end == pos_) return;
      pos_ = std::min(end, text_.size());
    }
  }

 private:
  // `pos_` where there is none.
  std::size_t AfterBlank() const {
    if (IsBlank(text_[pos_])) return pos_ + 1;
    if (with_versions_) {
      if (const std::size_t mark = VersionMark(text_, pos_)) return pos_ + mark;
      if (ClosesComment(text_, pos_)) return pos_ + 2;
    }
    return CommentEnd(text_, pos_);
  }

  // A doubled quote stands for one within the name.
  void TakeQuotedName() {
    const char quote = text_[pos_];
    do {
      const std::size_t end = text_.find(quote, pos_ + 1);
      pos_ = end == std::string_view::npos ? text_.size() : end + 1;
    } while (pos_ < text_.size() && text_[pos_] == quote);
  }

  std::string_view text_;
  bool with_versions_;
  std::size_t pos_ = 0;
};

constexpr std::string_view kObjects[] = {"view", "trigger", "procedure", "function", "event", "sequence", "package"};
// Statements that run others; those of MariaDB that stand outside routines among them.
constexpr std::string_view kDynamic[] = {"call", "prepare", "execute", "source", "system", "import",
                                         "if",   "case",    "while",   "loop",   "repeat", "for"};
constexpr std::string_view kDropped[] = {"table",   "tables",    "index",    "database", "schema",   "view",
                                         "trigger", "procedure", "function", "event",    "sequence", "package"};

// The name that comes next, in `head`. False when there is none.
bool ReadName(THeadScanner& scanner, TStatementHead& head) {
  if (scanner.Take("if")) {
    head.if_exists = true;
    scanner.TakeAny({"not", "exists"});
  }
  scanner.SkipBlanks();
  head.qualifier = scanner.pos();
  do {
    head.name = scanner.pos();
    if (!scanner.TakeName()) return false;
    head.name_end = scanner.pos();
  } while (scanner.TakePoint());
  return true;
}

TStatementHead Named(THeadScanner& scanner, EStatementKind kind, std::string_view object = {}) {
  TStatementHead head{kind};
  head.object = object;
  return ReadName(scanner, head) ? head : TStatementHead();
}

// definer = `u`@`h`, sql security definer, algorithm = merge, aggregate
void PassAttributes(THeadScanner& scanner) {
  for (;;) {
    if (scanner.Take("definer") || scanner.Take("algorithm")) {
      scanner.TakeSymbol("=");
      scanner.TakeAccountPart();
      if (scanner.TakeSymbol("(")) scanner.TakeSymbol(")");
      if (scanner.TakeSymbol("@")) scanner.TakeAccountPart();
    } else if (scanner.Take("sql")) {
      scanner.Take("security");
      scanner.TakeName();
    } else if (!scanner.Take("aggregate")) {
      return;
    }
  }
}

// "view v", "definer = `u`@`h` trigger t"; Other for anything else.
TStatementHead ReadObject(THeadScanner& scanner, EStatementKind kind) {
  PassAttributes(scanner);
  for (const std::string_view object : kObjects) {
    if (!scanner.Take(object)) continue;
    if (object == "package") scanner.Take("body");
    return Named(scanner, kind, object);
  }
  return {};
}

TStatementHead ReadCreate(THeadScanner& scanner) {
  if (scanner.Take("table")) return Named(scanner, EStatementKind::CreateTable);
  const bool replaces = scanner.Take("or") && scanner.Take("replace");
  if (replaces && scanner.Take("table")) return {EStatementKind::ReplaceTable};
  if (scanner.Take("database") || scanner.Take("schema")) return {EStatementKind::Setting};
  const TStatementHead head = ReadObject(scanner, EStatementKind::Object);
  if (head.kind == EStatementKind::Object) return head;
  scanner.TakeAny({"online", "offline", "unique", "fulltext", "spatial", "vector"});
  return {scanner.Take("index") ? EStatementKind::CreateIndex : EStatementKind::Other};
}

TStatementHead ReadDrop(THeadScanner& scanner) {
  for (const std::string_view object : kDropped) {
    if (!scanner.Take(object)) continue;
    const TStatementHead head = Named(scanner, EStatementKind::Drop, object);
    if (head.kind == EStatementKind::Drop) return head;
    break;
  }
  return {EStatementKind::Drop};
}

TStatementHead ReadAlter(THeadScanner& scanner) {
  scanner.TakeAny({"online", "offline", "ignore"});
  if (scanner.Take("database") || scanner.Take("schema")) return {EStatementKind::Setting};
  if (!scanner.Take("table")) return ReadObject(scanner, EStatementKind::AlterObject);
  TStatementHead head = Named(scanner, EStatementKind::AlterTable);
  head.kind = EStatementKind::AlterTable;
  head.leaves_as_is = (scanner.Take("disable") || scanner.Take("enable")) && scanner.Take("keys");
  return head;
}

// Whether a "set" concerns what new tables are, or how texts are read. Dumps set much else around each of their tables.
bool SetsTables(std::string_view statement) {
  return PosNoCase("sql_mode", statement) > 0 || PosNoCase("storage_engine", statement) > 0;
}

}  // namespace

TStatementHead ReadStatementHead(std::string_view statement, bool with_versions) {
  THeadScanner scanner(statement, with_versions);
  if (scanner.Take("create")) return ReadCreate(scanner);
  if (scanner.Take("alter")) return ReadAlter(scanner);
  if (scanner.Take("rename")) return {EStatementKind::Rename};
  if (scanner.Take("drop")) return ReadDrop(scanner);
  for (const std::string_view word : kDynamic)
    if (scanner.Take(word)) return {EStatementKind::Dynamic};
  if (scanner.Take("begin") && scanner.Take("not")) return {EStatementKind::Dynamic};
  if (scanner.TakeSymbol("\\")) return {scanner.Take("u") ? EStatementKind::Use : EStatementKind::Dynamic};
  if (scanner.Take("set")) return {SetsTables(statement) ? EStatementKind::Setting : EStatementKind::Other};
  if (scanner.Take("use")) return Named(scanner, EStatementKind::Use);
  return {};
}

std::string BareName(std::string_view written) {
  if (written.size() < 2 || (written.front() != '`' && written.front() != '"')) return std::string(written);
  return NameOf({EToken::Name, written, 0});
}

}  // namespace velmora

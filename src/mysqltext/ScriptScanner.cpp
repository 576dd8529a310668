#include "mysqltext/ScriptScanner.h"

#include <algorithm>
#include <string_view>

namespace velmora {

namespace {

constexpr bool IsSpace(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

class TScanner {
 public:
  explicit TScanner(std::string_view script) : script_(script) {}
  std::vector<TScriptRange> Scan();

 private:
  bool At(std::string_view mark) const { return script_.substr(at_, mark.size()) == mark; }
  bool AtLineComment() const;
  bool AtBlockComment() const { return At("/*") && !At("/*!") && !At("/*M!"); }
  // Behind the next `mark`, or the end of the script where what began is never closed.
  std::size_t Behind(std::string_view mark, std::size_t from) const;
  std::size_t BehindQuotes() const;
  void TakeContent();
  void EndStatement();

  std::string_view script_;
  std::size_t at_ = 0;
  std::size_t start_ = 0;   // of the statement under way
  std::size_t end_ = 0;     // behind what it has so far; at most start_ while it has nothing
  bool versioned_ = false;  // in a comment for servers of a version, which ends like any other
  std::vector<TScriptRange> found_;
};

bool TScanner::AtLineComment() const {
  if (At("#")) return true;
  return At("--") && (at_ + 2 >= script_.size() || IsSpace(script_[at_ + 2]));
}

std::size_t TScanner::Behind(std::string_view mark, std::size_t from) const {
  const std::size_t place = script_.find(mark, from);
  return place == std::string_view::npos ? script_.size() : place + mark.size();
}

// A doubled quote is two texts side by side, which comes to the same.
std::size_t TScanner::BehindQuotes() const {
  const char quote = script_[at_];
  for (std::size_t i = at_ + 1; i < script_.size(); ++i)
    if (script_[i] == '\\' && quote != '`')
      ++i;
    else if (script_[i] == quote)
      return i + 1;
  return script_.size();
}

void TScanner::TakeContent() {
  if (end_ <= start_) start_ = at_;
  const char c = script_[at_];
  if (c == '\'' || c == '"' || c == '`') {
    at_ = BehindQuotes();
  } else if (At("/*")) {
    versioned_ = true;
    at_ += 2;
  } else if (versioned_ && At("*/")) {
    versioned_ = false;
    at_ += 2;
  } else {
    ++at_;
  }
  end_ = at_;
}

void TScanner::EndStatement() {
  if (end_ > start_) found_.push_back({start_, end_ - start_});
  ++at_;
  start_ = end_ = at_;
  versioned_ = false;
}

std::vector<TScriptRange> TScanner::Scan() {
  while (at_ < script_.size())
    if (IsSpace(script_[at_]))
      ++at_;
    else if (AtLineComment())
      at_ = Behind("\n", at_);
    else if (AtBlockComment())
      at_ = Behind("*/", at_ + 2);
    else if (script_[at_] == ';' && !versioned_)
      EndStatement();
    else
      TakeContent();
  EndStatement();
  return std::move(found_);
}

}  // namespace

std::vector<TScriptRange> ScanStatements(std::string_view script) { return TScanner(script).Scan(); }

}  // namespace velmora

// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/Secrets.h"

#include <algorithm>
#include <cctype>

#include "util/Text.h"

namespace velmora {

namespace {

constexpr std::string_view kHidden = "***";
constexpr std::string_view kAddress = "://";
constexpr std::string_view kAddressForm = "USER[:PASSWORD]@";  // of help and messages
constexpr std::string_view kKey = "password";
constexpr std::string_view kKeys[] = {kKey, "pwd"};
constexpr std::string_view kBlanks = " \t";

// How users of other programs give a password; none of ours takes one.
bool IsPasswordOption(std::string_view name) {
  return InList(LowerText(name), {"--password", "--passwd", "--pass", "--pwd", "-p"});
}

// Where in an argument a source may begin: after the name of an option.
std::size_t SourceStart(std::string_view argument) {
  if (argument.starts_with("--")) return std::min(argument.find('=') + 1, argument.size());
  return argument.starts_with('-') ? std::min<std::size_t>(2, argument.size()) : 0;
}

std::vector<TTextRange> SecretsOfArgument(std::string_view argument, std::string_view before) {
  if (IsPasswordOption(before)) return {{0, argument.size()}};
  // A shell may have parted "password =x".
  if (argument.starts_with('=') && LowerText(TrimView(before)).ends_with(kKey)) return {{1, argument.size() - 1}};
  const std::size_t start = SourceStart(argument);
  const std::string_view name = argument.substr(0, start);
  if (IsPasswordOption(name) || (name.ends_with('=') && IsPasswordOption(name.substr(0, start - 1))))
    return {{start, argument.size() - start}};
  std::vector<TTextRange> ranges = SecretsOfSource(argument.substr(start));
  for (TTextRange& range : ranges) range.start += start;
  return ranges;
}

std::string WithoutRanges(std::string_view text, const std::vector<TTextRange>& ranges) {
  std::string shown;
  std::size_t end = 0;  // of what is done with; one secret may stand within another
  for (const TTextRange& range : ranges) {
    if (range.length == 0) continue;
    if (range.start >= end) shown.append(text.substr(end, range.start - end)).append(kHidden);
    end = std::max(end, range.start + range.length);
  }
  return shown.append(text.substr(end));
}

// An address ends with its word; the last "@" in it parts account and host.
void FindInAddresses(std::string_view text, std::vector<TTextRange>& found) {
  for (std::size_t at = text.find(kAddress); at != std::string_view::npos; at = text.find(kAddress, at + 1)) {
    const std::size_t begin = at + kAddress.size();
    const std::string_view word = text.substr(begin, text.find_first_of(" \t\r\n\"", begin) - begin);
    const std::size_t host = word.rfind('@');
    const std::size_t colon = word.find(':');
    if (host == std::string_view::npos || colon >= host || word.starts_with(kAddressForm)) continue;
    found.push_back({begin + colon + 1, host - colon - 1});
  }
}

void FindAfterKeys(std::string_view text, std::vector<TTextRange>& found) {
  for (const std::string_view key : kKeys)
    for (std::size_t at = PosNoCase(key, text); at != 0; at = PosNoCase(key, text, at + 1)) {
      const std::size_t equals = std::min(text.find_first_not_of(kBlanks, at - 1 + key.size()), text.size());
      if (!text.substr(equals).starts_with('=')) continue;
      found.push_back({equals + 1, std::min(text.find_first_of(";\"", equals), text.size()) - equals - 1});
    }
}

std::string WithoutPatterns(std::string_view text) {
  std::vector<TTextRange> found;
  FindInAddresses(text, found);
  FindAfterKeys(text, found);
  std::ranges::sort(found, {}, &TTextRange::start);
  return WithoutRanges(text, found);
}

bool IsWordByte(char c) { return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_'; }

// Whether the two belong to one word: a short argument must not be found within the words of a message.
bool Joined(char a, char b) { return IsWordByte(a) && IsWordByte(b); }

void ReplaceWhole(std::string& text, const std::string& what, const std::string& with) {
  for (std::size_t at = text.find(what); at != std::string::npos;) {
    const std::size_t end = at + what.size();
    const bool whole =
        (at == 0 || !Joined(text[at - 1], text[at])) && (end == text.size() || !Joined(text[end - 1], text[end]));
    if (whole) text.replace(at, what.size(), with);
    at = text.find(what, at + (whole ? with.size() : 1));
  }
}

}  // namespace

std::vector<std::vector<TTextRange>> SecretsOfArguments(const std::vector<std::string>& arguments) {
  std::vector<std::vector<TTextRange>> secrets;
  for (std::size_t i = 0; i < arguments.size(); ++i)
    secrets.push_back(SecretsOfArgument(arguments[i], i == 0 ? std::string_view() : arguments[i - 1]));
  return secrets;
}

TSecrets::TSecrets(const std::vector<std::string>& arguments) {
  const std::vector<std::vector<TTextRange>> secrets = SecretsOfArguments(arguments);
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    if (secrets[i].empty() || arguments[i].empty()) continue;
    const std::string shown = WithoutRanges(arguments[i], secrets[i]);
    const std::size_t start = SourceStart(arguments[i]);
    texts_.push_back({arguments[i], shown});
    if (start > 0 && start <= secrets[i].front().start && start < arguments[i].size())
      texts_.push_back({arguments[i].substr(start), shown.substr(start)});
  }
  std::ranges::stable_sort(texts_, std::ranges::greater(), [](const TSecretText& text) { return text.text.size(); });
}

std::string TSecrets::Without(std::string_view text) const {
  std::string shown(text);
  for (const TSecretText& secret : texts_) ReplaceWhole(shown, secret.text, secret.shown);
  return WithoutPatterns(shown);
}

}  // namespace velmora

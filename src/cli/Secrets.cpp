#include "cli/Secrets.h"

#include <algorithm>

#include "util/Text.h"

namespace velmora {

namespace {

constexpr std::string_view kAddress = "://";
constexpr std::string_view kKey = "password=";

// An address ends with its word; the last "@" in it parts account and host.
void FindInAddresses(std::string_view text, std::vector<TTextRange>& found) {
  for (std::size_t at = text.find(kAddress); at != std::string_view::npos; at = text.find(kAddress, at + 1)) {
    const std::size_t begin = at + kAddress.size();
    const std::string_view word = text.substr(begin, text.find_first_of(" \t\r\n\"", begin) - begin);
    const std::size_t host = word.rfind('@');
    const std::size_t colon = word.find(':');
    if (host == std::string_view::npos || colon >= host) continue;
    found.push_back({begin + colon + 1, host - colon - 1});
  }
}

void FindBehindKeys(std::string_view text, std::vector<TTextRange>& found) {
  for (std::size_t at = PosNoCase(kKey, text); at != 0; at = PosNoCase(kKey, text, at + 1)) {
    const std::size_t begin = at - 1 + kKey.size();
    found.push_back({begin, std::min(text.find_first_of(";\"", begin), text.size()) - begin});
  }
}

}  // namespace

std::vector<TTextRange> SecretsIn(std::string_view text) {
  std::vector<TTextRange> found;
  FindInAddresses(text, found);
  FindBehindKeys(text, found);
  std::erase_if(found, [](const TTextRange& range) { return range.length == 0; });
  std::sort(found.begin(), found.end(), [](const TTextRange& a, const TTextRange& b) { return a.start < b.start; });
  return found;
}

std::string WithoutSecrets(std::string_view text) {
  std::string shown;
  std::size_t end = 0;  // of what is done with; one secret may stand within another
  for (const TTextRange& range : SecretsIn(text)) {
    if (range.start >= end) shown.append(text.substr(end, range.start - end)).append("***");
    end = std::max(end, range.start + range.length);
  }
  return shown.append(text.substr(end));
}

}  // namespace velmora

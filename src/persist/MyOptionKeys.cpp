// SPDX-License-Identifier: GPL-3.0-or-later
#include "persist/MyOptionKeys.h"

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <utility>

#include "util/Errors.h"
#include "util/Format.h"
#include "util/Lists.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kKeyAlone[] = "A private key (tls_key, --tls-key) needs its certificate (tls_cert, --tls-cert)";
constexpr std::string_view kTls = "tls";
constexpr std::string_view kTlsCa = "tls_ca";

[[noreturn]] void RaiseValue(const TMyOptionKey& key, const std::string& text, const std::string& wanted) {
  RaiseError(Format("\"%s\" is no value of the key %s: it must be %s", text, key.name, wanted));
}

std::size_t WordOf(const TMyOptionKey& key, const std::string& text) {
  const auto found = std::ranges::find_if(key.words, [&](const char* word) { return SameText(word, text); });
  if (found == key.words.end())
    RaiseValue(key, text, "one of " + JoinList(TStringList(key.words.begin(), key.words.end()), ", "));
  return static_cast<std::size_t>(found - key.words.begin());
}

int NumberOf(const TMyOptionKey& key, const std::string& text) {
  const std::optional<std::int64_t> number = TryStrToInt(text);
  if (!number || *number < key.least || *number > key.most)
    RaiseValue(key, text, Format("a number from %d to %d", key.least, key.most));
  return static_cast<int>(*number);
}

void Read(const TMyOptionKey& /*key*/, const std::string& text, std::string& field) { field = text; }
void Read(const TMyOptionKey& key, const std::string& text, int& field) { field = NumberOf(key, text); }
template <class TWord>
void Read(const TMyOptionKey& key, const std::string& text, TWord& field) {
  field = static_cast<TWord>(WordOf(key, text));
}

std::string Written(const TMyOptionKey& /*key*/, const std::string& path) {
  return path.empty() ? path : std::filesystem::absolute(path).string();
}
std::string Written(const TMyOptionKey& /*key*/, int number) { return Format("%d", number); }
template <class TWord>
std::string Written(const TMyOptionKey& key, TWord word) {
  return key.words[static_cast<std::size_t>(word)];
}

}  // namespace

TMyOptions MyOptionsOf(const TEngineValues& own, TMyOptions options, const TGivenKeys& given) {
  for (const TMyOptionKey& key : kMyOptionKeys)
    if (own.Has(key.name) && !given.contains(key.name))
      std::visit([&](auto field) { Read(key, own.Text(key.name), options.*field); }, key.field);
  const bool about_tls = given.contains(kTls) || (own.Has(kTls) && !given.contains(kTlsCa));
  if (!options.CaFile.empty() && !about_tls) options.Tls = ETls::Required;
  if (!options.KeyFile.empty() && options.CertFile.empty()) RaiseError(kKeyAlone);
  return options;
}

TEngineValues ValuesOfMyOptions(const TMyOptions& options) {
  static const TMyOptions kStandard;
  TEngineValues values;
  const auto add = [&](const TMyOptionKey& key, auto field) {
    if (options.*field != kStandard.*field) values.Set(key.name, Written(key, options.*field));
  };
  for (const TMyOptionKey& key : kMyOptionKeys) std::visit([&](auto field) { add(key, field); }, key.field);
  return values;
}

}  // namespace velmora

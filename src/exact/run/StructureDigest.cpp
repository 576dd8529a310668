// SPDX-License-Identifier: GPL-3.0-or-later
#include "exact/run/StructureDigest.h"

#include <nettle/sha2.h>

#include <algorithm>
#include <array>
#include <vector>

#include "core/CreationTexts.h"
#include "core/Meta.h"
#include "exact/run/PairReader.h"
#include "mysqltext/KeyText.h"
#include "util/Errors.h"
#include "util/Lists.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr std::size_t kLongestHeader = 16384;  // bytes
constexpr std::size_t kDigestBytes = 16;       // of the 32 that there are: nobody is to be kept from forging one

class TDigest {
 public:
  TDigest() { sha256_init(&state_); }
  // Each with its length, so that what stands in two texts does not pass for what stands in one.
  void Add(std::string_view text) {
    Feed(std::to_string(text.size()) + ":");
    Feed(text);
  }
  std::string Text() {
    std::array<std::uint8_t, kDigestBytes> bytes{};
    sha256_digest(&state_, bytes.size(), bytes.data());
    constexpr char kDigits[] = "0123456789abcdef";
    std::string text;
    for (const std::uint8_t byte : bytes) (text += kDigits[byte / 16]) += kDigits[byte % 16];
    return text;
  }

 private:
  void Feed(std::string_view text) {
    sha256_update(&state_, text.size(), reinterpret_cast<const std::uint8_t*>(text.data()));
  }

  sha256_ctx state_{};
};

// Some servers qualify names in texts of views and the like.
std::string Unqualified(const TOtherObject& object, const std::string& database) {
  return database.empty() ? object.text : StrReplace(object.text, QuotedName(database) + ".", "");
}

}  // namespace

std::string TextDigest(std::string_view text) {
  TDigest digest;
  digest.Add(text);
  return digest.Text();
}

// Servers print it before what users have written in the options, and line ends within literals escaped.
std::string WithoutCounter(const std::string& text) {
  constexpr std::string_view kCounter = " AUTO_INCREMENT=";
  const std::size_t body_end = text.find("\n)");
  const std::size_t counter = body_end == std::string::npos ? body_end : text.find(kCounter, body_end);
  if (counter == std::string::npos || counter > text.find('\'', body_end)) return text;
  const std::size_t digits_end = text.find_first_not_of("0123456789", counter + kCounter.size());
  return text.substr(0, counter) + (digits_end == std::string::npos ? "" : text.substr(digits_end));
}

namespace {

std::string TablesDigest(const std::map<std::string, std::string>& tables) {
  TDigest digest;
  for (const auto& [name, text] : tables) {
    digest.Add(name);
    digest.Add(WithoutCounter(text));
  }
  return digest.Text();
}

std::string OthersDigest(const TDatabaseObjects& others) {
  TDigest digest;
  std::vector<TOtherObject> objects = others.objects;
  std::ranges::sort(objects, {}, [](const TOtherObject& object) { return object.kind + " " + object.name; });
  for (const TOtherObject& object : objects) {
    digest.Add(object.kind);
    digest.Add(object.name);
    digest.Add(Unqualified(object, others.database));
  }
  return digest.Text();
}

}  // namespace

std::string TStructureDigest::Text() const { return "tables " + tables + (others.empty() ? "" : ", others " + others); }

TStructureDigest DigestOf(const std::map<std::string, std::string>& tables, const TDatabaseObjects* others) {
  return {TablesDigest(tables), others == nullptr ? std::string() : OthersDigest(*others)};
}

std::optional<TStructureDigest> DigestNow(TDBConn& conn) {
  auto* texts = dynamic_cast<TCreationTexts*>(&conn);
  if (texts == nullptr || texts->StructureScript() != nullptr) return std::nullopt;
  texts->PrepareExactTexts();
  const TDatabaseObjects others{texts->TextsDatabase(), texts->OtherObjects()};
  TStringList tables;
  conn.meta().TableNames(tables);
  std::erase_if(tables, [&](const std::string& table) {
    return std::ranges::any_of(others.objects, [&](const TOtherObject& object) {
      return object.name == table && (object.kind == "view" || object.kind == "sequence");
    });
  });
  std::map<std::string, std::string> read;
  texts->ExpectCreationTexts(tables);
  RunGuarded(
      [&] {
        for (const std::string& table : tables) {
          try {
            texts->ShowCreateTable(table, read[table]);
          } catch (const EMySqlException& error) {
            if (!conn.GetConnected()) throw;
            read.erase(table);
          }
        }
      },
      [&] { texts->ExpectCreationTexts({}); });
  return DigestOf(read, &others);
}

std::string DigestLine(const char* side, const TStructureDigest& digest) {
  return std::string(kStructureLine) + side + ": " + digest.Text();
}

// Comments and empty lines alone stand before it.
std::optional<TStructureDigest> DigestIn(std::string_view script, const char* side) {
  const std::string start = std::string(kStructureLine) + side + ": ";
  for (const std::string& line : LinesOf(script.substr(0, kLongestHeader))) {
    if (!line.empty() && !line.starts_with("--")) break;
    if (!line.starts_with(start)) continue;
    TStringList words;
    SplitPlain(' ', Trim(line.substr(start.size())), words);
    if (words[0] != "tables" || (words.size() != 2 && words.size() != 4)) return std::nullopt;
    TStructureDigest digest{words[1], words.size() == 4 ? words[3] : std::string()};
    if (digest.tables.ends_with(',')) digest.tables.pop_back();
    return digest;
  }
  return std::nullopt;
}

}  // namespace velmora

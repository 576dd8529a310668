// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Whose rights a view, trigger, routine or event has when it runs, and what a comparison makes of that.

#include <string>
#include <string_view>
#include <vector>

namespace velmora {

enum class EDefiners {
  Ignore,   // not compared; what changes keeps the target's, what is new the reference's
  Compare,  // another one is a difference
  Strip,    // not compared, and left out of what is written: who runs the script becomes the definer
  Map       // compared, with the reference's replaced as the rules say
};

// An account as "user@host", each as servers have it, without quotes.
struct TDefinerRule {
  std::string from;
  std::string to;
  bool operator==(const TDefinerRule&) const = default;
};

struct TDefinerWishes {
  EDefiners policy = EDefiners::Ignore;
  std::vector<TDefinerRule> rules{};  // of Map alone
  bool operator==(const TDefinerWishes&) const = default;
};

// "ignore", "compare", "strip", "map A@B=C@D", of which there may be several; raises for anything else, and for a
// second policy.
void TakeDefinerWish(std::string_view text, TDefinerWishes& wishes);
std::vector<std::string> DefinerWishTexts(const TDefinerWishes& wishes);  // as they were taken; none for ignore

// "user@host" of what a text says: `user`@`host`, 'user'@'host', user@host, role. A name without a host is a role, or
// the account at any host; "current_user()" stays as it is.
std::string AccountOf(std::string_view written);
std::string QuotedAccount(std::string_view account);  // `user`@`host`; of a role `role`

// What the reference's account becomes.
std::string MappedAccount(const std::string& account, const TDefinerWishes& wishes);

}  // namespace velmora

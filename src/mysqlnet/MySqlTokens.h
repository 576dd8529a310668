// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What proves to a server that one knows a password, without sending it. All texts are bytes. For this folder only.

#include <string>
#include <string_view>

namespace velmora {

std::string Sha1(std::string_view text);                              // 20 bytes
std::string XorTexts(std::string_view text, std::string_view other);  // of equal length; the shorter length counts
// Without blanks and tabs, which the old schemes leave out of a password.
std::string WithoutBlanks(std::string_view password);

// The scheme before 4.1: 8 characters for the first 8 bytes of `scramble`, and a NUL; only the NUL without a password.
std::string OldToken(std::string_view password, std::string_view scramble);
// The scheme since 4.1: 20 bytes. All the following need a password.
std::string NewToken(std::string_view password, std::string_view scramble);
// caching_sha2_password, the quick way: 32 bytes.
std::string Sha2Token(std::string_view password, std::string_view nonce);
// client_ed25519: the signature of a nonce, 64 bytes.
std::string Ed25519Token(std::string_view password, std::string_view nonce);
// The password and a NUL, masked by the nonce and readable only to who has sent `public_key` (PEM). Raises
// EMySqlException 2012 for what is no key, 2061 for a password that is too long for it.
std::string RsaPassword(std::string_view password, std::string_view nonce, std::string_view public_key);

}  // namespace velmora

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace velmora {

// Addresses that whoever builds the program supplies; see the build's VELMORA_HOME_PAGE, VELMORA_SUPPORT_ADDRESS and
// VELMORA_PROVIDER_PAGE.
const char* HomePage();        // of the product, with scheme
const char* SupportAddress();  // for mail
const char* ProviderPage();    // where users find database providers, with scheme

}  // namespace velmora

// SPDX-License-Identifier: GPL-3.0-or-later
#include "util/Addresses.h"

namespace velmora {

const char* HomePage() { return VELMORA_HOME_PAGE; }
const char* SupportAddress() { return VELMORA_SUPPORT_ADDRESS; }
const char* ProviderPage() { return VELMORA_PROVIDER_PAGE; }

}  // namespace velmora

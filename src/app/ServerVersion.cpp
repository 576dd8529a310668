// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/ServerVersion.h"

#include "core/CreationTexts.h"

namespace velmora {

std::optional<TServerVersion> ServerVersionOf(TDBConn& conn) {
  auto* texts = dynamic_cast<TCreationTexts*>(&conn);
  if (texts == nullptr || texts->StructureScript() != nullptr) return std::nullopt;
  return ReadServerVersion(texts->ServerVersion());
}

}  // namespace velmora

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "shell/widgets/QtText.h"

namespace velmora {

// Gives an object the name by which it is found, and the object back.
template <class Object>
Object* Named(Object* object, const char* name) {
  object->setObjectName(ToQt(name));
  return object;
}

}  // namespace velmora

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The bytes of a task file: the magic "VL10", then the XML text as a Zip archive, padded and enciphered. See
// docs/task-file.md.

#include <string>
#include <string_view>

namespace velmora {

inline constexpr std::string_view kTaskMagic = "VL10";

// The fixed key of all task files, which keeps passwords from a casual look and from nobody else.
std::string TaskFileKey();

// The bytes that follow the magic. Raises for a text that UnpackTask would refuse by its size.
std::string PackTask(std::string_view xml);
// The reverse; no bytes give no text. Raises one message for what is damaged, not ours, or larger than a task can be.
std::string UnpackTask(std::string_view packed);

}  // namespace velmora

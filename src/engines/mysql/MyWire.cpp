#include "engines/mysql/MyWire.h"

#include <algorithm>
#include <iterator>

#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

bool IsLocalServer(const std::string& server) { return server.empty() || SameText(server, "localhost"); }

// Shut down; killed, and too long silent, by MariaDB's number or MySQL's; and what is wrong with a packet, from one
// that was too long on.
bool IsFarewell(int error) {
  constexpr int kFarewells[] = {1053, 1927, 3169, 4031};
  constexpr int kFirstOfPackets = 1153, kLastOfPackets = 1161;
  return std::find(std::begin(kFarewells), std::end(kFarewells), error) != std::end(kFarewells) ||
         (error >= kFirstOfPackets && error <= kLastOfPackets);
}

EMySqlException ToldError(int number, const std::string& text) {
  return {number, text.empty() ? Format("Error %d, of which the server says no more", number) : text};
}

}  // namespace velmora

#pragma once

namespace velmora {

// How databases are compared and scripts are written.
enum class EDialect {
  Standard,  // as the statements that the program has always written
  Exact      // creation texts without loss, for the servers of today
};

}  // namespace velmora

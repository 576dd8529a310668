#pragma once

// What the query of a view says: servers print it in spellings of their own.

#include <string>
#include <string_view>

namespace velmora {

// In a spelling of its own: white space, comments, letter case of keywords, how names are quoted and redundant brackets
// do not count. The own database is out of it already. Raises where the text cannot be taken apart.
std::string QueryMeaning(std::string_view query);

}  // namespace velmora

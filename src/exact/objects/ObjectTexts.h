#pragma once

// Views, sequences, triggers, routines and events of two databases: nothing changes them, and yet two databases whose
// triggers differ are not the same.

#include <string>
#include <vector>

#include "core/CreationTexts.h"

namespace velmora {

struct TDatabaseObjects {
  std::string database;  // its name, with which texts may qualify their names; empty where nobody knows it
  std::vector<TOtherObject> objects;
};

struct TObjectDifference {
  std::string kind;
  std::string name;
  std::string difference;  // "only in the reference", "only in the target", "differs", "not read"
};

// In the order of the reference, then what the target alone has. White space, comments, how names are quoted, the
// database's own name before a name, the definer and what is the default never count. An object whose text is empty on
// a side was not read, which is told as a difference: nobody knows.
std::vector<TObjectDifference> CompareObjects(const TDatabaseObjects& reference, const TDatabaseObjects& target);

}  // namespace velmora

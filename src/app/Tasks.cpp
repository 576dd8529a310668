#include "app/Tasks.h"

#include "persist/TaskFile.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

template <class Body>
auto Named(const std::string& path, Body body) {
  try {
    return body();
  } catch (const EVelmora& error) {
    const std::string message = error.what();
    RaiseError(message.find(path) == std::string::npos ? path + ": " + message : message);
  }
}

}  // namespace

bool IsTaskFile(const std::string& source) {
  const std::string_view extension = kTaskExtension;
  return source.size() >= extension.size() && SameText(source.substr(source.size() - extension.size()), extension);
}

TTaskConnections MakeTask(const std::string& path, const TSourceSettings& settings) {
  return Named(path, [&] {
    TOpenedTask task = ReadTask(path, ClientsOf(settings));
    CheckTarget(*task.target);
    return TTaskConnections{std::move(task.reference), std::move(task.target)};
  });
}

void NewTaskFile(const std::string& path, TDBConn& reference, TDBConn& target) {
  if (!IsTaskFile(path)) RaiseError(Format("%s: the name of a task file must end in %s", path, kTaskExtension));
  Named(path, [&] { WriteTask(path, reference, target); });
}

TTaskValues ShowTaskFile(const std::string& path) {
  return Named(path, [&] { return ReadTaskValues(path); });
}

}  // namespace velmora

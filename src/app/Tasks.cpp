// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/Tasks.h"

#include "persist/TaskFile.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Text.h"
#include "xml/XMLAccess.h"

namespace velmora {

namespace {

template <class Body>
auto Named(const std::string& path, Body body) {
  try {
    return body();
  } catch (const EVelmora& error) {
    std::string message = error.what();
    if (message.find(path) == std::string::npos) message = path + ": " + message;
    const std::string& fault = SharedDocument().LoadFault();
    RaiseError(fault.empty() ? message : message + " (" + fault + ")");
  }
}

std::unique_ptr<TDBConn> MakeSide(TTaskSide side, const TSourceSettings& settings) {
  const TEngineKey* secret = side.engine->SecretKey();
  if (secret != nullptr && settings.TaskPassword) side.values.Set(secret->name, *settings.TaskPassword);
  return MakeTaskEngine(side, ClientsOf(settings));
}

}  // namespace

bool IsTaskFile(const std::string& source) {
  const std::string_view extension = kTaskExtension;
  return source.size() >= extension.size() && SameText(source.substr(source.size() - extension.size()), extension);
}

TMadeTask MakeTask(const std::string& path, const TSourceSettings& reference, const TSourceSettings& target) {
  return Named(path, [&] {
    const TTaskReader reader(path);
    TMadeTask task;
    task.dialect = StoredDialect(reader.Dialect()).id;
    task.marks = reader.Marks();
    task.foreign = ReadForeignWishes(reader.Foreign());
    task.exact = ReadExactWishes(reader.Exact());
    task.connections.reference = MakeSide(reader.Reference(), reference);
    task.connections.target = MakeSide(reader.Target(), target);
    CheckTarget(*task.connections.target);
    return task;
  });
}

void CheckTaskName(const std::string& path) {
  if (!IsTaskFile(path)) RaiseError(Format("%s: the name of a task file must end in %s", path, kTaskExtension));
}

void NewTaskFile(const std::string& path, TDBConn& reference, TDBConn& target, EDialect dialect,
                 const TTaskMarks& marks, const TForeignWishes& foreign, const TExactWishes& exact) {
  CheckTaskName(path);
  Named(path, [&] {
    WriteTask(path, reference, target, DialectRow(dialect).Stored(), marks, ForeignWishesText(foreign),
              ExactWishesText(exact));
  });
}

TTaskValues ShowTaskFile(const std::string& path) {
  return Named(path, [&] {
    TTaskValues values = ReadTaskValues(path);
    StoredDialect(values.dialect);
    ReadForeignWishes(values.foreign);
    ReadExactWishes(values.exact);
    return values;
  });
}

}  // namespace velmora

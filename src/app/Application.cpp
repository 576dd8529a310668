#include "app/Application.h"

namespace velmora {

TApplication::TApplication(TProgress& progress, TScriptEditor& editor, TMessageLog& log, const TClock& clock)
    : sync(connections, data, tree, progress, log),
      generator_(connections, data, editor, progress, clock),
      runner_(connections, editor, progress) {}

void TApplication::OpenTask(std::unique_ptr<TDBConn> reference, std::unique_ptr<TDBConn> target) {
  connections.reference = std::move(reference);
  connections.target = std::move(target);
  connections.reference->Connect();
  connections.target->Connect();
}

void TApplication::TakeTask(TTaskConnections pair) {
  connections.reference = std::move(pair.reference);
  connections.target = std::move(pair.target);
}

void TApplication::Compare() {
  tree.Clear();
  sync.SetDatabases(connections.reference.get(), connections.target.get());
  sync.Compare();
}

}  // namespace velmora

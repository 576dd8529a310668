// SPDX-License-Identifier: GPL-3.0-or-later

// Files that the program keeps: XML documents, task files, settings, values, recent connections.

#include <stdexcept>
#include <string>

#include "Harnesses.h"
#include "Input.h"
#include "app/Tasks.h"
#include "persist/MachineValues.h"
#include "persist/RecentConnections.h"
#include "persist/Settings.h"
#include "persist/TaskPack.h"
#include "persist/ValueStore.h"
#include "util/Files.h"
#include "xml/XMLAccess.h"

namespace velmora::fuzzing {
namespace {

constexpr char kDocument[] = "/root";

void ReadDocument(const std::string& text, bool entities) {
  TXMLAccess store;
  store.xmlLoadText(text, entities);
  for (const char* path : {kDocument, "/root/reference/engine", "/root/a/b/c", "root", "/"})
    Try([&] { store.xmlGetVal(path); });
  TStringList list;
  Try([&] { store.xmlGetList("/root/item", "name;\\up;\\\\top", list); });
  Try([&] { store.xmlSetList("/root/list", "item", list, "name;up;top"); });
  Try([&] { store.xmlSetVal("/root/new/value", text); });
  const std::string written = store.xmlGetText();
  TXMLAccess again;
  again.xmlLoadText(written, false);
  if (!written.empty() && !again.LoadFault().empty()) throw std::logic_error("what was written is refused: " + written);
}

void ReadTask(std::string_view bytes) {
  const std::string path = PutFiles({{"task.vlt", bytes}}) + "/task.vlt";
  Try([&] { ShowTaskFile(path); });
  Try([&] { MakeTask(path); });
  const TRecentConnections recent(path);
  for (const TRecentConnection& connection : recent.All()) ConnectionCaption(connection);
}

void ReadSettings(std::string_view bytes) {
  TWindowPlace window;
  TRecentList recent;
  LoadSettings(PutFiles({{"file.settings", bytes}}) + "/file.settings", window, recent);
  for (std::size_t i = 0; i < recent.Count(); ++i) recent.Caption(i);
}

void ReadValues(std::string_view bytes) {
  const std::string path = PutFiles({{"file.values", bytes}}) + "/file.values";
  TValueStore store(path);
  store.Text("a", "b");
  store.Integer("a", "b");
  Try([&] { ReadRegStringHKLM("\\a\\b", path); });
  store.SetText("new", "value", std::string(bytes.substr(0, 9)));
  store.Save();
  if (TValueStore(path).Text("new", "value") != bytes.substr(0, 9)) throw std::logic_error("another value");
}

}  // namespace

void FuzzTasks(std::string_view input) {
  const std::size_t way = Choose(input, 7);
  const std::string text(input), magic(kTaskMagic);
  switch (way) {
    case 0:
      ReadDocument(text, false);
      break;
    case 1:
      ReadDocument(text, true);
      break;
    case 2:
      ReadTask(input);
      break;
    case 3:
      ReadTask(magic + text);
      break;
    case 4:
      ReadTask(magic + PackTask(text));
      break;
    case 5:
      ReadSettings(input);
      break;
    default:
      ReadValues(input);
  }
}

}  // namespace velmora::fuzzing

// SPDX-License-Identifier: GPL-3.0-or-later
#include "xml/XMLAccess.h"

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <vector>

#include "util/Errors.h"
#include "util/Files.h"
#include "util/Format.h"
#include "util/Text.h"
#include "xml/Dom.h"

namespace velmora {
namespace {

namespace fs = std::filesystem;

constexpr char kFirstDocument[] = "<?xml version=\"1.0\" ?><root></root>";
constexpr char kValueRefused[] = "%s: the value of %s cannot be stored: %s";
constexpr char kInvalidColumns[] = "%s: Invalid columns parameter";
constexpr char kManyItems[] = "%s: more than one item with path %s";
constexpr char kNoItem[] = "%s: no item with path %s";
constexpr char kInvalidPath[] = "%s: Invalid path";
constexpr std::string_view kSeparator = ";";
constexpr char kBaseUp = '\\';

struct TEntity {
  std::string_view letter, text;
};

// In the order in which they are replaced. The ampersand comes last in both directions, so that on the way in the
// entity texts just put are themselves escaped, and reach the document as plain text that reads "&Scaron;".
constexpr TEntity kEntities[] = {
    {"Š", "&Scaron;"}, {"Đ", "&Dstrok;"}, {"Č", "&Ccaron;"}, {"Ć", "&Cacute;"}, {"Ž", "&Zcaron;"}, {"š", "&scaron;"},
    {"đ", "&dstrok;"}, {"č", "&ccaron;"}, {"ć", "&cacute;"}, {"ž", "&zcaron;"}, {"&", "&amp;"},
};

std::string LettersToEntities(std::string text) {
  for (const TEntity& entity : kEntities) text = StrReplace(text, entity.letter, entity.text);
  return text;
}

std::string EntitiesToLetters(std::string text) {
  if (text.find('&') == std::string::npos) return text;
  for (const TEntity& entity : kEntities) text = StrReplace(text, entity.text, entity.letter);
  return text;
}

void RequireRoot(const TDom& dom, const char* operation) {
  if (dom.Root() == nullptr) RaiseError(Format("%s: Document.DocumentElement=nil", operation));
}

void RequirePath(std::string_view path, const char* operation) {
  if (path.empty()) RaiseError(Format(kInvalidPath, operation));
}

TStringList ColumnsOf(std::string_view columns, const char* operation) {
  TStringList names;
  SplitText(kSeparator, columns, names);
  if (names.empty()) RaiseError(Format(kInvalidColumns, operation));
  return names;
}

void RequireXmlText(std::string_view value, std::string_view path, const char* operation) {
  const std::string fault = TextFault(value);
  if (!fault.empty()) RaiseError(Format(kValueRefused, operation, path, fault));
}

void RequireName(const std::string& name, std::string_view path, const char* operation) {
  if (!IsElementName(name)) RaiseError(Format("%s: \"%s\" is no name of an element: %s", operation, name, path));
}

// --- Reading lists
struct TColumn {
  std::size_t up = 0;  // levels that the base stands above the selected element
  std::string name;    // of a child of the base; empty: the base's own text
};

TColumn ParseColumn(const std::string& text) {
  const std::size_t up = std::min(text.find_first_not_of(kBaseUp), text.size());
  return {up, text.substr(up)};
}

// Deliberate: the children of the base are counted by those of the selected element, also where the base is another,
// and a base's own text comes once for each of them. What the base does not have adds nothing.
std::string ColumnText(const TDomNode& selected, const TColumn& column) {
  const TDomNode* base = &selected;
  for (std::size_t i = 0; i < column.up && base != nullptr; ++i) base = ParentOf(*base);
  std::string text;
  if (base == nullptr) return text;
  const std::size_t count = ChildrenOf(selected).size();
  if (column.name.empty()) {
    const std::string own = ValueOf(*base);
    for (std::size_t i = 0; i < count; ++i) text += own;
    return text;
  }
  const TDomNodes children = ChildrenOf(*base);
  for (std::size_t i = 0; i < std::min(count, children.size()); ++i)
    if (IsElement(*children[i], column.name)) text += ValueOf(*children[i]);
  return text;
}

// --- Writing lists
// The values of one line, one per column.
TStringList LineValues(const std::string& line, const TStringList& names, const std::string& itemPath,
                       const char* operation) {
  TStringList pieces;
  SplitText(kSeparator, line, pieces);
  TStringList values;
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (names[i].empty()) RaiseError(Format(kInvalidColumns, operation));
    RequireName(names[i], itemPath, operation);
    values.push_back(ItemAt(pieces, static_cast<std::ptrdiff_t>(i)));
    RequireXmlText(values.back(), itemPath + "/" + names[i], operation);
  }
  return values;
}

std::string RootPath(std::string_view key) { return "/root/" + std::string(key); }

}  // namespace

TXMLAccess::TXMLAccess() : dom_(std::make_unique<TDom>()) { dom_->Load(kFirstDocument); }
TXMLAccess::~TXMLAccess() = default;

const std::string& TXMLAccess::LoadFault() const { return dom_->Fault(); }

void TXMLAccess::xmlLoadText(const std::string& text, bool mapEntities) {
  dom_->Load(mapEntities ? LettersToEntities(text) : text);
}

void TXMLAccess::xmlLoad(const std::string& fileName) {
  std::error_code ignored;
  const fs::file_status status = fs::status(fileName, ignored);
  if (!fs::exists(status) || fs::is_directory(status))
    RaiseError(Format("xmlLoad: file \"%s\" does not exist!", fileName));
  dom_->Refuse("");
  // Never more than the limit is read, and nothing that has no end.
  if (!fs::is_regular_file(status))
    dom_->Refuse("it is no regular file");
  else if (fs::file_size(fileName, ignored) > kMaxXmlSize)
    dom_->Refuse(kXmlTooLarge);
  else
    dom_->Load(ReadFileText(fileName));
}

bool TXMLAccess::xmlSave(const std::string& fileName) const {
  if (dom_->Root() == nullptr) return false;
  const std::string text = xmlGetText();
  try {
    WriteFileText(fileName, text);
  } catch (const EVelmora&) {
    return false;
  }
  return true;
}

std::string TXMLAccess::xmlGetText() const { return dom_->Text(); }

std::string TXMLAccess::xmlGetVal(std::string_view path) const {
  constexpr char kOperation[] = "xmlGetVal";
  if (dom_->Root() == nullptr) RaiseError("Document.DocumentElement=nil");
  RequirePath(path, kOperation);
  const TDomNodes nodes = dom_->Select(path);
  if (nodes.empty()) RaiseError(Format(kNoItem, kOperation, path));
  if (nodes.size() > 1) RaiseError(Format(kManyItems, kOperation, path));
  // Deliberate: xmlSetVal does not map the other way, so a value that holds an entity text comes back changed.
  return EntitiesToLetters(ValueOf(*nodes.front()));
}

void TXMLAccess::xmlSetVal(std::string_view path, std::string_view value) {
  constexpr char kOperation[] = "xmlSetVal";
  RequirePath(path, kOperation);
  RequireXmlText(value, path, kOperation);
  TDomNodes nodes = dom_->Select(path);
  if (nodes.empty()) {
    xmlCreatePath(path);
    nodes = dom_->Select(path);
  }
  if (nodes.empty()) RaiseError(Format("xmlSetVal: can't create path %s", path));
  if (nodes.size() > 1) RaiseError(Format(kManyItems, kOperation, path));
  if (!SetValue(*nodes.front(), value)) RaiseError(Format("xmlSetVal: %s holds no value to be overwritten", path));
}

void TXMLAccess::xmlSetInt(std::string_view path, std::int64_t value) { xmlSetVal(path, Format("%d", value)); }
void TXMLAccess::xmlSetBool(std::string_view path, bool value) { xmlSetVal(path, value ? "Y" : "N"); }

void TXMLAccess::xmlCreatePath(std::string_view path) {
  constexpr char kOperation[] = "xmlCreatePath";
  if (path.empty()) RaiseError("xmlCreatePath: empty path!");
  if (!path.starts_with('/')) RaiseError(Format("xmlCreatePath: path must start with \"/\": %s", path));
  TStringList steps;
  SplitPlain('/', path.substr(1), steps);
  for (const std::string& step : steps) RequireName(step, path, kOperation);
  if (steps.size() > kMaxXmlDepth) RaiseError(Format("xmlCreatePath: path is too deep: %s", path));

  if (dom_->Root() == nullptr) dom_->Load(Format("<%s/>", steps.front()));
  TDomNodes parents = dom_->Select(steps.front());
  for (std::size_t i = 1; i < steps.size() && !parents.empty(); ++i) {
    TDomNodes found = ChildElements(parents, steps[i]);
    if (found.empty()) found.push_back(&AppendElement(*parents.front(), steps[i]));
    parents.swap(found);
  }
}

void TXMLAccess::xmlGetList(std::string_view path, std::string_view columns, TStringList& list) const {
  constexpr char kOperation[] = "xmlGetList";
  RequireRoot(*dom_, kOperation);
  RequirePath(path, kOperation);
  std::vector<TColumn> parsed;
  for (const std::string& name : ColumnsOf(columns, kOperation)) parsed.push_back(ParseColumn(name));

  list.clear();
  for (const TDomNode* node : dom_->Select(path)) {
    TStringList values;
    for (const TColumn& column : parsed) values.push_back(ColumnText(*node, column));
    list.push_back(JoinList(values, kSeparator));
  }
}

void TXMLAccess::xmlSetList(std::string_view path, std::string_view item, const TStringList& list,
                            std::string_view columns) {
  constexpr char kOperation[] = "xmlSetList";
  RequireRoot(*dom_, kOperation);
  RequirePath(path, kOperation);
  if (item.empty()) RaiseError("xmlSetList: Invalid item");
  const TStringList names = ColumnsOf(columns, kOperation);
  const TDomNodes nodes = dom_->Select(path);
  if (nodes.empty()) RaiseError(Format(kNoItem, kOperation, path));
  const std::string itemName(item);
  RequireName(itemName, path, kOperation);

  std::vector<TStringList> lines;
  for (const std::string& line : list)
    lines.push_back(LineValues(line, names, Format("%s/%s", path, item), kOperation));
  TDomNode& parent = *nodes.front();
  RemoveChildren(parent);
  for (const TStringList& values : lines) {
    TDomNode& element = AppendElement(parent, itemName);
    for (std::size_t i = 0; i < names.size(); ++i) SetValue(AppendElement(element, names[i]), values[i]);
  }
}

// --- The shared document
TXMLAccess& SharedDocument() {
  static TXMLAccess document;
  return document;
}

std::string cfgGetStr(std::string_view key) { return SharedDocument().xmlGetVal(RootPath(key)); }
bool cfgGetBool(std::string_view key) { return cfgGetStr(key) == "Y"; }
std::int32_t cfgGetInt(std::string_view key) { return StrToInt(cfgGetStr(key)); }
void cfgSetStr(std::string_view key, std::string_view value) { SharedDocument().xmlSetVal(RootPath(key), value); }
void cfgSetBool(std::string_view key, bool value) { SharedDocument().xmlSetBool(RootPath(key), value); }
void cfgSetInt(std::string_view key, std::int64_t value) { SharedDocument().xmlSetInt(RootPath(key), value); }

void cfgGetList(std::string_view key, std::string_view columns, TStringList& list) {
  SharedDocument().xmlGetList(RootPath(key), columns, list);
}

void cfgSetList(std::string_view key, const TStringList& list, std::string_view columns) {
  std::string item(key);
  const std::string parent = RootPath(StrChopLast("/", item));
  SharedDocument().xmlCreatePath(parent);
  SharedDocument().xmlSetList(parent, item, list, columns);
}

void cfgReset() { cfgLoadText("<?xml version=\"1.0\"?><root/>"); }
void cfgLoadText(const std::string& text) { SharedDocument().xmlLoadText(text, false); }
std::string cfgText() { return SharedDocument().xmlGetText(); }
void cfgLoad(const std::string& fileName) { SharedDocument().xmlLoad(fileName); }
bool cfgSave(const std::string& fileName) { return SharedDocument().xmlSave(fileName); }

}  // namespace velmora

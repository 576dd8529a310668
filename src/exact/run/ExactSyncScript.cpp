#include <algorithm>

#include "exact/run/ExactSync.h"
#include "sync/ScriptGenerator.h"

namespace velmora {

namespace {

constexpr char kSaveChecks[] = "set @velmora_foreign_key_checks = @@foreign_key_checks;";
constexpr char kChecksOff[] = "set foreign_key_checks = 0;";
constexpr char kRestoreChecks[] = "set foreign_key_checks = @velmora_foreign_key_checks;";
constexpr char kUnsafe[] = "unsafe: ";

// Names may hold what would end the comment.
std::string Comment(std::string text) {
  std::replace_if(
      text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < ' '; }, ' ');
  return "-- " + text;
}

}  // namespace

void TExactSync::GenerateScript(TScriptEditor& editor, const TClock& clock, const std::string& note) const {
  editor.Clear();
  editor.AddLine(Comment(ScriptOrigin(clock)));
  editor.AddLine(Comment(ScriptPurpose(connections_)));
  if (!note.empty()) editor.AddLine(Comment(note));
  editor.AddLine({});
  editor.AddLine(kSaveChecks);
  editor.AddLine(kChecksOff);
  editor.AddLine({});
  for (const TPlanStatement& statement : Plan()) {
    for (const std::string& reason : statement.unsafe) editor.AddLine(Comment(kUnsafe + reason));
    editor.AddLine(statement.text + ";");
  }
  editor.AddLine({});
  editor.AddLine(kRestoreChecks);
  editor.Show();
}

}  // namespace velmora

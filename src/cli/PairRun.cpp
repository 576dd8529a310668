#include "cli/PairRun.h"

#include "app/FaultPlace.h"
#include "app/Sources.h"
#include "cli/SourceRun.h"
#include "cli/TerminalProgress.h"
#include "util/Errors.h"

namespace velmora {

std::unique_ptr<TProgress> MakeProgress(TConsole& console) {
  if (console.err_is_terminal) return std::make_unique<TTerminalProgress>(console.err);
  return std::make_unique<TNoProgress>();
}

TPairRun::TPairRun(TConsole& console, const TClock& clock)
    : console_(console),
      progress_(MakeProgress(console)),
      log_(clock, *progress_),
      app_(*progress_, editor_, log_, clock) {}

std::optional<std::string> TPairRun::Compare(const std::string& reference, const std::string& target, bool verbose) {
  return Reported([&] {
    Open(reference, target, verbose);
    app_.Compare();
  });
}

std::optional<std::string> TPairRun::GenerateScript() {
  return Reported([this] { app_.GenerateScript(); });
}

void TPairRun::Open(const std::string& reference, const std::string& target, bool verbose) {
  app_.OpenTask(MakeSource(reference), MakeTarget(target));
  WarnOfSource(*app_.connections.reference, verbose, console_);
  WarnOfSource(*app_.connections.target, verbose, console_);
}

template <class Body>
std::optional<std::string> TPairRun::Reported(Body body) {
  try {
    body();
    return std::nullopt;
  } catch (const EVelmora& error) {
    progress_->Finish();
    const std::string message = error.what();
    console_.Error(Placed(ComparisonPlace(app_.connections.reference.get(), app_.connections.target.get(),
                                          app_.sync.TableUnderWay(), message),
                          message));
    return message;
  }
}

}  // namespace velmora

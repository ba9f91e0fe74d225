#include "tools/render/abort_action.h"

#include <csignal>
#include <utility>

namespace qzlog_tool {

namespace {

/// Where a signal finds it.
thread_local AbortAction* current = nullptr;

}  // namespace

AbortAction::AbortAction(std::function<void()> action) : action_(std::move(action)) {
  current = this;
  std::signal(SIGABRT, take_signal);
}

AbortAction::~AbortAction() { current = nullptr; }

// The handler stays for the other threads, of which one may abort while the action of this one goes on.
void AbortAction::take_signal(int /*signal*/) {
  AbortAction* const action = current;
  current = nullptr;
  if (action != nullptr) action->action_();
  std::signal(SIGABRT, SIG_DFL);
  std::raise(SIGABRT);
}

}  // namespace qzlog_tool

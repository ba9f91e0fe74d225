#ifndef QZLOG_TOOLS_RENDER_ABORT_ACTION_H
#define QZLOG_TOOLS_RENDER_ABORT_ACTION_H

#include <functional>

namespace qzlog_tool {

/// What is done when a call of this thread aborts, as long as the object lives; one per thread. The library ends the
/// process so where ICU takes a pattern and then cannot apply it: what is rendered can still be written, and the line
/// be named. The process ends when the action returns, and where a signal from outside asks a thread without an action
/// to.
class AbortAction {
 public:
  explicit AbortAction(std::function<void()> action);
  AbortAction(const AbortAction&) = delete;
  AbortAction& operator=(const AbortAction&) = delete;
  ~AbortAction();

 private:
  static void take_signal(int signal);

  std::function<void()> action_;
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_RENDER_ABORT_ACTION_H

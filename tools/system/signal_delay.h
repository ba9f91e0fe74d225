#ifndef QZLOG_TOOLS_SYSTEM_SIGNAL_DELAY_H
#define QZLOG_TOOLS_SYSTEM_SIGNAL_DELAY_H

#include <csignal>

namespace qzlog_tool {

/// While one lives, the signals that end a process wait (SIGTERM, SIGINT, SIGHUP and their like): what has been begun
/// is finished, or taken back. They come when the outermost one dies, and end the process then. Those that are ignored
/// or blocked already stay so. For the only thread of a process.
class SignalDelay {
 public:
  SignalDelay() noexcept;
  SignalDelay(const SignalDelay&) = delete;
  SignalDelay& operator=(const SignalDelay&) = delete;
  ~SignalDelay();

  /// Whether any object lives.
  static bool is_active() noexcept;
  /// The signals that wait while any object lives.
  static const sigset_t& delayed() noexcept;
  /// The signal mask from before the outermost object.
  static const sigset_t& mask_before() noexcept;
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_SYSTEM_SIGNAL_DELAY_H

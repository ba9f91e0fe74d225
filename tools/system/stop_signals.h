#ifndef QZLOG_TOOLS_SYSTEM_STOP_SIGNALS_H
#define QZLOG_TOOLS_SYSTEM_STOP_SIGNALS_H

#include <csignal>

namespace qzlog_tool {

/// While it lives, SIGINT, SIGTERM and SIGHUP ask for the end instead of bringing it: the first one; the next one ends
/// the process. Those that are ignored stay so. One at a time.
class StopSignals {
 public:
  StopSignals() noexcept;
  ~StopSignals();
  StopSignals(const StopSignals&) = delete;
  StopSignals& operator=(const StopSignals&) = delete;

  /// Those that ask.
  static sigset_t all() noexcept;
  /// The signal that came, of whichever object's time; 0 for none.
  static int requested() noexcept;

 private:
  static constexpr int kSignals[] = {SIGINT, SIGTERM, SIGHUP};
  struct sigaction former_[3] = {};
};

/// Ends the process by the signal, so that whoever started it sees what ended it. Returns only where that is ignored or
/// blocked.
void end_by_signal(int signal) noexcept;

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_SYSTEM_STOP_SIGNALS_H

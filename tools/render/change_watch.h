#ifndef QZLOG_TOOLS_RENDER_CHANGE_WATCH_H
#define QZLOG_TOOLS_RENDER_CHANGE_WATCH_H

#include <chrono>
#include <string>

#include "tools/system/file_descriptor.h"

namespace qzlog_tool {

/// Waits until files change. The system says so (inotify) where it can; network file systems and what else it does not
/// tell are looked at each half second. Takes one descriptor.
class ChangeWatch {
 public:
  static constexpr std::chrono::milliseconds kLongestWait{500};

  /// `output` is what nobody may read any more one day.
  explicit ChangeWatch(int output) noexcept;

  /// Of an open file: waits end when it is written to or cut. What is returned is for forget_file.
  int watch_file(int descriptor) noexcept;
  /// The file is closed, or is going to be.
  void forget_file(int watch) noexcept;
  /// Waits end when a name comes up in the folder ("": the working folder). May be called any number of times: a folder
  /// that was not there may be.
  void watch_folder(const std::string& path) noexcept;

  struct Change {
    bool names = false;        ///< files may have come, gone or changed their names
    bool output_gone = false;  ///< nobody reads the output any more
  };
  /// At the latest after kLongestWait, or when a signal comes; with `names` at least that often.
  Change wait() noexcept;

 private:
  bool has_new_names() noexcept;

  using Clock = std::chrono::steady_clock;

  FileDescriptor events_;
  int output_;
  Clock::time_point next_look_ = Clock::now() + kLongestWait;
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_RENDER_CHANGE_WATCH_H

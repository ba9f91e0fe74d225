#ifndef QZLOG_TOOLS_SHIP_SHIPPED_SERIES_H
#define QZLOG_TOOLS_SHIP_SHIPPED_SERIES_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <vector>

#include "tools/logs/log_inputs.h"
#include "tools/render/change_watch.h"
#include "tools/ship/file_progress.h"
#include "tools/ship/line_taker.h"
#include "tools/ship/record_identity.h"
#include "tools/ship/ship_state.h"
#include "tools/ship/shipped_file.h"

namespace qzlog_tool {

/// A series of files that is read while it is written, from where it was settled. When the next file begins, the former
/// one is read to its end first; it is kept open for a while, for a writer that still has it open too. A file that
/// cannot be opened is waited for: nothing is passed over but what is gone.
class ShippedSeries {
 public:
  static constexpr std::size_t kMostFiles = 4;
  /// How long nothing more is written to a former file before it is closed.
  static constexpr std::chrono::milliseconds kLinger{2000};

  /// `series` has its folder from the root. `watch` has to outlive this object.
  ShippedSeries(LogSeries series, ChangeWatch& watch);
  ~ShippedSeries();
  ShippedSeries(const ShippedSeries&) = delete;
  ShippedSeries& operator=(const ShippedSeries&) = delete;

  /// Begins at the places of the series' files that a state has; before anything is read. Throws CommandError (cannot
  /// run) where a file is another one than the state is of.
  void begin_at(const std::vector<FilePlace>& places, const RecordIdentity& identities, LineTaker& taker);

  /// Gives out the lines that are there until the taker has enough: false then. `names_changed`: files may have come or
  /// gone.
  bool read(LineTaker& taker, bool names_changed);

  const LogSeries& series() const noexcept { return series_; }
  /// Where it is settled, file by file: of those that are open, and of those that have lines on their way.
  std::vector<FilePlace> places();
  /// It was looked for files, and there was none.
  bool is_missing() const { return has_looked_ && latest_.day == 0 && later_.empty(); }
  /// What is there and not settled.
  std::uint64_t waiting_bytes() const;

 private:
  using OpenFile = std::unique_ptr<ShippedFile>;

  bool read_files(LineTaker& taker);
  enum class Next { kOpened, kNone, kEnough };
  Next open_next(LineTaker& taker);
  void look_for_later();
  OpenFile open(std::uint64_t settled, SeriesPlace place);
  void add(OpenFile file);
  void tell_missing(SeriesPlace found, LineTaker& taker) const;
  bool close_quiet_files(LineTaker& taker);
  bool close_first(LineTaker& taker);
  static bool is_quiet(const ShippedFile& file);

  struct Watched {
    OpenFile file;
    int watch;
  };

  LogSeries series_;
  ChangeWatch& watch_;
  std::deque<Watched> files_;                             // the last one is the current one
  std::deque<std::shared_ptr<FileProgress>> progresses_;  // in order
  bool has_looked_ = false;
  SeriesPlace latest_;              // the current file, or the one before
  std::vector<SeriesPlace> later_;  // found behind it, the next one at the end
  bool names_changed_ = true;
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_SHIP_SHIPPED_SERIES_H

#ifndef QZLOG_TOOLS_SHIP_SHIPPED_LOGS_H
#define QZLOG_TOOLS_SHIP_SHIPPED_LOGS_H

#include <chrono>
#include <cstddef>
#include <list>
#include <string>
#include <vector>

#include "tools/render/change_watch.h"
#include "tools/ship/line_source.h"
#include "tools/ship/record_identity.h"
#include "tools/ship/shipped_series.h"

namespace qzlog_tool {

/// The series that are named, and all those of folders that are: those that come up later too.
class ShippedLogs : public LineSource {
 public:
  /// Operands are FOLDER/PREFIX, or folders. Throws CommandError (cannot run) for what is neither.
  explicit ShippedLogs(const std::vector<std::string>& operands);

  /// Names of a state's series that are not named here become those that have the same prefix here, where there is
  /// one such: a folder was moved.
  void take_over(std::vector<SeriesState>& states);
  /// Begins where a state says; before anything is read. Throws CommandError (cannot run) for a state of series that
  /// are none of these, or of files that are other ones by now.
  void begin_at(const std::vector<SeriesState>& states, const RecordIdentity& identities, LineTaker& taker);

  bool read(LineTaker& taker) override;
  std::vector<std::string> missing() override;
  void wait() override;
  void look_for_files() override { names_changed_ = true; }
  std::vector<SeriesState> places() override;
  std::vector<ShipMetrics::Series> progress() override;

 private:
  using Clock = std::chrono::steady_clock;

  /// How long new files may be there unseen while others are read.
  static constexpr std::chrono::milliseconds kLongestUnlooked{200};

  void look_into_folders(LineTaker& taker);
  ShippedSeries* find(const std::string& name);
  bool is_named(const std::string& name) const;
  std::vector<std::string> names_with(const std::string& prefix) const;
  void add(const LogSeries& series);

  ChangeWatch watch_{-1};
  std::vector<std::string> folders_;  // from the root
  std::list<ShippedSeries> series_;
  std::list<ShippedSeries>::iterator next_ = series_.begin();  // the one that is read first
  bool names_changed_ = true;
  bool could_look_ = true;  // into all folders, the last time
  Clock::time_point next_look_ = Clock::now();
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_SHIP_SHIPPED_LOGS_H

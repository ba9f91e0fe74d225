#ifndef QZLOG_TOOLS_COUNT_COUNTER_FILE_H
#define QZLOG_TOOLS_COUNT_COUNTER_FILE_H

#include <cstdint>
#include <optional>
#include <string>
#include <utility>

#include "qzlog/logentrycounter.h"
#include "tools/count/calendar_day.h"
#include "tools/system/file_descriptor.h"

namespace qzlog_tool {

/// Where a counter is kept.
struct CounterPath {
  std::string directory;
  std::string name;
  std::string file;  ///< DIRECTORY/NAME.cnt
};

/// Reads DIR/NAME, DIR/NAME.cnt, or either without a directory. Throws CommandError (cannot run) without a name.
CounterPath parse_counter_path(const std::string& argument);

/// Whether a counter that does not exist is made.
enum class MissingCounter { kCreate, kRefuse };

/// A counter file being changed through the library. Other commands that change the same file wait for each operation.
/// Whatever fails throws CommandError (cannot run) with the file's name and the reason.
class CounterFile {
 public:
  CounterFile(CounterPath path, MissingCounter missing);

  /// Counts `times` times for this day and key, whatever was counted before.
  void increase(CalendarDay day, std::int32_t key, std::uint64_t times);
  void set(CalendarDay day, std::int32_t key, std::uint32_t count);
  /// Frees the record of the day and key, if there is one.
  void remove(CalendarDay day, std::int32_t key);
  /// Frees every record whose year, month and day each lie between those of the two days. `from` is not the later one.
  void remove_box(CalendarDay from, CalendarDay to);
  /// Closes the file, for what was changed: a file system may say only now that it could not keep it. Nothing is
  /// changed afterwards.
  void close();

 private:
  void note_damage() const;
  void open_counter();
  void close_counter();
  void check(int result) const;

  CounterPath path_;
  FileDescriptor lock_file_;
  std::optional<_qz_LOG_EntryCounter> counter_;
  std::optional<std::pair<CalendarDay, std::int32_t>> last_increased_;
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_COUNT_COUNTER_FILE_H

#include "sinks/file_lines.h"

#include <string>

#include "foundation/allocate.h"
#include "foundation/thread_instance.h"
#include "sinks/file_sink_cores.h"
#include "sinks/line_room.h"

namespace qzlog {

namespace {

qz_LOG_FileSinkSettings without_shared_file(qz_LOG_FileSinkSettings settings) {
  if (settings.way == qz_LOG_FileSinkSettings::kShared) settings.way = qz_LOG_FileSinkSettings::kWrite;
  return settings;
}

/// The line that a thread is handing on.
struct PlainLineRoom : LineRoom {};

class FileLines : public LineDestination {
 public:
  explicit FileLines(const qz_LOG_FileSinkSettings& settings)
      : cores_(without_shared_file(settings), FileSinkCore::Lines::kPlain) {}

  std::size_t take(std::string_view line, unsigned level) override {
    if (cores_.is_closed()) return 0;
    line.remove_suffix(1);  // the file's writer ends each line
    FileSinkCore& core = cores_.get();
    return with_thread_instance<PlainLineRoom>(
        [&](PlainLineRoom& room) { return core.write(room.begin(FileSinkCore::kRoomBefore).append(line), level); });
  }
  bool flush(unsigned milliseconds) override { return cores_.get().flush(milliseconds); }
  unsigned long long close(unsigned milliseconds) override {
    FileSinkCore::Left left;
    cores_.close(milliseconds, left);
    return left.entries;
  }

 private:
  FileSinkCores cores_;
};

}  // namespace

std::unique_ptr<LineDestination> open_file_lines(const qz_LOG_FileSinkSettings& settings) {
  return std::unique_ptr<LineDestination>(new_object<FileLines>(settings));
}

}  // namespace qzlog

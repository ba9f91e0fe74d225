#include "sinks/file_sink_settings.h"

#include <string>

#include "qzlog/qz_exception.h"
#include "sinks/setting_checks.h"
#include "sinks/told_event.h"

namespace qzlog {

namespace {

using Settings = qz_LOG_FileSinkSettings;

constexpr std::size_t kLongestName = 180;
constexpr std::size_t kLongestPath = 3800;

void require(bool holds, const std::string& text) {
  if (!holds) throw QZX_logging_illegal_argument(text.c_str(), 0);
}

bool has_zero(const std::string& text) { return text.find('\0') != std::string::npos; }

void check_path(const Settings& settings) {
  require(settings.path.size() <= kLongestPath && !has_zero(settings.path),
          "path: it is too long, or has a zero byte in it");
  const std::string name = settings.path.substr(settings.path.rfind('/') + 1);
  require(!name.empty() && name != "." && name != ".." && name.size() <= kLongestName,
          "path: its last part is no name of a file, or longer than 180 characters");
}

void check_series(const Settings& settings) {
  require(settings.prefix.find('/') == std::string::npos && !has_zero(settings.prefix),
          "prefix: it has a \"/\" or a zero byte in it");
  require(settings.prefix.size() <= kLongestName, "prefix: it is longer than 180 characters");
  require(!settings.folder.empty() && settings.folder.size() <= kLongestPath && !has_zero(settings.folder),
          "folder: it is empty, too long, or has a zero byte in it");
  if (settings.largest_file_bytes != 0)
    require_range("largest_file_bytes", settings.largest_file_bytes, 4096, 1ULL << 62);
}

void check_buffer(const Settings& settings) {
  require_range("buffer_bytes", settings.buffer_bytes, 16384, 1U << 28);
  require_range("longest_delay_milliseconds", settings.longest_delay_milliseconds, 1, 60000);
}

}  // namespace

void check_settings(const Settings& settings) {
  require(settings.path.empty() || settings.prefix.empty(), "path: only one of path and prefix can be given");
  require(!settings.path.empty() || !settings.prefix.empty(), "path: one of path and prefix has to be given");
  if (settings.prefix.empty()) {
    check_path(settings);
    require(settings.keep_files == 0, "keep_files: only files of a series are deleted; give a prefix");
    require(settings.keep_days == 0, "keep_days: only files of a series are deleted; give a prefix");
    require(!settings.sync_at_rotation, "sync_at_rotation: only a series is rotated; give a prefix");
  } else {
    check_series(settings);
  }
  require_range("way", static_cast<unsigned long long>(settings.way), Settings::kWrite, Settings::kBuffered);
  check_buffer(settings);
  require_range("keep_days", settings.keep_days, 0, 1000000);
  require_range("longest_wait_milliseconds", settings.longest_wait_milliseconds, 0, 60000);
  require_range("sync_level", settings.sync_level, 0, Settings::kNever);
  require((settings.file_permissions & ~0777U) == 0 && (settings.file_permissions & 0600U) == 0600U,
          "file_permissions: the owner has to be able to read and write (0600), and there is nothing above 0777");
  if (settings.lost_event_id != 0) check_told_event(ToldOf::kLost, settings.lost_event_id);
}

}  // namespace qzlog

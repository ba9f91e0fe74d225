#ifndef QZLOG_FILE_SINK_H
#define QZLOG_FILE_SINK_H

#include <memory>
#include <string>

#include "qzlog/export.h"
#include "qzlog/sink.h"

namespace qzlog {
class FileSinkCores;
}

/// What a qz_LOG_FileSink is opened with. Either `path`, or `prefix` with `folder`, has to be given.
struct qz_LOG_FileSinkSettings {
  /// How entries are kept. What survives: with kWrite and kShared every entry that Write took survives the end of the
  /// process in any way; power loss takes what the system had not written yet (see sync_level).
  enum Way {
    kWrite,    ///< each entry is written to the file before Write returns: readers see it at once
    kShared,   ///< entries gather in a file beside the log, which the process has mapped, and are written to the log by
               ///< a thread of the sink. What a process leaves there at its end, the next open writes to the log
    kBuffered  ///< entries gather in the memory of the process: those of the last moments are lost when it is killed
  };
  enum : unsigned { kNever = 10 };

  /// A file of this name, which something else (logrotate) may rename: the sink then opens a new one.
  std::string path;
  /// A series of files PREFIX.YYYYMMDD.NNNN, see make_text_log_filename; a new one each local day, and when the file
  /// has grown to largest_file_bytes. Number 9999 takes the rest of its day. By the day and number a file is named
  /// after, no line ever goes to an earlier file than the line before. `prefix` has no "/" and up to 180 characters.
  std::string prefix;
  std::string folder = ".";  ///< of the series; it has to exist

  Way way = kShared;
  unsigned long long largest_file_bytes = 64ULL << 20;  ///< of a series; 0: by day only. Else at least 4096
  unsigned keep_files =
      0;                   ///< so many files of a series are kept, the latest; 0: all. One that is written to always is
  unsigned keep_days = 0;  ///< files of the last so many days are kept; 0: all
  unsigned buffer_bytes = 512U << 10;  ///< of kShared and kBuffered: 16384 to 2^28. Longer lines are written by Write
  unsigned longest_delay_milliseconds = 100;  ///< after which a line has left the buffer: 1 to 60000
  unsigned longest_wait_milliseconds = 1000;  ///< that Write waits for room or a pipe's reader: 0 to 60000
  /// Entries of this level and above are on the disk (fdatasync) when Write returns, unless that fails or takes longer
  /// than longest_wait_milliseconds: qz_LOG_FileSinkStatus::sync_failures tells. Such a log is also brought to the disk
  /// where the next file begins.
  unsigned sync_level = kNever;
  bool sync_at_rotation = false;     ///< a file of a series is brought to the disk when the next one begins
  unsigned file_permissions = 0640;  ///< of new files, less the process's umask

  /// 0, or the ID of the entry by which the log tells of lost entries. It has the attributes LostId (TypeUInt4),
  /// LostLevel (TypeUInt1), LostCount (TypeUInt4) and LostSince (TypeTimestamp). Without it a line with the member
  /// "lost" tells of them.
  unsigned lost_event_id = 0;
};

/// How a file sink is doing.
struct qz_LOG_FileSinkStatus {
  std::string path;                  ///< of the file that is written to
  qz_LOG_FileSinkSettings::Way way;  ///< in effect: kShared becomes kWrite where the file beside the log cannot be had
  bool working;                      ///< the last attempt to write succeeded
  bool numbers_exhausted;            ///< number 9999 of the day is reached
  unsigned long long rotations;      ///< files begun after the first
  unsigned long long reopened;       ///< the file's name had come to mean another file, or none
  unsigned long long truncations;    ///< the file was found to be shorter than what had been written to it
  unsigned long long recovered;      ///< entries of ended processes that were written to the log
  unsigned long long damaged;        ///< bytes that ended processes left and that were no whole lines
  unsigned long long fragments;      ///< parts of lines that could not be cut off, and were closed by a line break
  unsigned long long sync_failures;  ///< fdatasync reported an error, or was not waited for any longer
};

/// Entries as JSON Lines in a file, or a series of files, that several threads and processes may write at once. Each
/// line tells its writer (HOST/PID/START, another one for each open, and in a process that fork makes), a number
/// without gaps among the lines of that writer, and when it was written.
///
///   qz_LOG_FileSinkSettings settings;
///   settings.folder = "/var/log/storage";
///   settings.prefix = "storage";
///   qz_LOG_FileSink sink(settings);
///   sink.Write(entry);
///
/// What could not be written is told in the log as soon as writing works again. Beside the log stand hidden files
/// (".NAME_lock", ".NAME_pending.*") of the processes that write it, which have to be on the same host.
class QZLOG_EXPORT qz_LOG_FileSink : public qz_LOG_Sink {
 public:
  /// Opens the file and writes to it what ended processes have left. Throws QZX_logging_illegal_argument, which names
  /// the setting, QZX_logging_file_operation_failed and QZX_memory_alloc.
  explicit qz_LOG_FileSink(const qz_LOG_FileSinkSettings& settings);
  /// Closes the sink, waiting up to longest_wait_milliseconds.
  ~qz_LOG_FileSink() override;

  /// Opens the file of the name again: to be called when it was renamed. False when that did not work; it is then
  /// tried again later. Without it the sink looks each second whether the name still means its file.
  bool Reopen() noexcept;
  /// Begins the next file of a series. False when that did not work, or for a single file.
  bool Rotate() noexcept;
  /// Throws QZX_memory_alloc.
  qz_LOG_FileSinkStatus GetStatus() const;

 protected:
  Outcome WriteEntry(const qz_LOG_LogEntry& entry, bool use_default, unsigned selector_index,
                     unsigned long long& bytes) override;
  bool FlushEntries(unsigned milliseconds) override;
  unsigned long long CloseEntries(unsigned milliseconds) override;
  bool TellHeld(const qz_LOG_HeldEntries* held, unsigned long count) override;

 private:
  const std::unique_ptr<qzlog::FileSinkCores> cores_;
};

#endif  // QZLOG_FILE_SINK_H

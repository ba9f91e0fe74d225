#ifndef QZLOG_SINKS_PENDING_BUFFER_H
#define QZLOG_SINKS_PENDING_BUFFER_H

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "foundation/descriptor.h"
#include "foundation/no_copies.h"
#include "qzlog/sink.h"
#include "sinks/log_file.h"
#include "sinks/pending_format.h"

namespace qzlog {

/// Lines that wait to be written: one half takes lines, while the other is written. In a file that outlives the
/// process, which is mapped, or in memory.
///
/// Guarded by its owner's lock, but for what one thread alone does with a half that is sealed.
class PendingBuffer : public qz_UTIL_no_inadvertant_copies {
 public:
  PendingBuffer() = default;
  ~PendingBuffer() { close(); }

  /// The file has all the room that it will ever need, so that a full disk is an error here. False with errno;
  /// std::bad_alloc.
  bool open_file(const std::string& path, std::string_view writer, std::size_t half_bytes, mode_t permissions);
  /// std::bad_alloc.
  void open_memory(std::size_t half_bytes);
  /// The file stays where it is.
  void close();
  /// The file is not needed any more.
  void remove_file();

  std::size_t half_bytes() const { return half_bytes_; }

  /// Where the next line may be put; null when there is less room.
  static constexpr std::size_t kShortestLine = 64;
  char* room(std::size_t bytes) {
    Half& half = halves_[active_];
    return half_bytes_ - half.used < bytes + kShortestLine ? nullptr : half.data + half.used;
  }
  /// The line that was put there counts, also for whoever finds the file.
  void commit(std::size_t bytes, std::uint64_t seq, unsigned level);
  /// For a line that is no entry.
  static constexpr unsigned kNoLevel = ~0U;

  bool is_empty() const { return halves_[active_].lines == 0; }
  bool has_sealed() const { return halves_[1 - active_].lines != 0; }
  /// The other half takes lines from now on. False when that is still to be written.
  bool seal();

  /// What is left of the sealed half.
  std::string_view sealed_lines() const;
  /// Before lines are written: where they go. Not with the lock.
  void note(const FileIdentity& file, std::uint64_t end);
  /// So many bytes of whole lines from its beginning are in the log. True when that was all.
  bool take(std::size_t bytes);

  std::uint64_t flushed_seq() const { return flushed_seq_; }
  /// Entries that wait, by level, and their bytes in all.
  unsigned long long count_left(unsigned long long (&by_level)[qz_LOG_SinkCounts::kLevels],
                                unsigned long long& bytes) const;

 private:
  struct Half {
    char* data = nullptr;
    std::size_t used = 0;
    std::size_t taken = 0;
    std::uint64_t lines = 0;  // that are not taken
    std::uint64_t last_seq = 0;
    std::size_t ever = 0;             // lines, with those that are taken
    unsigned char* levels = nullptr;  // of each
  };

  bool create(const std::string& path, mode_t permissions);
  void begin(char* data, std::size_t half_bytes);
  void set_flushed(std::uint64_t seq);
  void set_committed(unsigned half, std::size_t bytes);

  Half halves_[pending_format::kHalves];
  unsigned active_ = 0;
  std::size_t half_bytes_ = 0;
  std::uint64_t flushed_seq_ = 0;
  pending_format::Header* header_ = nullptr;  // of the mapped file
  std::unique_ptr<char[]> memory_;
  std::unique_ptr<unsigned char[]> levels_;
  Descriptor file_;
  std::string path_;
};

}  // namespace qzlog

#endif  // QZLOG_SINKS_PENDING_BUFFER_H

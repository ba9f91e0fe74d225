#ifndef QZLOG_SINKS_DESCRIPTOR_WRITE_H
#define QZLOG_SINKS_DESCRIPTOR_WRITE_H

#include <cstddef>
#include <string_view>

namespace qzlog {

/// What a descriptor leads to, as far as writing to it differs.
enum class StreamKind {
  kFile,      ///< takes what it is given
  kPipe,      ///< may have no room, and no reader: its signal is kept from the program
  kTerminal,  ///< or another device: may have no room
  kSocket,
};

/// Throws QZX_logging_illegal_argument, naming the setting "descriptor", unless it is open for writing.
StreamKind check_descriptor(int descriptor);

/// What it leads to now, which a program may have changed since; kFile where the system does not tell.
StreamKind kind_of(int descriptor) noexcept;

/// Waits for room until SinkClock::steady_milliseconds() reaches `deadline`. False with errno when there is none then.
/// An error counts as room: writing tells of it.
bool wait_for_room(int descriptor, long long deadline) noexcept;

/// Writes all bytes, at once where the system takes them at once, waiting for room until
/// SinkClock::steady_milliseconds() reaches `deadline`. A pipe whose other users let it wait is written to in pieces of
/// PIPE_BUF bytes. Returns how many bytes were written; errno has the reason when that is not all.
std::size_t write_to_descriptor(int descriptor, StreamKind kind, std::string_view bytes, long long deadline) noexcept;

}  // namespace qzlog

#endif  // QZLOG_SINKS_DESCRIPTOR_WRITE_H

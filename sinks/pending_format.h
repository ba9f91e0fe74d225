#ifndef QZLOG_SINKS_PENDING_FORMAT_H
#define QZLOG_SINKS_PENDING_FORMAT_H

#include <cstddef>
#include <cstdint>

namespace qzlog {

/// The file in which the lines of a process wait: a header, then two halves of the same size, each with whole lines
/// from its beginning. Words are in the host's order, which byte_order tells.
///
/// A line is pending while its number is above flushed_seq and it stands within the committed bytes of its half. Before
/// lines are written to the log, a note tells which file that is and where it ends: of lines that are found there
/// behind that place nothing is written again.
namespace pending_format {

constexpr char kMagic[8] = {'Q', 'Z', 'P', 'E', 'N', 'D', '1', '\n'};
constexpr std::uint32_t kByteOrder = 0x01020304;
constexpr std::size_t kHeaderBytes = 4096;
constexpr unsigned kHalves = 2;
constexpr std::size_t kWriterBytes = 136;

struct Note {
  std::uint64_t device;
  std::uint64_t inode;
  std::uint64_t end;
};

struct Header {
  char magic[8];  // last to be written
  std::uint32_t byte_order;
  std::uint32_t half_bytes;
  std::uint64_t flushed_seq;
  std::uint32_t committed[kHalves];
  std::uint32_t notes_taken;  // the latest is notes[(notes_taken - 1) % 2]
  std::uint32_t reserved;
  Note notes[2];
  char writer[kWriterBytes];  // zero-terminated
};
static_assert(sizeof(Header) <= kHeaderBytes);

}  // namespace pending_format

}  // namespace qzlog

#endif  // QZLOG_SINKS_PENDING_FORMAT_H

#include "counter/counter_stream.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "counter/record_scanner.h"
#include "foundation/qz_libc.h"
#include "qzlog/qz_exception.h"

namespace qzlog {

namespace {

constexpr mode_t kAnyUser = 0666;

int open_file(const char* path, int flags) {
  return static_cast<int>(uninterrupted([&] { return ssize_t{::open(path, flags | O_CLOEXEC, kAnyUser)}; }));
}

/// A pipe would wait for a writer. Of all others only a leased file heeds the flag: its lease has to be waited for.
int open_for_reading(const char* path) {
  const int descriptor = open_file(path, O_RDONLY | O_NONBLOCK);
  return descriptor < 0 && errno == EWOULDBLOCK ? open_file(path, O_RDONLY) : descriptor;
}

FileHandle stream_of(int descriptor, const char* mode) {
  if (descriptor < 0) return nullptr;
  FileHandle file(fdopen(descriptor, mode));
  if (file == nullptr) {
    ::close(descriptor);
    throw QZX_memory_alloc();
  }
  // Positions are those of the file itself, and what is written is written at once.
  std::setvbuf(file.get(), nullptr, _IONBF, 0);
  // The stream knows its position from now on, and does not ask for that of the descriptor, which a process that is
  // forked moves too.
  QZ_fseek(file.get(), 0, SEEK_SET);
  return file;
}

bool file_exists(const char* path) {
  struct stat status = {};
  return stat(path, &status) == 0;
}

}  // namespace

/// A missing file is made without a look whether it still is: another process may have made it, and counted, meanwhile.
/// A file that is there is opened without leave to make it, which some systems refuse in folders that all users share.
int open_counter_for_update(const char* path) {
  const int descriptor = open_file(path, O_RDWR);
  return descriptor < 0 && errno == ENOENT ? open_file(path, O_RDWR | O_CREAT) : descriptor;
}

CounterStream open_counter_stream(const char* path) {
  if (FileHandle file = stream_of(open_counter_for_update(path), "rb+")) return {std::move(file), true, true};
  if (FileHandle file = stream_of(open_for_reading(path), "rb")) return {std::move(file), false, true};
  return {nullptr, false, file_exists(path)};
}

}  // namespace qzlog

#include "foundation/unshared_file.h"

#include <sys/types.h>
#include <unistd.h>

#include <cerrno>
#include <limits>
#include <memory>
#include <utility>

#include "foundation/allocate.h"
#include "foundation/no_copies.h"

namespace qzlog {

namespace {

/// A descriptor with a position of its own, and the buffer of the stream that reads from it.
class UnsharedFile : public qz_UTIL_no_inadvertant_copies {
 public:
  static constexpr std::size_t kBufferSize = 2048;

  explicit UnsharedFile(FileHandle file)
      : file_(std::move(file)), is_seekable_(lseek(descriptor(), 0, SEEK_CUR) >= 0) {}

  char* buffer() { return buffer_; }

  ssize_t read(char* target, std::size_t size) {
    ssize_t count = 0;
    do {
      count = pread(descriptor(), target, size, static_cast<off_t>(position_));
    } while (count < 0 && errno == EINTR);
    if (count > 0) position_ += count;
    return count;
  }

  int seek(off64_t& offset, int origin) {
    if (!is_seekable_) return fail(ESPIPE);
    off64_t start = 0;
    if (origin == SEEK_CUR) start = position_;
    // The descriptor's own position may move: nobody reads from there.
    if (origin == SEEK_END && (start = lseek(descriptor(), 0, SEEK_END)) < 0) return -1;
    if (offset < -start || offset > std::numeric_limits<off64_t>::max() - start) return fail(EINVAL);
    position_ = offset = start + offset;
    return 0;
  }

 private:
  static int fail(int error) {
    errno = error;
    return -1;
  }
  int descriptor() const { return fileno(file_.get()); }

  const FileHandle file_;
  const bool is_seekable_;
  off64_t position_ = 0;
  char buffer_[kBufferSize] = {};
};

ssize_t read_file(void* file, char* target, std::size_t size) {
  return static_cast<UnsharedFile*>(file)->read(target, size);
}

int seek_file(void* file, off64_t* offset, int origin) {
  return static_cast<UnsharedFile*>(file)->seek(*offset, origin);
}

int close_file(void* file) {
  delete static_cast<UnsharedFile*>(file);
  return 0;
}

}  // namespace

FileHandle open_unshared(const char* path, int* descriptor) {
  FileHandle opened(QZ_fopen(path, "rb"));
  if (opened == nullptr) return nullptr;
  if (descriptor != nullptr) *descriptor = fileno(opened.get());
  std::unique_ptr<UnsharedFile> file(new_object<UnsharedFile>(std::move(opened)));
  FileHandle stream(fopencookie(file.get(), "rb", {read_file, nullptr, seek_file, close_file}));
  if (stream == nullptr) return nullptr;
  std::setvbuf(stream.get(), file.release()->buffer(), _IOFBF, UnsharedFile::kBufferSize);
  return stream;
}

}  // namespace qzlog

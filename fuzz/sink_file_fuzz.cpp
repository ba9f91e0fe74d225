// Reads the input as a file that describes sinks. No section has the name that is asked for, so that none is opened.
#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <string>

#include "qzlog/open_sinks.h"
#include "qzlog/qz_exception.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const int descriptor = memfd_create("sinks", MFD_CLOEXEC);
  if (write(descriptor, bytes, size) != static_cast<ssize_t>(size)) __builtin_trap();
  const std::string path = "/proc/self/fd/" + std::to_string(descriptor);
  try {
    qz_LOG_OpenSinks(path.c_str(), "");
    __builtin_trap();
  } catch (const QZX_logging_illegal_argument& thrown) {
    if (std::string(thrown.get_message()).compare(0, path.size() + 1, path + ':') != 0) __builtin_trap();
  }
  close(descriptor);
  return 0;
}

// Loads the input as a definition file and, cut in two, as a pair of a standard and an auxiliary one; looks up every ID
// of a small range and renders what is found on both paths. Only the library's own exceptions may come out.
#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <string>

#include "qzlog.h"

namespace {

/// A file in memory with a path, as the library wants one.
class MemoryFile {
 public:
  MemoryFile(const std::uint8_t* bytes, std::size_t size) : descriptor_(memfd_create("definitions", MFD_CLOEXEC)) {
    if (write(descriptor_, bytes, size) != static_cast<ssize_t>(size)) __builtin_trap();
    path_ = "/proc/self/fd/" + std::to_string(descriptor_);
  }
  ~MemoryFile() { close(descriptor_); }
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;
  const char* path() const { return path_.c_str(); }

 private:
  int descriptor_;
  std::string path_;
};

template <typename Action>
void allowed_to_throw(Action action) {
  try {
    action();
  } catch (const qz_EXCEPTION_base&) {
    return;
  }
}

/// Values for attributes that the seeds have; each may have another type or not be there at all.
void set_attributes(qz_LOG_LogEntry& entry) {
  allowed_to_throw([&] { entry.AddAttribStr("N", "a text"); });
  allowed_to_throw([&] { entry.AddAttribMBStr("N", "a text"); });
  allowed_to_throw([&] { entry.AddAttrib2u("F", 1); });
  allowed_to_throw([&] { entry.AddAttrib4u("F", 1); });
  allowed_to_throw([&] { entry.AddAttrib2u("R", 10); });
  allowed_to_throw([&] { entry.AddAttribFloat8("P", 0.5); });
  allowed_to_throw([&] { entry.AddAttribTime("D", qz_Time()); });
}

void use_entries() {
  for (unsigned id = 0; id < 16; ++id) {
    allowed_to_throw([id] {
      qz_LOG_LogEntry entry(id, 3);
      set_attributes(entry);
      for (const bool icu : {true, false}) {
        qz_LOG_LogConfig::SetICUEnabled(icu);
        allowed_to_throw([&] { entry.FormatMessage(); });
        allowed_to_throw([&] { entry.FormatMessage(false, 2); });
      }
    });
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  qz_LOG_LogConfig::ClearDefinitions();
  const std::size_t half = size / 2;
  const MemoryFile whole(bytes, size);
  const MemoryFile first(bytes, half);
  const MemoryFile second(bytes + half, size - half);
  allowed_to_throw([&] { qz_LOG_LogConfig::SetDefinitionPath(whole.path()); });
  use_entries();
  allowed_to_throw([&] { qz_LOG_LogConfig::SetDefinitionPath(first.path()); });
  allowed_to_throw([&] { qz_LOG_LogConfig::SetAuxDefinitionPath(second.path()); });
  use_entries();
  qz_LOG_LogConfig::ClearDefinitions();  // whoever else runs in the process finds nothing of these
  return 0;
}

// Reads the input as a configuration file and looks keys up.
#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <string>

#include "qzlog/logcfg.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const int descriptor = memfd_create("configuration", MFD_CLOEXEC);
  if (write(descriptor, bytes, size) != static_cast<ssize_t>(size)) __builtin_trap();
  const std::string path = "/proc/self/fd/" + std::to_string(descriptor);
  qz_LOG_LogConfig::SetConfigurationSource(path.c_str(), QZ_CONFIGURATION_FILE);
  unsigned value = 0;
  for (const char* const key : {"LogLevelLow", "a", ""}) {
    qz_LOG_LogConfig::GetConfigurationIntegerValue("a", key, value);
  }
  qz_LOG_LogConfig::SetConfigurationSource(nullptr, QZ_CONFIGURATION_FILE);
  close(descriptor);
  return 0;
}

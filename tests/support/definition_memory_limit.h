#ifndef QZLOG_TESTS_SUPPORT_DEFINITION_MEMORY_LIMIT_H
#define QZLOG_TESTS_SUPPORT_DEFINITION_MEMORY_LIMIT_H

#include <cstddef>

#include "qzlog/logcfg.h"

namespace qz_test {

/// Another limit for what is kept of definitions, as long as it lives.
class DefinitionMemoryLimit {
 public:
  explicit DefinitionMemoryLimit(std::size_t bytes) : former_(qz_LOG_LogConfig::GetDefinitionMemory()) {
    qz_LOG_LogConfig::SetDefinitionMemory(bytes);
  }
  ~DefinitionMemoryLimit() { qz_LOG_LogConfig::SetDefinitionMemory(former_); }
  DefinitionMemoryLimit(const DefinitionMemoryLimit&) = delete;
  DefinitionMemoryLimit& operator=(const DefinitionMemoryLimit&) = delete;

 private:
  std::size_t former_;
};

}  // namespace qz_test

#endif  // QZLOG_TESTS_SUPPORT_DEFINITION_MEMORY_LIMIT_H

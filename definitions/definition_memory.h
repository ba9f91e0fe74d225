#ifndef QZLOG_DEFINITIONS_DEFINITION_MEMORY_H
#define QZLOG_DEFINITIONS_DEFINITION_MEMORY_H

#include <atomic>
#include <cstddef>

namespace qzlog {

/// How much memory the process may keep of definitions beyond those that its table caches, so that they need not be
/// read and prepared again. Any thread.
class DefinitionMemory {
 public:
  static constexpr std::size_t kDefault = std::size_t{32} << 20;

  static std::size_t limit() noexcept { return limit_.load(std::memory_order_relaxed); }
  static void set_limit(std::size_t bytes) noexcept { limit_.store(bytes, std::memory_order_relaxed); }

  // What of it is for what; with two files all of it.
  static std::size_t for_definitions() noexcept { return limit() / kParts * 10; }
  static std::size_t for_texts() noexcept { return limit() / kParts * 4; }
  static std::size_t for_file() noexcept { return limit() / kParts; }

 private:
  static constexpr std::size_t kParts = 16;
  static inline std::atomic<std::size_t> limit_{kDefault};
};

}  // namespace qzlog

#endif  // QZLOG_DEFINITIONS_DEFINITION_MEMORY_H

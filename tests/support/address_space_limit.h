#ifndef QZLOG_TESTS_SUPPORT_ADDRESS_SPACE_LIMIT_H
#define QZLOG_TESTS_SUPPORT_ADDRESS_SPACE_LIMIT_H

#include <sys/resource.h>
#include <unistd.h>

#include <fstream>

namespace qz_test {

/// While it lives, the process cannot take more than `spare_bytes` of address space beyond what it has: a request for
/// absurdly much memory fails instead of being granted unseen. Without effect under the sanitizers that reserve most of
/// the address space for themselves.
class AddressSpaceLimit {
 public:
  explicit AddressSpaceLimit(rlim_t spare_bytes) {
    getrlimit(RLIMIT_AS, &previous_);
    rlim_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    set_soft_limit(pages * static_cast<rlim_t>(sysconf(_SC_PAGESIZE)) + spare_bytes);
  }
  ~AddressSpaceLimit() { set_soft_limit(previous_.rlim_cur); }
  AddressSpaceLimit(const AddressSpaceLimit&) = delete;
  AddressSpaceLimit& operator=(const AddressSpaceLimit&) = delete;

 private:
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  static constexpr bool kUnderSanitizer = true;
#elif defined(__has_feature)
  static constexpr bool kUnderSanitizer = __has_feature(address_sanitizer) || __has_feature(thread_sanitizer);
#else
  static constexpr bool kUnderSanitizer = false;
#endif

  void set_soft_limit(rlim_t bytes) const {
    rlimit limit = previous_;
    limit.rlim_cur = bytes;
    if (!kUnderSanitizer) setrlimit(RLIMIT_AS, &limit);
  }

  rlimit previous_ = {};
};

}  // namespace qz_test

#endif  // QZLOG_TESTS_SUPPORT_ADDRESS_SPACE_LIMIT_H

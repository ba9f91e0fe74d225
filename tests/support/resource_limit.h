#ifndef QZLOG_TESTS_SUPPORT_RESOURCE_LIMIT_H
#define QZLOG_TESTS_SUPPORT_RESOURCE_LIMIT_H

#include <sys/resource.h>
#include <unistd.h>

#include <fstream>
#include <optional>
#include <stdexcept>

#include "tests/support/signal_action.h"

namespace qz_test {

/// Lowers a limit of this process while it lives. What goes beyond the limit of file sizes is an error, as on a full
/// disk, no signal.
class ResourceLimit {
 public:
  ResourceLimit(__rlimit_resource resource, rlim_t value) : resource_(resource), no_signal_(SIGXFSZ, SIG_IGN) {
    if (getrlimit(resource_, &before_) != 0) throw std::runtime_error("getrlimit has failed");
    rlimit lower = before_;
    lower.rlim_cur = value;
    if (setrlimit(resource_, &lower) != 0) throw std::runtime_error("setrlimit has failed");
  }
  ~ResourceLimit() { setrlimit(resource_, &before_); }
  ResourceLimit(const ResourceLimit&) = delete;
  ResourceLimit& operator=(const ResourceLimit&) = delete;

 private:
  __rlimit_resource resource_;
  SignalAction no_signal_;
  rlimit before_ = {};
};

/// While it lives, this process can open `spare` files and no more.
class DescriptorLimit {
 public:
  explicit DescriptorLimit(unsigned spare) : limit_(RLIMIT_NOFILE, descriptor_behind(spare)) {}

  static constexpr unsigned kMostSpare = 15;

 private:
  static rlim_t descriptor_behind(unsigned spare) {
    int descriptors[kMostSpare + 1];
    for (unsigned i = 0; i <= spare; ++i) descriptors[i] = dup(STDOUT_FILENO);
    for (unsigned i = 0; i <= spare; ++i) close(descriptors[i]);
    return static_cast<rlim_t>(descriptors[spare]);
  }

  ResourceLimit limit_;
};

/// While it lives, the process cannot take more than `spare_bytes` of address space beyond what it has: a request for
/// absurdly much memory fails instead of being granted unseen. Without effect under the sanitizers, some of which
/// reserve most of the address space for themselves.
class AddressSpaceLimit {
 public:
#ifdef QZLOG_SANITIZED
  explicit AddressSpaceLimit(rlim_t) {}
#else
  explicit AddressSpaceLimit(rlim_t spare_bytes) { limit_.emplace(RLIMIT_AS, bytes_in_use() + spare_bytes); }
#endif
  AddressSpaceLimit(const AddressSpaceLimit&) = delete;
  AddressSpaceLimit& operator=(const AddressSpaceLimit&) = delete;

 private:
  static rlim_t bytes_in_use() {
    rlim_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    return pages * static_cast<rlim_t>(sysconf(_SC_PAGESIZE));
  }

  std::optional<ResourceLimit> limit_;
};

}  // namespace qz_test

#endif  // QZLOG_TESTS_SUPPORT_RESOURCE_LIMIT_H

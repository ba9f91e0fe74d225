#ifndef QZLOG_TESTS_SUPPORT_DESCRIPTOR_LIMIT_H
#define QZLOG_TESTS_SUPPORT_DESCRIPTOR_LIMIT_H

#include <sys/resource.h>
#include <unistd.h>

namespace qz_test {

/// While it lives, this process can open `spare` files and no more.
class DescriptorLimit {
 public:
  explicit DescriptorLimit(unsigned spare) {
    getrlimit(RLIMIT_NOFILE, &previous_);
    int descriptors[kMostSpare + 1];
    for (unsigned i = 0; i <= spare; ++i) descriptors[i] = dup(STDOUT_FILENO);
    for (unsigned i = 0; i <= spare; ++i) close(descriptors[i]);
    rlimit limit = previous_;
    limit.rlim_cur = static_cast<rlim_t>(descriptors[spare]);
    setrlimit(RLIMIT_NOFILE, &limit);
  }
  ~DescriptorLimit() { setrlimit(RLIMIT_NOFILE, &previous_); }
  DescriptorLimit(const DescriptorLimit&) = delete;
  DescriptorLimit& operator=(const DescriptorLimit&) = delete;

  static constexpr unsigned kMostSpare = 15;

 private:
  rlimit previous_ = {};
};

}  // namespace qz_test

#endif  // QZLOG_TESTS_SUPPORT_DESCRIPTOR_LIMIT_H

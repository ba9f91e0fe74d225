#ifndef QZLOG_TESTS_TOOLS_RESOURCE_LIMIT_H
#define QZLOG_TESTS_TOOLS_RESOURCE_LIMIT_H

#include <signal.h>
#include <sys/resource.h>

#include <stdexcept>

namespace qzlog_test {

/// Lowers a limit of this process while it lives. What goes beyond the limit of file sizes is an error, no signal.
class ResourceLimit {
 public:
  ResourceLimit(__rlimit_resource resource, rlim_t value) : resource_(resource) {
    action_before_ = ::signal(SIGXFSZ, SIG_IGN);
    if (::getrlimit(resource_, &before_) != 0) throw std::runtime_error("getrlimit has failed");
    rlimit lower = before_;
    lower.rlim_cur = value;
    if (::setrlimit(resource_, &lower) != 0) throw std::runtime_error("setrlimit has failed");
  }
  ResourceLimit(const ResourceLimit&) = delete;
  ResourceLimit& operator=(const ResourceLimit&) = delete;
  ~ResourceLimit() {
    ::setrlimit(resource_, &before_);
    ::signal(SIGXFSZ, action_before_);
  }

 private:
  __rlimit_resource resource_;
  rlimit before_ = {};
  sighandler_t action_before_ = SIG_DFL;
};

}  // namespace qzlog_test

#endif  // QZLOG_TESTS_TOOLS_RESOURCE_LIMIT_H

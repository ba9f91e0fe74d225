#ifndef QZLOG_TESTS_TOOLS_SCOPED_VARIABLE_H
#define QZLOG_TESTS_TOOLS_SCOPED_VARIABLE_H

#include <stdlib.h>

#include <cstdlib>
#include <optional>
#include <string>
#include <utility>

namespace qzlog_test {

/// An environment variable that gets its old value back.
class ScopedVariable {
 public:
  ScopedVariable(std::string name, const std::string& value) : name_(std::move(name)) {
    if (const char* const old = std::getenv(name_.c_str())) old_ = old;
    ::setenv(name_.c_str(), value.c_str(), 1);
  }
  ScopedVariable(const ScopedVariable&) = delete;
  ScopedVariable& operator=(const ScopedVariable&) = delete;
  ~ScopedVariable() {
    if (old_) {
      ::setenv(name_.c_str(), old_->c_str(), 1);
    } else {
      ::unsetenv(name_.c_str());
    }
  }

 private:
  std::string name_;
  std::optional<std::string> old_;
};

}  // namespace qzlog_test

#endif  // QZLOG_TESTS_TOOLS_SCOPED_VARIABLE_H

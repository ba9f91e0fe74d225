#ifndef QZLOG_TESTS_SUPPORT_SCOPED_ENVIRONMENT_H
#define QZLOG_TESTS_SUPPORT_SCOPED_ENVIRONMENT_H

#include <stdlib.h>
#include <time.h>

#include <clocale>
#include <optional>
#include <string>

namespace qz_test {

/// An environment variable with another value (or without one) as long as the object lives.
class SetEnv {
 public:
  SetEnv(const char* name, const std::optional<std::string>& value) : name_(name) {
    if (const char* previous = getenv(name)) previous_ = previous;
    assign(value);
  }
  ~SetEnv() { assign(previous_); }
  SetEnv(const SetEnv&) = delete;
  SetEnv& operator=(const SetEnv&) = delete;

 private:
  void assign(const std::optional<std::string>& value) const {
    if (value) {
      setenv(name_.c_str(), value->c_str(), 1);
    } else {
      unsetenv(name_.c_str());
    }
  }

  std::string name_;
  std::optional<std::string> previous_;
};

class UnsetEnv : public SetEnv {
 public:
  explicit UnsetEnv(const char* name) : SetEnv(name, std::nullopt) {}
};

/// The process's time zone as long as the object lives. Not while other threads read the time.
class TimeZone {
 public:
  explicit TimeZone(const char* name) : variable_(std::in_place, "TZ", name) { tzset(); }
  ~TimeZone() {
    variable_.reset();
    tzset();
  }
  TimeZone(const TimeZone&) = delete;
  TimeZone& operator=(const TimeZone&) = delete;

 private:
  std::optional<SetEnv> variable_;
};

/// The C library's locale as long as the object lives; is_set() tells whether the system has it.
class CLocale {
 public:
  explicit CLocale(const char* name)
      : previous_(std::setlocale(LC_ALL, nullptr)), is_set_(std::setlocale(LC_ALL, name) != nullptr) {}
  ~CLocale() { std::setlocale(LC_ALL, previous_.c_str()); }
  CLocale(const CLocale&) = delete;
  CLocale& operator=(const CLocale&) = delete;

  bool is_set() const { return is_set_; }

 private:
  std::string previous_;
  bool is_set_;
};

}  // namespace qz_test

#endif  // QZLOG_TESTS_SUPPORT_SCOPED_ENVIRONMENT_H

#ifndef QZLOG_FOUNDATION_DESCRIPTOR_H
#define QZLOG_FOUNDATION_DESCRIPTOR_H

#include <unistd.h>

#include <utility>

#include "foundation/no_copies.h"

namespace qzlog {

/// An open descriptor, closed with its holder, or none.
class Descriptor : public qz_UTIL_no_inadvertant_copies {
 public:
  Descriptor() = default;
  explicit Descriptor(int number) : number_(number) {}
  ~Descriptor() { reset(); }

  int get() const { return number_; }
  explicit operator bool() const { return number_ >= 0; }
  int release() { return std::exchange(number_, -1); }
  void swap(Descriptor& other) noexcept { std::swap(number_, other.number_); }
  /// What close() reports is of no use here: the descriptor is gone, and what was written is in the system's keeping.
  void reset(int number = -1) {
    const int former = std::exchange(number_, number);
    if (former >= 0) static_cast<void>(::close(former));
  }

 private:
  int number_ = -1;
};

}  // namespace qzlog

#endif  // QZLOG_FOUNDATION_DESCRIPTOR_H

#ifndef QZLOG_MESSAGE_ICU_MEMORY_H
#define QZLOG_MESSAGE_ICU_MEMORY_H

#include <cerrno>

#include <unicode/unistr.h>
#include <unicode/utypes.h>

#include "foundation/no_copies.h"
#include "qzlog/qz_exception.h"

namespace qzlog {

/// Sees whether ICU ran out of memory. Of many an allocation that fails ICU does not tell: it leaves out what it had no
/// room for, falls back to another locale's data, or reports another failure. The allocator does, in errno. While one
/// lives, errno belongs to it; the end gives it back.
class IcuMemory : public qz_UTIL_no_inadvertant_copies {
 public:
  IcuMemory() : errno_(errno), former_errno_(errno_) { errno_ = 0; }
  ~IcuMemory() { errno_ = former_errno_; }

  /// Whether an allocation has failed by now: what ICU made is of no use then.
  bool ran_out(UErrorCode status = U_ZERO_ERROR) const {
    return status == U_MEMORY_ALLOCATION_ERROR || errno_ == ENOMEM;
  }
  /// Throws QZX_memory_alloc then.
  void check(UErrorCode status = U_ZERO_ERROR) const {
    if (ran_out(status)) [[unlikely]]
      throw QZX_memory_alloc();
  }
  /// The same, also for a text that ICU had no room for, and for an object.
  void check(const icu::UnicodeString& text, UErrorCode status = U_ZERO_ERROR) const {
    check(text.isBogus() ? U_MEMORY_ALLOCATION_ERROR : status);
  }
  void check_made(const volatile void* object) const {
    check(object == nullptr ? U_MEMORY_ALLOCATION_ERROR : U_ZERO_ERROR);
  }

 private:
  int& errno_;
  int former_errno_;
};

}  // namespace qzlog

#endif  // QZLOG_MESSAGE_ICU_MEMORY_H

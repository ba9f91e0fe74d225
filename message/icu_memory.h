#ifndef QZLOG_MESSAGE_ICU_MEMORY_H
#define QZLOG_MESSAGE_ICU_MEMORY_H

#include <cerrno>

#include <unicode/unistr.h>
#include <unicode/utypes.h>

#include "foundation/no_copies.h"
#include "qzlog/qz_exception.h"

namespace qzlog {
/// ICU may have run out of memory, see with_icu_memory.
struct IcuMayHaveRunOut : QZX_memory_alloc {};

inline constexpr int kIcuMemoryTries = 9;

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
  /// Throws QZX_memory_alloc when ICU says so, IcuMayHaveRunOut when errno alone does.
  void check(UErrorCode status = U_ZERO_ERROR) const {
    if (!ran_out(status)) [[likely]]
      return;
    if (status == U_MEMORY_ALLOCATION_ERROR) throw QZX_memory_alloc();
    throw IcuMayHaveRunOut();
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

/// Calls `body`, which may use IcuMemory, and returns its result. Where errno alone says that ICU ran out of memory
/// `body` is called again: it says so too where the heap could not grow in its place, as with something mapped behind
/// it, and the allocator then found room elsewhere. What the calls before gave back is room for the next; a message of
/// a megabyte takes some of them. `body` has to make afresh what it made then. Throws `Failure` when nothing helps,
/// also where ICU remembers what it had no memory for and says something else the next time.
template <typename Failure = QZX_memory_alloc, typename Body>
auto with_icu_memory(Body&& body) {
  try {
    return body();
  } catch (const IcuMayHaveRunOut&) {
  } catch (const QZX_memory_alloc&) {
    throw Failure();
  }
  for (int i = 1; i < kIcuMemoryTries; ++i) {
    try {
      return body();
    } catch (const IcuMayHaveRunOut&) {
    } catch (...) {
      break;
    }
  }
  throw Failure();
}
}  // namespace qzlog

#endif  // QZLOG_MESSAGE_ICU_MEMORY_H

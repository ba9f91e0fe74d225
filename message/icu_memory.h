#ifndef QZLOG_MESSAGE_ICU_MEMORY_H
#define QZLOG_MESSAGE_ICU_MEMORY_H

#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdint>

#include <unicode/unistr.h>
#include <unicode/utypes.h>

#include "foundation/no_copies.h"
#include "qzlog/qz_exception.h"

namespace qzlog {
/// ICU may have run out of memory, see with_icu_memory.
struct IcuMayHaveRunOut : QZX_memory_alloc {};

/// How often with_icu_memory calls at most.
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
  /// Throws QZX_memory_alloc when ICU says so, and when errno does; but IcuMayHaveRunOut where errno may say so without
  /// reason.
  void check(UErrorCode status = U_ZERO_ERROR) const {
    if (!ran_out(status)) [[likely]]
      return;
    if (status == U_MEMORY_ALLOCATION_ERROR || !is_heap_confined()) throw QZX_memory_alloc();
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
  /// Whether something is mapped so near behind the heap that the C library may have had to grow it elsewhere.
  [[gnu::noinline]] static bool is_heap_confined() {
    constexpr std::size_t kRoom = std::size_t{64} << 20;  // more than the allocator asks for at once
    const auto page = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
    const std::uintptr_t end = (reinterpret_cast<std::uintptr_t>(sbrk(0)) + page - 1) & ~(page - 1);
    void* const place = reinterpret_cast<void*>(end);  // NOLINT(performance-no-int-to-ptr)
    void* const room =
        mmap(place, kRoom, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE | MAP_FIXED_NOREPLACE, -1, 0);
    if (room == MAP_FAILED) return errno == EEXIST;
    munmap(room, kRoom);
    return room != place;
  }

  int& errno_;
  int former_errno_;
};

/// Calls `body`, which may use IcuMemory, and returns its result. The allocator sets errno also where the heap could
/// not grow in its place, as with something mapped behind it, and it then found room elsewhere. Where that may be so
/// `body` is called again, which has to make afresh what it made before: what the calls before gave back is room for
/// the next; a message of a megabyte takes some of them. Elsewhere it is not: ICU keeps for good what it made without
/// memory, and would not say so again. Throws `Failure` when nothing helps.
template <typename Failure = QZX_memory_alloc, typename Body>
auto with_icu_memory(Body&& body) {
  for (int i = 0; i < kIcuMemoryTries; ++i) {
    try {
      return body();
    } catch (const IcuMayHaveRunOut&) {
    } catch (const QZX_memory_alloc&) {
      break;
    }
  }
  throw Failure();
}
}  // namespace qzlog

#endif  // QZLOG_MESSAGE_ICU_MEMORY_H

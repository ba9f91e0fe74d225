#ifndef QZLOG_FOUNDATION_NO_COPIES_H
#define QZLOG_FOUNDATION_NO_COPIES_H

/// Base of classes that must not be copied by accident.
class qz_UTIL_no_inadvertant_copies {
 public:
  constexpr qz_UTIL_no_inadvertant_copies() = default;

 private:
  qz_UTIL_no_inadvertant_copies(const qz_UTIL_no_inadvertant_copies&) = delete;
  qz_UTIL_no_inadvertant_copies& operator=(const qz_UTIL_no_inadvertant_copies&) = delete;
};

#endif  // QZLOG_FOUNDATION_NO_COPIES_H

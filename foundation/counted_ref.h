#ifndef QZLOG_FOUNDATION_COUNTED_REF_H
#define QZLOG_FOUNDATION_COUNTED_REF_H

#include <utility>

namespace qzlog {

/// A counted reference to an object that counts its own references (add_reference, release), or null.
template <typename T>
class CountedRef {
 public:
  CountedRef() = default;
  /// Takes over a reference that the caller holds.
  explicit CountedRef(T* held) : object_(held) {}
  /// A further reference.
  static CountedRef share(T* object) {
    object->add_reference();
    return CountedRef(object);
  }
  CountedRef(CountedRef&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
  CountedRef& operator=(CountedRef&& other) noexcept {
    std::swap(object_, other.object_);
    return *this;
  }
  ~CountedRef() {
    if (object_ != nullptr) object_->release();
  }

  T* get() const { return object_; }
  /// The reference is the caller's now.
  T* take() { return std::exchange(object_, nullptr); }
  T* operator->() const { return object_; }
  explicit operator bool() const { return object_ != nullptr; }

 private:
  T* object_ = nullptr;
};

}  // namespace qzlog

#endif  // QZLOG_FOUNDATION_COUNTED_REF_H

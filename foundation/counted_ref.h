#ifndef QZLOG_FOUNDATION_COUNTED_REF_H
#define QZLOG_FOUNDATION_COUNTED_REF_H

#include <utility>

/// A counted reference to an object that counts its own references (add_reference, release), or null.
template <typename T>
class qz_CountedRef {
 public:
  qz_CountedRef() = default;
  /// Takes over a reference that the caller holds.
  explicit qz_CountedRef(T* held) : object_(held) {}
  /// A further reference.
  static qz_CountedRef share(T* object) {
    object->add_reference();
    return qz_CountedRef(object);
  }
  qz_CountedRef(qz_CountedRef&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
  qz_CountedRef& operator=(qz_CountedRef&& other) noexcept {
    std::swap(object_, other.object_);
    return *this;
  }
  ~qz_CountedRef() {
    if (object_ != nullptr) object_->release();
  }

  T* get() const { return object_; }
  T* operator->() const { return object_; }
  explicit operator bool() const { return object_ != nullptr; }

 private:
  T* object_ = nullptr;
};

#endif  // QZLOG_FOUNDATION_COUNTED_REF_H

#ifndef QZLOG_SHIP_PLUGIN_DESCRIPTOR_H
#define QZLOG_SHIP_PLUGIN_DESCRIPTOR_H

#include <unistd.h>

#include <utility>

namespace qzlog_ship {

/// A descriptor that is closed with it; negative where there is none:
///
///   const Descriptor file(::open(path, O_RDONLY | O_CLOEXEC));
class Descriptor {
 public:
  explicit Descriptor(int opened = -1) : descriptor_(opened) {}
  ~Descriptor() {
    if (descriptor_ >= 0) ::close(descriptor_);
  }
  Descriptor(Descriptor&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(descriptor_, other.descriptor_);
    return *this;
  }

  int get() const { return descriptor_; }

 private:
  int descriptor_;
};

}  // namespace qzlog_ship

#endif  // QZLOG_SHIP_PLUGIN_DESCRIPTOR_H

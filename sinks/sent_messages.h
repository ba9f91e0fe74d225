#ifndef QZLOG_SINKS_SENT_MESSAGES_H
#define QZLOG_SINKS_SENT_MESSAGES_H

#include <cstddef>
#include <cstdint>
#include <vector>

namespace qzlog {

/// What a message was about.
struct SentMessage {
  unsigned id = 0;
  unsigned level = 0;
  unsigned told = 0;      ///< 0: it was an entry; else it told of so many
  std::size_t bytes = 0;  ///< as they were sent
};

/// The last messages that went into a connection, for the question which of them the other side has not confirmed.
class SentMessages {
 public:
  /// More messages than this are rarely under way; earlier ones are taken for confirmed.
  static constexpr std::size_t kMost = 8192;

  /// std::bad_alloc.
  void reserve() { messages_.resize(kMost); }
  void clear() { first_ = count_ = total_ = 0; }

  void add(const SentMessage& message) noexcept {
    total_ += message.bytes;
    if (count_ == kMost) {
      first_ = (first_ + 1) % kMost;
      --count_;
    }
    messages_[(first_ + count_++) % kMost] = {message, total_};
  }

  /// Calls take(const SentMessage&) for each that has one of the last so many bytes, in their order.
  template <typename Take>
  void for_each_in_last(std::size_t bytes, Take take) const {
    const std::uint64_t confirmed = bytes < total_ ? total_ - bytes : 0;
    for (std::size_t i = 0; i < count_; ++i) {
      const Place& place = messages_[(first_ + i) % kMost];
      if (place.end > confirmed) take(place.message);
    }
  }

 private:
  struct Place {
    SentMessage message;
    std::uint64_t end;  // of its bytes, among all
  };

  std::vector<Place> messages_;
  std::size_t first_ = 0;
  std::size_t count_ = 0;
  std::uint64_t total_ = 0;
};

}  // namespace qzlog

#endif  // QZLOG_SINKS_SENT_MESSAGES_H

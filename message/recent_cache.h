#ifndef QZLOG_MESSAGE_RECENT_CACHE_H
#define QZLOG_MESSAGE_RECENT_CACHE_H

#include <memory>
#include <unordered_map>
#include <utility>
#include <vector>

namespace qzlog {

/// Values that are costly to make, by key: the last kCapacity made, the oldest of which goes first. For one thread.
template <typename Key, typename Value>
class RecentCache {
 public:
  static constexpr std::size_t kCapacity = 512;

  /// The value of a key, made by `make` (which returns std::unique_ptr<Value>) when it is not at hand. Valid until the
  /// next call.
  template <typename Make>
  Value& get(const Key& key, Make&& make) {
    return get(
        key, [](const Value&) { return true; }, make);
  }
  /// The same, but a value that is not `current` any more is made again.
  template <typename IsCurrent, typename Make>
  Value& get(const Key& key, IsCurrent&& is_current, Make&& make) {
    const auto found = values_.find(key);
    if (found == values_.end()) return *keep(key, make());
    if (!is_current(*found->second)) found->second = make();
    return *found->second;
  }

  void clear() {
    values_.clear();
    by_age_.clear();
    oldest_ = 0;
  }

 private:
  Value* keep(const Key& key, std::unique_ptr<Value> fresh) {
    by_age_.reserve(kCapacity);
    const auto kept = values_.emplace(key, std::move(fresh)).first;
    // Keys stay where they are when the map grows.
    if (by_age_.size() < kCapacity) {
      by_age_.push_back(&kept->first);
    } else {
      values_.erase(*std::exchange(by_age_[oldest_], &kept->first));
      oldest_ = (oldest_ + 1) % kCapacity;
    }
    return kept->second.get();
  }

  std::unordered_map<Key, std::unique_ptr<Value>> values_;
  std::vector<const Key*> by_age_;
  std::size_t oldest_ = 0;
};

}  // namespace qzlog

#endif  // QZLOG_MESSAGE_RECENT_CACHE_H

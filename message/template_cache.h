#ifndef QZLOG_MESSAGE_TEMPLATE_CACHE_H
#define QZLOG_MESSAGE_TEMPLATE_CACHE_H

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

/// The templates that a thread rendered last, in a form ready to render again. Bounded in number and in size: the
/// oldest goes first, and very long templates are not kept. What is compiled depends on the text alone; a
/// compiled form that holds more than that checks it at each use.
template <typename Character, typename Compiled>
class TemplateCache {
 public:
  using Text = std::basic_string<Character>;
  using TextView = std::basic_string_view<Character>;

  /// The compiled form of a template, made by `compile` (which returns std::unique_ptr<Compiled>) when it is not at
  /// hand. Valid until the next call.
  template <typename Compile>
  Compiled& get(TextView text, Compile&& compile) {
    const auto found = compiled_.find(text);
    if (found != compiled_.end()) return *found->second;
    std::unique_ptr<Compiled> fresh = compile();
    if (text.size() > kMaxLength) {
      not_kept_ = std::move(fresh);
      return *not_kept_;
    }
    return *keep(text, std::move(fresh));
  }

 private:
  static constexpr std::size_t kCapacity = 512;
  static constexpr std::size_t kMaxLength = 4096;

  struct Hash {
    using is_transparent = void;
    std::size_t operator()(TextView text) const { return std::hash<TextView>()(text); }
  };

  Compiled* keep(TextView text, std::unique_ptr<Compiled> fresh) {
    by_age_.reserve(kCapacity);
    const auto kept = compiled_.emplace(Text(text), std::move(fresh)).first;
    // Keys stay where they are when the map grows.
    if (by_age_.size() < kCapacity) {
      by_age_.push_back(&kept->first);
    } else {
      compiled_.erase(*std::exchange(by_age_[oldest_], &kept->first));
      oldest_ = (oldest_ + 1) % kCapacity;
    }
    return kept->second.get();
  }

  std::unordered_map<Text, std::unique_ptr<Compiled>, Hash, std::equal_to<>> compiled_;
  std::vector<const Text*> by_age_;
  std::size_t oldest_ = 0;
  std::unique_ptr<Compiled> not_kept_;
};

#endif  // QZLOG_MESSAGE_TEMPLATE_CACHE_H

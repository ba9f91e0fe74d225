#ifndef QZLOG_SHIP_FILE_FAULT_PLAN_H
#define QZLOG_SHIP_FILE_FAULT_PLAN_H

#include <cstdint>
#include <random>
#include <string>
#include <string_view>

#include "ship/plugin/plugin_options.h"

namespace qzlog_ship {

/// What goes wrong on purpose, so that it can be tried what a shipper makes of it. Nothing does unless options ask for
/// it.
class FaultPlan {
 public:
  /// Of the options: fail, cut and again, each in percent; refuse; slow, in milliseconds; down, a file's name; seed.
  explicit FaultPlan(PluginOptions& options);

  /// Throws, for now: while the file exists that `down` names.
  void refuse_while_down() const;
  /// Waits as long as `slow` says; not longer than `timeout_ms`: false then.
  bool wait(std::uint32_t timeout_ms) const;
  /// A batch does not get there.
  bool fails() { return happens(fail_percent_); }
  /// The connection breaks within a batch, before anything of it is acknowledged.
  bool cuts() { return happens(cut_percent_); }
  /// How many of `count`, when it does.
  std::size_t cut_at(std::size_t count) { return random_() % count; }
  /// A record gets there and its acknowledgement does not.
  bool loses_acknowledgement() { return happens(again_percent_); }
  /// Always the same records: one of as many as `refuse` says.
  bool refuses(std::string_view identity) const;

  static constexpr const char* kKeys = "fail, cut, again, refuse, slow, down, seed";

 private:
  bool happens(std::uint64_t percent) { return percent != 0 && random_() % 100 < percent; }

  std::uint64_t fail_percent_;
  std::uint64_t cut_percent_;
  std::uint64_t again_percent_;
  std::uint64_t refuse_one_of_;
  std::uint64_t slow_ms_;
  std::string down_;
  std::mt19937_64 random_;
};

}  // namespace qzlog_ship

#endif  // QZLOG_SHIP_FILE_FAULT_PLAN_H

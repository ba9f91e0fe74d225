#include "ship/file/fault_plan.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>

#include "ship/plugin/plugin_call.h"

namespace qzlog_ship {

namespace {

std::uint64_t hash_of(std::string_view text) {
  std::uint64_t hash = 0xCBF29CE484222325;
  for (const char character : text) hash = (hash ^ static_cast<unsigned char>(character)) * 0x100000001B3;
  return hash ^ hash >> 32U;
}

}  // namespace

FaultPlan::FaultPlan(PluginOptions& options)
    : fail_percent_(options.take_number("fail", 0, 100).value_or(0)),
      cut_percent_(options.take_number("cut", 0, 100).value_or(0)),
      again_percent_(options.take_number("again", 0, 100).value_or(0)),
      refuse_one_of_(options.take_number("refuse", 1, 1'000'000'000).value_or(0)),
      slow_ms_(options.take_number("slow", 0, 3'600'000).value_or(0)),
      down_(options.take("down").value_or("")),
      random_(options.take_number("seed", 0, UINT64_MAX).value_or(std::random_device()())) {}

void FaultPlan::refuse_while_down() const {
  if (!down_.empty() && ::access(down_.c_str(), F_OK) == 0) fail_for_now("it is down, as '" + down_ + "' says");
}

// A signal may end the wait early.
bool FaultPlan::wait(std::uint32_t timeout_ms) const {
  if (slow_ms_ == 0) return true;
  ::poll(nullptr, 0, static_cast<int>(std::min<std::uint64_t>(slow_ms_, timeout_ms)));
  return slow_ms_ <= timeout_ms;
}

bool FaultPlan::refuses(std::string_view identity) const {
  return refuse_one_of_ != 0 && hash_of(identity) % refuse_one_of_ == 0;
}

}  // namespace qzlog_ship

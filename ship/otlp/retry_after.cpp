#include "ship/otlp/retry_after.h"

#include <curl/curl.h>

#include <algorithm>
#include <charconv>
#include <ctime>
#include <map>
#include <mutex>
#include <thread>

#include "ship/plugin/plugin_call.h"

namespace qzlog_ship {

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;
using std::chrono::seconds;

constexpr seconds kMost = std::chrono::hours(1);
constexpr milliseconds kBetweenQuestions{50};

/// When each receiver may be asked again; guarded by the mutex beside it.
struct WelcomeTimes {
  std::mutex mutex;
  std::map<std::string, Clock::time_point> times;
};

WelcomeTimes& welcome_times() {
  static WelcomeTimes times;
  return times;
}

Clock::time_point welcome_time(const std::string& url) {
  WelcomeTimes& all = welcome_times();
  const std::lock_guard<std::mutex> lock(all.mutex);
  const auto found = all.times.find(url);
  return found == all.times.end() ? Clock::time_point() : found->second;
}

}  // namespace

std::optional<seconds> parse_retry_after(const std::string& text) {
  if (text.empty()) return std::nullopt;
  std::int64_t number = 0;
  const char* const end = text.data() + text.size();
  const auto [stopped, error] = std::from_chars(text.data(), end, number);
  if (error == std::errc() && stopped == end) return std::clamp(seconds(number), seconds(0), kMost);
  if (error == std::errc::result_out_of_range && stopped == end) return kMost;
  const std::time_t date = curl_getdate(text.c_str(), nullptr);
  if (date == -1) return std::nullopt;
  return std::clamp(seconds(date - std::time(nullptr)), seconds(0), kMost);
}

void leave_alone(const std::string& url, seconds time) {
  WelcomeTimes& all = welcome_times();
  const std::lock_guard<std::mutex> lock(all.mutex);
  all.times[url] = Clock::now() + time;
}

void wait_until_welcome(const std::string& url, const qzlog_host& host, milliseconds timeout) {
  const Clock::time_point welcome = welcome_time(url);
  const Clock::time_point end = std::min(welcome, Clock::now() + timeout);
  while (Clock::now() < end && host.is_ending(host.context) == 0) std::this_thread::sleep_for(kBetweenQuestions);
  const auto left = std::chrono::ceil<seconds>(welcome - Clock::now());
  if (left > seconds(0)) {
    fail_for_now("the receiver asks to be left alone for " + std::to_string(left.count()) + " more seconds");
  }
}

}  // namespace qzlog_ship

#include "sinks/syslog_sink_settings.h"

#include <sys/un.h>

#include <algorithm>
#include <string>
#include <string_view>

#include "sinks/setting_checks.h"

namespace qzlog {

namespace {

using Settings = qz_LOG_SyslogSinkSettings;

constexpr unsigned kMostMessageBytes = 1U << 24;
constexpr unsigned kMostDatagramBytes = 65507;
constexpr std::size_t kMostApplication = 48;

void check_application(std::string_view name) {
  if (name.size() > kMostApplication) {
    refuse_setting("application", "it is longer than " + std::to_string(kMostApplication) + " characters");
  }
  const auto is_refused = [](char each) {
    return each <= ' ' || each > '~' || each == '[' || each == ']' || each == ':';
  };
  if (std::any_of(name.begin(), name.end(), is_refused)) {
    refuse_setting("application", "it has other characters than those of ASCII, or a blank, '[', ']' or ':'");
  }
}

void check_path(const std::string& path) {
  if (path.empty()) refuse_setting("path", "it is empty");
  if (path.size() >= sizeof(sockaddr_un::sun_path) || path.find('\0') != std::string::npos) {
    refuse_setting("path", "'" + path + "' cannot be the path of a socket");
  }
}

void check_host(const Settings& settings) {
  if (settings.host.empty()) refuse_setting("host", "it is empty");
  require_range("port", settings.port, 1, 65535);
}

}  // namespace

void check_settings(const Settings& settings) {
  if (settings.transport == Settings::kLocal) {
    check_path(settings.path);
  } else if (settings.transport == Settings::kUdp || settings.transport == Settings::kTcp) {
    check_host(settings);
  } else {
    refuse_setting("transport", "it is neither kLocal nor kUdp nor kTcp");
  }
  if (settings.form != Settings::kUsual && settings.form != Settings::kRfc5424 && settings.form != Settings::kOlder) {
    refuse_setting("form", "it is neither kUsual nor kRfc5424 nor kOlder");
  }
  check_application(settings.application);
  require_range("facility", settings.facility, 0, 23);
  require_range("enterprise_number", settings.enterprise_number, 1, 0xFFFFFFFFU);
  const bool is_udp = settings.transport == Settings::kUdp;
  require_range("largest_message_bytes", settings.largest_message_bytes, 480,
                is_udp ? kMostDatagramBytes : kMostMessageBytes);
  require_range("longest_wait_milliseconds", settings.longest_wait_milliseconds, 0, 60'000);
  require_range("longest_pause_milliseconds", settings.longest_pause_milliseconds, 100, 3'600'000);
}

}  // namespace qzlog

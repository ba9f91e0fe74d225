#include "ship/syslog/syslog_settings.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <string_view>

#include "ship/plugin/plugin_call.h"
#include "ship/plugin/plugin_options.h"
#include "sinks/syslog_facility.h"

namespace qzlog_ship {

namespace {

std::string text_or_empty(const char* text) { return text == nullptr ? "" : text; }

[[noreturn]] void refuse_authority() {
  fail_for_good(
      "write the host and the port of the server, as in syslog+tls://logs.example.com:6514 or [2001:db8::1]:6514");
}

void check_port(std::string_view port) {
  unsigned number = 0;
  const auto [end, error] = std::from_chars(port.data(), port.data() + port.size(), number);
  if (error != std::errc() || end != port.data() + port.size() || number == 0 || number > 65535) refuse_authority();
}

void take_authority(std::string_view authority, SyslogSettings& result) {
  const std::size_t colon = authority.rfind(':');
  if (colon == std::string_view::npos) refuse_authority();
  std::string_view host = authority.substr(0, colon);
  const bool is_bracketed = host.size() > 2 && host.front() == '[' && host.back() == ']';
  if (is_bracketed) host = host.substr(1, host.size() - 2);
  if (host.empty() || (!is_bracketed && host.find(':') != std::string_view::npos)) refuse_authority();
  result.host = host;
  result.port = authority.substr(colon + 1);
  check_port(result.port);
}

void take_scheme(const qzlog_settings& settings, SyslogSettings& result) {
  const std::string_view scheme = settings.scheme;
  if (scheme != "syslog+tcp" && scheme != "syslog+tls") {
    fail_for_good("syslog is reached as syslog+tcp://HOST:PORT or, encrypted, as syslog+tls://HOST:PORT");
  }
  result.is_encrypted = scheme == "syslog+tls";
  const std::string_view path = settings.path;
  if (!path.empty() && path != "/") fail_for_good("nothing may stand behind the port");
  result.ca_file = text_or_empty(settings.ca_file);
  result.credentials_file = text_or_empty(settings.credentials_file);
  if (!result.is_encrypted && !(result.ca_file.empty() && result.credentials_file.empty())) {
    fail_for_good("certificates are for syslog+tls://; syslog+tcp:// has none");
  }
}

unsigned facility_of(const std::string& name) {
  const auto& names = qzlog::kSyslogFacilities;
  const auto* const found = std::find(std::begin(names), std::end(names), name);
  if (found == std::end(names))
    fail_for_good("--option facility takes the name of one, such as user, daemon or local0");
  return static_cast<unsigned>(found - std::begin(names));
}

void check_application(const std::string& name) {
  const auto is_refused = [](char each) {
    return each <= ' ' || each > '~' || each == '[' || each == ']' || each == ':';
  };
  if (name.empty() || name.size() > 48 || std::any_of(name.begin(), name.end(), is_refused)) {
    fail_for_good("--option application takes 1 to 48 characters of ASCII without blanks, '[', ']' and ':'");
  }
}

}  // namespace

SyslogSettings SyslogSettings::of(const qzlog_settings& settings) {
  SyslogSettings result;
  take_scheme(settings, result);
  take_authority(settings.authority, result);
  PluginOptions options(settings);
  if (const auto facility = options.take("facility")) result.facility = facility_of(*facility);
  if (const auto application = options.take("application")) {
    check_application(*application);
    result.application = *application;
  }
  result.enterprise_number =
      static_cast<unsigned>(options.take_number("enterprise-number", 1, 0xFFFFFFFF).value_or(result.enterprise_number));
  result.largest_message_bytes =
      options.take_number("largest-message-bytes", 480, 1U << 24).value_or(result.largest_message_bytes);
  options.refuse_others("application, facility, enterprise-number, largest-message-bytes");
  return result;
}

}  // namespace qzlog_ship

#include "tools/transport/transport_settings.h"

#include <sys/stat.h>

#include <iterator>
#include <string>

#include "tools/compiler/text/utf8_text.h"
#include "tools/system/command_error.h"

namespace qzlog_tool {

namespace {

const char* text_or_null(const std::string& text) { return text.empty() ? nullptr : text.c_str(); }

// One that nobody writes to, such as a pipe, would be waited for without end by the libraries of plug-ins.
void refuse_odd_file(const char* option, const std::string& path) {
  struct stat status = {};
  if (path.empty() || ::stat(path.c_str(), &status) != 0 || S_ISREG(status.st_mode)) return;
  throw CommandError(kExitCannotRun, std::string(option) + ": '" + path + "' is no regular file");
}

}  // namespace

TransportSettings::TransportSettings(const TransportUrl& url, const TransportOptions& options) : settings_() {
  refuse_odd_file("--ca", options.ca_file);
  refuse_odd_file("--credentials", options.credentials_file);
  for (const auto& [key, value] : options.options) options_.push_back({key.c_str(), value.c_str()});
  settings_.size = sizeof settings_;
  settings_.url = url.text().c_str();
  settings_.scheme = url.scheme().c_str();
  settings_.authority = url.authority().c_str();
  settings_.path = url.path().c_str();
  settings_.ca_file = text_or_null(options.ca_file);
  settings_.credentials_file = text_or_null(options.credentials_file);
  settings_.options = options_.data();
  settings_.option_count = options_.size();
  settings_.client = options.client.c_str();
}

std::string shown_error(qzlog_error& error) {
  error.text[std::size(error.text) - 1] = '\0';
  const std::string text = qzlog_compiler::printable(error.text);
  return text.empty() ? "the plug-in does not say why" : text;
}

bool is_outcome(int outcome) { return outcome == QZLOG_DONE || outcome == QZLOG_LATER || outcome == QZLOG_NEVER; }

}  // namespace qzlog_tool

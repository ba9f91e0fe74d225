#include "tools/transport/receiver_options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <optional>
#include <utility>

#include "qzlog/version.h"
#include "tools/options/option_checks.h"
#include "tools/system/command_error.h"
#include "tools/system/host_name.h"
#include "tools/transport/transport_plugin.h"

namespace qzlog_tool {

namespace {

#define QZLOG_VERSION_TEXT_OF(number) #number
#define QZLOG_VERSION_TEXT(number) QZLOG_VERSION_TEXT_OF(number)
constexpr const char* kVersion = QZLOG_VERSION_TEXT(QZLOG_VERSION_MAJOR) "." QZLOG_VERSION_TEXT(
    QZLOG_VERSION_MINOR) "." QZLOG_VERSION_TEXT(QZLOG_VERSION_PATCH);

/// What a text KEY=VALUE is made of; nothing for another one.
std::optional<std::pair<std::string, std::string>> parse_option(const std::string& text) {
  const std::size_t sign = text.find('=');
  const std::string key = text.substr(0, sign);
  const bool is_key = !key.empty() && std::all_of(key.begin(), key.end(), [](char character) {
    return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z') ||
           (character >= '0' && character <= '9') || character == '-' || character == '_' || character == '.';
  });
  if (sign == std::string::npos || !is_key) return std::nullopt;
  return std::pair(key, text.substr(sign + 1));
}

std::string check_option(const std::string& text) {
  // Not the whole text: values may be secrets.
  return parse_option(text) ? "" : "an option of the receiver is written KEY=VALUE";
}

}  // namespace

std::string ReceiverOptions::plugin_folder() const { return plugins.empty() ? installed_plugins() : plugins; }

void add_receiver_options(CLI::App& command, ReceiverOptions& options) {
  command.add_option("--ca", options.ca_file, "The certificates that are trusted, in place of the system's")
      ->type_name("FILE.pem")
      ->check(check_not_empty);
  command.add_option("--credentials", options.credentials_file, "A file with what the receiver asks for")
      ->type_name("FILE")
      ->check(check_not_empty);
  command.add_option("--option", options.options, "A setting of the receiver's plug-in")
      ->type_name("KEY=VALUE")
      ->allow_extra_args(false)
      ->check(check_option);
  command.add_option("--plugins", options.plugins, "The folder of plug-ins, in place of the installed one")
      ->type_name("DIR")
      ->check(check_not_empty);
}

TransportOptions transport_options(const ReceiverOptions& options, const std::string& program) {
  TransportOptions result;
  result.ca_file = options.ca_file;
  result.credentials_file = options.credentials_file;
  result.client = program + '/' + kVersion + ' ' + host_name();
  for (const std::string& text : options.options) {
    std::pair<std::string, std::string> option = parse_option(text).value_or(std::pair<std::string, std::string>());
    for (const auto& [key, value] : result.options) {
      if (key == option.first) throw CommandError(kExitCannotRun, "--option " + key + " is given twice");
    }
    result.options.push_back(std::move(option));
  }
  return result;
}

}  // namespace qzlog_tool

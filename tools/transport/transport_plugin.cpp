#include "tools/transport/transport_plugin.h"

#include <dlfcn.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <iterator>
#include <string_view>
#include <system_error>
#include <vector>

#include "tools/compiler/text/nearest_word.h"
#include "tools/system/command_error.h"

namespace qzlog_tool {

namespace {

namespace fs = std::filesystem;

/// What we have plug-ins for. Others may have been added to the folder.
struct KnownScheme {
  std::string_view scheme;
  std::string_view package;  ///< what to install for it; the part of a build has the same name
};
constexpr KnownScheme kSchemes[] = {
    {"file", "qzlog"},
    {"kafka", "qzlog-ship-kafka"},
    {"kafka+ssl", "qzlog-ship-kafka"},
    {"nats", "qzlog-ship-nats"},
    {"nats+tls", "qzlog-ship-nats"},
    {"otlp+http", "qzlog-ship-otlp"},
    {"otlp+https", "qzlog-ship-otlp"},
    {"syslog+tcp", "qzlog-ship-syslog"},
    {"syslog+tls", "qzlog-ship-syslog"},
};

[[noreturn]] void refuse(const std::string& text) { throw CommandError(kExitCannotRun, text); }

bool is_there(const std::string& path) {
  struct stat status = {};
  return ::stat(path.c_str(), &status) == 0;
}

[[noreturn]] void refuse_scheme(const TransportUrl& url, const std::string& path) {
  const std::string& scheme = url.scheme();
  std::vector<std::string_view> schemes;
  std::string list;
  for (const KnownScheme& known : kSchemes) {
    schemes.push_back(known.scheme);
    list.append(list.empty() ? "" : ", ").append(known.scheme).append("://");
  }
  const std::string hint = qzlog_compiler::did_you_mean(scheme, schemes);
  refuse(std::string(url.option()) + ": there is no scheme '" + scheme + "'" + (hint.empty() ? "" : "; " + hint) +
         "; there are " + list + ", and those of plug-ins of others ('" + path + "' would be one)");
}

[[noreturn]] void refuse_missing(const TransportUrl& url, const std::string& path) {
  const std::string& scheme = url.scheme();
  const auto* const found = std::find_if(std::begin(kSchemes), std::end(kSchemes),
                                         [&](const KnownScheme& known) { return known.scheme == scheme; });
  if (found == std::end(kSchemes)) refuse_scheme(url, path);
  refuse(std::string(url.option()) + ": " + scheme +
         ":// needs a plug-in that is not installed: install the package '" + std::string(found->package) +
         "', which has '" + path + "'");
}

[[noreturn]] void refuse_plugin(const std::string& path, const std::string& reason) {
  refuse("cannot use the plug-in '" + path + "': " + reason);
}

std::string loader_error() {
  const char* const text = ::dlerror();
  return text != nullptr ? text : "the loader does not say why";
}

// Up to the last function for sending: what only reads is looked at where something is read.
void check(const qzlog_transport* transport, const std::string& path) {
  if (transport == nullptr) refuse_plugin(path, "it has nothing to offer");
  if (transport->version != QZLOG_TRANSPORT_VERSION) {
    refuse_plugin(path, "it is for version " + std::to_string(transport->version) +
                            " of the interface, and this command has version " +
                            std::to_string(QZLOG_TRANSPORT_VERSION) + ": install those of one release");
  }
  if (transport->size < sizeof(qzlog_transport) || transport->open_sender == nullptr || transport->send == nullptr ||
      transport->close_sender == nullptr) {
    refuse_plugin(path, "it is not complete");
  }
  const std::array<bool, 4> reading = {transport->open_reader != nullptr, transport->read != nullptr,
                                       transport->settle != nullptr, transport->close_reader != nullptr};
  if (std::count(reading.begin(), reading.end(), reading[0]) != 4) refuse_plugin(path, "it can read only in part");
}

}  // namespace

std::string installed_plugins() {
  std::error_code missing;
  const fs::path command = fs::read_symlink("/proc/self/exe", missing);
  if (!missing) {
    const fs::path beside = (command.parent_path() / QZLOG_PLUGINS_FROM_COMMAND).lexically_normal();
    if (fs::is_directory(beside, missing)) return beside.string();
  }
  return QZLOG_PLUGINS;
}

TransportPlugin::TransportPlugin(const TransportUrl& url, const std::string& folder)
    : path_((fs::absolute(folder) / ("ship-" + url.plugin() + ".so")).lexically_normal().string()) {
  if (!is_there(path_)) refuse_missing(url, path_);
  void* const library = ::dlopen(path_.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) refuse_plugin(path_, loader_error());
  void* const symbol = ::dlsym(library, QZLOG_TRANSPORT_FUNCTION);
  if (symbol == nullptr) refuse_plugin(path_, "it is no plug-in of this command (" + loader_error() + ')');
  // The one way from an address to a function: POSIX has both of one size.
  const auto get_transport = reinterpret_cast<qzlog_ship_transport_function>(symbol);
  transport_ = get_transport();
  check(transport_, path_);
}

}  // namespace qzlog_tool

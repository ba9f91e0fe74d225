#ifndef QZLOG_SHIP_PLUGIN_PLUGIN_OPTIONS_H
#define QZLOG_SHIP_PLUGIN_PLUGIN_OPTIONS_H

#include <cstdint>
#include <map>
#include <optional>
#include <string>

#include "ship/transport.h"

namespace qzlog_ship {

/// The settings that somebody gave a plug-in by --option, each to be taken once by its key:
///
///   PluginOptions options(*settings);
///   const std::uint64_t window = options.take_number("window", 1, 1000).value_or(256);
///   options.refuse_others("window, stream");
///
/// What is wrong is thrown as a failure for good, which names the key.
class PluginOptions {
 public:
  explicit PluginOptions(const qzlog_settings& settings);

  std::optional<std::string> take(const std::string& key);
  std::optional<std::uint64_t> take_number(const std::string& key, std::uint64_t least, std::uint64_t most);
  /// "yes" or "no".
  bool take_flag(const std::string& key, bool usual);
  /// All whose keys begin so, by their keys.
  std::map<std::string, std::string> take_all(const std::string& beginning);
  /// Once all that there are have been taken; `known` is the list of them for people.
  void refuse_others(const std::string& known) const;

 private:
  std::map<std::string, std::string> left_;
};

/// A part of a URL with its %XX turned into bytes. Throws as above for a percent sign that begins none, and for %00.
std::string percent_decoded(const std::string& text);

}  // namespace qzlog_ship

#endif  // QZLOG_SHIP_PLUGIN_PLUGIN_OPTIONS_H

#ifndef QZLOG_TOOLS_RENDER_RENDER_FILTER_H
#define QZLOG_TOOLS_RENDER_RENDER_FILTER_H

#include <optional>
#include <string>

#include "qzlog/entry_filt.h"
#include "tools/choice/choice_options.h"
#include "tools/system/memory_file.h"

namespace CLI {
class App;
}

namespace qzlog_tool {

/// Which entries are wanted, as the command line says. Numbers are texts that were checked.
struct FilterOptions {
  std::string config;  ///< empty: no configuration file
  std::string section = "global";
  bool section_given = false;
  std::string mask;
  unsigned level_low = 0;
  unsigned level_high = 9;
  bool active = false;  ///< one of the options was given
};

/// Adds --config, --section, --mask, --level-low and --level-high; `options` has to outlive the parsing.
void add_filter_options(CLI::App& command, FilterOptions& options);

/// What the options, of which one was given, ask of entries that lines tell of as lost or held back. Nothing with a
/// configuration file, whose values only the library's filter knows.
std::optional<LossBounds> loss_bounds(const FilterOptions& options);

/// The library's filter, set up from the options. One thread uses it.
class RenderFilter {
 public:
  /// `options` has to outlive this object, and a RenderConfig of the same options to live as long as it is asked.
  explicit RenderFilter(const FilterOptions& options);

  bool lets_through(const qz_LOG_LogEntry& entry) const { return filter_.check_entry(entry); }

 private:
  _qz_LOG_entry_filter filter_;
};

/// The configuration file of the options, if they name one, in the library's settings.
class RenderConfig {
 public:
  /// Warns on stderr of what the library passes over in the file, or takes for something else. Throws CommandError
  /// (cannot run) for a file that cannot be read.
  explicit RenderConfig(const FilterOptions& options);

 private:
  std::optional<MemoryFile> copy_;  // of a configuration that came through a pipe
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_RENDER_RENDER_FILTER_H

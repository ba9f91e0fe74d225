#ifndef QZLOG_TOOLS_SHOWN_SHOW_OPTIONS_H
#define QZLOG_TOOLS_SHOWN_SHOW_OPTIONS_H

#include <memory>
#include <string>

#include "tools/shown/presentation.h"
#include "tools/shown/shown_events.h"
#include "tools/shown/shown_times.h"

namespace CLI {
class App;
}

namespace qzlog_tool {

/// How lines are shown, as the command line says.
struct ShowOptions {
  std::string output = "text";
  std::string format;
  std::string columns;
  std::string time_zone;
  bool utc = false;
  std::string time_style = "iso";
  std::string locale;

  /// Whether nothing but messages is shown, which needs no presentation.
  bool shows_messages_alone() const { return output == "text" && format.empty(); }
  /// Whether lines are shown in colour, standard output being a terminal that has it.
  bool may_have_colour() const { return !shows_messages_alone() && output != "json" && output != "csv"; }
};

/// Adds --output, --format, --columns, --locale, --time-zone, --utc, --time-style and --raw; `options` has to outlive
/// the parsing.
void add_show_options(CLI::App& command, ShowOptions& options);

/// Has the process show times in the reader's zone and locale, within messages too. Says on standard error what is not
/// there. To be called before anything is loaded.
void use_reader_settings(const ShowOptions& options);

/// What --columns says is refused here where no table is shown. Throws CommandError (cannot run).
void check_show_options(const ShowOptions& options);

/// The reader's clock.
ShownTimes make_times(const ShowOptions& options);

/// Says on standard error which fields hide attributes. Throws CommandError (cannot run) for names that nothing has.
/// `events` and `times` have to outlive the result.
std::unique_ptr<Presentation> make_presentation(const ShowOptions& options, const ShownPlace& place,
                                                const ShownEvents& events, ShownTimes& times);

/// Standard output: its width counts where it is a terminal.
ShownPlace place_of_standard_output();

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_SHOWN_SHOW_OPTIONS_H

#ifndef QZLOG_TOOLS_SHOWN_SHOWN_OPTIONS_H
#define QZLOG_TOOLS_SHOWN_SHOWN_OPTIONS_H

#include <memory>
#include <string>

#include "tools/choice/reader_moment.h"
#include "tools/options/reader_zone.h"
#include "tools/shown/presentation.h"
#include "tools/shown/shown_events.h"
#include "tools/shown/shown_times.h"

namespace CLI {
class App;
}

namespace qzlog_tool {

/// How lines are shown, as the command line says.
struct ShownOptions {
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
void add_shown_options(CLI::App& command, ShownOptions& options);
/// --time-zone and --utc alone, for commands that show times otherwise.
void add_zone_options(CLI::App& command, ShownOptions& options);

/// What help pages say of them, behind their options.
inline constexpr const char* kShownFooter =
    R"(--output text shows messages alone; short puts time, level and name before
them; long adds what the event means, its attributes and what else the line
carries; json is the line with "level_name", "name" and "message" added; table
and csv have the --columns that are asked for. A table fits the terminal.

Fields of --format and --columns are time, time:local, level, level_name, id,
name, message, summary, mask, writer, host, pid, seq, written, definitions,
file, line, and attributes by their names: Free, or attribute:Free where a
field has the name too. In --format a layout may follow: {Name:<20} is at least
20 columns, flush left (> right, ^ centred), {message:.60} at most 60. {{ and }}
are braces; - stands for what a line does not have.

Times are on the clock of --time-zone, else of the process. --time-style iso is
2026-11-21T09:15:30+01:00, short 2026-11-21 09:15:30, locale as the locale has
it. On a terminal, lines have the colours of their levels, and control
characters are shown as escapes unless --raw asks for them.
)";

/// Has the process show times in the reader's zone and locale, within messages too. Says on standard error what is not
/// there. To be called before anything is loaded.
void use_reader_settings(const ShownOptions& options);

/// What --columns says is refused here where no table is shown. Throws CommandError (cannot run).
void check_shown_options(const ShownOptions& options);

/// The reader's clock, and times as it shows them.
ReaderZone zone_of(const ShownOptions& options);
ShownTimes make_times(const ShownOptions& options);
/// The same clock for those who read times, at the present moment.
ReaderClock reader_clock(const ShownOptions& options);

/// Whether what may surprise readers of a presentation is said.
enum class ShownRemarks { kSay, kLeaveOut };

/// Says on standard error which fields hide attributes. Throws CommandError (cannot run) for names that nothing has.
/// `events` and `times` have to outlive the result.
std::unique_ptr<Presentation> make_presentation(const ShownOptions& options, const ShownPlace& place,
                                                const ShownEvents& events, ShownTimes& times,
                                                ShownRemarks remarks = ShownRemarks::kSay);

/// Standard output: its width counts where it is a terminal.
ShownPlace place_of_standard_output();

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_SHOWN_SHOWN_OPTIONS_H

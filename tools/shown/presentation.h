#ifndef QZLOG_TOOLS_SHOWN_PRESENTATION_H
#define QZLOG_TOOLS_SHOWN_PRESENTATION_H

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "tools/shown/field_values.h"
#include "tools/shown/shown_events.h"
#include "tools/shown/shown_times.h"

namespace qzlog_tool {

/// One of the forms in which lines are shown. What one line took memory for serves the next. One thread uses it.
class Presentation {
 public:
  virtual ~Presentation();
  Presentation(const Presentation&) = delete;
  Presentation& operator=(const Presentation&) = delete;

  /// Whether lines are shown with their messages; else those may be empty, and need not be rendered.
  virtual bool shows_message() const = 0;
  /// Appends what stands above the first line, with its end.
  virtual void append_heading(std::string& out);
  /// Appends the complete lines that show one, with their ends. Returns how many of their first bytes have the colour
  /// of the line's level where there is colour: never a line's end.
  virtual std::size_t append(const ShownLine& shown, std::string& out) = 0;

 protected:
  Presentation() = default;
};

/// Where lines are shown.
struct ShownPlace {
  bool is_terminal = false;  ///< columns are those of what a terminal gets, with escapes
  std::size_t columns = 0;   ///< as wide as a table may be; 0 for any width
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_SHOWN_PRESENTATION_H

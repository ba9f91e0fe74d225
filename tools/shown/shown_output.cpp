#include "tools/shown/shown_output.h"

#include "sinks/line_colour.h"
#include "tools/logs/line_kind.h"
#include "tools/system/command_error.h"

namespace qzlog_tool {

void ShownOutput::write_heading() {
  text_.clear();
  presentation_.append_heading(text_);
  output_.write_lines(in_code_page(text_));
}

// What has the colour is converted for itself, so that its end is known.
void ShownOutput::write(const ShownLine& shown) {
  text_.clear();
  const std::size_t coloured = presentation_.append(shown, text_);
  const unsigned level = is_entry(shown.line) ? shown.line.GetEntry().GetLogLevel() : 9;
  const std::string_view text = text_;
  const std::size_t in_colour = colour_ ? coloured : 0;
  if (in_colour > 0) {
    const std::string_view first = in_code_page(text.substr(0, in_colour));
    output_.write_lines(first, first.size(), qzlog::colour_of_level(level), qzlog::end_of_colour(level));
  }
  output_.write_lines(in_code_page(text.substr(in_colour)));
}

std::string_view ShownOutput::in_code_page(std::string_view text) {
  if (code_page_ == nullptr) return text;
  if (!code_page_->from_utf8(std::string(text).c_str(), text.size(), converted_)) {
    throw CommandError(kExitCannotRun, "a line cannot be converted to " + code_page_->name());
  }
  return converted_;
}

}  // namespace qzlog_tool

#ifndef QZLOG_TOOLS_RENDER_LOG_READING_H
#define QZLOG_TOOLS_RENDER_LOG_READING_H

#include <string>
#include <vector>

#include "tools/logs/log_reading.h"
#include "tools/render/entry_rendering.h"

namespace qzlog_tool {

/// How logs are read to be rendered.
LogReading reading_of(EntryRendering& rendering);

/// Renders one file, or standard input ("-"), to its end. False, with the reason on stderr, when it cannot be opened or
/// read; one that `may_be_gone` is no failure when it is.
bool read_input(const std::string& path, bool may_be_gone, EntryRendering& rendering);

/// Renders what operands of the command stand for (input_files), one after the other. False, with the reasons on
/// stderr, when not all of it could be read.
bool read_inputs(const std::vector<std::string>& operands, EntryRendering& rendering);

/// The same, with the lines of all in the order of their times.
bool read_merged(const std::vector<std::string>& operands, EntryRendering& rendering);

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_RENDER_LOG_READING_H

#include "tools/render/log_reading.h"

#include <fcntl.h>

#include <cerrno>
#include <cstring>
#include <utility>

#include "tools/render/log_inputs.h"
#include "tools/render/render_input.h"

namespace qzlog_tool {

namespace {

bool fail(const std::string& text, EntryRendering& rendering) {
  rendering.errors().report(qzlog_compiler::Severity::kError, text);
  return false;
}

bool read_operand(const std::string& operand, EntryRendering& rendering) {
  InputFiles files;
  try {
    files = input_files(operand);
  } catch (const UnreadableInput& failure) {
    return fail(failure.what(), rendering);
  }
  bool all_read = true;
  for (const std::string& path : files.paths) {
    if (rendering.is_complete()) break;
    all_read = read_input(path, files.were_found, rendering) && all_read;
  }
  return all_read;
}

}  // namespace

bool read_input(const std::string& path, bool may_be_gone, EntryRendering& rendering) {
  FileDescriptor file(path == "-" ? STDIN_FILENO : open_path(path, O_RDONLY | O_CLOEXEC));
  if (file.get() < 0) {
    if (may_be_gone && errno == ENOENT) return true;
    return fail("cannot open '" + path + "': " + std::strerror(errno), rendering);
  }
  RenderInput input(path, std::move(file), rendering.output());
  try {
    qz_LOG_EntryReader reader = qz_LOG_EntryReader::FromSource(input, input.shown_path().c_str(), &rendering);
    rendering.render(reader);
  } catch (const UnreadableInput& failure) {
    return fail(failure.what(), rendering);
  }
  return true;
}

bool read_inputs(const std::vector<std::string>& operands, EntryRendering& rendering) {
  bool all_read = true;
  for (const std::string& operand : operands) {
    if (rendering.is_complete()) break;
    all_read = read_operand(operand, rendering) && all_read;
  }
  return all_read;
}

}  // namespace qzlog_tool

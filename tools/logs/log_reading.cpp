#include "tools/logs/log_reading.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <utility>

#include "tools/logs/log_inputs.h"

namespace qzlog_tool {

namespace {

bool fail(const std::string& reason, const LogReading& reading) {
  reading.fail(reason);
  return false;
}

bool read_operand(const std::string& operand, const LogReading& reading) {
  InputFiles files;
  try {
    files = input_files(operand);
  } catch (const UnreadableInput& failure) {
    return fail(failure.what(), reading);
  }
  bool all_read = true;
  for (const std::string& path : files.paths) {
    if (reading.is_complete()) break;
    all_read = read_log(path, files.were_found, reading) && all_read;
  }
  return all_read;
}

}  // namespace

std::unique_ptr<LogInput> open_log(const std::string& path, bool may_be_gone, BufferedOutput& output) {
  FileDescriptor file(path == "-" ? STDIN_FILENO : open_path(path, O_RDONLY | O_CLOEXEC));
  if (file.get() >= 0) return std::make_unique<LogInput>(path, std::move(file), output);
  if (may_be_gone && errno == ENOENT) return nullptr;
  throw UnreadableInput("cannot open '" + path + "': " + std::strerror(errno));
}

bool read_log(const std::string& path, bool may_be_gone, const LogReading& reading) {
  try {
    const std::unique_ptr<LogInput> input = open_log(path, may_be_gone, reading.output);
    if (input == nullptr) return true;
    if (reading.read_bytes) {
      reading.read_bytes(*input);
      return true;
    }
    qz_LOG_EntryReader reader = qz_LOG_EntryReader::FromSource(*input, input->shown_path().c_str(), &reading.handler);
    reading.read(reader);
  } catch (const UnreadableInput& failure) {
    return fail(failure.what(), reading);
  }
  return true;
}

bool read_logs(const std::vector<std::string>& operands, const LogReading& reading) {
  bool all_read = true;
  for (const std::string& operand : operands) {
    if (reading.is_complete()) break;
    all_read = read_operand(operand, reading) && all_read;
  }
  return all_read;
}

}  // namespace qzlog_tool

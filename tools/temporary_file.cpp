#include "tools/temporary_file.h"

#include <stdlib.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "tools/command_error.h"
#include "tools/file_descriptor.h"
#include "tools/temporary_folder.h"

namespace qzlog_tool {

TemporaryFile::TemporaryFile(std::string_view bytes) : path_(temporary_location() + "/qzlog-XXXXXX") {
  const FileDescriptor file(::mkstemp(path_.data()));
  if (file.get() < 0) {
    throw CommandError(kExitCannotRun,
                       "cannot make a temporary file in '" + temporary_location() + "': " + std::strerror(errno));
  }
  const int failure = write_all(file.get(), bytes.data(), bytes.size());
  if (failure == 0) return;
  ::unlink(path_.c_str());
  throw CommandError(kExitCannotRun, "cannot write the temporary file '" + path_ + "': " + std::strerror(failure));
}

TemporaryFile::~TemporaryFile() { ::unlink(path_.c_str()); }

}  // namespace qzlog_tool

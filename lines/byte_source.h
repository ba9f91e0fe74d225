#ifndef QZLOG_LINES_BYTE_SOURCE_H
#define QZLOG_LINES_BYTE_SOURCE_H

#include <cstddef>
#include <string>

#include "foundation/no_copies.h"
#include "qzlog/entry_lines.h"

namespace qzlog {

/// A file. Failures throw QZX_logging_file_operation_failed with its name and the reason.
class DescriptorSource : public qz_LOG_ByteSource, public qz_UTIL_no_inadvertant_copies {
 public:
  /// Opens a path.
  explicit DescriptorSource(const char* path);
  /// A descriptor of somebody else's.
  DescriptorSource(int descriptor, const char* name) : name_(name), descriptor_(descriptor) {}
  ~DescriptorSource() override;

  std::size_t Read(char* buffer, std::size_t size) override;

 private:
  [[noreturn]] void fail(const char* what, int error) const;

  std::string name_;
  int descriptor_;
  bool is_own_ = false;
};

}  // namespace qzlog

#endif  // QZLOG_LINES_BYTE_SOURCE_H

#ifndef QZLOG_TOOLS_TRANSPORT_READER_HOST_H
#define QZLOG_TOOLS_TRANSPORT_READER_HOST_H

#include <functional>
#include <set>
#include <string>

#include "ship/transport.h"

namespace qzlog_tool {

/// What plug-ins that read may ask of the command. There are no records of its own to ask about.
class ReaderHost {
 public:
  /// `warn` is called once for each text, `is_ending` at any time.
  ReaderHost(std::function<void(const std::string&)> warn, std::function<bool()> is_ending);
  ReaderHost(const ReaderHost&) = delete;
  ReaderHost& operator=(const ReaderHost&) = delete;

  const qzlog_host& host() const noexcept { return host_; }

 private:
  void warn(const char* text);

  std::function<void(const std::string&)> warn_;
  std::function<bool()> is_ending_;
  std::set<std::string> warned_;
  qzlog_host host_;
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_TRANSPORT_READER_HOST_H

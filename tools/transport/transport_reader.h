#ifndef QZLOG_TOOLS_TRANSPORT_TRANSPORT_READER_H
#define QZLOG_TOOLS_TRANSPORT_TRANSPORT_READER_H

#include <cstddef>
#include <memory>
#include <vector>

#include "tools/transport/reader_host.h"
#include "tools/transport/record_reader.h"
#include "tools/transport/transport_plugin.h"
#include "tools/transport/transport_settings.h"

namespace qzlog_tool {

/// Reads by a plug-in. The receiver is opened by the first call that reads, and until that works by each.
class TransportReader : public RecordReader {
 public:
  static constexpr std::size_t kMostRecords = 1000;

  /// All have to outlive this object, with what `start` points to. The plug-in can read.
  TransportReader(const TransportPlugin& plugin, const TransportSettings& settings, const ReaderHost& host,
                  const qzlog_start& start);

  qzlog_outcome read(std::chrono::milliseconds timeout, ReadRecords& read, std::string& reason) override;
  qzlog_outcome settle(std::span<const std::uint64_t> tokens, std::chrono::milliseconds timeout,
                       std::string& reason) override;

 private:
  struct Closer {
    const qzlog_transport* transport;
    void operator()(qzlog_reader* reader) const { transport->close_reader(reader); }
  };

  qzlog_outcome open(std::string& reason);

  const qzlog_transport& transport_;
  const TransportSettings& settings_;
  const ReaderHost& host_;
  const qzlog_start& start_;
  std::unique_ptr<qzlog_reader, Closer> reader_;
  std::vector<qzlog_received> records_;
};

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_TRANSPORT_TRANSPORT_READER_H

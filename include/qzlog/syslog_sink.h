#ifndef QZLOG_SYSLOG_SINK_H
#define QZLOG_SYSLOG_SINK_H

#include <atomic>
#include <memory>
#include <string>

#include "qzlog/export.h"
#include "qzlog/sink.h"

namespace qzlog {
class SyslogCores;
}  // namespace qzlog

/// What a qz_LOG_SyslogSink is made with.
struct qz_LOG_SyslogSinkSettings {
  enum Transport {
    kLocal,  ///< the socket of this machine's syslog service, at `path`
    kUdp,    ///< to `host`, one datagram a message: what is lost on the way nobody knows
    kTcp     ///< to `host`, messages behind their number of bytes ("octet counting", RFC 6587)
  };
  enum Form {
    kUsual,    ///< kOlder for kLocal, as journald takes nothing else, and kRfc5424 for the others
    kRfc5424,  ///< <14>1 TIME HOST APPLICATION PID EVENT [qzlog@NUMBER entry="..." Name="vol1"] Disk vol1 is full
    kOlder     ///< <14>Nov 21 08:15:30 APPLICATION[PID]: Disk vol1 is full [qzlog@NUMBER entry="..." Name="vol1"]
  };

  Transport transport = kLocal;
  std::string path = "/dev/log";  ///< of kLocal: a socket of datagrams
  std::string host;               ///< of kUdp and kTcp: a name or an address
  unsigned port = 514;            ///< of kUdp and kTcp: 1 to 65535
  Form form = kUsual;

  /// Who writes: up to 48 characters of ASCII without blanks, "[", "]" and ":". "": the name of the program.
  std::string application;
  /// 0 to 23: 1 user, 3 daemon, 16 to 23 local0 to local7, and so on.
  unsigned facility = 1;
  /// The private enterprise number of the product's maker, which tells his structured data from others': 1 to 2^32 - 1.
  /// 32473 is the number that is kept free for examples.
  unsigned enterprise_number = 32473;
  /// Whether messages carry their entry as structured data. Without it they are texts that cannot be read back.
  bool entries = true;

  /// That one message may have: 480 to 2^24, for kUdp to 65507. The default is what rsyslog takes by default.
  unsigned largest_message_bytes = 8096;
  /// That Write waits for a connection, or for a server that does not read: 0 to 60000. While it does not, only the
  /// first entry is waited for.
  unsigned longest_wait_milliseconds = 1000;
  /// Between two attempts to connect, which begin 100 milliseconds apart: 100 to 3600000. For kLocal at most 1000.
  unsigned longest_pause_milliseconds = 30000;
};

/// How a syslog sink is doing.
struct qz_LOG_SyslogSinkStatus {
  bool connected;
  unsigned long long connections;    ///< made so far
  unsigned long long shortened;      ///< messages without all of their attributes, or with a part of their text
  unsigned long long without_entry;  ///< messages that lack their entry, which was too long
  unsigned long long refused;        ///< entries that the connection had not confirmed when it broke
  std::string failure;               ///< of the last attempt to connect or to send; "" when that worked
};

/// Entries as messages of syslog, to the service of this machine, or over the network, which only happens where kUdp or
/// kTcp is asked for.
///
///   qz_LOG_SyslogSinkSettings settings;
///   settings.transport = qz_LOG_SyslogSinkSettings::kTcp;
///   settings.host = "logs.example.com";
///   settings.enterprise_number = 32473;  // the product's own
///   qz_LOG_SyslogSink sink(settings);
///   sink.Write(entry);
///
/// The text is the readable message, as qz_LOG_TextSink shows it, in UTF-8; the event's name is the message's ID. The
/// severity follows from the level: 0 and 1 debug, 2 and 3 informational, 4 notice, 5 and 6 warning, 7 error, 8
/// critical, 9 alert. Structured data carry the entry: the parameter `entry` has its line (see qz_LOG_FileSink: with
/// writer, number and time), from which `qzlog render` reads it back; then there is a parameter for each attribute, to
/// search by. Their names have up to 32 characters of ASCII: others, and "=", "]" and quotes, become "_", and what is
/// longer is cut. One that would be called `entry` or `omitted`, in whichever case, is left out. `qzlog check` tells of
/// names that become the same. Control characters become escapes ("\n", "\x1B").
///
/// A message that would be too long loses the parameters of its attributes, from the last one on; then the end of its
/// text; then its entry, and what is left is cut. The parameter `omitted` says how many parameters there were.
///
/// Nothing is kept for a server that is not there: Write waits for it once, and fails until a connection is made again,
/// which is tried with growing pauses, but never by a thread of the application for longer than it may wait. Names of
/// hosts are looked up by a thread of the sink. What failed is told by a message of its own as soon as messages are
/// taken again, as qz_LOG_StreamSink does. When a TCP connection breaks, entries that the server's system had not
/// confirmed count as failed, though it may have got some; what it had confirmed and not read is lost without a sign.
/// Syslog has no better: see qzlog ship for a way that loses nothing.
///
/// A process that fork makes has a connection of its own.
class QZLOG_EXPORT qz_LOG_SyslogSink : public qz_LOG_Sink {
 public:
  /// The connection is made by the first Write. Throws QZX_logging_illegal_argument, naming the setting ("port: 0 is
  /// not from 1 to 65535"), and QZX_memory_alloc.
  explicit qz_LOG_SyslogSink(const qz_LOG_SyslogSinkSettings& settings = qz_LOG_SyslogSinkSettings());
  /// Closes the sink, waiting up to longest_wait_milliseconds.
  ~qz_LOG_SyslogSink() override;

  /// Throws QZX_memory_alloc.
  qz_LOG_SyslogSinkStatus GetStatus() const;
  /// How many messages could not be rendered. Their entries count as written.
  unsigned long long GetRenderFailures() const noexcept;

 protected:
  Outcome WriteEntry(const qz_LOG_LogEntry& entry, bool use_default, unsigned selector_index,
                     unsigned long long& bytes) override;
  /// With kTcp: whether the server's system has confirmed all.
  bool FlushEntries(unsigned milliseconds) override;
  unsigned long long CloseEntries(unsigned milliseconds) override;
  bool TellHeld(const qz_LOG_HeldEntries* held, unsigned long count) override;

 private:
  class QZLOG_NO_EXPORT Failures;
  const std::unique_ptr<Failures> failures_;
  const std::unique_ptr<qzlog::SyslogCores> cores_;
  std::atomic<unsigned long long> render_failures_;
  const unsigned closing_wait_;
};

#endif  // QZLOG_SYSLOG_SINK_H

#ifndef QZLOG_TOOLS_SHIP_SHIP_HELP_H
#define QZLOG_TOOLS_SHIP_SHIP_HELP_H

namespace qzlog_tool {

inline constexpr const char* kShipFooter =
    R"(SERIES is FOLDER/PREFIX, or a folder for all series in it. They are followed from
one file to the next until a signal comes; --once ends when everything that is
there has been delivered. Lines are delivered unchanged, at least once: a line
may come twice after a failure, with the same identity, by which receivers and
'qzlog render --unique' drop it.

The state remembers what the receiver has acknowledged: a JSON file that is
replaced in one step, and locked against a second shipper. Without --state it is
in $STATE_DIRECTORY, else in $XDG_STATE_HOME/qzlog or ~/.local/state/qzlog, under
a name made from SERIES and URL. Nothing is delivered again but what was under
way; without a state everything that the series have is delivered.

A receiver that is away is waited for: the log is the queue. What it refuses for
good, and what is no entry, goes to the dead letters with the reason, and the
rest goes on. SIGTERM, SIGINT and SIGHUP end the command when the batch under way
is delivered, or after ten seconds; at once while the receiver is away. SIGUSR1
writes the metrics at once, to standard error without --metrics.

Choosing needs --definitions; so do messages, which some receivers get beside the
line. Credentials do not belong into the URL but into a file.

Exit status: 0 everything was delivered, or a signal ended the command and the
batch under way was delivered; 1 lines were left to the next start, or, with
--once, lines went to the dead letters, or logs are not there or cannot be read;
2 wrong usage, a state that cannot be used, or a receiver that needs somebody's
help, as without its stream.
)";

inline constexpr const char* kShipExamples = R"(Examples:
  qzlog ship /var/log/storage/storage --to nats://127.0.0.1:4222/ENTRIES
  qzlog ship /var/log/storage --to file:///mnt/collected/web1 --once
  qzlog ship logs --to nats+tls://a/ENTRIES --ca ca.pem --credentials me.txt
  qzlog ship logs/shop --to file:///mnt/shop --definitions shop.ldf --level 7..
  qzlog ship logs --to nats://127.0.0.1/ENTRIES --state s.json --metrics m.json
)";

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_SHIP_SHIP_HELP_H

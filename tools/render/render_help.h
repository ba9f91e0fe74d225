#ifndef QZLOG_TOOLS_RENDER_RENDER_HELP_H
#define QZLOG_TOOLS_RENDER_RENDER_HELP_H

/// What the help page of `render` says behind its options, beside what the options of all readers say.
namespace qzlog_tool {

inline constexpr const char* kEntriesHelp = R"(An entry is one line of JSON:
  {"id":1001,"level":3,"time":"2026-11-21T08:15:30Z",
   "attributes":{"Volume":"mail","Free":0}}
"id" is a number, or the entry's name where the definitions have it. The rest
may be left out; "default":true skips the selector messages and "selector":N
asks for the one with index N. Blank lines are skipped, and so is a byte order
mark at the beginning. A line may have 16 MiB.

A line that is wrong is reported on standard error, as FILE:LINE: error: REASON
[rule-name]. The others are still rendered; the exit status is then 1. Line
feeds and carriage returns inside a message are written as \n and \r.
Characters that the code page lacks come out as its substitution character.
Messages are written out before waiting for more input.

Inputs are read in the order given. A folder stands for the logs in it: the
series PREFIX.YYYYMMDD.NNNN that a file sink writes, by name, day and number,
then its files *.jsonl. DIR/PREFIX stands for one series. What cannot be read
is reported, the other inputs are rendered all the same, and the exit status
is 2.

With --jobs files are read by one thread and rendered by N others; what comes out
is the same. One thread does everything with --follow, --merge-by-time, --from,
--count, --check-gaps, --head, --tail, --unique, several --definitions, another
code page than UTF-8, and where the system allows no other.

With --merge-by-time the lines of up to 500 logs, a series counted as one, come
in the order of their times; those of one second in the order in which the logs
were given. A line without a time, or with an earlier one than a line before it
in its log, comes directly behind the line before it. What a line says of lost
entries comes when it was written.

With several --definitions, each with an --aux behind it if it has one, a line
is read against those that it names ("definitions"); where it names none or
others, against the first that have its ID. Standard error says which others.

With --follow (-f) the command goes on as the files grow: into the next file of
a series, and through rotation by others: of a file that was renamed the rest is
read before the new one of its name; one that became shorter is read from its
beginning, which is said. What is not there yet is waited for. A line is
rendered when its line feed is there; --tail counts what is there at first. The
first SIGINT, SIGTERM or SIGHUP, or a reader that leaves, ends it as it ends
'tail -f'. Pipes are read to their end.
)";

inline constexpr const char* kRenderChecksHelp =
    R"(With --check-gaps the running numbers ("seq") of each writer's lines are looked
at, of those too that are not wanted. A line that comes twice is reported where
it does, lines that never come at the end, at the line behind them. What stands
before a writer's first line is not missing: old files are deleted. Standard
error says in the end what was seen; the exit status is 1 for a finding.

With --config, --mask, --level-low or --level-high only the entries that the
library's filter lets through are rendered; at the end, standard error says how
many of those that are wanted were read, passed and refused. A section of the
configuration file may set PropertyMask, LogLevelLow, LogLevelHigh, DebugEnabled,
DebugLogLevelLow and DebugLogLevelHigh; it wins over the options, and the section 'global' counts
for what it leaves out. An entry whose mask has the bit 0x4000000 is a debug
entry. The last line of the file needs an empty line behind it to be read.

With --count each message is counted on the local date of the entry's time,
today where it has none, in a file that 'qzlog count show' reads. Counts are
written just before the messages are: what is out is counted, even if the
command is killed then. Two commands may count in one file at the same time.

Exit status: 0 success; 1 lines were wrong, --check-gaps found something, or with
--exit-status no entry was shown; 2 wrong usage, or a file that cannot be read or
written.
)";

inline constexpr const char* kRenderExamples = R"(Examples:
  qzlog render --definitions storage.yaml entries.jsonl
  qzlog render --definitions storage.ldf --output short --tail 20 logs
  qzlog render --definitions storage.ldf --output short --follow --tail 20 logs
  qzlog render --definitions storage.ldf --since -2h --level 5.. logs
  qzlog render --definitions storage.ldf --name 'DISK_*' --output long logs
  qzlog render --definitions storage.ldf --where 'Free < 10' logs
  qzlog render --definitions storage.ldf --writer 'host1/4711/*' logs
  qzlog render --definitions storage.ldf --format '{time} {Volume}: {Free}' logs
  qzlog render --definitions storage.ldf --merge-by-time host1 host2 host3
  qzlog render --definitions new.ldf --definitions old.ldf --aux site.ldf logs
  qzlog render --definitions storage.ldf --catalog messages --locale de_DE logs
  qzlog render --definitions storage.ldf --level 7.. --exit-status logs
  qzlog render --definitions storage.ldf --output json logs | jq .message
  qzlog render --definitions storage.ldf --output csv --columns time,Free logs
  qzlog render --definitions storage.ldf --check-gaps logs > messages.txt
  qzlog render --definitions storage.ldf --code-page ISO-8859-1 < entries.jsonl
  qzlog render --definitions storage.ldf --config log.conf --section disk logs
  qzlog render --definitions storage.ldf --level-low 3 --count counts/disk logs
)";

}  // namespace qzlog_tool

#endif  // QZLOG_TOOLS_RENDER_RENDER_HELP_H

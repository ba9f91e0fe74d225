#ifndef QZLOG_OPEN_SINKS_H
#define QZLOG_OPEN_SINKS_H

#include <memory>

#include "qzlog/export.h"
#include "qzlog/sink.h"

/// Opens the sink that a section of a file describes, with the sinks that it hands on to.
///
///   [log]
///   sink = split
///   to = store, console
///
///   [store]
///   sink = file
///   folder = /var/log/storage
///   prefix = storage
///
///   [console]
///   sink = stream
///   descriptor = stderr
///   form = text
///   wanted_level = 5
///
///   std::unique_ptr<qz_LOG_Sink> sink = qz_LOG_OpenSinks("/etc/storage/sinks.conf", "log");
///
/// The file has sections, lines of `key = value`, empty lines, and lines that begin with "#" or ";". Every section says
/// which sink it is. The other keys are the names of that sink's settings, with words for what has names in C++ (`way =
/// shared`, `sync_level = never`), yes and no, and numbers that are decimal or begin with 0x:
///
///   file      path, prefix, folder, way (write, shared, buffered), largest_file_bytes, keep_files, keep_days,
///             buffer_bytes, longest_delay_milliseconds, longest_wait_milliseconds, sync_level, sync_at_rotation,
///             file_permissions (octal), lost_event_id
///   stream    descriptor (stdout, stderr or a number), form (json, text), format, colour, longest_wait_milliseconds
///   text      format, and descriptor or the settings of file
///   memory    most_entries, most_bytes
///   syslog    transport (local, udp, tcp), path, host, port, form (usual, rfc5424, older), application, facility (by
///             its name: user, daemon, local0 ...), enterprise_number, entries, largest_message_bytes,
///             longest_wait_milliseconds, longest_pause_milliseconds
///   filtered  to, section, lowest_level, highest_level, property_mask
///   limited   to, entries_per_second, unlimited_level, held_event_id
///   split     to (names of sections, separated by commas)
///   journal   product, journal_namespace, socket_path, longest_wait_milliseconds
///   all       wanted_level, wanted_mask: see qz_LOG_Sink::SetWanted
///
/// A section is the sink of one other at most. All sections are checked, also those that are not opened. Throws
/// QZX_logging_illegal_argument "FILE:LINE: SETTING: what is wrong", QZX_logging_file_operation_failed for a file that
/// cannot be read ("FILE: REASON") or a sink whose files cannot be opened ("FILE:LINE: REASON"), and QZX_memory_alloc;
/// what was opened is then closed. Null throws QZX_logging_illegal_argument "invalid argument".
QZLOG_EXPORT std::unique_ptr<qz_LOG_Sink> qz_LOG_OpenSinks(const char* path, const char* section);

#endif  // QZLOG_OPEN_SINKS_H

#ifndef STORAGE_SAMPLE_ENTRIES_H
#define STORAGE_SAMPLE_ENTRIES_H

#include <qzlog.h>

#include <vector>

/// Entries as the parts of the product would build them.
qz_LOG_LogEntry volume_almost_full();
qz_LOG_LogEntry volume_mounted();
qz_LOG_LogEntry snapshot_policy_changed();
qz_LOG_LogEntry disk_failed();
qz_LOG_LogEntry disk_temperature();
qz_LOG_LogEntry clock_drift();
qz_LOG_LogEntry controller_restarted();
qz_LOG_LogEntry pool_rebalanced();
qz_LOG_LogEntry replication_slow();
qz_LOG_LogEntry backup_planned();
qz_LOG_LogEntry backup_finished();
qz_LOG_LogEntry cloud_charges();
qz_LOG_LogEntry setting_changed();
qz_LOG_LogEntry share_created();
qz_LOG_LogEntry operator_note();
qz_LOG_LogEntry update_installed();
qz_LOG_LogEntry self_test_ended();

/// All of the above, in this order.
std::vector<qz_LOG_LogEntry> all_samples();

/// The time that a text in the form of qz_Time::print_out or of RFC 3339 names. Throws std::invalid_argument.
qz_Time time_of(const char* text);

#endif  // STORAGE_SAMPLE_ENTRIES_H

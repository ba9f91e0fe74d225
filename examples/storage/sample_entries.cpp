#include "sample_entries.h"

#include <stdexcept>

#include "events.h"

qz_Time time_of(const char* text) {
  qz_Time time;
  if (!time.set_to_string_value(text)) throw std::invalid_argument(text);
  return time;
}

qz_LOG_LogEntry volume_almost_full() {
  qz_LOG_LogEntry entry(kVolumeAlmostFull, kWarning);
  entry.SetTimestamp(time_of("2026-11-21 08:15:30 GMT"), true);
  entry.SetComputerInfo("filer-1");
  entry.SetSeverityCode(2);
  entry.AddAttribStr("Volume", "projects");
  entry.AddAttribFloat8("Used", 0.93);
  entry.AddAttrib4u("Free", 28672);
  entry.AddAttrib4u("Total", 409600);
  return entry;
}

qz_LOG_LogEntry volume_mounted() {
  qz_LOG_LogEntry entry(kVolumeMounted, kTrace);
  entry.AddAttribStr("Volume", "archive");
  entry.AddAttribStr("Path", "/export/archive");
  entry.AddAttribBool("ReadOnly", true);
  return entry;
}

// SetEntry does in one call what takes a line for each attribute otherwise. The list ends with a null pointer.
qz_LOG_LogEntry snapshot_policy_changed() {
  qz_LOG_LogEntry entry;
  entry.SetEntry(kSnapshotPolicyChanged, kNotice, "Volume", "mail", "Hourly", 24, "Daily", 7, "Weekly", 4, nullptr);
  return entry;
}

qz_LOG_LogEntry disk_failed() {
  qz_LOG_LogEntry entry(kDiskFailed, kError);
  entry.AddAttrib1u("Shelf", 2);
  entry.AddAttrib1u("Slot", 7);
  entry.AddAttribStr("Serial", "WX41A7731");
  entry.AddAttrib1u("Cause", kBadMedia);  // the selector attribute: its value picks the message
  return entry;
}

qz_LOG_LogEntry disk_temperature() {
  qz_LOG_LogEntry entry(kDiskTemperature, kWarning);
  entry.AddAttrib1u("Shelf", 3);
  entry.AddAttrib1u("Slot", 1);
  entry.AddAttrib1("Celsius", -4);
  entry.AddAttrib1("Lowest", 5);
  entry.AddAttrib1("Highest", 60);
  return entry;
}

qz_LOG_LogEntry clock_drift() {
  qz_LOG_LogEntry entry(kClockDrift, kWarning);
  entry.AddAttribStr("Controller", "B");
  entry.AddAttrib2("Drift", -340);
  entry.AddAttribStr("Server", "ntp.example.net");
  return entry;
}

qz_LOG_LogEntry controller_restarted() {
  qz_LOG_LogEntry entry(kControllerRestarted, kError);
  entry.AddAttribStr("Controller", "A");
  entry.AddAttribStr("Report", "/var/crash/fw-20261121.txt");
  entry.AddAttribStr("Trace", "raid_rebuild+0x41\nraid_main+0x1c");  // the line feed is stored as \n, two characters
  return entry;
}

qz_LOG_LogEntry pool_rebalanced() {
  qz_LOG_LogEntry entry(kPoolRebalanced, kTrace);
  entry.AddAttribStr("Pool", "fast");
  entry.AddAttrib4u("Moved", 18230);
  entry.AddAttrib4("Change", -2048);
  return entry;
}

qz_LOG_LogEntry replication_slow() {
  qz_LOG_LogEntry entry(kReplicationSlow, kWarning);
  entry.AddAttribMBStr("Target", "filer-大阪");
  entry.AddAttribFloat8("Rate", 118.25);
  entry.AddAttrib2u("Pending", 3);
  return entry;
}

// AddAttribTime serves all three time types; the definition says whether a date, a time or both are shown.
qz_LOG_LogEntry backup_planned() {
  const qz_Time start = time_of("2026-11-22 02:30:00");
  qz_LOG_LogEntry entry(kBackupPlanned, kTrace);
  entry.AddAttribStr("Volume", "mail");
  entry.AddAttribTime("Day", start);
  entry.AddAttribTime("Start", start);
  return entry;
}

qz_LOG_LogEntry backup_finished() {
  qz_LOG_LogEntry entry(kBackupFinished, kError);
  entry.AddAttribStr("Volume", "mail");
  entry.AddAttribTime("Begin", time_of("2026-11-20 01:30:00"));
  entry.AddAttrib4u("Size", 40960);
  entry.AddAttrib4u("Result", kTargetFull);
  return entry;
}

// Times are given to SetEntry as texts, numbers of type Float as double.
qz_LOG_LogEntry cloud_charges() {
  qz_LOG_LogEntry entry;
  entry.SetEntry(kCloudCharges, kTrace, "Stored", 1048576, "Charges", 1234.75, "Since", "2026-11-01 00:00:00", nullptr);
  return entry;
}

qz_LOG_LogEntry setting_changed() {
  qz_LOG_LogEntry entry;
  entry.SetEntry(kSettingChanged, kNotice, "User", "Jürgen Groß", "Setting", "smb.signing", "Before", "optional",
                 "After", "required", nullptr);
  return entry;
}

qz_LOG_LogEntry share_created() {
  qz_LOG_LogEntry entry(kShareCreated, kNotice);
  entry.AddAttribMBStr("Owner", "山田 花子");
  entry.AddAttribMBStr("Share", "設計図");
  entry.AddAttribMBStr("Purpose", "CAD drawings of the {new} plant");
  return entry;
}

qz_LOG_LogEntry operator_note() {
  qz_LOG_LogEntry entry(kOperatorNote, kNotice);
  entry.AddAttribMBStr("User", "Ana");
  entry.AddAttribMBStr("Note", "Shelf 2 smells of burnt dust.\nAsked the supplier.");
  return entry;
}

qz_LOG_LogEntry update_installed() {
  qz_LOG_LogEntry entry(kUpdateInstalled, kNotice);
  entry.SetTimestamp(time_of("2026-11-21T22:45:00Z"), true);
  entry.AddAttribMBStr("PRODUCT_ID", "Storage Manager");
  entry.AddAttribMBStr("VERSION_ID", "4.2");
  entry.AddAttribMBStr("COMPONENT_ID", "Firmware");
  entry.AddAttribMBStr("COMPONENT_VERSION_ID", "9.0.1");
  return entry;
}

qz_LOG_LogEntry self_test_ended() {
  qz_LOG_LogEntry entry(kSelfTestEnded, kTrace);
  entry.SetTimestamp(time_of("2026-07-01 07:00:12"), false);  // on the local clock
  entry.SetComputerInfo("filer-1");
  entry.SetProductCode(40);
  entry.SetProductPlatformCode(3);
  entry.SetProductLanguageCode(1031);
  entry.SetProductVersion("4.2");
  entry.SetComponentCode(0x00020001);
  entry.SetSeverityCode(1);
  entry.SetReasonCode(-5);
  entry.SetReasonCodeSource(17);
  return entry;
}

std::vector<qz_LOG_LogEntry> all_samples() {
  return {volume_almost_full(), volume_mounted(), snapshot_policy_changed(), disk_failed(),
          disk_temperature(),   clock_drift(),    controller_restarted(),    pool_rebalanced(),
          replication_slow(),   backup_planned(), backup_finished(),         cloud_charges(),
          setting_changed(),    share_created(),  operator_note(),           update_installed(),
          self_test_ended()};
}

#ifndef STORAGE_EVENTS_H
#define STORAGE_EVENTS_H

/// The entry IDs of storage.yaml and storage_aux.yaml.
enum Event : unsigned {
  kVolumeAlmostFull = 1001,
  kVolumeMounted = 1002,
  kSnapshotPolicyChanged = 1003,
  kDiskFailed = 1101,
  kDiskTemperature = 1102,
  kClockDrift = 1103,
  kControllerRestarted = 1104,
  kPoolRebalanced = 1201,
  kReplicationSlow = 1202,
  kBackupPlanned = 1203,
  kBackupFinished = 1204,
  kCloudCharges = 1205,
  kSettingChanged = 1301,
  kShareCreated = 1302,
  kOperatorNote = 1303,
  kUpdateInstalled = 1401,
  kSelfTestEnded = 1402,
  kTapeLoaded = 2001,
  kTapeWorn = 2002
};

/// How this product uses the levels 0 to 9.
enum Level : unsigned { kTrace = 1, kNotice = 3, kWarning = 5, kError = 7 };

/// Values of the selector attributes.
enum FullReason : unsigned short { kQuota = 10, kSnapshots = 20, kWaitsForTape = 30 };
enum DiskCause : unsigned char { kRemoved = 1, kBadMedia = 2 };
enum BackupResult : unsigned { kBackupDone = 0, kAccessDenied = 0xE0010005, kTargetFull = 0xE0010070 };

#endif  // STORAGE_EVENTS_H

#ifndef QZLOG_BENCH_WORKLOADS_H
#define QZLOG_BENCH_WORKLOADS_H

#include <array>
#include <tuple>

#include "qzlog/logattrib.h"
#include "qzlog/qz_time.h"

namespace qzlog_bench {

struct Field {
  const char* name;
  qz_AttributeType type;
};

/// The workloads: entries of bench/events.yaml with values, and what each way of writing them needs. Values are
/// members, so that a case can hide them from the compiler; `values()` has them in the order of the fields.
///
/// kText is the message on the narrow path and of everything that formats as printf does, kIcuText the one on the ICU
/// path in English, kPattern the MessageFormat pattern for that. kTemplate is for those who fill in a text by name.

/// Five attributes, all of them in the message.
struct WorkloadA {
  static constexpr const char* kName = "A";
  static constexpr unsigned kEntryId = 1001;
  static constexpr std::array kFields = {Field{"Name", TypeChar32}, Field{"Blocks", TypeUInt4},
                                         Field{"Delta", TypeSInt4}, Field{"Load", TypeFloat},
                                         Field{"Label", TypeMBChar64}};
  static constexpr char kText[] =
      "Volume volume-0042: 123456 blocks, change -77, load 0.875000, label Größenprüfung in Köln läuft bis Mai";
  static constexpr char kIcuText[] =
      "Volume volume-0042: 123456 blocks, change -77, load 0.875, label Größenprüfung in Köln läuft bis Mai";
  static constexpr char kFmt[] = "Volume {}: {} blocks, change {}, load {:f}, label {}";
  static constexpr const char* kShortestText = kIcuText;
  static constexpr char kFmtShortest[] = "Volume {}: {} blocks, change {}, load {}, label {}";
  static constexpr char kPrintf[] = "Volume %s: %u blocks, change %d, load %f, label %s";
  static constexpr char kTemplate[] = "Volume {Name}: {Blocks} blocks, change {Delta}, load {Load}, label {Label}";
  static constexpr char kPattern[] =
      "Volume {0}: {1,number,##########} blocks, change {2,number,##########}, load {3,number}, label {4}";

  auto values() const { return std::tie(name, blocks, delta, load, label); }

  const char* name = "volume-0042";
  unsigned blocks = 123456;
  int delta = -77;
  double load = 0.875;
  const char* label = "Größenprüfung in Köln läuft bis Mai";
};

/// A with an integer in the place of the floating point number, so that plain texts and integers are all there is.
struct WorkloadAPlain {
  static constexpr const char* kName = "A";
  static constexpr unsigned kEntryId = 1003;
  static constexpr std::array kFields = {Field{"Name", TypeChar32}, Field{"Blocks", TypeUInt4},
                                         Field{"Delta", TypeSInt4}, Field{"Share", TypeUInt4},
                                         Field{"Label", TypeMBChar64}};
  static constexpr char kIcuText[] =
      "Volume volume-0042: 123456 blocks, change -77, load 875, label Größenprüfung in Köln läuft bis Mai";
  static constexpr char kPattern[] =
      "Volume {0}: {1,number,##########} blocks, change {2,number,##########}, load {3,number,##########}, label {4}";

  auto values() const { return std::tie(name, blocks, delta, share, label); }

  const char* name = "volume-0042";
  unsigned blocks = 123456;
  int delta = -77;
  unsigned share = 875;
  const char* label = "Größenprüfung in Köln läuft bis Mai";
};

/// One integer.
struct WorkloadB {
  static constexpr const char* kName = "B";
  static constexpr unsigned kEntryId = 1005;
  static constexpr std::array kFields = {Field{"Number", TypeUInt4}};
  static constexpr char kText[] = "Job finished: 123456";
  static constexpr char kIcuText[] = "Job finished: 123456";
  static constexpr char kFmt[] = "Job finished: {}";
  static constexpr char kPrintf[] = "Job finished: %u";
  static constexpr char kTemplate[] = "Job finished: {Number}";
  static constexpr char kPattern[] = "Job finished: {0,number,##########}";

  auto values() const { return std::tie(number); }

  unsigned number = 123456;
};

/// Ten attributes, all of them in the message.
struct WorkloadC {
  static constexpr const char* kName = "C";
  static constexpr unsigned kEntryId = 1006;
  static constexpr std::array kFields = {
      Field{"Name", TypeChar32},   Field{"Host", TypeChar64},   Field{"Blocks", TypeUInt4}, Field{"Free", TypeUInt4},
      Field{"Delta", TypeSInt4},   Field{"Load", TypeFloat},    Field{"Queue", TypeUInt2},  Field{"Drift", TypeSInt2},
      Field{"Retries", TypeUInt1}, Field{"Label", TypeMBChar64}};
  static constexpr char kText[] =
      "Volume volume-0042 on storage-17.example.org: 123456 blocks, 65536 free, change -77, load 0.875000, queue 1024, "
      "drift -12, retries 3, label Größenprüfung in Köln läuft bis Mai";
  static constexpr char kIcuText[] =
      "Volume volume-0042 on storage-17.example.org: 123456 blocks, 65536 free, change -77, load 0.875, queue 1024, "
      "drift -12, retries 3, label Größenprüfung in Köln läuft bis Mai";
  static constexpr char kFmt[] =
      "Volume {} on {}: {} blocks, {} free, change {}, load {:f}, queue {}, drift {}, retries {}, label {}";
  static constexpr const char* kShortestText = kIcuText;
  static constexpr char kFmtShortest[] =
      "Volume {} on {}: {} blocks, {} free, change {}, load {}, queue {}, drift {}, retries {}, label {}";
  static constexpr char kPrintf[] =
      "Volume %s on %s: %u blocks, %u free, change %d, load %f, queue %hu, drift %hd, retries %hhu, label %s";
  static constexpr char kTemplate[] =
      "Volume {Name} on {Host}: {Blocks} blocks, {Free} free, change {Delta}, load {Load}, queue {Queue}, drift "
      "{Drift}, retries {Retries}, label {Label}";
  static constexpr char kPattern[] =
      "Volume {0} on {1}: {2,number,##########} blocks, {3,number,##########} free, change {4,number,##########}, load "
      "{5,number}, queue {6,number,##########}, drift {7,number,##########}, retries {8,number,##########}, label {9}";

  auto values() const { return std::tie(name, host, blocks, free, delta, load, queue, drift, retries, label); }

  const char* name = "volume-0042";
  const char* host = "storage-17.example.org";
  unsigned blocks = 123456;
  unsigned free = 65536;
  int delta = -77;
  double load = 0.875;
  unsigned short queue = 1024;
  short drift = -12;
  unsigned char retries = 3;
  const char* label = "Größenprüfung in Köln läuft bis Mai";
};

/// C with an integer in the place of the floating point number.
struct WorkloadCPlain {
  static constexpr const char* kName = "C";
  static constexpr unsigned kEntryId = 1007;
  static constexpr std::array kFields = {
      Field{"Name", TypeChar32},   Field{"Host", TypeChar64},   Field{"Blocks", TypeUInt4}, Field{"Free", TypeUInt4},
      Field{"Delta", TypeSInt4},   Field{"Share", TypeUInt4},   Field{"Queue", TypeUInt2},  Field{"Drift", TypeSInt2},
      Field{"Retries", TypeUInt1}, Field{"Label", TypeMBChar64}};
  static constexpr char kIcuText[] =
      "Volume volume-0042 on storage-17.example.org: 123456 blocks, 65536 free, change -77, load 875, queue 1024, "
      "drift -12, retries 3, label Größenprüfung in Köln läuft bis Mai";
  static constexpr char kPattern[] =
      "Volume {0} on {1}: {2,number,##########} blocks, {3,number,##########} free, change {4,number,##########}, load "
      "{5,number,##########}, queue {6,number,##########}, drift {7,number,##########}, retries "
      "{8,number,##########}, label {9}";

  auto values() const { return std::tie(name, host, blocks, free, delta, share, queue, drift, retries, label); }

  const char* name = "volume-0042";
  const char* host = "storage-17.example.org";
  unsigned blocks = 123456;
  unsigned free = 65536;
  int delta = -77;
  unsigned share = 875;
  unsigned short queue = 1024;
  short drift = -12;
  unsigned char retries = 3;
  const char* label = "Größenprüfung in Köln läuft bis Mai";
};

/// What ICU formats by the rules of a language: number, currency, percentage, date and time.
struct WorkloadFormats {
  static constexpr unsigned kEntryId = 1010;
  static constexpr std::array kFields = {Field{"Amount", TypeFloat}, Field{"Price", TypeFloat},
                                         Field{"Share", TypeFloat}, Field{"Moment", TypeTimestamp}};
  static constexpr char kIcuText[] = "1,234,567.891 for $99.50, 12% done on Nov 21, 2026 at 8:15:30 AM";
  static constexpr char kPattern[] =
      "{0,number} for {1,number,currency}, {2,number,percent} done on {3,date} at {3,time}";

  auto values() const { return std::tie(amount, price, share, moment); }

  double amount = 1234567.891;
  double price = 99.5;
  double share = 0.12;
  qz_Time moment = qz_Time::from_unix_seconds(1795248930);
};

struct WorkloadNumber {
  static constexpr unsigned kEntryId = 1011;
  static constexpr std::array kFields = {Field{"Amount", TypeFloat}};
  static constexpr char kPattern[] = "Amount {0,number}";

  auto values() const { return std::tie(amount); }

  double amount = 1234567.891;
};

struct WorkloadCurrency {
  static constexpr unsigned kEntryId = 1012;
  static constexpr std::array kFields = {Field{"Price", TypeFloat}};
  static constexpr char kPattern[] = "Price {0,number,currency}";

  auto values() const { return std::tie(price); }

  double price = 99.5;
};

struct WorkloadPercent {
  static constexpr unsigned kEntryId = 1013;
  static constexpr std::array kFields = {Field{"Share", TypeFloat}};
  static constexpr char kPattern[] = "Share {0,number,percent}";

  auto values() const { return std::tie(share); }

  double share = 0.12;
};

struct WorkloadDate {
  static constexpr unsigned kEntryId = 1014;
  static constexpr std::array kFields = {Field{"Moment", TypeTimestamp}};
  static constexpr char kPattern[] = "Date {0,date}";

  auto values() const { return std::tie(moment); }

  qz_Time moment = qz_Time::from_unix_seconds(1795248930);
};

struct WorkloadTime {
  static constexpr unsigned kEntryId = 1015;
  static constexpr std::array kFields = {Field{"Moment", TypeTimestamp}};
  static constexpr char kPattern[] = "Time {0,time}";

  auto values() const { return std::tie(moment); }

  qz_Time moment = qz_Time::from_unix_seconds(1795248930);
};

}  // namespace qzlog_bench

#endif  // QZLOG_BENCH_WORKLOADS_H

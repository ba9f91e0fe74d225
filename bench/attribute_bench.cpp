// Each add and each read, and both by name in definitions with few and with many attributes.
#include <benchmark/benchmark.h>

#include <array>
#include <cstddef>
#include <memory>
#include <string>

#include <qzlog.h>

#include "bench/case.h"
#include "bench/entry_attributes.h"
#include "bench/generated_definitions.h"
#include "bench/run_time_value.h"

namespace qzlog_bench {
namespace {

constexpr unsigned kEveryTypeId = 1020;

/// Cases for one type: replacing a value, adding and removing one, reading one.
template <typename Value, typename Add, typename Read>
void add_type(CaseList& cases, const std::string& type, const char* name, const Value& value, Add add, Read read) {
  const auto entry_with_value = [=] {
    auto entry = std::make_shared<qz_LOG_LogEntry>(kEveryTypeId, kLogLevel);
    add(*entry, name, value);
    return entry;
  };
  cases.add("replace/" + type, narrow_path(), [=] {
    return [=, new_value = value, entry = entry_with_value()]() mutable {
      make_unknown(new_value);
      add(*entry, name, new_value);
    };
  });
  cases.add("add_and_remove/" + type, narrow_path(), [=] {
    const auto entry = entry_with_value();
    entry->ClearAttribs();
    return [=, new_value = value]() mutable {
      make_unknown(new_value);
      add(*entry, name, new_value);
      require(entry->RemoveAttrib(name), "the attribute is there");
    };
  });
  cases.add("read/" + type, narrow_path(),
            [=] { return [=, entry = entry_with_value()] { benchmark::DoNotOptimize(read(*entry, name)); }; });
}

using Entry = qz_LOG_LogEntry;

void add_integer_types(CaseList& cases) {
  add_type(
      cases, "Bool", "Flag", true, [](Entry& entry, const char* name, bool value) { entry.AddAttribBool(name, value); },
      [](const Entry& entry, const char* name) { return entry.GetAttribBool(name); });
  add_type(
      cases, "UInt1", "Byte", static_cast<unsigned char>(200),
      [](Entry& entry, const char* name, unsigned char value) { entry.AddAttrib1u(name, value); },
      [](const Entry& entry, const char* name) { return entry.GetAttrib1u(name); });
  add_type(
      cases, "SInt1", "SignedByte", static_cast<char>(-100),
      [](Entry& entry, const char* name, char value) { entry.AddAttrib1(name, value); },
      [](const Entry& entry, const char* name) { return entry.GetAttrib1(name); });
  add_type(
      cases, "UInt2", "Short", static_cast<unsigned short>(60000),
      [](Entry& entry, const char* name, unsigned short value) { entry.AddAttrib2u(name, value); },
      [](const Entry& entry, const char* name) { return entry.GetAttrib2u(name); });
  add_type(
      cases, "SInt2", "SignedShort", static_cast<short>(-30000),
      [](Entry& entry, const char* name, short value) { entry.AddAttrib2(name, value); },
      [](const Entry& entry, const char* name) { return entry.GetAttrib2(name); });
  add_type(
      cases, "UInt4", "Word", 123456U,
      [](Entry& entry, const char* name, unsigned value) { entry.AddAttrib4u(name, value); },
      [](const Entry& entry, const char* name) { return entry.GetAttrib4u(name); });
  add_type(
      cases, "SInt4", "SignedWord", -123456,
      [](Entry& entry, const char* name, int value) { entry.AddAttrib4(name, value); },
      [](const Entry& entry, const char* name) { return entry.GetAttrib4(name); });
}

void add_other_types(CaseList& cases) {
  add_type(
      cases, "Float", "Real", 0.875,
      [](Entry& entry, const char* name, double value) { entry.AddAttribFloat8(name, value); },
      [](const Entry& entry, const char* name) { return entry.GetAttribFloat8(name); });
  add_type(
      cases, "Char64", "Text", "volume-0042",
      [](Entry& entry, const char* name, const char* value) { entry.AddAttribStr(name, value); },
      [](const Entry& entry, const char* name) { return entry.GetAttribStr(name); });
  add_type(
      cases, "MBChar64", "WideText", "Größenprüfung in Köln läuft bis Mai",
      [](Entry& entry, const char* name, const char* value) { entry.AddAttribMBStr(name, value); },
      [](const Entry& entry, const char* name) { return entry.GetAttribMBStr(name); });
  add_type(
      cases, "Timestamp", "Moment", qz_Time::from_unix_seconds(1795248930),
      [](Entry& entry, const char* name, const qz_Time& value) { entry.AddAttribTime(name, value); },
      [](const Entry& entry, const char* name) { return entry.GetAttribTime(name); });
}

/// An entry that has all of so many attributes, and five of their names, spread over the definition.
class ManyAttributes {
 public:
  explicit ManyAttributes(unsigned count) : entry_(kFirstGeneratedId, kLogLevel) {
    for (unsigned i = 0; i < count; ++i) entry_.AddAttrib4u(generated_attribute_name(i).c_str(), i);
    for (unsigned i = 0; i < kNames; ++i) names_[i] = generated_attribute_name(i * (count - 1) / (kNames - 1));
  }

  Entry& entry() { return entry_; }

  /// The names in turn, never one after its neighbour in the definition: that is where an attribute is looked for
  /// first.
  const char* next_name() {
    next_ = (next_ + 2) % kNames;
    return names_[next_].c_str();
  }

 private:
  static constexpr unsigned kNames = 5;

  Entry entry_;
  std::array<std::string, kNames> names_;
  unsigned next_ = 0;
};

void add_attribute_counts(CaseList& cases) {
  for (const unsigned count : {5U, 50U, 255U}) {
    const Settings settings = narrow_path_with({definitions_with_attributes, count});
    cases.add("attributes/replace/" + std::to_string(count), settings, [=] {
      return [many = std::make_shared<ManyAttributes>(count)] { many->entry().AddAttrib4u(many->next_name(), 7); };
    });
    cases.add("attributes/read/" + std::to_string(count), settings, [=] {
      return [many = std::make_shared<ManyAttributes>(count)] {
        benchmark::DoNotOptimize(many->entry().GetAttrib4u(many->next_name()));
      };
    });
  }
}

}  // namespace

void add_attribute_cases(CaseList& cases) {
  add_integer_types(cases);
  add_other_types(cases);
  add_attribute_counts(cases);
}

}  // namespace qzlog_bench

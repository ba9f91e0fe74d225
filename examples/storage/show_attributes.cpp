// What an entry holds, and how it is read back.
#include <qzlog.h>

#include <iomanip>
#include <iostream>

#include "sample_entries.h"
#include "sections.h"
#include "settings.h"

namespace {

/// Prints every attribute that is set; a program that stores or sends entries looks the same.
class Printer : public qz_LOG_AttributeVisitor {
 public:
  void VisitBool(const char* name, qz_AttributeType type, bool value) override {
    print(name, type, value ? "true" : "false");
  }
  void VisitUnsigned(const char* name, qz_AttributeType type, unsigned int value) override { print(name, type, value); }
  void VisitSigned(const char* name, qz_AttributeType type, int value) override { print(name, type, value); }
  void VisitFloat(const char* name, qz_AttributeType type, double value) override { print(name, type, value); }
  void VisitText(const char* name, qz_AttributeType type, const char* text, unsigned int /*length*/) override {
    print(name, type, text);
  }
  void VisitTime(const char* name, qz_AttributeType type, const qz_Time& value) override {
    char text[32];
    value.print_out(text, sizeof(text));
    print(name, type, text);
  }

 private:
  template <typename Value>
  static void print(const char* name, qz_AttributeType type, const Value& value) {
    std::cout << "  " << std::left << std::setw(24) << name << std::setw(15) << _qz_LOG_get_attribute_type_string(type)
              << value << '\n';
  }
};

void visit(const char* what, const qz_LOG_LogEntry& entry) {
  Printer printer;
  std::cout << what << ", entry " << entry.GetEntryID() << ":\n";
  entry.VisitAttributes(printer);
}

void read_values(qz_LOG_LogEntry entry) {
  std::cout << "Values, read by name:\n"
            << "  GetAttribStr(\"Volume\")      " << entry.GetAttribStr("Volume") << '\n'
            << "  GetAttribFloat8(\"Used\")     " << entry.GetAttribFloat8("Used") << '\n'
            << "  GetAttrib2u(\"Reason\")       " << entry.GetAttrib2u("Reason") << ", as it is not set\n"
            << "  GetComputerInfo()           " << entry.GetComputerInfo() << '\n';
  unsigned short reason = 0;
  qz_AttributeType type = TypeUnknown;
  std::cout << "  Is \"Reason\" set?            " << (entry.GetAttrib2u("Reason", reason) ? "yes" : "no")
            << "; CheckAttribute gives " << entry.CheckAttribute("Reason", type) << " and "
            << _qz_LOG_get_attribute_type_string(type) << '\n';
  std::cout << "  RemoveAttrib(\"Used\")        " << (entry.RemoveAttrib("Used") ? "removed" : "was not set") << '\n';
}

void read_time(const qz_LOG_LogEntry& entry) {
  char gmt[32];
  char local[32];
  entry.GetTimestamp(true).print_out(gmt, sizeof(gmt));
  entry.GetTimestamp(false).print_out(local, sizeof(local));
  unsigned short hour = 0;
  unsigned short minute = 0;
  unsigned short second = 0;
  entry.GetEventLocalTime(hour, minute, second);
  std::cout << "The time of the event, in Berlin:\n"
            << "  GetTimestamp(true)          " << gmt << '\n'
            << "  GetTimestamp(false)         " << local << '\n'
            << "  GetEventLocalTime()         " << hour << " h " << minute << " min " << second << " s\n"
            << "  TIMEZONE_DIFFERENCE         " << entry.GetAttrib2("TIMEZONE_DIFFERENCE") << " minutes\n"
            << "  DAYLIGHT_SAVING_ACTIVE      " << std::boolalpha << entry.GetAttribBool("DAYLIGHT_SAVING_ACTIVE")
            << '\n';
}

}  // namespace

void show_attributes(const std::string& /*folder*/) {
  use_definition_texts(QZ_LOCALE_EN_US);
  visit("An event's own attributes, then the global ones", volume_almost_full());
  visit("The standard information", self_test_ended());
  visit("Signed numbers and a time", backup_finished());
  read_values(volume_almost_full());
  read_time(self_test_ended());
}

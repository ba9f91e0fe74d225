// Uses the installed library the way a product does. Prints one readable message; any other result is a failure.
#include <qzlog.h>

#include <cstdio>
#include <string>

namespace {

bool HeadersBelongToThePackage() {
  const std::string version = std::to_string(QZLOG_VERSION_MAJOR) + "." + std::to_string(QZLOG_VERSION_MINOR) + "." +
                              std::to_string(QZLOG_VERSION_PATCH);
  return version == EXPECTED_VERSION;
}

// What the library throws can be caught here by its class and by its base.
bool ExceptionsCrossTheBoundary() {
  try {
    qz_LOG_LogConfig::SetDefinitionPath("/nonexistent/file.ldf");
    return false;
  } catch (const QZX_logging_invalid_definition&) {
  }
  try {
    qz_LOG_LogEntry entry(1, 0);
    return false;
  } catch (const QZX_logging_all& error) {
    return std::string("Entry id argument is invalid") == error.get_message();
  }
}

class Counter : public qz_LOG_AttributeVisitor {
 public:
  void VisitBool(const char*, qz_AttributeType, bool) override { ++others; }
  void VisitUnsigned(const char*, qz_AttributeType, unsigned int) override { ++numbers; }
  void VisitSigned(const char*, qz_AttributeType, int) override { ++others; }
  void VisitFloat(const char*, qz_AttributeType, double) override { ++others; }
  void VisitText(const char*, qz_AttributeType, const char*, unsigned int) override { ++texts; }
  void VisitTime(const char*, qz_AttributeType, const qz_Time&) override { ++others; }

  int texts = 0;
  int numbers = 0;
  int others = 0;
};

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  if (!HeadersBelongToThePackage()) return 3;
  if (!ExceptionsCrossTheBoundary()) return 4;

  qz_LOG_LogConfig::SetDefinitionPath(argv[1]);
  qz_LOG_LogEntry entry(1001, 3);
  entry.AddAttribStr("Name", "vol1");
  entry.AddAttrib4u("Free", 0);
  entry.AddAttrib4u("Total", 4096);

  Counter counter;
  entry.VisitAttributes(counter);
  if (counter.texts != 1 || counter.numbers != 2 || counter.others != 0) return 5;

  std::printf("%s\n", entry.FormatMessage().c_str());
  return 0;
}

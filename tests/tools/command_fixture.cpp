#include "tests/tools/command_fixture.h"

#include <sys/wait.h>

#include <cstdlib>

namespace qzlog_test {

const std::string_view kStorageSource = R"yaml(
version: "1.0"
accept:
  - {rule: negative-unsigned, reason: tests show where}
  - {rule: unused-attribute, reason: tests set them}
globals:
  - {name: COMPUTER_NAME, type: MBChar64}
  - {name: TIMEZONE_DIFFERENCE, type: SInt2}
  - {name: DAYLIGHT_SAVING_ACTIVE, type: Bool}
entries:
  - id: 1001
    name: DISK_FULL
    message: "Disk {Name} is full: {Free} of {Total} blocks free"
    attributes:
      - {name: Name, type: Char32}
      - {name: Free, type: UInt4}
      - {name: Total, type: UInt4}
      - {name: Reason, type: UInt2}
    selector:
      attribute: Reason
      messages:
        - {index: 1, value: 10, id: disk.full.quota, text: "The quota of {Name} is used up"}
        - {index: 2, value: 11, id: disk.full.lock, text: "{Name} is locked"}
  - id: 1002
    name: NUMBERS
    message: "{U1} {S1} {U2} {S2} {U4} {S4} {F}."
    attributes:
      - {name: U1, type: UInt1}
      - {name: S1, type: SInt1}
      - {name: U2, type: UInt2}
      - {name: S2, type: SInt2}
      - {name: U4, type: UInt4}
      - {name: S4, type: SInt4}
      - {name: F, type: Float}
      - {name: B, type: Bool}
  - id: 1003
    name: TEXTS
    message: "Größe <{C}> <{M}>"
    attributes:
      - {name: C, type: Char32}
      - {name: M, type: MBChar32}
  - id: 1004
    name: TIMES
    message: "{D:D} {T:T}."
    attributes:
      - {name: D, type: Date}
      - {name: T, type: Time}
      - {name: S, type: Timestamp}
  - id: 1005
    name: WHEN
    message: "At {TIMESTAMP:D} {TIMESTAMP:T}."
  - id: 1006
    name: TWO_LINES
    raw: "first\nsecond\rthird%_%TIMESTAMP%"
  - id: 1007
    name: WITH_GUID
    message: "A key"
    attributes:
      - {name: Key, type: GUID}
)yaml";

CommandResult CommandFixture::run(const std::string& shell_line) const {
  const std::string folder = "'" + folder_.path() + "'";
  const std::string line = "cd " + folder + " && { " + shell_line + "\n} >stdout.txt 2>stderr.txt </dev/null";
  const int status = std::system(line.c_str());
  CommandResult result;
  result.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  result.out = read("stdout.txt");
  result.err = read("stderr.txt");
  return result;
}

}  // namespace qzlog_test

#ifndef QZLOG_TESTS_TOOLS_TRANSPORT_READ_FIXTURE_H
#define QZLOG_TESTS_TOOLS_TRANSPORT_READ_FIXTURE_H

#include <filesystem>
#include <fstream>
#include <string>

#include "tests/tools/command_fixture.h"

namespace qzlog_test {

/// A receiver that keeps lines in the folder "got", and definitions for them.
class ReadFixture : public CommandFixture {
 protected:
  ReadFixture() {
    std::filesystem::create_directory(folder_.path("got"));
    write("got/entries.jsonl", "");
    write("d.yaml",
          "version: \"1.0\"\naccept: [{rule: negative-unsigned, reason: numbers stay small}]\n"
          "globals: [{name: TIMEZONE_DIFFERENCE, type: SInt2}, {name: DAYLIGHT_SAVING_ACTIVE, type: Bool}]\n"
          "entries:\n  - {id: 1, name: N, message: \"{N}\", attributes: [{name: N, type: UInt4}]}\n"
          "  - {id: 2, name: M, message: \"m{N}\", attributes: [{name: N, type: UInt4}]}\n");
  }

  static std::string line(int seq, int id = 1, const std::string& writer = "h/1/2",
                          const std::string& time = "2026-11-21T08:15:30Z") {
    return R"({"writer":")" + writer + R"(","seq":)" + std::to_string(seq) + R"(,"id":)" + std::to_string(id) +
           R"(,"level":3,"time":")" + time + R"(","attributes":{"N":)" + std::to_string(seq) + "}}\n";
  }
  void deliver(const std::string& lines) const {
    std::ofstream(folder_.path("got/entries.jsonl"), std::ios::app | std::ios::binary) << lines;
  }
  void deliver(int first, int last) const {
    std::string lines;
    for (int seq = first; seq <= last; ++seq) lines += line(seq);
    deliver(lines);
  }
  static std::string numbers(int first, int last) {
    std::string text;
    for (int number = first; number <= last; ++number) text += std::to_string(number) + '\n';
    return text;
  }

  std::string url() const { return "file://" + folder_.path("got"); }
  std::string from() const { return " --from " + url() + " "; }
  CommandResult render(const std::string& more) const {
    return run("TZ=UTC $QZLOG render --no-icu --definitions d.yaml " + more);
  }
};

}  // namespace qzlog_test

#endif  // QZLOG_TESTS_TOOLS_TRANSPORT_READ_FIXTURE_H

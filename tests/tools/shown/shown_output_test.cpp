#include "tools/shown/shown_output.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <termios.h>
#include <unistd.h>

#include <cstdlib>
#include <memory>
#include <string>

#include "tests/tools/shown/shown_fixture.h"
#include "tools/options/line_code_page.h"
#include "tools/system/buffered_output.h"
#include "tools/system/file_descriptor.h"

namespace {

using qzlog_test::ShownFixture;
using qzlog_tool::BufferedOutput;
using qzlog_tool::FileDescriptor;
using qzlog_tool::LineCodePage;
using qzlog_tool::Presentation;
using qzlog_tool::ShownOptions;
using qzlog_tool::ShownOutput;
using qzlog_tool::ShownTimes;

constexpr const char* kLines =
    "{\"id\":1001,\"level\":9,\"attributes\":{\"Name\":\"\\u001b[2J\u00E4\\u009b\",\"Free\":0}}\n"
    "{\"id\":1001,\"level\":2,\"attributes\":{\"Name\":\"v\",\"Free\":0}}\n"
    "{\"id\":1001,\"level\":5,\"attributes\":{\"Name\":\"w\",\"Free\":0}}\n";
constexpr const char* kNoEntries =
    "{\"writer\":\"w/1/x\",\"seq\":8,\"lost\":[{\"id\":7,\"level\":2,\"count\":3}]}\n"
    "{\"writer\":\"w/1/x\",\"seq\":9,\"held\":[{\"id\":7,\"level\":2,\"count\":5}]}\n";

class ShownOutputTest : public ShownFixture {
 protected:
  void write(const std::string& output, int descriptor, bool colour, const LineCodePage* code_page,
             const char* lines = kLines) const {
    ShownOptions options;
    options.output = output;
    ShownTimes times = make_times(options);
    const std::unique_ptr<Presentation> presentation = make_presentation(options, {}, events_, times);
    BufferedOutput out(descriptor, "output",
                       code_page != nullptr ? qzlog_tool::TextBytes::kOther : qzlog_tool::TextBytes::kUtf8);
    ShownOutput shown(*presentation, out, colour, code_page);
    shown.write_heading();
    qzlog_test::for_each_line(lines, [&](const qzlog_tool::ShownLine& line) { shown.write(line); });
    out.flush();
  }

  std::string on_a_terminal(const std::string& output, bool colour, const LineCodePage* code_page = nullptr,
                            const char* lines = kLines) const {
    int controller = -1;
    int side = -1;
    if (::openpty(&controller, &side, nullptr, nullptr, nullptr) != 0) std::abort();
    const FileDescriptor reading(controller);
    const FileDescriptor terminal(side);
    termios settings = {};
    ::tcgetattr(side, &settings);
    settings.c_oflag &= ~static_cast<tcflag_t>(OPOST);
    ::tcsetattr(side, TCSANOW, &settings);
    write(output, side, colour, code_page, lines);
    char buffer[4096];
    return {buffer, qzlog_tool::read_some(controller, buffer, sizeof buffer, "the terminal")};
  }
};

TEST_F(ShownOutputTest, ColourOnATerminal_IsOursAlone) {
  EXPECT_EQ(on_a_terminal("short", true),
            "\033[1;31m- alert    DISK_FULL Disk \\u001B[2J\u00E4\\u009B is full: 0 blocks free\033[0m\n"
            "- info     DISK_FULL Disk v is full: 0 blocks free\n"
            "\033[33m- warning  DISK_FULL Disk w is full: 0 blocks free\033[0m\n");
}

TEST_F(ShownOutputTest, LostAndHeldEntries_HaveTheColourOfAlerts) {
  EXPECT_EQ(on_a_terminal("short", true, nullptr, kNoEntries),
            "\033[1;31m- -        - lost: 3 of entry ID 7, level 2\033[0m\n"
            "\033[1;31m- -        - held back: 5 of entry ID 7, level 2\033[0m\n");
}

TEST_F(ShownOutputTest, WithoutColour_ValuesAreEscaped) {
  EXPECT_EQ(on_a_terminal("text", false),
            "Disk \\u001B[2J\u00E4\\u009B is full: 0 blocks free\n"
            "Disk v is full: 0 blocks free\n"
            "Disk w is full: 0 blocks free\n");
}

TEST_F(ShownOutputTest, Csv_KeepsItsLineEndsOnATerminal) {
  EXPECT_EQ(on_a_terminal("csv", false).substr(0, 41), "time,level,level_name,id,name,message\r\n,9");
}

TEST_F(ShownOutputTest, CodePage_IsThatOfTheWholeLine) {
  const LineCodePage latin1("ISO-8859-1");
  EXPECT_EQ(on_a_terminal("text", false, &latin1).substr(0, 45), "Disk \\x1B[2J\xE4\\x9B is full: 0 blocks free\nDisk");
}

TEST_F(ShownOutputTest, InAFile_ValuesAreAsTheyCame) {
  const qz_test::TempDir folder;
  const std::string path = folder.write("out.txt", "");
  const FileDescriptor file(qzlog_tool::open_path(path, O_WRONLY));
  write("text", file.get(), false, nullptr);
  EXPECT_EQ(folder.read("out.txt").substr(0, 37), "Disk \033[2J\u00E4\u009B is full: 0 blocks free\n");
}

}  // namespace

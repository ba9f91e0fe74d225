#include "tests/tools/shown/shown_fixture.h"

#include <ctime>

namespace qzlog_test {

using qzlog_tool::Presentation;
using qzlog_tool::ShownOptions;
using qzlog_tool::ShownPlace;
using qzlog_tool::ShownTimes;

const std::string_view kShownSource = R"yaml(version: "1.0"
globals:
  - {name: COMPUTER_NAME, type: MBChar64}
  - {name: TIMEZONE_DIFFERENCE, type: SInt2}
  - {name: DAYLIGHT_SAVING_ACTIVE, type: Bool}
entries:
  - id: 1001
    name: DISK_FULL
    summary: A volume has no free blocks left.
    mask: 5
    message: "Disk {Name} is full: {Free} blocks free"
    attributes:
      - {name: Name, type: MBChar2K}
      - {name: Free, type: UInt4}
      - {name: time, type: UInt2}
  - id: 7
    name: KINDS
    message: "Kinds"
    attributes:
      - {name: B, type: Bool}
      - {name: U1, type: UInt1}
      - {name: S1, type: SInt1}
      - {name: U2, type: UInt2}
      - {name: S2, type: SInt2}
      - {name: U4, type: UInt4}
      - {name: S4, type: SInt4}
      - {name: F, type: Float}
      - {name: C, type: Char32}
      - {name: D, type: Date}
      - {name: T, type: Time}
      - {name: S, type: Timestamp}
)yaml";

ShownFixture::ShownFixture() {
  ::tzset();
  const qzlog_tool::Definitions definitions =
      qzlog_tool::read_definitions({"shown.yaml", "shown.yaml", std::string(kShownSource), true},
                                   {.path = qzlog_compiler::RenderingPaths::kIcu, .surprises = false});
  EXPECT_TRUE(definitions.ok());
  events_.add(definitions.model);
  qz_LOG_LogConfig::SetCodePage("UTF-8");
  qz_LOG_LogConfig::SetDefinitionPath(folder_.write("shown.ldf", definitions.bytes).c_str());
}

ShownFixture::~ShownFixture() { qz_LOG_LogConfig::ClearDefinitions(); }

std::string ShownFixture::show(std::string_view lines, const ShownOptions& options, const ShownPlace& place) const {
  ShownTimes times = make_times(options);
  const std::unique_ptr<Presentation> presentation = make_presentation(options, place, events_, times);
  std::string out;
  presentation->append_heading(out);
  for_each_line(lines, [&](const qzlog_tool::ShownLine& shown) {
    const std::size_t begin = out.size();
    const std::size_t coloured = presentation->append(shown, out);
    const std::string_view added = std::string_view(out).substr(begin);
    EXPECT_TRUE(added.ends_with('\n'));
    EXPECT_EQ(added.substr(0, coloured).find('\n'), std::string_view::npos);
  });
  return out;
}

}  // namespace qzlog_test

#ifndef QZLOG_TESTS_MESSAGE_BUNDLE_MAKER_H
#define QZLOG_TESTS_MESSAGE_BUNDLE_MAKER_H

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "tests/support/temp_dir.h"

namespace qz_test {

/// Runs a command line; its failure fails the test.
inline void run_command(const std::string& line) { EXPECT_EQ(std::system(line.c_str()), 0) << line; }

/// icupkg's option for the byte order of this host, which is the only one that ICU reads.
constexpr const char* kByteOrderOption = __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__ ? "-tb" : "-tl";

/// genrb writes the byte order of the machine that it runs on, which under emulation is not that of the tests.
inline void bring_into_byte_order(const std::string& file) {
#ifdef QZLOG_EMULATED
  run_command(std::string("icupkg ") + kByteOrderOption + " '" + file + "' '" + file + "'");
#else
  static_cast<void>(file);
#endif
}

/// Makes the bundles `made` in `folder` from the sources of these names there. `options` are genrb's.
inline void run_genrb(const std::string& folder, const std::string& options, const std::vector<std::string>& made) {
  std::string sources;
  for (const std::string& name : made) sources += " " + name + ".txt";
  run_command("cd '" + folder + "' && genrb --quiet " + options + " --destdir ." + sources + " >/dev/null");
  for (const std::string& name : made) bring_into_byte_order(folder + "/" + name + ".res");
}

/// A compiled resource bundle, from what stands between the braces of its source. `options` are genrb's.
inline std::string make_bundle(const std::string& content, const std::string& options = "") {
  const TempDir folder;
  folder.write("made.txt", "made { " + content + " }");
  run_genrb(folder.path(), "--encoding UTF-8 " + options, {"made"});
  return folder.read("made.res");
}

/// A bundle with one message.
inline std::string make_text_bundle(const std::string& text) {
  return make_bundle("STRING_TABLE { greeting { \"" + text + "\" } }");
}

}  // namespace qz_test

#endif  // QZLOG_TESTS_MESSAGE_BUNDLE_MAKER_H

#ifndef QZLOG_TESTS_MESSAGE_BUNDLE_MAKER_H
#define QZLOG_TESTS_MESSAGE_BUNDLE_MAKER_H

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "tests/support/temp_dir.h"

namespace qz_test {

/// Runs a command line; its failure fails the test.
inline void run_command(const std::string& line) { EXPECT_EQ(std::system(line.c_str()), 0) << line; }

/// A compiled resource bundle, from what stands between the braces of its source. `options` are genrb's.
inline std::string make_bundle(const std::string& content, const std::string& options = "") {
  const TempDir folder;
  const std::string source = folder.write("made.txt", "made { " + content + " }");
  run_command("genrb --quiet --encoding UTF-8 " + options + " --destdir '" + folder.path() + "' '" + source + "'");
  return folder.read("made.res");
}

/// A bundle with one message.
inline std::string make_text_bundle(const std::string& text) {
  return make_bundle("STRING_TABLE { greeting { \"" + text + "\" } }");
}

}  // namespace qz_test

#endif  // QZLOG_TESTS_MESSAGE_BUNDLE_MAKER_H

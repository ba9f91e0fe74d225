#include "lines/stored_code_page.h"

#include <gtest/gtest.h>

#include <string>

#include "qzlog/logcfg.h"
#include "qzlog/qz_exception.h"
#include "tests/support/settings_test.h"
#include "tests/support/support.h"

namespace qzlog {
namespace {

using namespace qz_test;

class StoredCodePageTest : public SettingsTest {};

TEST_F(StoredCodePageTest, NamesOfUtf8) {
  for (const char* const name : {"UTF-8", "UTF8", "utf-8", "utf8"}) {
    qz_LOG_LogConfig::SetCodePage(name);
    EXPECT_TRUE(StoredCodePage::current().is_utf8()) << name;
  }
}

TEST_F(StoredCodePageTest, IcuSwitchedOff_Utf8WhateverIsConfigured) {
  for (const char* const name : {"", "ISO-8859-1", "UTF-16", "no such code page"}) {
    qz_LOG_LogConfig::SetCodePage(name);
    qz_LOG_LogConfig::SetICUEnabled(false);
    EXPECT_TRUE(StoredCodePage::current().is_utf8()) << name;
    qz_LOG_LogConfig::SetICUEnabled(true);
  }
}

TEST_F(StoredCodePageTest, CodePagesWithTheBytesOfAscii) {
  for (const char* const name : {"US-ASCII", "ISO-8859-1", "windows-1252", "Shift_JIS", "GB18030", "ISO-2022-JP"}) {
    qz_LOG_LogConfig::SetCodePage(name);
    EXPECT_FALSE(StoredCodePage::current().is_utf8()) << name;
    EXPECT_TRUE(StoredCodePage::current().has_plain_ascii()) << name;
    EXPECT_STREQ(StoredCodePage::current().name(), name);
  }
}

TEST_F(StoredCodePageTest, CodePagesWithOtherBytes) {
  for (const char* const name : {"ibm-037", "UTF-7", "HZ", "IMAP-mailbox-name", "BOCU-1"}) {
    qz_LOG_LogConfig::SetCodePage(name);
    EXPECT_FALSE(StoredCodePage::current().has_plain_ascii()) << name;
  }
}

TEST_F(StoredCodePageTest, CodePagesWithZeroBytes_AreRefused) {
  for (const std::string name : {"UTF-16", "UTF-16BE", "UTF-16LE", "UTF-32", "UTF-32LE"}) {
    qz_LOG_LogConfig::SetCodePage(name.c_str());
    for (int i = 0; i < 2; ++i) {
      EXPECT_EQ(thrown_by([] { StoredCodePage::current(); }),
                thrown<QZX_logging_illegal_argument>(
                    ("entries cannot be written as JSON: texts have zero bytes in the code page " + name).c_str()));
    }
  }
}

TEST_F(StoredCodePageTest, UnknownCodePage_IsRefused) {
  qz_LOG_LogConfig::SetCodePage("no such code page");
  EXPECT_EQ(thrown_by([] { StoredCodePage::current(); }),
            thrown<QZX_logging_illegal_argument>(
                "entries cannot be written as JSON: there is no code page no such code page"));
  qz_LOG_LogConfig::SetCodePage("UTF-8");
  EXPECT_TRUE(StoredCodePage::current().is_utf8());
}

TEST_F(StoredCodePageTest, OneAfterTheOther_EachTheSameObjectAgain) {
  qz_LOG_LogConfig::SetCodePage("ISO-8859-15");
  const StoredCodePage& first = StoredCodePage::current();
  qz_LOG_LogConfig::SetCodePage("ISO-8859-2");
  EXPECT_NE(&StoredCodePage::current(), &first);
  qz_LOG_LogConfig::SetCodePage("ISO-8859-15");
  EXPECT_EQ(&StoredCodePage::current(), &first);
}

TEST_F(StoredCodePageTest, EachAllocationFails_TheNextCallMakesIt) {
  qz_LOG_LogConfig::SetCodePage("ISO-8859-13");
  EXPECT_GT(FailEveryAllocation([] { StoredCodePage::current(); }), 0U);
  EXPECT_TRUE(StoredCodePage::current().has_plain_ascii());
}

TEST(IsPrintableAscii, EveryByte) {
  for (int byte = 0; byte < 256; ++byte) {
    const std::string text = std::string("x") + static_cast<char>(byte);
    EXPECT_EQ(is_printable_ascii(text.data(), text.size()), byte >= 0x20 && byte <= 0x7E) << byte;
  }
  EXPECT_TRUE(is_printable_ascii("", 0));
}

}  // namespace
}  // namespace qzlog

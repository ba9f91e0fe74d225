#include "lines/envelope_form.h"

#include <gtest/gtest.h>

namespace {

TEST(EnvelopeForm, Writer) {
  for (const char* const text : {"host/1/2", "a/b/123/2026-11-21T08:15:30Z", "größe/12/x"}) {
    EXPECT_TRUE(qzlog::is_writer_form(text)) << text;
  }
  for (const char* const text :
       {"", "/", "//", "host", "host/1", "/1/2", "host//2", "host/1/", "host/x/2", "host/1/2/", "ho\nst/1/2"}) {
    EXPECT_FALSE(qzlog::is_writer_form(text)) << text;
  }
}

TEST(EnvelopeForm, Moment) {
  for (const char* const text : {"2026-11-21T08:15:30Z", "2026-11-21T08:15:30.1Z", "2026-11-21T08:15:30.123456789Z",
                                 "2026-11-21T23:59:60+23:59", "0000-00-00T00:00:00-00:00"}) {
    EXPECT_TRUE(qzlog::is_moment_form(text)) << text;
  }
  for (const char* const text :
       {"", "2026-11-21", "2026-11-21T08:15:30", "2026-11-21 08:15:30Z", "2026-13-21T08:15:30Z", "2026-11-32T08:15:30Z",
        "2026-11-21T24:15:30Z", "2026-11-21T08:60:30Z", "2026-11-21T08:15:61Z", "2026-11-21T08:15:30.Z",
        "2026-11-21T08:15:30.12", "2026-11-21T08:15:30ZZ", "2026-11-21T08:15:30+24:00", "2026-11-21T08:15:30+1:00",
        "x026-11-21T08:15:30Z"}) {
    EXPECT_FALSE(qzlog::is_moment_form(text)) << text;
  }
}

TEST(EnvelopeForm, Definitions) {
  EXPECT_TRUE(qzlog::is_definitions_form("0123456789abcdef"));
  EXPECT_TRUE(qzlog::is_definitions_form("0123456789abcdef+fedcba9876543210"));
  for (const char* const text : {"", "0123456789abcde", "0123456789abcdef0", "0123456789ABCDEF", "0123456789abcdeg",
                                 "0123456789abcdef+", "+0123456789abcdef", "0123456789abcdef+0123456789abcdef+"}) {
    EXPECT_FALSE(qzlog::is_definitions_form(text)) << text;
  }
}

TEST(EnvelopeForm, EventName) {
  EXPECT_TRUE(qzlog::is_event_name_form("DISK_FULL"));
  EXPECT_FALSE(qzlog::is_event_name_form(""));
  EXPECT_FALSE(qzlog::is_event_name_form("A\x01"));
}

}  // namespace

#include "tools/transport/transport_url.h"

#include <gtest/gtest.h>

#include "tools/system/command_error.h"

namespace qzlog_tool {
namespace {

TEST(TransportUrl, Parts_AreAsTheyWereWritten) {
  const TransportUrl url("NATS+tls://a:4222,[::1]:4223/ENTRIES/x%40y");
  EXPECT_EQ(url.text(), "nats+tls://a:4222,[::1]:4223/ENTRIES/x%40y");
  EXPECT_EQ(url.scheme(), "nats+tls");
  EXPECT_EQ(url.plugin(), "nats");
  EXPECT_EQ(url.authority(), "a:4222,[::1]:4223");
  EXPECT_EQ(url.path(), "/ENTRIES/x%40y");
  EXPECT_EQ(TransportUrl("file:///a").authority(), "");
  EXPECT_EQ(TransportUrl("kafka://h").path(), "");
}

TEST(TransportUrl, Secrets_AreRefusedWithoutBeingShown) {
  for (const char* const text : {"nats://me:secret@h/E", "nats://secret@h", "nats://me:se/cret@h", "secret@h",
                                 "http://h/?token=secret", "http://h/#secret"}) {
    try {
      const TransportUrl url(text);
      ADD_FAILURE() << text;
    } catch (const CommandError& error) {
      EXPECT_EQ(error.exit_status(), kExitCannotRun);
      EXPECT_EQ(std::string(error.what()).find("secret"), std::string::npos) << error.what();
      EXPECT_EQ(std::string(error.what()).find("cret"), std::string::npos) << error.what();
    }
  }
}

TEST(TransportUrl, WhatIsNone_IsRefused) {
  for (const char* const text :
       {"", "nats", "nats:/h", "://h", "9p://h", "../../x://h", "a.b://h", "nats://a b", "nats://a\n", "nats://\xFF"}) {
    EXPECT_THROW(TransportUrl{text}, CommandError) << text;
  }
}

}  // namespace
}  // namespace qzlog_tool

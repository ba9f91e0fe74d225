// Lines come back equal out of the attribute qzlog.entry, in both forms of requests.
#include <gtest/gtest.h>

#include <zlib.h>

#include <string>
#include <vector>

#include "tests/ship/otlp/hostile_lines.h"
#include "tests/ship/otlp/received_lines.h"
#include "tests/support/rounds.h"

namespace qzlog_test {
namespace {

using qz_test::HttpReceiver;
using qz_test::HttpReply;
using qz_test::HttpRequest;

std::string unzipped(const std::string& bytes) {
  std::string text(64U << 20U, '\0');
  z_stream stream = {};
  EXPECT_EQ(inflateInit2(&stream, 15 + 16), Z_OK);
  stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(bytes.data()));
  stream.avail_in = static_cast<uInt>(bytes.size());
  stream.next_out = reinterpret_cast<Bytef*>(text.data());
  stream.avail_out = static_cast<uInt>(text.size());
  EXPECT_EQ(inflate(&stream, Z_FINISH), Z_STREAM_END);
  text.resize(stream.total_out);
  inflateEnd(&stream);
  return text;
}

class OtlpLines : public OtlpFixture {
 protected:
  using Adder = void (*)(const std::string& body, Lines& lines);

  void expect_equal_lines(int count, Adder add_lines, bool is_compressed = false) {
    const HttpReceiver receiver([](const HttpRequest&) {
      HttpReply reply;
      reply.content_type = "";
      reply.body = "";
      return reply;
    });
    HostileLines hostile(random_);
    Lines written;
    for (int sent = 0; sent < count; sent += 500) {
      std::vector<SentLine> lines;
      for (int index = 0; index < 500; ++index) lines.push_back(hostile.next());
      for (const SentLine& line : lines) written[line.identity] = line.line;
      send(receiver, lines);
      EXPECT_EQ(fates_, std::vector<std::int32_t>(500, QZLOG_ACKNOWLEDGED)) << reason_;
    }
    Lines received;
    for (const HttpRequest& request : receiver.requests()) {
      add_lines(is_compressed ? unzipped(request.body) : request.body, received);
    }
    EXPECT_EQ(received.size(), written.size());
    EXPECT_TRUE(received == written);
  }

  qz_test::SeededRandom random_;
};

TEST_F(OtlpLines, HostileOnes_ComeBackEqualOutOfJson) { expect_equal_lines(qz_test::rounds(20000), add_lines_of_json); }

TEST_F(OtlpLines, HostileOnes_ComeBackEqualOutOfProtobuf) {
  options_.options.clear();
  expect_equal_lines(qz_test::rounds(20000), add_lines_of_protobuf);
}

TEST_F(OtlpLines, HostileOnes_ComeBackEqualCompressed) {
  options_.options = {{"compression", "gzip"}, {"request-bytes", "20000"}};
  expect_equal_lines(500, add_lines_of_protobuf, true);
}

}  // namespace
}  // namespace qzlog_test

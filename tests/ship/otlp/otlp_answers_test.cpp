// What the transport to OTLP makes of answers: nothing that a receiver did not take is lost, and nothing that it does
// take is refused.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <string>
#include <vector>

#include "tests/ship/otlp/otlp_fixture.h"

namespace qzlog_test {
namespace {

using qz_test::HttpReceiver;
using qz_test::HttpReply;
using qz_test::HttpRequest;
using Fates = std::vector<std::int32_t>;
using Clock = std::chrono::steady_clock;

std::size_t count_of(const std::string& text, const std::string& part) {
  std::size_t count = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
  return count;
}
bool is_empty(const HttpRequest& request) { return request.body.find("logRecords") == std::string::npos; }

/// Takes the first, empty request, and says the rest as given.
HttpReceiver::Answer once_open(HttpReply reply) {
  return [reply](const HttpRequest& request) { return is_empty(request) ? HttpReply() : reply; };
}
HttpReply reply_of(int status, const std::string& body = "{}", const std::string& headers = "") {
  HttpReply reply;
  reply.status = status;
  reply.body = body;
  reply.more_headers = headers;
  return reply;
}

class OtlpAnswers : public OtlpFixture {
 protected:
  /// Some of which the receivers below do not take.
  static std::vector<SentLine> with_bad_ones(int count, const std::vector<int>& bad) {
    std::vector<SentLine> lines = numbered(count);
    for (const int index : bad) lines[static_cast<std::size_t>(index)].event = "BAD";
    return lines;
  }
  void expect_refused(const std::vector<int>& bad, const std::string& reason) const {
    for (std::size_t index = 0; index < fates_.size(); ++index) {
      const bool is_bad = std::count(bad.begin(), bad.end(), static_cast<int>(index)) != 0;
      EXPECT_EQ(fates_[index], is_bad ? QZLOG_REFUSED : QZLOG_ACKNOWLEDGED) << index;
      EXPECT_EQ(reasons_[index], is_bad ? reason : "") << index;
    }
  }
};

TEST_F(OtlpAnswers, BadRequest_RefusesThoseRecordsAloneThatItIsAbout) {
  const HttpReceiver receiver([](const HttpRequest& request) {
    return count_of(request.body, R"("eventName":"BAD")") == 0 ? HttpReply()
                                                               : reply_of(400, R"({"code":3,"message":"no BAD."})");
  });
  const std::vector<int> bad = {0, 7, 8, 99};
  send(receiver, with_bad_ones(100, bad));
  EXPECT_EQ(outcome_, QZLOG_DONE) << reason_;
  expect_refused(bad, "the receiver answers 400: no BAD");
  EXPECT_LT(receiver.requests().size(), 60U);
}

TEST_F(OtlpAnswers, ReceiverThatRefusesTheEmptyRequestAndAllElse_IsTheWrongOne) {
  const HttpReceiver receiver([](const HttpRequest&) { return reply_of(400, R"({"message":"what is this"})"); });
  send(receiver, numbered(20));
  EXPECT_EQ(outcome_, QZLOG_NEVER);
  EXPECT_EQ(reason_,
            "it takes nothing, not even an empty request: the receiver answers 400: what is this: is it a receiver of "
            "OTLP, at this path?");
  EXPECT_EQ(std::count(fates_.begin(), fates_.end(), QZLOG_AGAIN), 20) << "none is taken for dead";
}

TEST_F(OtlpAnswers, ReceiverThatRefusesTheEmptyRequestAlone_IsSentTo) {
  const HttpReceiver receiver([](const HttpRequest& request) {
    return count_of(request.body, "eventName") == 0 ? reply_of(400, R"({"message":"empty"})") : HttpReply();
  });
  send(receiver, numbered(20));
  EXPECT_EQ(outcome_, QZLOG_DONE) << reason_;
}

HttpReply partly(const HttpRequest& request) {
  const std::size_t bad = count_of(request.body, R"("eventName":"BAD")");
  if (bad == 0) return {};
  return reply_of(
      200, R"({"partialSuccess":{"rejectedLogRecords":")" + std::to_string(bad) + R"(","errorMessage":"no BAD"}})");
}

TEST_F(OtlpAnswers, PartialSuccess_FindsWhatWasNotTaken) {
  const HttpReceiver receiver(partly);
  const std::vector<int> bad = {3, 50, 51};
  send(receiver, with_bad_ones(64, bad));
  EXPECT_EQ(outcome_, QZLOG_DONE) << reason_;
  expect_refused(bad, "no BAD");
  EXPECT_EQ(warnings_.at(0),
            "the receiver refuses entries without saying which: they are looked for by sending halves again, so that "
            "others arrive twice");
  EXPECT_EQ(warnings_.size(), 1U);
}

TEST_F(OtlpAnswers, PartialSuccessOfNothing_RefusesAllWithoutSendingAgain) {
  const HttpReceiver receiver(partly);
  send(receiver, with_bad_ones(2, {0, 1}));
  EXPECT_EQ(fates_, (Fates{QZLOG_REFUSED, QZLOG_REFUSED}));
  EXPECT_EQ(receiver.requests().size(), 2U);
}

TEST_F(OtlpAnswers, PartialSuccessToBeAccepted_WarnsAndSendsNothingAgain) {
  const HttpReceiver receiver(partly);
  options_.options.emplace_back("partial-success", "accept");
  send(receiver, with_bad_ones(10, {3}));
  EXPECT_EQ(fates_, Fates(10, QZLOG_ACKNOWLEDGED));
  EXPECT_EQ(receiver.requests().size(), 2U);
  EXPECT_EQ(warnings_, std::vector<std::string>{
                           "the receiver did not take some of the entries, which are not sent again: no BAD"});
}

TEST_F(OtlpAnswers, PartialSuccessWithAMessageAlone_IsAWarning) {
  const HttpReceiver receiver(once_open(reply_of(200, R"({"partialSuccess":{"errorMessage":"an old client"}})")));
  send(receiver, numbered(3));
  EXPECT_EQ(fates_, Fates(3, QZLOG_ACKNOWLEDGED));
  EXPECT_EQ(warnings_, std::vector<std::string>{"the receiver says: an old client"});
}

TEST_F(OtlpAnswers, PartialSuccessInProtobuf_IsUnderstood) {
  HttpReply reply = reply_of(200, std::string("\x0a\x0a\x08\x05\x12\x06no BAD", 12));
  reply.content_type = "application/x-protobuf";
  const HttpReceiver receiver(once_open(reply));
  send(receiver, numbered(5));
  EXPECT_EQ(fates_, Fates(5, QZLOG_REFUSED));
  EXPECT_EQ(reasons_[4], "no BAD");
}

TEST_F(OtlpAnswers, TooLarge_GoesInSmallerRequests) {
  const HttpReceiver receiver(
      [](const HttpRequest& request) { return request.body.size() > 3000 ? reply_of(413, "") : HttpReply(); });
  std::vector<SentLine> lines = numbered(40);
  lines[5].line = R"({"id":1,"attributes":{"T":")" + std::string(4000, 'x') + "\"}}";
  send(receiver, lines);
  EXPECT_EQ(outcome_, QZLOG_DONE) << reason_;
  expect_refused({5}, "it is too large for the receiver: the receiver answers 413");
}

struct Status {
  int status;
  qzlog_outcome outcome;
  const char* text;
};

TEST_F(OtlpAnswers, OtherStatuses_AreWaitedForOrNeedSomebody) {
  const Status statuses[] = {
      {401, QZLOG_NEVER, "the receiver answers 401: why: see --credentials"},
      {403, QZLOG_NEVER, "the receiver answers 403: why: see --credentials"},
      {404, QZLOG_NEVER, "the receiver answers 404: why: is the URL's path that of OTLP logs? It usually is /v1/logs"},
      {405, QZLOG_NEVER, "the receiver answers 405: why: is the URL's path that of OTLP logs? It usually is /v1/logs"},
      {415, QZLOG_NEVER,
       "the receiver answers 415: why: the receiver may know the other --option encoding, or no --option compression"},
      {418, QZLOG_NEVER, "the receiver answers 418: why: see the receiver's log"},
      {408, QZLOG_LATER, "the receiver answers 408: why"},
      {429, QZLOG_LATER, "the receiver answers 429: why"},
      {500, QZLOG_LATER, "the receiver answers 500: why"},
      {502, QZLOG_LATER, "the receiver answers 502: why"},
      {503, QZLOG_LATER, "the receiver answers 503: why"},
      {504, QZLOG_LATER, "the receiver answers 504: why"}};
  for (const Status& each : statuses) {
    for (const bool opens : {true, false}) {
      const HttpReply reply = reply_of(each.status, R"({"message":"why"})");
      const HttpReceiver receiver(opens ? once_open(reply) : [reply](const HttpRequest&) { return reply; });
      send(receiver, numbered(2));
      EXPECT_EQ(outcome_, each.outcome) << each.status;
      EXPECT_EQ(reason_, each.text);
      EXPECT_EQ(fates_, Fates(2, QZLOG_AGAIN));
    }
  }
}

TEST_F(OtlpAnswers, RetryAfter_IsHonouredByTheNextSenderToo) {
  const HttpReceiver receiver(once_open(reply_of(429, "", "Retry-After: 1\r\n")));
  send(receiver, numbered(1));
  EXPECT_EQ(outcome_, QZLOG_LATER);
  const auto begin = Clock::now();
  send(receiver, numbered(1), 300);
  EXPECT_EQ(reason_, "the receiver asks to be left alone for 1 more seconds");
  EXPECT_EQ(receiver.requests().size(), 2U);
  send(receiver, numbered(1), 5000);
  EXPECT_GE(Clock::now() - begin, std::chrono::milliseconds(900));
  EXPECT_EQ(receiver.requests().size(), 4U);
}

TEST_F(OtlpAnswers, CutAnywhere_AcknowledgesNothing) {
  const HttpReply whole = reply_of(200, R"({"partialSuccess":{}})");
  for (std::size_t at = 0;; ++at) {
    HttpReply reply = whole;
    reply.cut_at = at;
    const HttpReceiver receiver(once_open(reply));
    send(receiver, numbered(1));
    if (fates_ == Fates{QZLOG_ACKNOWLEDGED}) {
      EXPECT_GE(at, 80U);
      EXPECT_EQ(reason_, "");
      break;
    }
    ASSERT_EQ(fates_, Fates{QZLOG_AGAIN}) << at;
    ASSERT_EQ(outcome_, QZLOG_LATER) << at;
    ASSERT_LT(at, 200U);
  }
}

TEST_F(OtlpAnswers, Slow_IsLeftWhenTheTimeIsOver) {
  HttpReply reply;
  reply.pause_ms = 100;
  const HttpReceiver receiver(once_open(reply));
  const auto begin = Clock::now();
  send(receiver, numbered(1), 400);
  EXPECT_LT(Clock::now() - begin, std::chrono::seconds(2));
  EXPECT_EQ(outcome_, QZLOG_LATER);
  EXPECT_EQ(reason_.substr(0, 25), "no whole answer in time: ") << reason_;
}

TEST_F(OtlpAnswers, Huge_IsNotTaken) {
  const HttpReceiver body(once_open(reply_of(200, std::string(20'000'000, ' '))));
  send(body, numbered(1));
  EXPECT_EQ(outcome_, QZLOG_LATER);
  EXPECT_EQ(reason_, "the answer is far too long: the receiver speaks no OTLP there");
  std::string headers;
  for (int count = 0; count < 50'000; ++count) headers += "X-More: and more\r\n";
  const HttpReceiver head(once_open(reply_of(200, "{}", headers)));
  send(head, numbered(1));
  EXPECT_EQ(outcome_, QZLOG_LATER);
  EXPECT_EQ(fates_, Fates{QZLOG_AGAIN});
}

TEST_F(OtlpAnswers, NoneOfOtlp_AcknowledgesNothing) {
  for (const char* const body : {"<html>Welcome</html>", "[1]", "{\"partialSuccess\":3}", "{\"partialSuccess\"",
                                 R"({"partialSuccess":{"rejectedLogRecords":"many"}})"}) {
    const HttpReceiver receiver(once_open(reply_of(200, body)));
    send(receiver, numbered(1));
    EXPECT_EQ(fates_, Fates{QZLOG_AGAIN}) << body;
    EXPECT_EQ(outcome_, QZLOG_LATER);
    EXPECT_EQ(
        reason_,
        "the answer is none of OTLP's (Content-Type 'application/json'): is it a receiver of OTLP logs, and not a "
        "proxy on the way?");
  }
}

TEST_F(OtlpAnswers, Redirection_IsNotFollowed) {
  const HttpReceiver other([](const HttpRequest&) { return HttpReply(); });
  const HttpReceiver receiver(
      once_open(reply_of(307, "", "Location: http://127.0.0.1:" + std::to_string(other.port()) + "/v1/logs\r\n")));
  send(receiver, numbered(1));
  EXPECT_EQ(outcome_, QZLOG_NEVER);
  EXPECT_EQ(reason_, "the receiver answers 307: it sends us to another place, where we do not go: name the right URL");
  EXPECT_EQ(other.requests().size(), 0U);
}

TEST_F(OtlpAnswers, Credentials_AreSentAndNeverShown) {
  folder_.write("credentials", "# of the collector\nAuthorization: Bearer s3cret-token\r\n\nX-Scope: tenant-7\n");
  options_.credentials_file = folder_.path("credentials");
  const HttpReceiver receiver([](const HttpRequest& request) {
    return reply_of(401, R"({"message":"not )" + request.headers.at("authorization") + " of s3cret-token, " +
                             request.headers.at("x-scope") + "\"}");
  });
  send(receiver, numbered(1));
  EXPECT_EQ(reason_, "the receiver answers 401: not ... of ..., ...: see --credentials");
  ASSERT_EQ(receiver.requests().size(), 1U);
  EXPECT_EQ(receiver.requests()[0].headers.at("authorization"), "Bearer s3cret-token");
  EXPECT_EQ(warnings_,
            std::vector<std::string>{"credentials go over the network as they are: otlp+https:// would hide them"});
}

TEST_F(OtlpAnswers, CredentialsThatAreNoHeaders_AreAnErrorWithoutThem) {
  folder_.write("credentials", "X: y\ns3cret\n");
  options_.credentials_file = folder_.path("credentials");
  send("otlp+http://127.0.0.1:1/v1/logs", numbered(1));
  EXPECT_EQ(outcome_, QZLOG_NEVER);
  EXPECT_EQ(reason_, "line 2 of the file of credentials '" + options_.credentials_file +
                         "' is no header: lines are as in 'Authorization: Bearer TOKEN'");
}

TEST_F(OtlpAnswers, NobodyThere_IsWaitedFor) {
  int port = 0;
  {
    const HttpReceiver gone([](const HttpRequest&) { return HttpReply(); });
    port = gone.port();
  }
  send("otlp+http://127.0.0.1:" + std::to_string(port), numbered(1));
  EXPECT_EQ(outcome_, QZLOG_LATER);
  EXPECT_NE(reason_.find("Failed to connect to 127.0.0.1"), std::string::npos) << reason_;
}

}  // namespace
}  // namespace qzlog_test

#include <gtest/gtest.h>
#include <unicode/simpletz.h>

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "message/logmsg.h"
#include "qzlog/logcfg.h"
#include "tests/message/message_fixture.h"
#include "tests/message/message_oracle.h"
#include "tests/support/support.h"

namespace qz_test {
namespace {

/// A thread that does what it is given, one after another, and keeps what it learnt meanwhile.
class Worker {
 public:
  Worker() : thread_([this] { work(); }) {}
  ~Worker() {
    run(nullptr);
    thread_.join();
  }
  Worker(const Worker&) = delete;
  Worker& operator=(const Worker&) = delete;

  /// Waits until it is done; null ends the thread.
  void run(std::function<void()> task) {
    std::unique_lock<std::mutex> lock(mutex_);
    task_ = std::move(task);
    given_ = true;
    changed_.notify_all();
    changed_.wait(lock, [this] { return !given_; });
  }

 private:
  void work() {
    std::unique_lock<std::mutex> lock(mutex_);
    for (bool goes_on = true; goes_on;) {
      changed_.wait(lock, [this] { return given_; });
      goes_on = task_ != nullptr;
      if (goes_on) task_();
      given_ = false;
      changed_.notify_all();
    }
  }

  std::mutex mutex_;
  std::condition_variable changed_;
  std::function<void()> task_;
  bool given_ = false;
  std::thread thread_;
};

constexpr const char* kTemplates[] = {
    "%s%TypeMBChar64% %d%TypeSInt4%", "%f%TypeFloat% %C%TypeSInt4%", "%D%TypeTimestamp% %T%TypeTimestamp%",
    "{0,plural,one{#}few{# few}other{# other}} %d%TypeSInt4%", "{0,date,full} {0,time,full} %d%TypeSInt4%"};

/// Changes are made in one thread, and rendered in it and in two others that have rendered the template before.
class TemplatesOfThreads : public testing::Test {
 protected:
  TemplatesOfThreads() {
    entry_.add_attrib_4("TypeSInt4", -1234567);
    entry_.add_attrib_float8("TypeFloat", 9876.5);
    entry_.add_attrib_mbstr("TypeMBChar64", "\xC3\xA9", true);
    qz_Time time;
    EXPECT_TRUE(time.set_to_string_value("2026-11-21 08:15:30"));
    entry_.add_attrib_time("TypeTimestamp", time);
  }

  void set_template(const char* text) {
    template_ = text;
    definition_.set_default_msg_text(text);
  }
  std::string message() const { return to_utf8(_qz_LOG_log_message::get_message(entry_, &definition_, false, 0)); }
  std::string narrow_message() const {
    return _qz_LOG_log_message::get_qzString_message(entry_, &definition_, false, 0).c_str();
  }
  void expect_everywhere(const std::string& wanted) {
    EXPECT_EQ(message(), wanted);
    for (Worker& worker : workers_) {
      worker.run([&] { EXPECT_EQ(message(), wanted); });
    }
    EXPECT_EQ(message(), wanted);
  }
  void expect_as_oracle_everywhere(const char* locale) {
    expect_everywhere(to_utf8(oracle_message(template_, entry_, icu::Locale(locale))));
  }

  MessageRendering rendering_;
  _qz_LOG_log_entry_imp& entry_ = rendering_.entry();
  _qz_LOG_log_definition& definition_ = rendering_.definition();
  std::string template_;
  Worker workers_[2];
};

TEST_F(TemplatesOfThreads, IcusDefaultLocaleChanged_SeenByAllAtOnce) {
  for (const char* const text : kTemplates) {
    set_template(text);
    for (const char* const locale : {"en_US", "de_DE", "ar_EG", "en_US", "fa_IR", "en@numbers=roman"}) {
      RenderingSettings::set_icu_locale(locale);
      expect_as_oracle_everywhere(locale);
    }
  }
}

TEST_F(TemplatesOfThreads, LocaleOfTheSettingsChanged_SeenByAllAtOnce) {
  for (const char* const text : kTemplates) {
    set_template(text);
    for (const auto locale : {QZ_LOCALE_DE_DE, QZ_LOCALE_AR_SA, QZ_LOCALE_JA_JP, QZ_LOCALE_DE_DE}) {
      qz_LOG_LogConfig::SetLocale(locale);
      expect_as_oracle_everywhere(qz_I18N_get_locale_name(locale));
    }
    qz_LOG_LogConfig::SetLocale(QZ_LOCALE_PROCESS);
    expect_as_oracle_everywhere("en_US");
  }
}

TEST_F(TemplatesOfThreads, IcusDefaultZoneChanged_SeenByAllAtOnce) {
  for (const char* const text : kTemplates) {
    set_template(text);
    for (const char* const zone : {"UTC", "Asia/Kathmandu", "America/New_York", "UTC"}) {
      RenderingSettings::set_icu_zone(zone);
      expect_as_oracle_everywhere("en_US");
    }
    for (const int hours : {1, -7}) {
      icu::TimeZone::adoptDefault(new icu::SimpleTimeZone(hours * 3600000, u"Mine"));
      expect_as_oracle_everywhere("en_US");
    }
  }
}

TEST_F(TemplatesOfThreads, CodePageChanged_SeenByAllAtOnce) {
  set_template(kTemplates[0]);
  for (const char* const code_page : {"UTF-8", "ISO-8859-1", "windows-1251", "UTF-8", ""}) {
    qz_LOG_LogConfig::SetCodePage(code_page);
    expect_as_oracle_everywhere("en_US");
  }
}

TEST_F(TemplatesOfThreads, CatalogOpenedChangedAndClosed_SeenByAllAtOnce) {
  definition_.set_default_msg_id("greeting");
  _qz_LOG_log_definition::add_global_attr_info("Name", TypeMBChar64);
  set_template("of the definition%_%TIMESTAMP%");
  for (int round = 0; round < 2; ++round) {
    expect_everywhere("of the definition");
    qz_LOG_LogConfig::SetMessageCatalogPath(QZLOG_TEST_CATALOGS "/whole");
    expect_everywhere("Hello ");
    qz_LOG_LogConfig::SetLocale(QZ_LOCALE_DE_DE);
    expect_everywhere("Grüß Gott ");
    qz_LOG_LogConfig::SetMessageCatalogPath(QZLOG_TEST_CATALOGS "/without_root");
    expect_everywhere("Guten Tag ");
    qz_LOG_LogConfig::SetMessageCatalogPath(nullptr);
    qz_LOG_LogConfig::SetLocale(QZ_LOCALE_PROCESS);
  }
}

TEST_F(TemplatesOfThreads, TextReplaced_TheNewOneInAll) {
  for (const char* const text :
       {"first %d%TypeSInt4%", "second %_%TIMESTAMP%", "first %d%TypeSInt4%", "%C%TypeSInt4%", ""}) {
    set_template(text);
    expect_as_oracle_everywhere("en_US");
  }
}

TEST_F(TemplatesOfThreads, ThreadsThatComeAndGo_TheirFormattersDoNotOutliveThem) {
  for (int round = 0; round < 10; ++round) {
    for (const char* const text : kTemplates) {
      set_template(text);
      const std::string wanted = to_utf8(oracle_message(text, entry_, icu::Locale("en_US")));
      std::thread([&] { EXPECT_EQ(message(), wanted); }).join();
    }
  }
}

TEST_F(TemplatesOfThreads, NewTemplateRenderedByManyAtOnce_OneTemplateAndTheSameMessage) {
  for (int round = 0; round < 40; ++round) {
    set_template(kTemplates[round % 2]);
    const std::string wanted = to_utf8(oracle_message(template_, entry_, icu::Locale("en_US")));
    constexpr int kThreads = 6;
    std::vector<std::string> messages(kThreads);
    std::vector<std::string> narrow(kThreads);
    std::vector<std::thread> threads;
    for (std::size_t number = 0; number < kThreads; ++number) {
      threads.emplace_back([&, number] {
        messages[number] = message();
        narrow[number] = narrow_message();
      });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(messages, std::vector<std::string>(kThreads, wanted));
    EXPECT_EQ(narrow, std::vector<std::string>(kThreads, narrow[0]));
  }
}

}  // namespace
}  // namespace qz_test

// Catalogs whose files are damaged, before they are opened or while they are open.
#include <gtest/gtest.h>
#include <malloc.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "message/logmsg.h"
#include "qzlog/logcfg.h"
#include "tests/message/bundle_maker.h"
#include "tests/message/message_fixture.h"
#include "tests/support/support.h"

namespace qz_test {
namespace {

constexpr const char* kTableText = "< QZX_logging_missing_resource> Unable to access the string table resource.";
constexpr const char* kStringText =
    "<QZX_logging_missing_resource> Unable to retrieve the string from the string table.";
constexpr const char* kSource =
    "STRING_TABLE { \"disk.full\" { \"Platte voll: %d%Count%\" } empty { \"\" } greeting { \"Guten Tag\" }"
    " nested { inner { \"text\" } list { \"a\", \"b\" } } number:int { 7 } numbers:intvector { 1, 2 }"
    " raw:bin { 010203 } other:alias { \"/LOCALE/STRING_TABLE/greeting\" } }";
const std::vector<std::string> kKeys = {"disk.full", "empty", "greeting", "nested",  "number",
                                        "numbers",   "raw",   "other",    "missing", ""};

std::string string_of(const std::string& id) { return to_utf8(_qz_LOG_log_message::_get_string(id.c_str())); }

/// A catalog with a damaged bundle of German, and a good one of everything else.
class DamagedCatalog : public testing::Test {
 protected:
  DamagedCatalog() {
    RenderingSettings::set_icu_locale("de_DE");
    catalog_.write("root.res", make_text_bundle("Hello"));
  }

  void write(const std::string& bytes) const { catalog_.write("de.res", bytes); }
  static void open(const std::string& path) { _qz_LOG_log_message::set_resource_path(path.c_str()); }
  void open() const { open(catalog_.path()); }

  /// The folder cannot be opened, and no text is found then.
  void expect_fails(const char* what) const {
    const std::string text = std::string("<QZX_logging_missing_resource> Unable to ") + what + " resource bundle \"" +
                             catalog_.path() + "\".";
    EXPECT_EQ(thrown_by([&] { open(); }), thrown<QZX_logging_missing_resource>(text));
    EXPECT_EQ(thrown_by([] { string_of("greeting"); }), thrown<QZX_logging_missing_resource>(kTableText));
  }

  /// Opens what there is and looks everything up: a text or one of the stated exceptions each time.
  bool is_opened_and_read() const {
    try {
      open();
    } catch (const QZX_logging_missing_resource& error) {
      EXPECT_NE(std::string(error.get_message()).find("Unable to access resource bundle"), std::string::npos)
          << error.get_message();
      return false;
    }
    for (const std::string& key : kKeys) {
      try {
        string_of(key);
      } catch (const QZX_logging_missing_resource& error) {
        const std::string text = error.get_message();
        EXPECT_TRUE(text == kTableText || text == kStringText) << text;
      }
    }
    return true;
  }

  RenderingSettings settings_;
  const TempDir catalog_;
};

const char* const kVersions[] = {"--formatVersion 1", "--formatVersion 2", "--formatVersion 3"};

TEST_F(DamagedCatalog, CutAnywhere_FailsAlthoughThereIsARoot) {
  for (const char* const version : kVersions) {
    const std::string whole = make_bundle(kSource, version);
    for (std::size_t length = 0; length < whole.size(); ++length) {
      write(whole.substr(0, length));
      SCOPED_TRACE(testing::Message() << version << ", " << length << " of " << whole.size() << " bytes");
      expect_fails("access");
    }
    write(whole);
    open();
    EXPECT_EQ(string_of("other"), "Guten Tag");
  }
}

/// What is missing of a file of many pages is no memory at all for who maps it.
TEST_F(DamagedCatalog, LargeBundleCutAnywhere_Fails) {
  std::string texts;
  for (int i = 0; i < 1000; ++i)
    texts += " key" + std::to_string(i) + " { \"A text of some length " + std::to_string(i) + "\" }";
  const std::string whole = make_bundle("STRING_TABLE {" + texts + " greeting { \"Hello\" } }");
  ASSERT_GT(whole.size(), 48U * 1000);
  for (std::size_t length = 0; length < whole.size(); length += 997) {
    write(whole.substr(0, length));
    SCOPED_TRACE(testing::Message() << length << " of " << whole.size() << " bytes");
    expect_fails("access");
  }
}

TEST_F(DamagedCatalog, AnyByteChanged_TextsOrTheStatedExceptions) {
  for (const char* const version : kVersions) {
    const std::string whole = make_bundle(kSource, version);
    unsigned failed = 0;
    for (std::size_t i = 0; i < whole.size(); ++i) {
      std::string changed = whole;
      changed[i] = static_cast<char>(changed[i] ^ 1 << i % 8);
      write(changed);
      SCOPED_TRACE(i);
      failed += is_opened_and_read() ? 0U : 1U;
    }
    EXPECT_GT(failed, whole.size() / 8) << version;
  }
}

void damage(std::string& bytes, SeededRandom& random) {
  const auto any = [&](std::size_t count) {
    return static_cast<std::size_t>(random.between(0, static_cast<long long>(count) - 1));
  };
  const std::size_t at = any(bytes.size());
  const std::size_t length = std::min(any(16) + 1, bytes.size() - at);
  switch (random.between(0, 4)) {
    case 0:
      bytes.resize(at + 1);
      break;
    case 1:
      bytes.replace(at, length, random.text(length));
      break;
    case 2:
      bytes.insert(at, bytes.substr(any(bytes.size()), length));
      break;
    case 3:
      bytes.erase(at, length);
      break;
    default:
      bytes.replace(at, length, std::string(length, random.one_in(2) ? '\0' : '\xFF'));
  }
  if (bytes.empty()) bytes = "x";
}

TEST_F(DamagedCatalog, DamagedAtRandom_TextsOrTheStatedExceptions) {
  SeededRandom random;
  unsigned failed = 0;
  for (const char* const version : kVersions) {
    const std::string whole = make_bundle(kSource, version);
    for (int i = 0; i < 400; ++i) {
      std::string changed = whole;
      for (long long times = random.between(1, 3); times > 0; --times) damage(changed, random);
      write(changed);
      failed += is_opened_and_read() ? 0U : 1U;
    }
  }
  EXPECT_GT(failed, 600U);
}

TEST_F(DamagedCatalog, RootOrParentOfTheLanguage_FailsToo) {
  const std::string whole = make_bundle(kSource);
  write(whole);
  catalog_.write("root.res", whole.substr(0, whole.size() / 2));
  expect_fails("access");
  catalog_.write("root.res", whole);
  catalog_.write("de_DE.res", make_bundle(""));
  open();
  EXPECT_EQ(string_of("greeting"), "Guten Tag");
  write(whole.substr(0, whole.size() / 2));
  expect_fails("access");
}

TEST_F(DamagedCatalog, BundleOfALanguageThatIsNotAsked_DoesNotMatter) {
  catalog_.write("fr.res", make_bundle(kSource).substr(0, 100));
  open();
  EXPECT_EQ(string_of("greeting"), "Hello");
}

TEST_F(DamagedCatalog, WholeFileThatIsNoBundleOfThisMachine_IsPassedOver) {
  const std::string whole = make_bundle(kSource);
  std::string other_order = whole;
  other_order[8] = static_cast<char>(other_order[8] ^ 1);
  std::string other_characters = whole;
  other_characters[9] = 1;
  std::string later_version = whole;
  later_version[16] = 4;
  for (const std::string& bytes :
       {other_order, other_characters, later_version, std::string("this is not a resource bundle")}) {
    write(bytes);
    open();
    EXPECT_EQ(string_of("greeting"), "Hello");
    std::filesystem::remove(catalog_.path("root.res"));
    expect_fails("locate");
    catalog_.write("root.res", make_text_bundle("Hello"));
  }
}

TEST_F(DamagedCatalog, NoRegularFileOfThatName_IsPassedOver) {
  ASSERT_EQ(mkfifo(catalog_.path("de.res").c_str(), 0600), 0);
  open();
  EXPECT_EQ(string_of("greeting"), "Hello");
  std::filesystem::remove(catalog_.path("de.res"));
  std::filesystem::create_directory(catalog_.path("de.res"));
  open();
  EXPECT_EQ(string_of("greeting"), "Hello");
  std::filesystem::remove(catalog_.path("de.res"));
  std::filesystem::create_symlink("de.res", catalog_.path("de.res"));
  open();
  EXPECT_EQ(string_of("greeting"), "Hello");
}

TEST_F(DamagedCatalog, FileCutOverwrittenOrRemovedWhileOpen_TextsStay) {
  const std::string whole = make_bundle(kSource);
  const std::vector<std::function<void()>> changes = {
      [&] { ASSERT_EQ(truncate(catalog_.path("de.res").c_str(), 0), 0); },
      [&] { write(std::string(whole.size(), '\xFF')); },
      [&] { write(make_text_bundle("another")); },
      [&] { std::filesystem::remove(catalog_.path("de.res")); },
      [&] { std::filesystem::remove_all(catalog_.path()); },
  };
  for (const auto& change : changes) {
    write(whole);
    open();
    change();
    EXPECT_EQ(string_of("greeting"), "Guten Tag");
    EXPECT_EQ(string_of("disk.full"), "Platte voll: %d%Count%");
    EXPECT_EQ(thrown_by([] { string_of("missing"); }), thrown<QZX_logging_missing_resource>(kStringText));
  }
}

TEST_F(DamagedCatalog, FileReplaced_IsReadWhenOpenedAgain) {
  write(make_text_bundle("one"));
  open();
  EXPECT_EQ(string_of("greeting"), "one");
  write(make_text_bundle("two"));
  EXPECT_EQ(string_of("greeting"), "one");
  qz_LOG_LogConfig::SetLocale(qz_LOG_LogConfig::GetLocale());
  EXPECT_EQ(string_of("greeting"), "two");
  write(make_text_bundle("three"));
  open();
  EXPECT_EQ(string_of("greeting"), "three");
}

TEST_F(DamagedCatalog, SetLocaleToADamagedLanguage_LookupsFailUntilAnother) {
  catalog_.write("ja.res", make_bundle(kSource).substr(0, 150));
  write(make_bundle(kSource));
  open();
  EXPECT_NO_THROW(qz_LOG_LogConfig::SetLocale(QZ_LOCALE_JA_JP));
  EXPECT_EQ(thrown_by([] { string_of("greeting"); }), thrown<QZX_logging_missing_resource>(kTableText));
  EXPECT_NO_THROW(qz_LOG_LogConfig::SetLocale(QZ_LOCALE_DE_DE));
  EXPECT_EQ(string_of("greeting"), "Guten Tag");
}

TEST_F(DamagedCatalog, OpenedAgainAndAgain_MemoryDoesNotGrow) {
  std::string texts;
  for (int i = 0; i < 500; ++i) texts += " key" + std::to_string(i) + " { \"text " + std::to_string(i) + "\" }";
  std::string bundle = make_bundle("STRING_TABLE {" + texts + " }");
  const std::size_t number = bundle.find("t\0e\0x\0t\0 \0", 0, 10);
  ASSERT_NE(number, std::string::npos);
  std::size_t used = 0;
  for (int i = 0; i < 600; ++i) {
    bundle[number] = static_cast<char>('a' + i % 26);  // another content each time
    write(bundle);
    open();
    qz_LOG_LogConfig::SetLocale(i % 2 == 0 ? QZ_LOCALE_DE_DE : QZ_LOCALE_JA_JP);
    if (i == 100) used = mallinfo2().uordblks;
  }
  EXPECT_LT(mallinfo2().uordblks, used + bundle.size());
}

}  // namespace
}  // namespace qz_test

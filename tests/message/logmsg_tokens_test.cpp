#include "message/logmsg_tokens.h"

#include <gtest/gtest.h>

#include <string>
#include <type_traits>
#include <vector>

#include "message/logmsg.h"
#include "tests/message/message_fixture.h"
#include "tests/message/message_oracle.h"
#include "tests/support/support.h"

namespace qz_test {
namespace {

constexpr const char* kNameTooLongText =
    "<QZX_logging_internal_error>_qz_LOG_log_message::_tokenize_string:  UnicodeConverter::fromUnicodeString() failed!";

qz_String counted(const std::string& text) {
  qz_String copy;
  copy._assign(text.data(), static_cast<unsigned>(text.size()));
  return copy;
}

std::string bytes_of(const qz_String& text) { return std::string(text.c_str(), text.length()); }

icu::UnicodeString wide(const std::u16string& text) {
  return icu::UnicodeString(text.data(), static_cast<int>(text.size()));
}

enum class Kind { kWide, kNarrow };

PlainToken plain(const _qz_LOG_msg_token& token, Kind kind) {
  switch (token.get_type()) {
    case _QZ_FMT_SPECIFIER_TOKEN:
      return format_token(static_cast<const _qz_LOG_fmt_spec_token&>(token).get_format());
    case _QZ_ARG_SPECIFIER_TOKEN:
      return name_token(bytes_of(static_cast<const _qz_LOG_arg_spec_token&>(token).get_name()));
    default:
      return kind == Kind::kWide ? text_token(to_utf8(static_cast<const _qz_LOG_string_token&>(token).get_text()))
                                 : text_token(bytes_of(static_cast<const _qz_LOG_qzString_token&>(token).get_text()));
  }
}

PlainTokens plain(const _qz_LOG_msg_token_list& list, Kind kind) {
  PlainTokens tokens;
  for (const auto* token = list.get_head(); token != nullptr; token = token->get_next()) {
    tokens.push_back(plain(*token, kind));
  }
  return tokens;
}

PlainTokens wide_tokens(const std::u16string& text) {
  _qz_LOG_msg_token_list list;
  _qz_LOG_log_message::_tokenize_string(wide(text), list);
  return plain(list, Kind::kWide);
}

PlainTokens narrow_tokens(const std::string& text) {
  _qz_LOG_msg_token_list list;
  _qz_LOG_log_message::_tokenize_qzString(counted(text), list);
  return plain(list, Kind::kNarrow);
}

const std::string kEscape(37, '\0');
constexpr char kEnd = static_cast<char>(0xFF);  // the format of a "%" that ends a wide template

const PlainToken fs = format_token('s');
const PlainToken fd = format_token('d');

PlainToken t(const std::string& text) { return text_token(text); }
PlainToken n(const std::string& name) { return name_token(name); }

TEST(TokenizeString, TextWithoutReference_NoTokens) { EXPECT_EQ(wide_tokens(u"Hello"), PlainTokens{}); }
TEST(TokenizeQzString, TextWithoutReference_OneTextToken) {
  EXPECT_EQ(narrow_tokens("Hello"), PlainTokens{t("Hello")});
}

TEST(TokenizeString, TextBehindTheLastReference_Dropped) {
  EXPECT_EQ(wide_tokens(u"Disk %s%Name% is full"), (PlainTokens{t("Disk "), fs, n("Name")}));
}
TEST(TokenizeQzString, TextBehindTheLastReference_Kept) {
  EXPECT_EQ(narrow_tokens("Disk %s%Name% is full"), (PlainTokens{t("Disk "), fs, n("Name"), t(" is full")}));
}

TEST(TokenizeString, ReferenceAlone_FormatAndName) {
  EXPECT_EQ(wide_tokens(u"%s%Name%"), (PlainTokens{fs, n("Name")}));
}
TEST(TokenizeQzString, ReferenceAlone_FormatAndName) {
  EXPECT_EQ(narrow_tokens("%s%Name%"), (PlainTokens{fs, n("Name")}));
}

TEST(TokenizeString, Escape_DropsTheTextBeforeAndBehind) { EXPECT_EQ(wide_tokens(u"100%% done"), PlainTokens{t("%")}); }
TEST(TokenizeQzString, Escape_DropsTheTextBeforeAndBecomesZeroBytes) {
  EXPECT_EQ(narrow_tokens("100%% done"), (PlainTokens{t(kEscape), t(" done")}));
}

TEST(TokenizeString, CharactersBehindTheFormat_Skipped) {
  EXPECT_EQ(wide_tokens(u"%10d%Size%"), (PlainTokens{format_token('1'), n("Size")}));
}
TEST(TokenizeQzString, CharactersBehindTheFormat_Skipped) {
  EXPECT_EQ(narrow_tokens("%10d%Size%"), (PlainTokens{format_token('1'), n("Size")}));
}

TEST(TokenizeString, LonePercentAtTheEnd_FormatFF) {
  EXPECT_EQ(wide_tokens(u"full %"), (PlainTokens{t("full "), format_token(kEnd), t("full %")}));
  EXPECT_EQ(wide_tokens(u"%"), (PlainTokens{format_token(kEnd), t("%")}));
}
TEST(TokenizeQzString, LonePercentAtTheEnd_IndexOutOfBounds) {
  EXPECT_EQ(thrown_by([] { narrow_tokens("full %"); }), thrown<QZX_index_out_of_bounds>(nullptr));
  EXPECT_EQ(thrown_by([] { narrow_tokens("%"); }), thrown<QZX_index_out_of_bounds>(nullptr));
}

TEST(TokenizeString, EscapeInPlaceOfTheName_TextToken) { EXPECT_EQ(wide_tokens(u"%s%%"), (PlainTokens{fs, t("%")})); }
TEST(TokenizeQzString, EscapeInPlaceOfTheName_TextToken) {
  EXPECT_EQ(narrow_tokens("%s%%"), (PlainTokens{fs, t(kEscape)}));
}

TEST(TokenizeString, ReferenceLeftOpen_TextFromTheBoundaryToTheLastPercent) {
  EXPECT_EQ(wide_tokens(u"abc %d"), (PlainTokens{t("abc "), fd, t("abc %")}));
}
TEST(TokenizeQzString, ReferenceLeftOpen_WholeTextAgain) {
  EXPECT_EQ(narrow_tokens("abc %d"), (PlainTokens{t("abc "), fd, t("abc %d")}));
}

TEST(TokenizeString, TextBeforeAnEscape_Dropped) { EXPECT_EQ(wide_tokens(u"ab%%cd"), PlainTokens{t("%")}); }

TEST(NumberOfAttributes, TwoFormatsAndTwoNames_Two) {
  _qz_LOG_msg_token_list list;
  _qz_LOG_log_message::_tokenize_string(wide(u"%s%A% %d%B%"), list);
  EXPECT_EQ(plain(list, Kind::kWide), (PlainTokens{fs, n("A"), t(" "), fd, n("B")}));
  EXPECT_EQ(_qz_LOG_log_message::_get_number_of_attributes(list), 2U);
}
TEST(NumberOfAttributes, EmptyList_Zero) {
  const _qz_LOG_msg_token_list list;
  EXPECT_EQ(_qz_LOG_log_message::_get_number_of_attributes(list), 0U);
}
TEST(NumberOfAttributes, FormatWithoutName_IsCounted) {
  _qz_LOG_msg_token_list list;
  _qz_LOG_log_message::_tokenize_string(wide(u"%s%A% %d"), list);
  EXPECT_EQ(_qz_LOG_log_message::_get_number_of_attributes(list), 2U);
}

struct TokenCase {
  const char16_t* text;
  PlainTokens tokens;
};

TEST(TokenizeString, Table_Tokens) {
  const TokenCase cases[] = {
      {u"", {}},
      {u"%%", {t("%")}},
      {u"%%%%", {t("%"), t("%")}},
      {u"a%%b%%c", {t("%"), t("%")}},
      {u"%%b%s%A%", {t("%"), t("b"), fs, n("A")}},
      {u"%s%A%tail%%", {fs, n("A"), t("%")}},
      {u"%s%A%, %d%B%", {fs, n("A"), t(", "), fd, n("B")}},
      {u"%s%A%%d%B%",
       {fs, t("%"), PlainToken{2, "d"}, t("B"), format_token(kEnd), t("B%")}},  // the escape takes the end of A
      {u"%s ignored %A%", {fs, n("A")}},
      {u"%s% A %", {fs, n(" A ")}},
      {u"%s%%A%", {fs, t("%")}},  // the escape leaves the reference open: A is skipped
      {u"%s%A%%", {fs, t("%")}},  // the escape inside the name drops its beginning
      {u"%s%A%%B%", {fs, t("%"), n("B")}},
      {u"x%s%A", {t("x"), fs}},  // a name without an end
      {u"x%s%", {t("x"), fs}},
      {u"% %A%", {format_token(' '), n("A")}},
      {u"%é%A%", {format_token(static_cast<char>(0xE9)), n("A")}},
      {u"%漢%A%", {format_token(static_cast<char>(u'漢' & 0xFF)), n("A")}},
      {u"%\U0001F600%A%", {format_token(static_cast<char>(0xD83D & 0xFF)), n("A")}},
      {u"é漢\U0001F600%s%é%", {t("é漢😀"), fs, n("é")}},
      {u"{0}'%s%A%", {t("{0}'"), fs, n("A")}},
      {u"\\%s%A%", {t("\\"), fs, n("A")}},
  };
  for (const TokenCase& c : cases) {
    const std::string text = to_utf8(icu::UnicodeString(c.text));
    EXPECT_EQ(wide_tokens(c.text), c.tokens) << text;
    EXPECT_EQ(oracle_wide_tokens(c.text).tokens, c.tokens) << "the oracle, " << text;
  }
}

struct NarrowTokenCase {
  std::string text;
  PlainTokens tokens;
};

TEST(TokenizeQzString, Table_Tokens) {
  const PlainToken escape = t(kEscape);
  const NarrowTokenCase cases[] = {
      {"", {}},
      {"%%", {escape}},
      {"%%%%", {escape, escape}},
      {"a%%b%%c", {escape, escape, t("c")}},
      {"%%b%s%A%", {escape, t("b"), fs, n("A")}},
      {"%s%A%tail%%", {fs, n("A"), escape}},
      {"%s%A%, %d%B%.", {fs, n("A"), t(", "), fd, n("B"), t(".")}},
      {"%s ignored %A%", {fs, n("A")}},
      {"%s%%A%", {fs, escape}},  // the escape leaves the reference open: A is skipped
      {"%s%%A", {fs, escape, t("A")}},
      {"%s%%A%B%", {fs, escape, n("B")}},
      {"%s%A%%B%", {fs, escape, n("B")}},
      {"x%s%A", {t("x"), fs, t("A")}},  // a name without an end becomes text
      {"x%s%", {t("x"), fs}},
      {"% %A%", {format_token(' '), n("A")}},
      {"%é%A%", {format_token(static_cast<char>(0xC3)), n("A")}},
      {"é漢😀%s%é漢%.", {t("é漢😀"), fs, n("é漢"), t(".")}},
      {"{0}'%s%A%", {t("{0}'"), fs, n("A")}},
      {std::string("a\0b%s%A%c\0d", 12), {t("a"), fs, n("A"), t("c")}},
      {std::string("\0%s%A\0B%", 8), {t(""), fs, n("A")}},
      {std::string("%\0%A%", 5), {format_token('\0'), n("A")}},
  };
  for (const NarrowTokenCase& c : cases) {
    EXPECT_EQ(narrow_tokens(c.text), c.tokens) << c.text;
    EXPECT_EQ(oracle_narrow_tokens(c.text).tokens, c.tokens) << "the oracle, " << c.text;
  }
}

TEST(TokenizeString, LonePercentAtEveryPlace_AsTheOracle) {
  const std::u16string text = u"Disk %s%Name% of %d%漢%, %%";
  for (std::size_t place = 0; place <= text.size(); ++place) {
    std::u16string damaged = text;
    damaged.insert(place, 1, u'%');
    EXPECT_EQ(wide_tokens(damaged), oracle_wide_tokens(damaged).tokens) << "at " << place;
  }
}

/// The tokens, or how cutting the template must fail, as the oracle has it.
void expect_narrow_as_oracle(const std::string& text) {
  const PlainResult expected = oracle_narrow_tokens(text);
  _qz_LOG_msg_token_list list;
  const auto tokenize = [&] { _qz_LOG_log_message::_tokenize_qzString(counted(text), list); };
  if (expected.end == TokensEnd::kDone) {
    tokenize();
  } else {
    EXPECT_EQ(thrown_by(tokenize), thrown<QZX_index_out_of_bounds>(nullptr)) << testing::PrintToString(text);
  }
  EXPECT_EQ(plain(list, Kind::kNarrow), expected.tokens) << testing::PrintToString(text);
}

void expect_wide_as_oracle(const std::u16string& text) {
  const PlainResult expected = oracle_wide_tokens(text);
  _qz_LOG_msg_token_list list;
  const auto tokenize = [&] { _qz_LOG_log_message::_tokenize_string(wide(text), list); };
  const std::string shown = to_utf8(wide(text));
  if (expected.end == TokensEnd::kDone) {
    tokenize();
  } else {
    EXPECT_EQ(thrown_by(tokenize), thrown<QZX_logging_internal_error>(kNameTooLongText)) << shown;
  }
  EXPECT_EQ(plain(list, Kind::kWide), expected.tokens) << shown;
}

TEST(TokenizeQzString, LonePercentAtEveryPlace_AsTheOracle) {
  const std::string text = "Disk %s%Name% of %d%Count%, %%";
  for (std::size_t place = 0; place <= text.size(); ++place) {
    std::string damaged = text;
    damaged.insert(place, 1, '%');
    expect_narrow_as_oracle(damaged);
  }
}

TEST(TokenizeBoth, EveryPrefix_AsTheOracle) {
  const std::u16string text = u"Disk %s%Name% of %10d%é% %% %s%x%%%%";
  const std::string narrow = to_utf8(wide(text));
  for (std::size_t length = 0; length <= text.size(); ++length) expect_wide_as_oracle(text.substr(0, length));
  for (std::size_t length = 0; length <= narrow.size(); ++length) expect_narrow_as_oracle(narrow.substr(0, length));
}

std::u16string random_text(SeededRandom& random, const std::vector<std::u16string>& alphabet) {
  std::u16string text;
  for (long long left = random.between(0, 24); left > 0; --left) {
    text += alphabet[static_cast<std::size_t>(random.between(0, static_cast<long long>(alphabet.size()) - 1))];
  }
  return text;
}

constexpr int kRandomTemplates = 30000;

TEST(TokenizeBoth, RandomTemplates_AsTheOracle) {
  SeededRandom random;
  const std::vector<std::u16string> alphabet = {u"%", u"%", u"%", u"s", u"d",  u"_",
                                                u"A", u" ", u"{", u"é", u"漢", u"\U0001F600"};
  for (int i = 0; i < kRandomTemplates && !testing::Test::HasFailure(); ++i) {
    const std::u16string text = random_text(random, alphabet);
    expect_wide_as_oracle(text);
    expect_narrow_as_oracle(to_utf8(wide(text)));
  }
}

TEST(TokenizeBoth, RandomTemplatesWithZerosAndHalfSurrogates_AsTheOracle) {
  SeededRandom random;
  const std::vector<std::u16string> alphabet = {u"%",
                                                u"%",
                                                u"s",
                                                u"A",
                                                std::u16string(1, u'\0'),
                                                std::u16string(1, char16_t{0xD83D}),
                                                std::u16string(1, char16_t{0xDE00}),
                                                std::u16string(1, char16_t{0xFFFF})};
  for (int i = 0; i < kRandomTemplates && !testing::Test::HasFailure(); ++i) {
    expect_wide_as_oracle(random_text(random, alphabet));
    std::string bytes;
    for (long long left = random.between(0, 24); left > 0; --left) {
      bytes += random.one_in(3) ? '%' : static_cast<char>(random.between(0, 255));
    }
    expect_narrow_as_oracle(bytes);
  }
}

TEST(TokenizeString, NameThatFillsTheConversionBuffer_Kept) {
  // 2 * (n + 1) bytes: two characters of three bytes fit exactly, one leaves a byte.
  EXPECT_EQ(wide_tokens(u"%s%漢%"), (PlainTokens{fs, n("漢")}));
  EXPECT_EQ(wide_tokens(u"%s%漢字%"), (PlainTokens{fs, n("漢字")}));
  EXPECT_EQ(wide_tokens(u"%s%éééé%"), (PlainTokens{fs, n("éééé")}));
  EXPECT_EQ(wide_tokens(u"%s%漢字AAAAAA%"), (PlainTokens{fs, n("漢字AAAAAA")}));
  EXPECT_EQ(wide_tokens(u"%s%\U0001F600\U0001F600\U0001F600%"), (PlainTokens{fs, n("😀😀😀")}));
}

TEST(TokenizeString, NameBeyondTheConversionBuffer_Throws) {
  for (const char16_t* text : {u"%s%漢字化%", u"%s%漢字化字A%", u"%s%漢字化字%", u"a%s%A%b%d%漢字化%c"}) {
    EXPECT_EQ(thrown_by([&] { wide_tokens(text); }), thrown<QZX_logging_internal_error>(kNameTooLongText))
        << to_utf8(icu::UnicodeString(text));
  }
}

TEST(TokenizeString, AfterANameThatIsTooLong_TheConverterStillWorks) {
  EXPECT_EQ(thrown_by([] { wide_tokens(u"%s%漢字化%"); }), thrown<QZX_logging_internal_error>(kNameTooLongText));
  EXPECT_EQ(wide_tokens(u"%s%漢字%"), (PlainTokens{fs, n("漢字")}));
}

TEST(TokenizeString, NameTooLong_TokensBeforeItStayInTheList) {
  _qz_LOG_msg_token_list list;
  EXPECT_EQ(thrown_by([&] { _qz_LOG_log_message::_tokenize_string(wide(u"a%s%A%b%d%漢字化%"), list); }),
            thrown<QZX_logging_internal_error>(kNameTooLongText));
  EXPECT_EQ(plain(list, Kind::kWide), (PlainTokens{t("a"), fs, n("A"), t("b"), fd}));
}

TEST(TokenizeString, ZeroInsideAName_CutsIt) {
  EXPECT_EQ(wide_tokens(std::u16string(u"%s%A\0B%", 7)), (PlainTokens{fs, n("A")}));
}

TEST(TokenizeString, ZeroInsideAText_Kept) {
  EXPECT_EQ(wide_tokens(std::u16string(u"a\0b%s%A%", 8)), (PlainTokens{t(std::string("a\0b", 3)), fs, n("A")}));
}

TEST(TokenizeString, LongName_Kept) {
  const std::u16string name(5000, u'é');
  EXPECT_EQ(wide_tokens(u"%s%" + name + u"%"), (PlainTokens{fs, n(to_utf8(wide(name)))}));
}

constexpr std::size_t kManyReferences = 500000;

template <typename Text>
Text repeated(const Text& part, std::size_t count) {
  Text text;
  text.reserve(part.size() * count);
  for (std::size_t i = 0; i < count; ++i) text += part;
  return text;
}

TEST(TokenizeString, MillionTokens_DestroyedWithoutDeepRecursion) {
  _qz_LOG_msg_token_list list;
  _qz_LOG_log_message::_tokenize_string(wide(repeated<std::u16string>(u"%s%A%.", kManyReferences)), list);
  EXPECT_EQ(_qz_LOG_log_message::_get_number_of_attributes(list), kManyReferences);
}

TEST(TokenizeQzString, MillionTokens_DestroyedWithoutDeepRecursion) {
  _qz_LOG_msg_token_list list;
  _qz_LOG_log_message::_tokenize_qzString(counted(repeated<std::string>("%s%A%.", kManyReferences)), list);
  EXPECT_EQ(_qz_LOG_log_message::_get_number_of_attributes(list), kManyReferences);
}

bool is_prefix(const PlainTokens& part, const PlainTokens& whole) {
  return part.size() < whole.size() && std::equal(part.begin(), part.end(), whole.begin());
}

TEST(TokenizeString, AllocationFails_MemoryAllocAndEarlierTokensStay) {
  const icu::UnicodeString text = wide(u"a%s%A%b%d%éé%c%%");
  _qz_LOG_msg_token_list whole;
  _qz_LOG_log_message::_tokenize_string(text, whole);
  std::unique_ptr<_qz_LOG_msg_token_list> list = std::make_unique<_qz_LOG_msg_token_list>();
  const unsigned failures =
      FailEveryAllocation([&] { _qz_LOG_log_message::_tokenize_string(text, *list); },
                          [&] {
                            EXPECT_TRUE(is_prefix(plain(*list, Kind::kWide), plain(whole, Kind::kWide)));
                            list = std::make_unique<_qz_LOG_msg_token_list>();
                          });
  EXPECT_GE(failures, plain(whole, Kind::kWide).size());
}

TEST(TokenizeQzString, AllocationFails_MemoryAllocAndEarlierTokensStay) {
  const qz_String text = counted("a%s%A%b%d%a name longer than a small string%c%%d");
  _qz_LOG_msg_token_list whole;
  _qz_LOG_log_message::_tokenize_qzString(text, whole);
  std::unique_ptr<_qz_LOG_msg_token_list> list = std::make_unique<_qz_LOG_msg_token_list>();
  const unsigned failures =
      FailEveryAllocation([&] { _qz_LOG_log_message::_tokenize_qzString(text, *list); },
                          [&] {
                            EXPECT_TRUE(is_prefix(plain(*list, Kind::kNarrow), plain(whole, Kind::kNarrow)));
                            list = std::make_unique<_qz_LOG_msg_token_list>();
                          });
  EXPECT_GT(failures, plain(whole, Kind::kNarrow).size());
}

TEST(MessageToken, NewToken_HasNoSuccessor) {
  const _qz_LOG_fmt_spec_token token('s');
  EXPECT_EQ(token.get_next(), nullptr);
  EXPECT_EQ(token.get_type(), 1);
}

TEST(MessageToken, Classes_NotCopyableWithVirtualDestructor) {
  static_assert(!std::is_copy_constructible_v<_qz_LOG_fmt_spec_token>);
  static_assert(!std::is_copy_assignable_v<_qz_LOG_arg_spec_token>);
  EXPECT_TRUE(std::has_virtual_destructor_v<_qz_LOG_msg_token>);
}

TEST(MessageToken, TypeCodes_FixedNumbers) {
  EXPECT_EQ(_QZ_STRING_TOKEN, 0);
  EXPECT_EQ(_QZ_FMT_SPECIFIER_TOKEN, 1);
  EXPECT_EQ(_QZ_ARG_SPECIFIER_TOKEN, 2);
  EXPECT_EQ(_qz_LOG_string_token(icu::UnicodeString(u"a")).get_type(), 0);
  EXPECT_EQ(_qz_LOG_qzString_token(qz_String("a")).get_type(), 0);
  EXPECT_EQ(_qz_LOG_arg_spec_token(qz_String("a")).get_type(), 2);
}

TEST(MessageTokenList, AddToTail_KeepsTheOrder) {
  _qz_LOG_msg_token_list list;
  EXPECT_EQ(list.get_head(), nullptr);
  list.add_to_tail(new _qz_LOG_fmt_spec_token('s'));
  list.add_to_tail(new _qz_LOG_arg_spec_token(qz_String("A")));
  list.add_to_tail(new _qz_LOG_qzString_token(qz_String("b")));
  EXPECT_EQ(plain(list, Kind::kNarrow), (PlainTokens{fs, n("A"), t("b")}));
}

}  // namespace
}  // namespace qz_test

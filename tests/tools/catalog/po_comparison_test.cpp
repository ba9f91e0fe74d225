#include "tools/catalog/po_comparison.h"

#include <gtest/gtest.h>

#include <functional>
#include <optional>

namespace qzlog_catalog {
namespace {

PoMessage message() {
  PoMessage result;
  result.context = "k";
  result.source = "a b";
  result.translation = "c d";
  result.comments = "mine\n";
  result.extracted_comments = "theirs\n";
  result.references = {{"a.yaml", 3}};
  result.previous_source = "was";
  result.formats = {"c-format"};
  return result;
}

/// Whether two files with a message, of which one is changed, say the same.
bool is_same_after(const std::function<void(PoMessage&)>& change) {
  PoFile one;
  one.messages = {message(), message()};
  PoFile other = one;
  change(other.messages[1]);
  EXPECT_EQ(say_the_same(one, other), say_the_same(other, one));
  return say_the_same(one, other);
}

TEST(SayTheSame, WhatTranslatorsWrote_Counts) {
  EXPECT_TRUE(is_same_after([](PoMessage&) {}));
  EXPECT_FALSE(is_same_after([](PoMessage& changed) { changed.context = "k "; }));
  EXPECT_FALSE(is_same_after([](PoMessage& changed) { changed.source = "a  b"; }));
  EXPECT_FALSE(is_same_after([](PoMessage& changed) { changed.translation = "c"; }));
  EXPECT_FALSE(is_same_after([](PoMessage& changed) { changed.comments = ""; }));
  EXPECT_FALSE(is_same_after([](PoMessage& changed) { changed.extracted_comments = "their\n"; }));
  EXPECT_FALSE(is_same_after([](PoMessage& changed) { changed.references.clear(); }));
  EXPECT_FALSE(is_same_after([](PoMessage& changed) { changed.references[0].line = 4; }));
  EXPECT_FALSE(is_same_after([](PoMessage& changed) { changed.previous_source.reset(); }));
  EXPECT_FALSE(is_same_after([](PoMessage& changed) { changed.previous_context = ""; }));
  EXPECT_FALSE(is_same_after([](PoMessage& changed) { changed.formats.clear(); }));
  EXPECT_FALSE(is_same_after([](PoMessage& changed) { changed.fuzzy = true; }));
  EXPECT_FALSE(is_same_after([](PoMessage& changed) { changed.obsolete = true; }));
}

TEST(SayTheSame, WhatLibgettextpoTrims_DoesNot) {
  EXPECT_TRUE(is_same_after([](PoMessage& changed) { changed.comments = " mine \n\n"; }));
  EXPECT_TRUE(is_same_after([](PoMessage& changed) { changed.extracted_comments = "theirs \t\n"; }));
  EXPECT_TRUE(is_same_after([](PoMessage& changed) { changed.references[0].file = "././ a.yaml "; }));
  EXPECT_TRUE(is_same_after([](PoMessage& changed) { changed.references.push_back(changed.references[0]); }));
}

TEST(SayTheSame, FewerMessages_AreNotTheSame) {
  PoFile one;
  one.messages = {message(), message()};
  PoFile other;
  other.messages = {message()};
  EXPECT_FALSE(say_the_same(one, other));
  EXPECT_FALSE(say_the_same(other, one));
}

}  // namespace
}  // namespace qzlog_catalog

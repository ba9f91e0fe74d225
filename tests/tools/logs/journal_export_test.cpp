#include "tools/logs/journal_export.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace {

using qzlog_tool::JournalExport;

std::string binary(std::string_view name, std::string_view value) {
  std::string field = std::string(name) + '\n';
  for (unsigned i = 0; i < 8; ++i) field += static_cast<char>(value.size() >> (8 * i) & 0xFF);
  return field + std::string(value) + '\n';
}

std::string lines_of(std::string_view bytes, std::size_t piece = std::string_view::npos) {
  JournalExport journal;
  std::string lines;
  while (!bytes.empty()) {
    journal.take(bytes.substr(0, piece), lines);
    bytes.remove_prefix(std::min(piece, bytes.size()));
  }
  return lines;
}

const std::string kOurs = R"({"id":1,"attributes":{"a":"=\n"}})";

std::string export_of_all() {
  return "__CURSOR=s=1;i=2\nQZLOG_ENTRY=" + kOurs + "\nMESSAGE=QZLOG_ENTRY=no\n\n" +           // a text
         "QZLOG_ENTRYX=no\nQZLOG_ENTR=no\nqzlog_entry=no\n\n" +                                // others' names
         binary("QZLOG_ENTRY", kOurs + "\t") + binary("MESSAGE", "a\n\nQZLOG_ENTRY=no\n\n") +  // with a length
         "\n" + "QZLOG_ENTRY=\n\n" + binary("QZLOG_ENTRY", "") + "\n" +                        // empty ones
         binary("QZLOG_ENTRY", "a\nb\n") + "\nQZLOG_ENTRY=1\nQZLOG_ENTRY=2\n\n" + std::string(100, 'X') + "=no\n\n";
}

TEST(JournalExport, ValuesOfTheField_AreLines) {
  EXPECT_EQ(lines_of(export_of_all()), kOurs + "\n" + kOurs + "\t\n\n\na b \n1\n2\n");
}

TEST(JournalExport, PiecesOfAnySize_GiveTheSame) {
  const std::string bytes = export_of_all();
  for (std::size_t piece = 1; piece <= bytes.size(); ++piece) EXPECT_EQ(lines_of(bytes, piece), lines_of(bytes));
}

TEST(JournalExport, EveryBeginning_GivesABeginning) {
  const std::string bytes = export_of_all();
  const std::string all = lines_of(bytes);
  for (std::size_t size = 0; size < bytes.size(); ++size) {
    EXPECT_TRUE(all.starts_with(lines_of(bytes.substr(0, size)))) << size;
  }
}

TEST(JournalExport, ExportThatBreaksOffInALine_IsTold) {
  JournalExport journal;
  std::string lines;
  journal.take("MESSAGE=a", lines);
  EXPECT_FALSE(journal.is_inside_line());
  journal.take("\nQZLOG_ENTRY={", lines);
  EXPECT_TRUE(journal.is_inside_line());
  journal.take("\n", lines);
  EXPECT_FALSE(journal.is_inside_line());
  journal.take(std::string("QZLOG_ENTRY\n\2\0\0\0\0\0\0\0a", 21), lines);
  EXPECT_TRUE(journal.is_inside_line());
  journal.take("b\n", lines);
  EXPECT_FALSE(journal.is_inside_line());
  EXPECT_EQ(lines, "{\nab\n");
}

TEST(JournalExport, LengthThatCannotBe_IsPassedOver) {
  const std::string bytes = "MESSAGE\n" + std::string(8, '\xFF') + "QZLOG_ENTRY=no\n\n";
  EXPECT_EQ(lines_of("QZLOG_ENTRY=1\n\n" + bytes), "1\n");
}

}  // namespace

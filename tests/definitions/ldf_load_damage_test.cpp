#include <algorithm>
#include <functional>

#include "tests/definitions/table_test.h"
#include "tests/support/resource_limit.h"

namespace {

using namespace qz_test;  // NOLINT(google-build-using-namespace): the vocabulary of table_test.h

LdfFile std_file() {
  return {.tag = "1.00",
          .globals = {{"global1", TypeUInt1, "away"}, {"global2", TypeMBChar1K}},
          .entries = {{.id = 1, .word = 1, .mask = 1, .message_id = "MSG_1", .message_text = "one"},
                      {.id = 2,
                       .word = 2,
                       .message_id = "MSG_2",
                       .message_text = "two %user%",
                       .selector = "what",
                       .attributes = {{"user", TypeMBChar64, "account"}, {"what", TypeUInt4}},
                       .selector_messages = {{1, 10, "MSG_2_1", "two one"}, {2, 20, "", "two two"}}},
                      {.id = 3, .mask = 3, .attributes = {{"a", TypeSInt1}}}}};
}

LdfFile aux_file() {
  return {.tag = "aux",
          .globals = {{"global3", TypeBool}},
          .entries = {{.id = 2,
                       .message_id = "MSG_2A",
                       .message_text = "two more",
                       .selector = "what",
                       .attributes = {{"what", TypeUInt2}, {"where", TypeMBChar256}},
                       .selector_messages = {{3, 30, "MSG_2_3", "two three"}}},
                      {.id = 4, .message_id = "MSG_4", .message_text = "four", .attributes = {{"b", TypeSInt2}}}}};
}

/// Where the parts of an image end that are read when the file is set.
std::size_t end_of_loaded_part(const LdfImage& image, const LdfFile& file) {
  const std::size_t end_of_map = image.map_offset + 8 * file.entries.size();
  return std::max({std::size_t{128}, end_of_map, image.record_offsets.front()});
}

/// Whether nothing is thrown, or an invalid definition with one of the texts of reading.
testing::AssertionResult succeeds_or_is_refused(const std::function<void()>& operation) {
  try {
    operation();
  } catch (const QZX_logging_invalid_definition& thrown) {
    const std::string text = thrown.get_message() == nullptr ? "(null)" : thrown.get_message();
    const std::string prefix = "<QZX_logging_invalid_definition> attribute ";
    const std::string suffix = " already exist.";
    const bool names_attribute = text.size() >= prefix.size() + suffix.size() && text.rfind(prefix, 0) == 0 &&
                                 text.compare(text.size() - suffix.size(), suffix.size(), suffix) == 0;
    for (const char* known : {kUnreadable, kCorrupted, kSelectorNameConflict, kSelectorMessageConflict}) {
      if (text == known) return testing::AssertionSuccess();
    }
    return names_attribute ? testing::AssertionSuccess() : testing::AssertionFailure() << "threw \"" << text << "\"";
  } catch (...) {
    return testing::AssertionFailure() << "threw a " << readable_name(*abi::__cxa_current_exception_type());
  }
  return testing::AssertionSuccess();
}

class LdfDamage : public TableTest {
 protected:
  /// Loads bytes as standard file (and, with `aux`, others over it) and looks everything up, with memory for what the
  /// files hold only.
  void use(const std::string& std_bytes, const std::string* aux = nullptr) {
    const AddressSpaceLimit limit(64 << 20);
    EXPECT_TRUE(succeeds_or_is_refused([&] { set_std_bytes(std_bytes); }));
    if (aux != nullptr) {
      EXPECT_TRUE(succeeds_or_is_refused([&] { set_aux_bytes(*aux); }));
    }
    for (unsigned id = 0; id < 6; ++id) look_up(id);
    look_up(0xFFFFFFFF);
    table_.clear();
    _qz_LOG_log_definition::clear_global_attr_info();
  }

  /// Uses `bytes` as the standard file, and as the auxiliary file over a sound one.
  void use_both_ways(const std::string& bytes) {
    use(bytes);
    use(std_file().bytes(), &bytes);
  }

  void look_up(unsigned id) {
    EXPECT_TRUE(succeeds_or_is_refused([&] {
      const auto held = table_.acquire_entry(id);
      if (!held) return;
      EXPECT_EQ(held->get_entry_id(), id);
      EXPECT_EQ(own_attributes(*held.get()).size(), held->get_attr_count());
      EXPECT_EQ(selector_messages(*held.get()).size(), held->get_selector_msg_count());
      EXPECT_LE(std::string(held->get_version_tag()).size(), 8U);
    }));
  }

  ~LdfDamage() override {
    table_.clear();
    EXPECT_EQ(open_file_count(), open_files_before_);
  }

  const std::ptrdiff_t open_files_before_ = open_file_count();
};

TEST_F(LdfDamage, EveryPrefixOfAnStdFile_RefusedWhereItEnds) {
  for (const char* order : {"gmr", "rmg", "mrg"}) {
    LdfFile file = std_file();
    file.region_order = order;
    const LdfImage image = file.image();
    const bool sets_before_records = order[2] == 'r';
    for (std::size_t length = 0; length < image.bytes.size(); ++length) {
      SCOPED_TRACE(std::string(order) + " cut to " + std::to_string(length));
      const auto set = [&] { set_std_bytes(truncated(image.bytes, length)); };
      if (!sets_before_records || length < end_of_loaded_part(image, file)) {
        EXPECT_EQ(thrown_by(set), invalid_definition(kUnreadable));
        continue;
      }
      set();
      for (std::size_t i = 0; i < file.entries.size(); ++i) {
        const std::size_t end = i + 1 < file.entries.size() ? image.record_offsets[i + 1] : image.bytes.size();
        const unsigned id = file.entries[i].id;
        if (length < end) {
          EXPECT_EQ(thrown_by([&] { table_.find_entry(id); }), invalid_definition(kUnreadable)) << id;
        } else {
          EXPECT_EQ(at(id).get_attr_count(), file.entries[i].attributes.size()) << id;
        }
      }
    }
  }
}

TEST_F(LdfDamage, EveryPrefixOfAnAuxFile_RefusedWhereItEnds) {
  const LdfFile file = aux_file();
  const LdfImage image = file.image();
  const std::size_t end_of_known_record = image.record_offsets[1];
  for (std::size_t length = 0; length < image.bytes.size(); ++length) {
    SCOPED_TRACE("cut to " + std::to_string(length));
    set_std(std_file());
    const auto set = [&] { set_aux_bytes(truncated(image.bytes, length)); };
    if (length < end_of_known_record) {
      EXPECT_EQ(thrown_by(set), invalid_definition(kUnreadable));
      continue;
    }
    set();
    EXPECT_EQ(own_attributes(at(2)), Texts({"user:16>account", "what:4>", "where:18>"}));
    EXPECT_EQ(thrown_by([&] { table_.find_entry(4); }), invalid_definition(kUnreadable));
    EXPECT_EQ(table_.find_entry(5), nullptr);
  }
}

TEST_F(LdfDamage, EveryPrefix_NothingButTheStatedFailures) {
  const std::string bytes = aux_file().bytes();
  for (std::size_t length = 0; length < bytes.size(); ++length) {
    SCOPED_TRACE("cut to " + std::to_string(length));
    use_both_ways(truncated(bytes, length));
  }
}

TEST_F(LdfDamage, EveryByteFlipped_NothingButTheStatedFailures) {
  for (const LdfFile& file : {std_file(), aux_file()}) {
    const std::string bytes = file.bytes();
    for (std::size_t position = 0; position < bytes.size(); ++position) {
      SCOPED_TRACE("byte " + std::to_string(position));
      use_both_ways(flipped_byte(bytes, position));
    }
  }
}

TEST_F(LdfDamage, EveryBitFlipped_NothingButTheStatedFailures) {
  const std::string bytes = std_file().bytes();
  for (std::size_t position = 0; position < bytes.size(); ++position) {
    for (unsigned bit = 0; bit < 8; ++bit) {
      SCOPED_TRACE("byte " + std::to_string(position) + " bit " + std::to_string(bit));
      use(flipped_bit(bytes, position, bit));
    }
  }
}

TEST_F(LdfDamage, EveryLengthCountAndOffsetOverwritten_NothingButTheStatedFailures) {
  for (const LdfFile& file : {std_file(), aux_file()}) {
    const LdfImage image = file.image();
    const auto size = static_cast<unsigned>(image.bytes.size());
    for (const LdfMark& mark : image.marks) {
      for (const unsigned value : {0U,
                                   1U,
                                   2U,
                                   3U,
                                   5U,
                                   44U,
                                   127U,
                                   128U,
                                   255U,
                                   256U,
                                   257U,
                                   static_cast<unsigned>(image.map_offset),
                                   static_cast<unsigned>(image.record_offsets[0]),
                                   static_cast<unsigned>(image.record_offsets[1]),
                                   size - 4,
                                   size - 1,
                                   size,
                                   size + 1,
                                   0x7FFFFFFFU,
                                   0x80000000U,
                                   0xFFFFFFFEU,
                                   0xFFFFFFFFU}) {
        SCOPED_TRACE("at " + std::to_string(mark.position) + ": " + std::to_string(value));
        use_both_ways(with_int4(image.bytes, mark.position, value));
      }
    }
  }
}

TEST_F(LdfDamage, LengthBeyondTheEnd_RefusedWithoutTakingMemory) {
  const DebugLogFile log(1);
  const LdfImage image = std_file().image();
  for (const LdfMark& mark : image.marks) {
    if (mark.kind != LdfMark::kLength) continue;
    for (const unsigned length : {0x20000000U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
      use(with_int4(image.bytes, mark.position, length));
    }
  }
  EXPECT_EQ(log.text().find("new p_buffer"), std::string::npos);
  EXPECT_NE(log.text().find("_throw_file_io_error()"), std::string::npos);
}

TEST_F(LdfDamage, CountBeyondTheEnd_Unreadable) {
  const LdfImage image = std_file().image();
  for (const unsigned count : {4U, 1000U, 0x7FFFFFFFU, 0xFFFFFFFFU}) {
    const AddressSpaceLimit limit(64 << 20);
    // What follows the entry map is read as further pairs up to the end of the file.
    if (count != 4) {
      EXPECT_EQ(thrown_by([&] { set_std_bytes(with_int4(image.bytes, 48, count)); }), invalid_definition(kUnreadable))
          << count;
    }
    set_std_bytes(with_int4(image.bytes, image.record_offsets[2] + 24, count));  // attributes of the last record
    EXPECT_EQ(thrown_by([&] { table_.find_entry(3); }), invalid_definition(kUnreadable)) << count;
    set_std_bytes(with_int4(image.bytes, image.bytes.size() - 4, count));  // its selector messages
    EXPECT_EQ(thrown_by([&] { table_.find_entry(3); }), invalid_definition(kUnreadable)) << count;
  }
}

TEST_F(LdfDamage, RegionsSwapped_NothingButTheStatedFailures) {
  const std::string bytes = std_file().bytes();
  for (const std::size_t length : {4U, 8U, 32U}) {
    for (std::size_t first = 0; first + 2 * length <= bytes.size(); first += 12) {
      for (std::size_t second = first + length; second + length <= bytes.size(); second += 52) {
        use(swapped(bytes, first, second, length));
      }
    }
  }
}

TEST_F(LdfDamage, RunsRepeated_NothingButTheStatedFailures) {
  const std::string bytes = std_file().bytes();
  for (const std::size_t length : {1U, 4U, 8U, 100U}) {
    for (std::size_t position = 0; position + length <= bytes.size(); position += 4) {
      use_both_ways(repeated(bytes, position, length));
    }
  }
}

TEST_F(LdfDamage, RandomBytesOverwritten_NothingButTheStatedFailures) {
  SeededRandom random;
  const std::string sound = std_file().bytes();
  for (int round = 0; round < 2000; ++round) {
    std::string bytes = sound;
    for (long long hits = random.between(1, 8); hits > 0; --hits) {
      const auto position = static_cast<std::size_t>(random.between(4, static_cast<long long>(bytes.size()) - 1));
      bytes[position] = static_cast<char>(random.one_in(2) ? random.between(0, 4) : random.between(0, 255));
    }
    use_both_ways(bytes);
  }
}

// ---- memory ----

/// Runs `operation` with every allocation failing in turn until none is left. A text that could not be read for lack of
/// memory counts as unreadable.
unsigned fail_every_allocation(const std::function<void()>& prepare, const std::function<void()>& operation,
                               const std::function<void()>& check) {
  for (unsigned nth = 1;; ++nth) {
    prepare();
    bool happened = false;
    std::string outcome = "success";
    try {
      const AllocationFailure failure(nth);
      struct Note {
        ~Note() { happened = failure.happened(); }
        const AllocationFailure& failure;
        bool& happened;
      } note{failure, happened};
      operation();
    } catch (const QZX_memory_alloc& thrown) {
      outcome = quoted_or_null(thrown.get_message());
    } catch (const QZX_logging_invalid_definition& thrown) {
      outcome = quoted_or_null(thrown.get_message());
    }
    if (!happened) {
      EXPECT_EQ(outcome, "success");
      return nth - 1;
    }
    EXPECT_TRUE(outcome == "(null)" || outcome == quoted_or_null(kUnreadable)) << "allocation " << nth << outcome;
    check();
  }
}

constexpr const char* kLongName =
    "a name that is far too long to be kept inside the string object or in the memory that a thread keeps for texts";

LdfFile long_std_file() {
  return {.globals = {{kLongName, 1, kLongName}},
          .entries = {{.id = 1,
                       .message_id = kLongName,
                       .message_text = std::string(2000, 'x'),
                       .selector = kLongName,
                       .attributes = {{kLongName, 1, kLongName}, {"b", 2}},
                       .selector_messages = {{1, 1, kLongName, kLongName}}}}};
}

LdfFile long_aux_file() {
  return {.globals = {{kLongName, 2}},
          .entries = {{.id = 1, .attributes = {{"c", 3, kLongName}}, .selector_messages = {{2, 2, kLongName, "t"}}},
                      {.id = 2, .message_text = kLongName}}};
}

TEST_F(LdfDamage, StdLoadWithoutMemory_TableUsableAfterwards) {
  const std::string path = folder_.write("std.ldf", long_std_file().bytes());
  const auto set = [&] { table_.set_precompiled_definition_file_path(path.c_str()); };
  EXPECT_GT(fail_every_allocation([&] { table_.clear(); }, set,
                                  [&] {
                                    EXPECT_EQ(table_.find_entry(1), nullptr);
                                    set();
                                    EXPECT_EQ(at(1).get_attr_count(), 2);
                                  }),
            4U);
}

TEST_F(LdfDamage, LookupWithoutMemory_NothingCachedAndReadNextTime) {
  set_std(long_std_file());
  EXPECT_GT(fail_every_allocation([&] { set_std(long_std_file()); }, [&] { table_.find_entry(1); },
                                  [&] {
                                    EXPECT_EQ(at(1).get_attr_count(), 2);
                                    EXPECT_EQ(at(1).get_selector_msg_count(), 1);
                                  }),
            10U);
}

TEST_F(LdfDamage, AuxLoadWithoutMemory_TableUsableAfterwards) {
  const std::string aux = folder_.write("aux.ldf", long_aux_file().bytes());
  const auto set = [&] { table_.set_precompiled_aux_definition_file_path(aux.c_str()); };
  EXPECT_GT(fail_every_allocation([&] { set_std(long_std_file()); }, set,
                                  [&] {
                                    EXPECT_TRUE(succeeds_or_is_refused([&] { table_.find_entry(1); }));
                                    set_std(long_std_file());
                                    set();
                                    EXPECT_EQ(at(1).get_attr_count(), 3);
                                    EXPECT_EQ(at(1).get_selector_msg_count(), 2);
                                    at(2);
                                  }),
            10U);
}

}  // namespace

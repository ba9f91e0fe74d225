#include "tools/definitions/definition_file.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/support/temp_dir.h"
#include "tools/system/command_error.h"

namespace {

using qzlog_tool::CommandError;
using qzlog_tool::DefinitionFile;
using qzlog_tool::names_file;
using qzlog_tool::read_definition_file;
using qzlog_tool::read_definition_source;

template <class Read>
std::string failure_of(Read read, const std::string& path) {
  try {
    read(path);
  } catch (const CommandError& error) {
    EXPECT_EQ(error.exit_status(), qzlog_tool::kExitCannotRun);
    return error.what();
  }
  return "none";
}

class DefinitionFileTest : public ::testing::Test {
 protected:
  std::string write(const std::string& name, const std::string& content) const { return folder_.write(name, content); }

  qz_test::TempDir folder_;
};

TEST_F(DefinitionFileTest, BeginningOrName_TellCompiledFromSource) {
  const struct {
    const char* name;
    const char* content;
    bool is_source;
  } rows[] = {
      {"a.yaml", "version: 1.0\n", true},
      {"b", "version: 1.0\n", true},
      {"c.yaml", "", true},
      {"d.ldf.yaml", "x", true},
      {"e.LDF", "version: 1.0\n", true},
      {"f.ldf", ".LDF", false},
      {"g.yaml", ".LDF", false},
      {"h.ldf", "version: 1.0\n", false},
      {"i.ldf", "", false},
      {"j.yaml", ".LD", true},
  };
  for (const auto& row : rows) {
    const std::string path = write(row.name, row.content);
    const DefinitionFile file = read_definition_file(path);
    EXPECT_EQ(file.is_source, row.is_source) << row.name;
    EXPECT_EQ(file.path, path);
    EXPECT_EQ(file.shown_path, path);
    EXPECT_EQ(file.content, row.content);
  }
}

TEST_F(DefinitionFileTest, FileThatCannotBeRead_IsNamedWithTheReason) {
  EXPECT_EQ(failure_of(read_definition_file, "absent.yaml"), "cannot open 'absent.yaml': No such file or directory");
  EXPECT_EQ(failure_of(read_definition_file, ""), "cannot open '': No such file or directory");
  EXPECT_EQ(failure_of(read_definition_file, folder_.path()), "cannot read '" + folder_.path() + "': Is a directory");
  EXPECT_EQ(failure_of(read_definition_file, "git:HEAD"), "'git:HEAD' lacks a path; write git:REV:PATH");
}

TEST_F(DefinitionFileTest, SourceAskedFor_CompiledFileIsRefused) {
  EXPECT_EQ(read_definition_source(write("a.yaml", "x")).content, "x");
  const std::string compiled = write("a.ldf", ".LDF");
  EXPECT_EQ(failure_of(read_definition_source, compiled),
            "'" + compiled + "' is a compiled definition file; give its source");
}

TEST(NamesFile, StandardInputAndGit_AreNone) {
  EXPECT_TRUE(names_file("a.yaml"));
  EXPECT_TRUE(names_file("./-"));
  EXPECT_FALSE(names_file("-"));
  EXPECT_FALSE(names_file("git:HEAD:a.yaml"));
}

}  // namespace

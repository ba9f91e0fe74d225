#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <string>
#include <vector>

#include "tests/support/support.h"
#include "tests/util/log_util_guarded_memory.h"
#include "util/log_util.h"

namespace {

using namespace qz_test;

constexpr std::size_t kRoom = 4097;
constexpr std::size_t kLongest = 4096;

struct Resolved {
  int result;
  std::string path;

  bool operator==(const Resolved& other) const { return result == other.result && path == other.path; }
};

std::ostream& operator<<(std::ostream& stream, const Resolved& resolved) {
  return stream << resolved.result << " (" << resolved.path.size() << ") \"" << resolved.path << "\"";
}

/// The steps of resolving a path one after the other on arrays of characters, without regard to speed.
class SlowResolver {
 public:
  explicit SlowResolver(std::string working_directory) : working_directory_(std::move(working_directory)) {}

  Resolved resolve(const std::string& path) const {
    if (path.size() > kLongest) return {-1, ""};
    std::vector<char> work(path[0] == '/' ? 0 : working_directory_.size());
    if (path[0] != '/') {
      std::copy(working_directory_.begin(), working_directory_.end(), work.begin());
      work.push_back('/');
    }
    work.insert(work.end(), path.begin(), path.end());
    std::vector<char> full = drop_dots(work);
    work = collapse(full);
    full = leave_parents(work);
    if (full.size() > kLongest) return {-1, ""};
    return {1, std::string(full.begin(), full.end())};
  }

 private:
  static char at(const std::vector<char>& text, std::size_t i) { return i < text.size() ? text[i] : '\0'; }

  static std::vector<char> drop_dots(const std::vector<char>& text) {
    std::vector<char> out;
    for (std::size_t i = 0; i < text.size();) {
      const bool stands_alone = i > 0 && text[i] == '.' && text[i - 1] == '/' && at(text, i + 1) == '/';
      if (!stands_alone) out.push_back(text[i]);
      i += stands_alone ? 2 : 1;
    }
    const std::size_t size = out.size();
    if (size > 1 && out[size - 2] == '/' && out[size - 1] == '.') out.pop_back();
    return out;
  }

  static std::vector<char> collapse(const std::vector<char>& text) {
    std::vector<char> out;
    for (std::size_t i = 0; i < text.size(); ++i) {
      if (text[i] == '/' && at(text, i + 1) == '/') continue;
      out.push_back(text[i]);
    }
    return out;
  }

  static std::vector<char> leave_parents(const std::vector<char>& text) {
    std::vector<char> out(text.size());
    std::size_t end = 0;
    std::vector<std::size_t> stack;
    for (std::size_t i = 0; i < text.size(); ++i) {
      out[end] = text[i];
      if (text[i] == '/') stack.push_back(end);
      ++end;
      if (text[i] != '/' || at(text, i + 1) != '.' || at(text, i + 2) != '.' || at(text, i + 3) != '/') continue;
      if (stack.size() < 2) {
        end = 0;
        stack.clear();
      } else {
        end = stack[stack.size() - 2];
        stack.pop_back();
        stack.pop_back();
      }
      i += 2;
    }
    if (end > 2 && out[end - 3] == '/' && out[end - 2] == '.' && out[end - 1] == '.') {
      end = stack.size() < 2 ? 1 : stack[stack.size() - 2] + 1;
    }
    out.resize(end);
    return out;
  }

  std::string working_directory_;
};

/// The same by components: "." is nothing, ".." leaves the one before, whatever names a directory ends in a slash.
std::string by_components(const std::string& working_directory, const std::string& path) {
  const std::string whole = path[0] == '/' ? path : working_directory + "/" + path;
  std::vector<std::string> components;
  std::string last;
  for (std::size_t start = 0; start <= whole.size();) {
    const std::size_t end = std::min(whole.find('/', start), whole.size());
    last = whole.substr(start, end - start);
    if (last == "..") {
      if (!components.empty()) components.pop_back();
    } else if (!last.empty() && last != ".") {
      components.push_back(last);
    }
    start = end + 1;
  }
  std::string result;
  for (const std::string& component : components) result += "/" + component;
  const bool names_a_directory = last.empty() || last == "." || last == "..";
  return names_a_directory ? result + "/" : result;
}

std::string without_trailing_slashes(std::string path) {
  while (!path.empty() && path.back() == '/') path.pop_back();
  return path;
}

std::string expected_full_path(const Resolved& resolved, const std::string& path) {
  return without_trailing_slashes(resolved.result == 1 ? resolved.path : path.substr(0, kLongest));
}

/// Resolves with both functions, into rooms that end at a page that cannot be touched.
class Paths : public testing::Test {
 protected:
  Resolved resolved(const std::string& path) const {
    room_.refill();
    const int result = _get_fullpath(room_.data(), path.c_str());
    return {result, result == 1 ? room_.text() : ""};
  }
  std::string full(const std::string& path) const {
    room_.refill();
    EXPECT_EQ(get_fullpath(path.c_str(), room_.data()), 1);
    return room_.text();
  }
  static std::string here() {
    char directory[8192];
    return getcwd(directory, sizeof(directory));
  }

  void compare(const std::string& path) {
    const std::string directory = here();
    const Resolved expected = SlowResolver(directory).resolve(path);
    ASSERT_EQ(resolved(path), expected) << path;
    ASSERT_EQ(full(path), expected_full_path(expected, path)) << path;
    if (expected.result == 1) {
      ASSERT_EQ(expected.path, by_components(directory, path)) << path;
    }
    ++compared_;
    refused_ += expected.result == 1 ? 0 : 1;
  }

  /// Makes folders with names of up to 200 characters inside each other, until the working directory is one of `length`
  /// characters.
  void work_in_a_directory_of(std::size_t length) {
    std::filesystem::current_path(folder_.path());
    while (here().size() < length) {
      std::size_t name_length = std::min<std::size_t>(200, length - here().size() - 1);
      if (length - here().size() - 1 - name_length == 1) --name_length;  // a slash alone would be left
      const std::string name(name_length, 'w');
      mkdir(name.c_str(), 0755);  // it may stand there already
      ASSERT_EQ(chdir(name.c_str()), 0);
    }
    ASSERT_EQ(here().size(), length);
  }

  TempDir folder_;
  GuardedMemory room_{kRoom};
  int compared_ = 0;
  int refused_ = 0;

 private:
  WorkingFolder working_folder_;
};

struct PathCase {
  const char* path;
  const char* expected;
};

constexpr PathCase kAbsolute[] = {
    {"/", "/"},
    {"//", "/"},
    {"///", "/"},
    {"/.", "/"},
    {"/./", "/"},
    {"/./.", "/"},
    {"/..", "/"},
    {"/../", "/"},
    {"/../..", "/"},
    {"/../../", "/"},
    {"/../a", "/a"},
    {"/../../a/..", "/"},
    {"/a", "/a"},
    {"/a/", "/a/"},
    {"/a//", "/a/"},
    {"/a/.", "/a/"},
    {"/a/./", "/a/"},
    {"/a//.", "/a/"},
    {"/a/.//", "/a/"},
    {"/a/..", "/"},
    {"/a/../", "/"},
    {"/a/b/..", "/a/"},
    {"/a/b/../", "/a/"},
    {"/a/b/../..", "/"},
    {"/a/b/../../..", "/"},
    {"/a/b/../c", "/a/c"},
    {"/a/../../b", "/b"},
    {"/a/b/c/../../d", "/a/d"},
    {"/a/../b/../c", "/c"},
    {"/a/./b//c/.", "/a/b/c/"},
    {"/././././a", "/a"},
    {"/.//./a", "/a"},
    {"/a//../b", "/b"},
    {"/a/./../b", "/b"},
    {"/a/.././b", "/b"},
    {"/a/..//b", "/b"},
    {"/a/b//..", "/a/"},
    {"/a/b/./..", "/a/"},
    {"/...", "/..."},
    {"/.../..", "/"},
    {"/..a/a..", "/..a/a.."},
    {"/.a/a.", "/.a/a."},
    {"/a../b", "/a../b"},
    {"/..a", "/..a"},
    {"/a.", "/a."},
    {"/a..", "/a.."},
    {"/a b/ /c", "/a b/ /c"},
    {"/a/ ../b", "/a/ ../b"},
    {"/\xC3\xA9/\xFF/../\x80", "/\xC3\xA9/\x80"},
    {"/\n/\t", "/\n/\t"},
};

TEST_F(Paths, AbsolutePaths_Normalised) {
  for (const PathCase& test_case : kAbsolute) {
    EXPECT_EQ(resolved(test_case.path), (Resolved{1, test_case.expected})) << test_case.path;
    EXPECT_EQ(full(test_case.path), without_trailing_slashes(test_case.expected)) << test_case.path;
    EXPECT_EQ(by_components("", test_case.path), test_case.expected) << test_case.path;
  }
}

TEST_F(Paths, RelativePaths_InTheWorkingDirectory) {
  std::filesystem::create_directory(folder_.path("w"));
  std::filesystem::current_path(folder_.path("w"));
  const std::string folder = std::filesystem::path(here()).parent_path().string();
  const PathCase cases[] = {{"", "/w"},           {".", "/w"},     {"./", "/w"},    {"x", "/w/x"},
                            {"x/", "/w/x"},       {"x//", "/w/x"}, {"./x", "/w/x"}, {"..", ""},
                            {"../", ""},          {"../x", "/x"},  {"x/..", "/w"},  {"x/../y", "/w/y"},
                            {"../w/./x", "/w/x"}, {" ", "/w/ "},   {".x", "/w/.x"}, {"...", "/w/..."}};
  for (const PathCase& test_case : cases) {
    EXPECT_EQ(full(test_case.path), folder + test_case.expected) << test_case.path;
    compare(test_case.path);
  }
  EXPECT_EQ(resolved(""), (Resolved{1, folder + "/w/"}));
}

TEST_F(Paths, RelativePathsInTheRoot_StartThere) {
  std::filesystem::current_path("/");
  const PathCase cases[] = {{"", ""}, {".", ""}, {"..", ""}, {"x", "/x"}, {"../../x/", "/x"}, {"x/..", ""}};
  for (const PathCase& test_case : cases) {
    EXPECT_EQ(full(test_case.path), test_case.expected) << test_case.path;
    compare(test_case.path);
  }
}

TEST_F(Paths, LinkToAFolder_NotFollowed) {
  std::filesystem::create_directory(folder_.path("real"));
  std::filesystem::create_symlink(folder_.path("real"), folder_.path("link"));
  EXPECT_EQ(full(folder_.path("link/../x")), folder_.path("x"));
  EXPECT_EQ(full(folder_.path("link/x")), folder_.path("link/x"));
}

TEST_F(Paths, WorkingDirectoryDeleted_RelativePathsAsGiven) {
  std::filesystem::create_directory(folder_.path("gone"));
  std::filesystem::current_path(folder_.path("gone"));
  std::filesystem::remove(folder_.path("gone"));
  for (const char* path : {"", "x", "../x", "./", "a/b/../c"}) {
    EXPECT_EQ(full(path), without_trailing_slashes(path)) << "given as it is";
  }
  EXPECT_EQ(full("/a/../b"), "/b");
}

std::string random_path(SeededRandom& random, std::size_t least_length) {
  static const char* const kPieces[] = {"/",  "/",  "/",  "//", ".",  ".",  "..", "/../",     "/..",  "/./", "...", "a",
                                        "bc", ".a", "a.", " ",  "  ", "\t", "\n", "\xC3\xA9", "\xFF", "%s",  "\x01"};
  std::string path = random.one_in(3) ? "" : "/";
  const auto pieces = random.between(0, 14);
  for (long long i = 0; i < pieces || path.size() < least_length; ++i) {
    path += kPieces[random.between(0, static_cast<long long>(std::size(kPieces)) - 1)];
  }
  return path;
}

TEST_F(Paths, TenThousandRandomPaths_AsTheSlowResolverSays) {
  SeededRandom random;
  std::filesystem::create_directories(folder_.path("w/x.y/ z"));
  for (const char* directory : {"/", "w", "w/x.y/ z"}) {
    std::filesystem::current_path(*directory == '/' ? directory : folder_.path(directory));
    for (int i = 0; i < 4000 && !HasFatalFailure(); ++i) compare(random_path(random, 0));
  }
  std::cout << "paths compared: " << compared_ << ", "
            << "seed " << random.seed() << "\n";
}

TEST_F(Paths, RandomPathsOf4000To8200Characters_AsTheSlowResolverSays) {
  SeededRandom random;
  for (const std::size_t length : {300U, 2000U, 4000U}) {
    work_in_a_directory_of(length);
    for (int i = 0; i < 150 && !HasFatalFailure(); ++i) {
      std::string path = random_path(random, static_cast<std::size_t>(random.between(4000, 4200)));
      if (random.one_in(2)) path = path.substr(0, kLongest);
      compare(path);
    }
    for (int i = 0; i < 50 && !HasFatalFailure(); ++i) {
      compare(random_path(random, static_cast<std::size_t>(random.between(4096, 8200))));
    }
  }
  EXPECT_GT(refused_, 0);
  EXPECT_LT(refused_, compared_);
  std::cout << "long paths compared: " << compared_ << ", too long: " << refused_ << "\n";
}

TEST_F(Paths, EveryLengthAroundTheLimit_LongestResolvedLongerGivenBack) {
  for (std::size_t length = 4090; length <= 4110; ++length) {
    const std::string path = "/" + std::string(length - 1, 'p');
    EXPECT_EQ(resolved(path).result, length <= kLongest ? 1 : -1) << length;
    EXPECT_EQ(full(path), path.substr(0, kLongest)) << length;
  }
}

TEST_F(Paths, EveryLengthFrom4095To8192_AsTheSlowResolverSays) {
  std::string pattern;
  while (pattern.size() < 9000) pattern += "/ab/../c\xC3\xA9 d//./";
  for (std::size_t length = 4095; length <= 8192 && !HasFatalFailure(); ++length) {
    compare(pattern.substr(0, length));
    if (length % 16 == 0) compare(std::string(length, '/'));
  }
  EXPECT_GT(refused_, 4000);
}

TEST_F(Paths, TooLongPath_GivenBackCutAndWithoutTrailingSlashes) {
  const std::string start = "/a/../b";
  const std::string path = start + std::string(4096 - start.size() - 3, 'p') + "///p";
  EXPECT_EQ(resolved(path).result, -1);
  EXPECT_EQ(full(path), path.substr(0, 4093));
  EXPECT_EQ(full(std::string(5000, '/')), "");
  EXPECT_EQ(full(std::string(5000, 'r')), std::string(4096, 'r'));
}

TEST_F(Paths, ThousandsOfParents_EndAtTheRoot) {
  std::string up;
  while (up.size() + 3 < kLongest) up += "/..";
  EXPECT_EQ(resolved(up), (Resolved{1, "/"}));
  EXPECT_EQ(resolved(up + "/"), (Resolved{1, "/"}));
  EXPECT_EQ(resolved(up.substr(3) + "/x"), (Resolved{1, "/x"}));
  EXPECT_EQ(full(up), "");
  work_in_a_directory_of(1000);
  std::string relative;
  while (relative.size() + 4 < kLongest) relative += "../";
  EXPECT_EQ(resolved(relative + "x"), (Resolved{1, "/x"}));
  compare(relative + "..");
}

TEST_F(Paths, ThousandsOfFoldersAndTheirParents_BackAtTheStart) {
  std::string path;
  for (int i = 0; i < 800; ++i) path += "/a";
  for (int i = 0; i < 800; ++i) path += "/..";
  EXPECT_EQ(resolved(path), (Resolved{1, "/"}));
  compare(path + "/x");
}

TEST_F(Paths, LongWorkingDirectoryAndPath_OnlyTheResultMustFit) {
  work_in_a_directory_of(4000);
  const std::string directory = here();
  EXPECT_EQ(resolved(std::string(95, 'p')), (Resolved{1, directory + "/" + std::string(95, 'p')}));
  EXPECT_EQ(resolved(std::string(96, 'p')).result, -1);
  EXPECT_EQ(full(std::string(95, 'p') + "/"), std::string(95, 'p'));  // one slash too long to be resolved
  EXPECT_EQ(full(std::string(96, 'p')), std::string(96, 'p'));
  std::string path;
  while (path.size() + 3 <= kLongest) path += "../";
  path += "x";
  ASSERT_EQ(path.size(), kLongest);
  EXPECT_EQ(resolved(path), (Resolved{1, "/x"}));
  EXPECT_EQ(resolved(std::string(kLongest, '/')), (Resolved{1, "/"}));
  compare(std::string(kLongest, 'p'));
}

TEST_F(Paths, WorkingDirectoryOf4095Characters_LongestPathsFitTheBuffers) {
  work_in_a_directory_of(4095);
  compare("");
  compare("x");
  compare("..");
  compare(std::string(kLongest, 'p'));
  compare("." + std::string(kLongest - 1, '/'));
  std::string up;
  while (up.size() + 3 <= kLongest) up += "/..";
  compare(up.substr(1) + "/");
}

// getcwd cannot name it any more.
TEST_F(Paths, WorkingDirectoryDeeperThanAPathCanBe_RelativePathsAsGiven) {
  work_in_a_directory_of(4000);
  for (int i = 0; i < 3; ++i) {
    const std::string name(200, 'd');
    ASSERT_EQ(mkdir(name.c_str(), 0755), 0);
    ASSERT_EQ(chdir(name.c_str()), 0);
  }
  for (const std::string& path : {std::string(), std::string("x"), std::string(4096, 'p'), std::string(5000, 'p')}) {
    EXPECT_EQ(full(path), path.substr(0, kLongest));
  }
}

TEST_F(Paths, Null_ReportedAndTakenAsEmpty) {
  const auto report = written_to_stderr([&] { EXPECT_EQ(get_fullpath(nullptr, room_.data()), 1); });
  EXPECT_TRUE(is_report_of(report, "path"));
  EXPECT_EQ(room_.text(), without_trailing_slashes(here()));
}

TEST_F(Paths, OutOfMemory_Throws) {
  const std::string path = "/" + std::string(1000, 'p') + "/../x";
  EXPECT_GT(FailEveryAllocation([&] { get_fullpath(path.c_str(), room_.data()); }), 0U);
  EXPECT_EQ(full(path), "/x");
}

}  // namespace

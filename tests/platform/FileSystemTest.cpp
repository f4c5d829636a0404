#include "ombrix/platform/File.h"
#include "ombrix/platform/Path.h"
#include "ombrix/platform/SystemEnvironmentVariables.h"

#include "support/TestSupport.h"

#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>

using FileSystem::File;

TEST(Path, StripTrailingSlash)
{
  const std::pair<const char*, const char*> cases[] = {
      {"/a/b/", "/a/b"}, {"/a/b//", "/a/b"}, {"a\\b\\", "a\\b"}, {"a/b\\/", "a/b"},
      {"/a/b", "/a/b"},  {"a", "a"},         {"", ""},           {"/", "/"},
      {"//", "/"},       {"C:\\", "C:"},     {"\\\\", "\\"},
  };
  for (const auto& [path, stripped] : cases)
  {
    SCOPED_TRACE(path);
    EXPECT_EQ(FileSystem::Path::stripTrailingSlash(path), stripped);
  }
}

TEST(SystemEnvironmentVariables, FallbackOnlyWhenUnset)
{
  const std::string name = "OMBRIX_PLATFORM_TEST_VARIABLE";
  auto& variables = FileSystem::SystemEnvironmentVariables::instance();

  ::unsetenv(name.c_str());
  EXPECT_EQ(variables.get(name), std::nullopt);
  EXPECT_EQ(variables.get(name, "fallback"), "fallback");

  ::setenv(name.c_str(), "", 1);
  EXPECT_EQ(variables.get(name), std::optional<std::string>(""));
  EXPECT_EQ(variables.get(name, "fallback"), "");

  ::setenv(name.c_str(), "/exchange dir/", 1);
  EXPECT_EQ(variables.get(name, "fallback"), "/exchange dir/");
  ::unsetenv(name.c_str());
}

TEST(File, ExistsOnlyForRegularFiles)
{
  OmbrixTest::TempDir dir;
  const std::string path = dir.file("a.txt");
  EXPECT_FALSE(File::exists(path));
  EXPECT_FALSE(File::exists(""));
  EXPECT_FALSE(File::exists(dir.path().string()));
  OmbrixTest::writeFile(path, "");
  EXPECT_TRUE(File::exists(path));
  EXPECT_TRUE(File::remove(path));
  EXPECT_FALSE(File::exists(path));
  EXPECT_TRUE(File::remove(path));
}

TEST(File, WriteAtomicallyReplacesTheWholeFile)
{
  OmbrixTest::TempDir dir;
  const std::string path = dir.file("state");
  ASSERT_TRUE(File::writeAtomically(path, "first, longer content"));
  ASSERT_TRUE(File::writeAtomically(path, std::string("2\0\t<END>", 8)));
  EXPECT_EQ(OmbrixTest::readFile(path), std::string("2\0\t<END>", 8));
  EXPECT_FALSE(File::exists(path + ".tmp"));
  EXPECT_FALSE(File::writeAtomically(dir.file("missing/state"), "x"));
  // Onto a directory: refused, and the temporary is gone.
  std::filesystem::create_directory(dir.file("directory"));
  EXPECT_FALSE(File::writeAtomically(dir.file("directory"), "x"));
  EXPECT_FALSE(std::filesystem::exists(dir.file("directory.tmp")));
}

TEST(File, ReadAllGivesTheWholeFileOrFalse)
{
  OmbrixTest::TempDir dir;
  const std::string path = dir.file("data");
  const std::string content = std::string("bytes\0\r\n", 8) + std::string(100000, 'x');
  OmbrixTest::writeFile(path, content);
  std::string read = "old";
  ASSERT_TRUE(File::readAll(path, read));
  EXPECT_EQ(read, content);

  OmbrixTest::writeFile(path, "");
  ASSERT_TRUE(File::readAll(path, read));
  EXPECT_EQ(read, "");

  read = "old";
  EXPECT_FALSE(File::readAll(dir.file("missing"), read));
  EXPECT_EQ(read, "");
  EXPECT_FALSE(File::readAll(dir.path().string(), read));
}

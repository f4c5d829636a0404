#include "ombrix/platform/File.h"
#include "ombrix/platform/Path.h"

#include "support/TestSupport.h"

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

TEST(File, ExistsWritesAtomicallyAndReadsAll)
{
  OmbrixTest::TempDir dir;
  const std::string path = dir.file("state");
  for (const std::string& notAFile : {path, std::string(), dir.path().string()})
    EXPECT_FALSE(File::exists(notAFile)) << notAFile;
  ASSERT_TRUE(File::writeAtomically(path, "first, longer content"));
  EXPECT_TRUE(File::exists(path));
  const std::string content = std::string("bytes\0\r\n", 8) + std::string(100000, 'x');
  ASSERT_TRUE(File::writeAtomically(path, content));
  EXPECT_FALSE(File::exists(path + ".tmp"));
  std::string read = "old";
  ASSERT_TRUE(File::readAll(path, read));
  EXPECT_EQ(read, content);
  ASSERT_TRUE(File::writeAtomically(path, ""));
  ASSERT_TRUE(File::readAll(path, read));
  EXPECT_EQ(read, "");
  EXPECT_TRUE(File::remove(path));
  EXPECT_FALSE(File::exists(path));
  EXPECT_TRUE(File::remove(path));

  read = "old";
  EXPECT_FALSE(File::readAll(path, read));
  EXPECT_EQ(read, "");
  EXPECT_FALSE(File::readAll(dir.path().string(), read));
  EXPECT_FALSE(File::writeAtomically(dir.file("missing/state"), "x"));
  // Onto a directory: refused, and the temporary is gone.
  std::filesystem::create_directory(dir.file("directory"));
  EXPECT_FALSE(File::writeAtomically(dir.file("directory"), "x"));
  EXPECT_FALSE(std::filesystem::exists(dir.file("directory.tmp")));
}

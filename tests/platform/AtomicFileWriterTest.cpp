#include "ombrix/platform/AtomicFileWriter.h"

#include "support/TestSupport.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <set>

using FileSystem::AtomicFileWriter;
using OmbrixTest::readFile;
using OmbrixTest::TempDir;
namespace fs = std::filesystem;

namespace
{

std::set<std::string> namesIn(const TempDir& dir)
{
  std::set<std::string> names;
  for (const auto& entry : fs::directory_iterator(dir.path()))
    names.insert(entry.path().filename().string());
  return names;
}

} // namespace

TEST(AtomicFileWriter, ReplacesTheWholeFileKeepingItsPermissionsAndLinks)
{
  TempDir dir;
  const std::string path = dir.file("out.state");
  OmbrixTest::writeFile(path, "an older and much longer content");
  fs::permissions(path, fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_write);
  for (bool durable : {false, true})
  {
    ASSERT_TRUE(AtomicFileWriter::replace(path, std::string("2\0\t<END>", 8), durable));
    EXPECT_EQ(readFile(path), std::string("2\0\t<END>", 8));
  }
  EXPECT_EQ(fs::status(path).permissions() & fs::perms::all,
            fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_write);
  EXPECT_EQ(namesIn(dir), std::set<std::string>{"out.state"});

  // Through the stream too, and an empty file is a content like any other.
  AtomicFileWriter writer(path);
  ASSERT_TRUE(writer.isOpen());
  std::fputs("streamed", writer.get());
  EXPECT_TRUE(writer.write(" and written"));
  EXPECT_EQ(readFile(path), std::string("2\0\t<END>", 8));
  ASSERT_TRUE(writer.commit());
  EXPECT_EQ(readFile(path), "streamed and written");
  ASSERT_TRUE(AtomicFileWriter::replace(path, ""));
  EXPECT_EQ(readFile(path), "");

  // A symbolic link stays, and the file it names is replaced.
  fs::create_directory(dir.file("real"));
  OmbrixTest::writeFile(dir.file("real/in.state"), "old");
  fs::create_symlink("real/in.state", dir.file("in.state"));
  ASSERT_TRUE(AtomicFileWriter::replace(dir.file("in.state"), "new"));
  EXPECT_TRUE(fs::is_symlink(dir.file("in.state")));
  EXPECT_EQ(readFile(dir.file("real/in.state")), "new");
}

TEST(AtomicFileWriter, AnUnfinishedOrImpossibleWriteLeavesTheOldFile)
{
  TempDir dir;
  const std::string path = dir.file("out.csv");
  OmbrixTest::writeFile(path, "last good");
  {
    AtomicFileWriter writer(path);
    EXPECT_TRUE(writer.write("half"));
    EXPECT_EQ(namesIn(dir).size(), 2u);
  }
  EXPECT_EQ(readFile(path), "last good");
  EXPECT_EQ(namesIn(dir), std::set<std::string>{"out.csv"});

  AtomicFileWriter nowhere(dir.file("missing/out.csv"));
  EXPECT_FALSE(nowhere.isOpen());
  EXPECT_FALSE(nowhere.write("x"));
  EXPECT_FALSE(nowhere.commit());
  EXPECT_FALSE(AtomicFileWriter::replace("", "x"));
}

TEST(AtomicFileWriter, RemovesOnlyTheTemporariesOfTheFilesAsked)
{
  TempDir dir;
  for (const char* name : {".out.csv.123.4.tmp", ".out7.csv.9.0.tmp", ".in.csv.5.6.tmp", ".out.csv.x.4.tmp",
                           ".out.csv.4.tmp", "out.csv", ".hidden"})
    OmbrixTest::writeFile(dir.file(name), "");
  const auto isOut = [](const std::string& name) { return name.rfind("out", 0) == 0; };
  EXPECT_EQ(AtomicFileWriter::removeTemporaries(dir.path().string(), isOut), 2u);
  EXPECT_EQ(namesIn(dir), (std::set<std::string>{".in.csv.5.6.tmp", ".out.csv.x.4.tmp", ".out.csv.4.tmp",
                                                 "out.csv", ".hidden"}));
  EXPECT_EQ(AtomicFileWriter::removeTemporaries(dir.file("missing"), isOut), 0u);
}

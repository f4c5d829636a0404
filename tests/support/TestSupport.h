// Helpers shared by the unit tests: exact exception messages and scratch directories.
#pragma once

#include <filesystem>
#include <gtest/gtest.h>
#include <string>

// Asserts that `statement` throws `type` whose what() is exactly `message`.
#define EXPECT_THROW_MSG(statement, type, message)                                                           \
  do                                                                                                         \
  {                                                                                                          \
    try                                                                                                      \
    {                                                                                                        \
      statement;                                                                                             \
      ADD_FAILURE() << "expected " #type " with message \"" << (message) << "\", nothing was thrown";        \
    }                                                                                                        \
    catch (const type& error_)                                                                               \
    {                                                                                                        \
      EXPECT_EQ(std::string(error_.what()), std::string(message));                                           \
    }                                                                                                        \
    catch (const std::exception& other_)                                                                     \
    {                                                                                                        \
      ADD_FAILURE() << "expected " #type ", got another exception: " << other_.what();                       \
    }                                                                                                        \
  } while (false)

namespace OmbrixTest
{

// A fresh, empty directory under the system's temporary directory, removed with everything in it
// when the object goes.
class TempDir
{
public:
  TempDir();
  ~TempDir();
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;

  const std::filesystem::path& path() const { return m_path; }
  std::string file(const std::string& name) const { return (m_path / name).string(); }

private:
  std::filesystem::path m_path;
};

// Whole content of a file, or "" when it cannot be read.
std::string readFile(const std::string& path);
// Writes `content` as the whole file.
void writeFile(const std::string& path, const std::string& content);

} // namespace OmbrixTest

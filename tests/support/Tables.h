// Table checks shared by the unit tests: a vocabulary's text conversions, and streaming round trips and cuts.
#pragma once

#include "ombrix/platform/DataIStream.h"
#include "ombrix/platform/DataOStream.h"

#include <cctype>
#include <gtest/gtest.h>
#include <initializer_list>
#include <string>
#include <utility>

namespace OmbrixTest
{

// Each {number, text} pair converts both ways: `toText(E(number)) == text` and
// `fromText(text, unknown) == E(number)`. Texts that differ only in case, by a blank at either end or by a
// missing last character give `unknown`, which must hold no text of the table.
template <typename E, typename ToText, typename FromText>
void expectNames(std::initializer_list<std::pair<int, const char*>> names, ToText toText, FromText fromText,
                 E unknown)
{
  for (const auto& [number, text] : names)
  {
    SCOPED_TRACE(text);
    const auto value = static_cast<E>(number);
    EXPECT_EQ(std::string(toText(value)), text);
    EXPECT_EQ(fromText(text, unknown), value);
    std::string lower = text;
    for (char& c : lower)
      c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    const std::string near[] = {lower == text ? "" : lower, std::string(" ") + text, std::string(text) + " ",
                                std::string(text).substr(0, std::string(text).size() - 1)};
    for (const auto& other : near)
      EXPECT_EQ(fromText(other, unknown), unknown) << "text '" << other << "'";
  }
}

inline constexpr FileSystem::DataStreamKind kStreamKinds[] = {FileSystem::DataStreamKind::Binary,
                                                              FileSystem::DataStreamKind::Text};

// The bytes `value` streams to.
template <typename T> std::string streamed(const T& value, FileSystem::DataStreamKind kind)
{
  FileSystem::DataOStream out(kind);
  out << value;
  EXPECT_TRUE(out.good());
  return out.data();
}

// Streams `value` out and reads it back over `target`, expecting the read to succeed and use every byte.
template <typename T> T roundTrip(const T& value, FileSystem::DataStreamKind kind, T target = T())
{
  FileSystem::DataIStream in(streamed(value, kind), kind);
  in >> target;
  EXPECT_TRUE(in.good());
  EXPECT_TRUE(in.atEnd());
  return target;
}

// Every cut of `data` (binary), in steps of `step` bytes, fails the read and leaves a copy of `before` as it
// was.
template <typename T> void expectCutsFail(const std::string& data, const T& before, std::size_t step = 1)
{
  for (std::size_t length = 0; length < data.size(); length += step)
  {
    SCOPED_TRACE(length);
    T read = before;
    FileSystem::DataIStream in(data.substr(0, length));
    in >> read;
    EXPECT_FALSE(in.good());
    EXPECT_TRUE(read == before);
  }
}

} // namespace OmbrixTest

// NameTable: a fixed table of {enumerator, text} pairs behind the text conversions of the small
// vocabularies. Header-only and usable in constant expressions; immutable, so safe for concurrent use.
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>
#include <utility>

namespace Ombrix
{

template <typename Enum, std::size_t N> class NameTable
{
public:
  using Entry = std::pair<Enum, std::string_view>;

  constexpr explicit NameTable(const std::array<Entry, N>& entries) : m_entries(entries) {}

  // The text of the first entry holding `value`; nullopt when no entry holds it.
  constexpr std::optional<std::string_view> findName(Enum value) const
  {
    for (const auto& [entry, name] : m_entries)
    {
      if (entry == value)
        return name;
    }
    return std::nullopt;
  }

  // The enumerator of the first entry whose text equals `text` exactly (case-sensitive, no trimming);
  // nullopt when none does.
  constexpr std::optional<Enum> findValue(std::string_view text) const
  {
    for (const auto& [entry, name] : m_entries)
    {
      if (name == text)
        return entry;
    }
    return std::nullopt;
  }

  constexpr std::string_view nameOr(Enum value, std::string_view fallback = {}) const
  {
    return findName(value).value_or(fallback);
  }

  constexpr Enum valueOr(std::string_view text, Enum fallback) const
  {
    return findValue(text).value_or(fallback);
  }

  constexpr const std::array<Entry, N>& entries() const { return m_entries; }

private:
  std::array<Entry, N> m_entries;
};

// Builds a table from a braced list, so that only the enumeration needs naming:
//   constexpr auto modes = makeNameTable<Mode>({{Mode::On, "On"}, {Mode::Off, "Off"}});
template <typename Enum, std::size_t N>
constexpr NameTable<Enum, N> makeNameTable(const std::pair<Enum, std::string_view> (&entries)[N])
{
  return NameTable<Enum, N>(std::to_array(entries));
}

} // namespace Ombrix

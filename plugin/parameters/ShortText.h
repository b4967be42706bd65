// SPDX-License-Identifier: ISC
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace qlx::plugin {

/// A display text: at most 23 characters, so that it fits the smallest buffer that hosts pass. What
/// does not fit is cut. Never allocates; the decimal sign is a point whatever the process's locale
/// says.
class ShortText {
 public:
  ShortText() = default;
  explicit ShortText(std::string_view text) noexcept { append(text); }

  /// The number with `decimals` places, rounded as printf does. Limited to a thousand million
  /// either way, where the digits would no longer fit.
  static ShortText fixed(double number, int decimals) noexcept;
  static ShortText whole(int number) noexcept;

  ShortText& append(std::string_view text) noexcept;
  ShortText& append(const ShortText& text) noexcept { return append(text.view()); }

  std::string_view view() const noexcept { return {m_characters.data(), m_length}; }

  /// Writes the text and its terminating zero into a buffer of at least 24 bytes.
  void copyTo(char* buffer) const noexcept;

 private:
  std::array<char, 23> m_characters{};
  std::size_t m_length = 0;
};

} // namespace qlx::plugin

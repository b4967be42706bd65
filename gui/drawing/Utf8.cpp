// SPDX-License-Identifier: ISC
#include "gui/drawing/Utf8.h"

#include <cstdint>

namespace qlx::gui {

namespace {

constexpr char32_t kReplacement = 0xFFFD;

struct Lead {
  std::size_t length;
  char32_t bits;
  char32_t smallest;
};

Lead readLead(unsigned char byte) {
  if (byte < 0x80) return {1, byte, 0};
  if ((byte & 0xE0) == 0xC0) return {2, static_cast<char32_t>(byte & 0x1F), 0x80};
  if ((byte & 0xF0) == 0xE0) return {3, static_cast<char32_t>(byte & 0x0F), 0x800};
  if ((byte & 0xF8) == 0xF0) return {4, static_cast<char32_t>(byte & 0x07), 0x10000};
  return {0, 0, 0};
}

} // namespace

char32_t takeUtf8(std::string_view& text) {
  const Lead lead = readLead(static_cast<unsigned char>(text.front()));
  char32_t character = lead.bits;
  bool valid = lead.length > 0 && lead.length <= text.size();
  for (std::size_t i = 1; valid && i < lead.length; ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    valid = (byte & 0xC0) == 0x80;
    character = (character << 6) | (byte & 0x3FU);
  }
  const bool surrogate = character >= 0xD800 && character <= 0xDFFF;
  if (!valid || character < lead.smallest || character > 0x10FFFF || surrogate) {
    text.remove_prefix(1);
    return kReplacement;
  }
  text.remove_prefix(lead.length);
  return character;
}

std::u32string fromUtf8(std::string_view text) {
  std::u32string characters;
  while (!text.empty()) characters.push_back(takeUtf8(text));
  return characters;
}

std::string toUtf8(std::u32string_view text) {
  std::string bytes;
  const auto put = [&bytes](char32_t bits) { bytes.push_back(static_cast<char>(bits)); };
  for (const char32_t c : text) {
    if (c < 0x80) {
      put(c);
    } else if (c < 0x800) {
      put(0xC0 | (c >> 6));
      put(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
      put(0xE0 | (c >> 12));
      put(0x80 | ((c >> 6) & 0x3F));
      put(0x80 | (c & 0x3F));
    } else {
      put(0xF0 | (c >> 18));
      put(0x80 | ((c >> 12) & 0x3F));
      put(0x80 | ((c >> 6) & 0x3F));
      put(0x80 | (c & 0x3F));
    }
  }
  return bytes;
}

std::string_view firstCharacters(std::string_view text, std::size_t characters) {
  std::string_view rest = text;
  while (characters > 0 && !rest.empty()) {
    takeUtf8(rest);
    --characters;
  }
  return text.substr(0, text.size() - rest.size());
}

char32_t lowered(char32_t character) {
  return character >= 'A' && character <= 'Z' ? character + 32 : character;
}

char32_t firstLetter(std::string_view text) {
  while (!text.empty()) {
    const char32_t character = takeUtf8(text);
    if (character != ' ') return lowered(character);
  }
  return 0;
}

} // namespace qlx::gui

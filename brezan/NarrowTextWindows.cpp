// SPDX-License-Identifier: ISC
// The C library's conversions between narrow and wide text, by which std::filesystem::path takes
// and gives narrow text. The system's C library knows no UTF-8 there, so these take its place in
// the program, as its manifest does for the system's own calls.
#include <cerrno>
#include <cstddef>
#include <cwchar>

namespace {

constexpr std::size_t kInvalid = static_cast<std::size_t>(-1);
constexpr std::size_t kIncomplete = static_cast<std::size_t>(-2);
constexpr char32_t kFirstBeyondUnit = 0x10000;

std::size_t invalid() {
  errno = EILSEQ;
  return kInvalid;
}

bool isHighSurrogate(char32_t unit) { return unit >= 0xD800 && unit < 0xDC00; }
bool isLowSurrogate(char32_t unit) { return unit >= 0xDC00 && unit < 0xE000; }

/// Reads one character, `bytes` long at most; 0 bytes in `length` for what is none.
std::size_t readCharacter(const unsigned char* text, std::size_t bytes, char32_t& character) {
  const unsigned char first = text[0];
  const std::size_t length = first < 0x80   ? 1
                             : first < 0xC2 ? 0
                             : first < 0xE0 ? 2
                             : first < 0xF0 ? 3
                             : first < 0xF5 ? 4
                                            : 0;
  if (length == 0) return invalid();
  character = length == 1 ? first : first & (0x7FU >> length);
  for (std::size_t i = 1; i < length; ++i) {
    if (i >= bytes) return kIncomplete;
    if ((text[i] & 0xC0U) != 0x80) return invalid();
    character = character << 6 | (text[i] & 0x3FU);
  }
  constexpr char32_t kSmallest[] = {0, 0, 0x80, 0x800, kFirstBeyondUnit};
  const bool isCharacter = character >= kSmallest[length] && character < 0x110000 &&
                           !isHighSurrogate(character) && !isLowSurrogate(character);
  return isCharacter ? length : invalid();
}

} // namespace

extern "C" {

// A character beyond 16 bits comes as two units: the first takes all of its bytes but one, and the
// state keeps the second, which takes the last byte.
std::size_t mbrtowc(wchar_t* unit, const char* text, std::size_t bytes, std::mbstate_t* state) {
  static std::mbstate_t own{};
  if (state == nullptr) state = &own;
  if (text == nullptr) {
    *state = {};
    return 0;
  }
  if (bytes == 0) return kIncomplete;
  if (*state != 0) {
    if (unit != nullptr) *unit = static_cast<wchar_t>(*state);
    *state = {};
    return 1;
  }
  char32_t character = 0;
  const std::size_t length =
      readCharacter(reinterpret_cast<const unsigned char*>(text), bytes, character);
  if (length == kInvalid || length == kIncomplete) return length;
  if (character < kFirstBeyondUnit) {
    if (unit != nullptr) *unit = static_cast<wchar_t>(character);
    return character == 0 ? 0 : length;
  }
  const char32_t beyond = character - kFirstBeyondUnit;
  if (unit != nullptr) *unit = static_cast<wchar_t>(0xD800 + (beyond >> 10));
  *state = static_cast<std::mbstate_t>(0xDC00 + (beyond & 0x3FF));
  return length - 1;
}

std::size_t mbrlen(const char* text, std::size_t bytes, std::mbstate_t* state) {
  static std::mbstate_t own{};
  return mbrtowc(nullptr, text, bytes, state == nullptr ? &own : state);
}

// The first half of a pair writes nothing and waits in the state.
std::size_t wcrtomb(char* text, wchar_t unit, std::mbstate_t* state) {
  static std::mbstate_t own{};
  if (state == nullptr) state = &own;
  if (text == nullptr) {
    *state = {};
    return 1;
  }
  char32_t character = unit;
  if (isHighSurrogate(character)) {
    if (*state != 0) return invalid();
    *state = static_cast<std::mbstate_t>(character);
    return 0;
  }
  if (isLowSurrogate(character) != (*state != 0)) return invalid();
  if (*state != 0)
    character =
        kFirstBeyondUnit + ((static_cast<char32_t>(*state) - 0xD800) << 10) + (character - 0xDC00);
  *state = {};
  const std::size_t length = character < 0x80               ? 1
                             : character < 0x800            ? 2
                             : character < kFirstBeyondUnit ? 3
                                                            : 4;
  constexpr unsigned kLead[] = {0, 0, 0xC0, 0xE0, 0xF0};
  for (std::size_t i = length; i > 1; --i, character >>= 6)
    text[i - 1] = static_cast<char>(0x80 | (character & 0x3F));
  text[0] = static_cast<char>(kLead[length] | character);
  return length;
}

} // extern "C"

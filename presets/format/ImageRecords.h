// SPDX-License-Identifier: ISC
#pragma once

#include "presets/format/PresetBytes.h"
#include "presets/format/PresetSlot.h"

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

/// The pieces that preset images consist of: a packed 41-byte header and length-prefixed records,
/// all numbers in the byte order of the machine that wrote them. Nothing here looks outside the
/// bytes it is given, whatever they hold; every function may be called from any thread.
namespace qlx::presets {

inline constexpr std::size_t kImageHeaderBytes = 41;
/// Where the header has the image's kind, in one byte, and the number of the current slot.
inline constexpr std::size_t kImageKindAt = 4;
inline constexpr std::size_t kImageCurrentIndexAt = 17;
inline constexpr std::size_t kRecordHeadBytes = 12;
inline constexpr std::size_t kNameBodyBytes = 156;
inline constexpr std::size_t kValueBodyBytes = 20;

/// Length of the image of `slots` presets with `parameters` values each.
constexpr std::size_t imageBytes(std::size_t slots, std::size_t parameters) {
  return kImageHeaderBytes + slots * (kRecordHeadBytes + kNameBodyBytes +
                                      parameters * (kRecordHeadBytes + kValueBodyBytes));
}

/// What follows the file identifier: the layout of the rest.
enum class ImageKind : std::uint8_t {
  LegacyPreset = 0x21,
  Preset = 0x22,
  LegacyBank = 0x37,
  Bank = 0x38,
};

/// The header's fields that decide how the records are read, already in this machine's byte order.
struct ImageHeader {
  std::int32_t recordCount = 0;
  std::int32_t currentIndex = 0;
  std::uint32_t recordBytes = 0;
};

/// The header from the first 41 of `bytes`; nothing when there are fewer.
std::optional<ImageHeader> readImageHeader(Bytes bytes, bool reversed);

/// Puts an image together in this machine's byte order.
class ImageWriter {
 public:
  /// @param expectedBytes room to set aside
  ImageWriter(std::uint32_t fileId, ImageKind kind, int currentIndex, std::size_t expectedBytes);

  void nameRecord(int slot, const PresetSlot& preset);
  void valueRecord(int slot, int parameter, float value);

  /// The image, with a header that counts the records written. The writer is done then.
  std::vector<std::uint8_t> take();

 private:
  void put(std::size_t at, std::uint32_t number);
  template <std::size_t count>
  void append(const std::array<std::uint32_t, count>& numbers) {
    const auto bytes = std::bit_cast<std::array<std::uint8_t, sizeof numbers>>(numbers);
    m_bytes.insert(m_bytes.end(), bytes.begin(), bytes.end());
  }

  std::vector<std::uint8_t> m_bytes;
  std::uint32_t m_records = 0;
};

/// Walks over the records of an image, as far as they are whole.
class RecordReader {
 public:
  /// Why there is no further record.
  enum class End {
    AllRead,
    NoRoomForHead,  ///< the bytes end in or before a record's head
    LongerThanRest, ///< a record says that it is longer than what is left
    TooShort,       ///< a record is too short for its type
  };

  RecordReader(const ImageHeader& header, Bytes records, bool reversed)
      : m_left(header.recordCount), m_rest(records), m_total(records.size()), m_reversed(reversed) {
  }

  /// Steps to the next record; false at the end.
  bool next();

  /// Where the present record begins, or the one that ended the reading: an offset in the records.
  std::size_t offset() const { return m_offset; }
  End end() const { return m_end; }
  /// How many records the header announces besides those read.
  std::int32_t recordsLeft() const { return m_left; }

  bool isName() const { return m_type == kNameType; }
  bool isValue() const { return m_type == kValueType; }
  std::uint32_t type() const { return m_type; }
  std::int32_t slot() const { return m_slot; }
  void copyName(PresetSlot& to) const {
    std::memcpy(to.name.data(), m_body.data(), kPresetNameBytes);
  }
  std::int32_t parameter() const { return readInt(m_body, m_reversed); }
  float value() const { return readFloat(m_body.subspan(12), m_reversed); }

  static constexpr std::uint32_t kNameType = 0;
  static constexpr std::uint32_t kValueType = 1;

 private:
  bool stop(End why) {
    m_end = why;
    return false;
  }

  std::int32_t m_left;
  Bytes m_rest;
  std::size_t m_total;
  bool m_reversed;
  std::size_t m_offset = 0;
  End m_end = End::AllRead;
  std::uint32_t m_type = 0;
  std::int32_t m_slot = 0;
  Bytes m_body;
};

} // namespace qlx::presets

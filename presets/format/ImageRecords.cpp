// SPDX-License-Identifier: ISC
#include "presets/format/ImageRecords.h"

namespace qlx::presets {
namespace {

constexpr std::uint32_t kFormatVersion = 0x01000000;
constexpr std::size_t kFormatVersionAt = 5;
constexpr std::size_t kParameterCountAt = 9;
constexpr std::size_t kRecordCountAt = 13;
constexpr std::size_t kRecordBytesAt = 21;

/// The least that a record's body must hold.
std::size_t ownBytes(std::uint32_t type) {
  if (type == RecordReader::kNameType) return kNameBodyBytes;
  return type == RecordReader::kValueType ? kValueBodyBytes : 0;
}

} // namespace

std::optional<ImageHeader> readImageHeader(Bytes bytes, bool reversed) {
  if (bytes.size() < kImageHeaderBytes) return std::nullopt;
  ImageHeader header;
  header.recordCount = readInt(bytes.subspan(kRecordCountAt), reversed);
  header.currentIndex = readInt(bytes.subspan(kImageCurrentIndexAt), reversed);
  header.recordBytes = readNumber(bytes.subspan(kRecordBytesAt), reversed);
  return header;
}

ImageWriter::ImageWriter(std::uint32_t fileId, ImageKind kind, int currentIndex,
                         std::size_t expectedBytes) {
  m_bytes.reserve(expectedBytes);
  m_bytes.resize(kImageHeaderBytes);
  put(0, fileId);
  m_bytes[kImageKindAt] = static_cast<std::uint8_t>(kind);
  put(kFormatVersionAt, kFormatVersion);
  put(kParameterCountAt, kNumPresetParameters);
  put(kImageCurrentIndexAt, static_cast<std::uint32_t>(currentIndex));
}

void ImageWriter::nameRecord(int slot, const PresetSlot& preset) {
  append(std::array{RecordReader::kNameType, static_cast<std::uint32_t>(kNameBodyBytes),
                    static_cast<std::uint32_t>(slot)});
  m_bytes.insert(m_bytes.end(), preset.name.begin(), preset.name.end());
  m_bytes.resize(m_bytes.size() + kNameBodyBytes - kPresetNameBytes);
  ++m_records;
}

void ImageWriter::valueRecord(int slot, int parameter, float value) {
  append(std::array{RecordReader::kValueType, static_cast<std::uint32_t>(kValueBodyBytes),
                    static_cast<std::uint32_t>(slot), static_cast<std::uint32_t>(parameter), 0U, 0U,
                    std::bit_cast<std::uint32_t>(value), 0U});
  ++m_records;
}

std::vector<std::uint8_t> ImageWriter::take() {
  put(kRecordCountAt, m_records);
  put(kRecordBytesAt, static_cast<std::uint32_t>(m_bytes.size() - kImageHeaderBytes));
  return std::move(m_bytes);
}

void ImageWriter::put(std::size_t at, std::uint32_t number) {
  std::memcpy(m_bytes.data() + at, &number, sizeof number);
}

bool RecordReader::next() {
  if (m_left <= 0) return stop(End::AllRead);
  m_offset = m_total - m_rest.size();
  if (m_rest.size() < kRecordHeadBytes) return stop(End::NoRoomForHead);
  m_type = readNumber(m_rest, m_reversed);
  const std::uint32_t length = readNumber(m_rest.subspan(4), m_reversed);
  m_slot = readInt(m_rest.subspan(8), m_reversed);
  const Bytes behindHead = m_rest.subspan(kRecordHeadBytes);
  if (length > behindHead.size()) return stop(End::LongerThanRest);
  if (length < ownBytes(m_type)) return stop(End::TooShort);
  --m_left;
  m_body = behindHead.first(length);
  m_rest = behindHead.subspan(length);
  return true;
}

} // namespace qlx::presets

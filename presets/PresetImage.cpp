#include "presets/PresetImage.h"

#include <charconv>
#include <string>

namespace qlx::presets {
namespace {

constexpr std::uint32_t kFormatVersion = 0x01000000;

enum RecordType : std::uint32_t { kNameRecord = 0, kValueRecord = 1 };

/// Appends to an image whose length is known beforehand.
class ImageWriter {
 public:
  ImageWriter(std::uint32_t fileId, ImageKind kind, std::size_t slots, std::size_t parameters,
              int currentIndex) {
    const std::size_t total = imageBytes(slots, parameters);
    m_bytes.reserve(total);
    number(fileId);
    m_bytes.push_back(static_cast<std::uint8_t>(kind));
    number(kFormatVersion);
    number(kNumPresetParameters);
    number(static_cast<std::uint32_t>(slots * (1 + parameters)));
    number(static_cast<std::uint32_t>(currentIndex));
    number(static_cast<std::uint32_t>(total - kImageHeaderBytes));
    zeros(kImageHeaderBytes - m_bytes.size());
  }

  void nameRecord(int slot, const PresetSlot& preset) {
    recordHead(kNameRecord, kNameBodyBytes, slot);
    m_bytes.insert(m_bytes.end(), preset.name.begin(), preset.name.end());
    zeros(kNameBodyBytes - kPresetNameBytes);
  }

  void valueRecord(int slot, int parameter, float value) {
    recordHead(kValueRecord, kValueBodyBytes, slot);
    number(static_cast<std::uint32_t>(parameter));
    zeros(8);
    number(std::bit_cast<std::uint32_t>(value));
    zeros(4);
  }

  std::vector<std::uint8_t> take() { return std::move(m_bytes); }

 private:
  void number(std::uint32_t value) {
    std::array<std::uint8_t, sizeof value> bytes{};
    std::memcpy(bytes.data(), &value, sizeof value);
    m_bytes.insert(m_bytes.end(), bytes.begin(), bytes.end());
  }

  void zeros(std::size_t count) { m_bytes.resize(m_bytes.size() + count); }

  void recordHead(RecordType type, std::size_t bodyBytes, int slot) {
    number(type);
    number(static_cast<std::uint32_t>(bodyBytes));
    number(static_cast<std::uint32_t>(slot));
  }

  std::vector<std::uint8_t> m_bytes;
};

/// Walks over the whole records of an image.
class RecordReader {
 public:
  RecordReader(std::int32_t count, Bytes records, bool reversed)
      : m_left(count), m_rest(records), m_reversed(reversed) {}

  /// Steps to the next record; false at the end, which is also where a record does not fit or is
  /// too short for its type.
  bool next() {
    if (m_left <= 0 || m_rest.size() < kRecordHeadBytes) return false;
    --m_left;
    m_type = readNumber(m_rest, m_reversed);
    const std::uint32_t length = readNumber(m_rest.subspan(4), m_reversed);
    m_slot = readInt(m_rest.subspan(8), m_reversed);
    m_rest = m_rest.subspan(kRecordHeadBytes);
    if (length > m_rest.size() || length < ownBytes(m_type)) return false;
    m_body = m_rest.first(length);
    m_rest = m_rest.subspan(length);
    return true;
  }

  bool isName() const { return m_type == kNameRecord; }
  bool isValue() const { return m_type == kValueRecord; }
  std::int32_t slot() const { return m_slot; }
  void copyName(PresetSlot& to) const {
    std::memcpy(to.name.data(), m_body.data(), kPresetNameBytes);
  }
  std::int32_t parameter() const { return readInt(m_body, m_reversed); }
  float value() const { return readFloat(m_body.subspan(12), m_reversed); }

 private:
  static std::size_t ownBytes(std::uint32_t type) {
    if (type == kNameRecord) return kNameBodyBytes;
    return type == kValueRecord ? kValueBodyBytes : 0;
  }

  std::int32_t m_left;
  Bytes m_rest;
  bool m_reversed;
  std::uint32_t m_type = 0;
  std::int32_t m_slot = 0;
  Bytes m_body;
};

constexpr bool isParameter(std::int32_t index) {
  return index >= 0 && index < kNumPresetParameters;
}

std::string decimal(float value) {
  // The largest float has 39 digits in front of the point; the point is one in every locale.
  std::array<char, 64> text{};
  const auto end =
      std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed, 6);
  return {text.data(), end.ptr};
}

/// 0 or 1 for a value outside that range, with a diagnostic line; `occasion` is "save" or "load".
float repaired(float value, std::int32_t parameter, std::int32_t slot, std::string_view occasion,
               std::string_view name, const DiagnosticSink& diagnose) {
  if (isNormalised(value)) return value;
  std::string line = "Invalid parameter " + std::to_string(parameter) + " value " + decimal(value);
  line.append(" on ").append(occasion).append(" of preset ");
  line.append(std::to_string(slot)).append(" ").append(name);
  diagnose(line);
  return value > 1.0F ? 1.0F : 0.0F;
}

} // namespace

std::optional<ImageHeader> readImageHeader(Bytes bytes, bool reversed) {
  if (bytes.size() < kImageHeaderBytes) return std::nullopt;
  ImageHeader header;
  header.recordCount = readInt(bytes.subspan(13), reversed);
  header.currentIndex = readInt(bytes.subspan(17), reversed);
  header.recordBytes = readNumber(bytes.subspan(21), reversed);
  return header;
}

std::vector<std::uint8_t> makePresetImage(const PresetSlot& slot, std::uint32_t fileId,
                                          const ParameterSet& saved) {
  ImageWriter image(fileId, ImageKind::Preset, 1, saved.count(), 0);
  image.nameRecord(0, slot);
  for (int p = 0; p < kNumPresetParameters; ++p) {
    const auto index = static_cast<std::size_t>(p);
    if (saved[index]) image.valueRecord(0, p, slot.values[index]);
  }
  return image.take();
}

std::vector<std::uint8_t> makeBankImage(std::span<const PresetSlot, kNumPresetSlots> slots,
                                        int currentIndex, std::uint32_t fileId,
                                        const ParameterSet& saved, const DiagnosticSink& diagnose) {
  ImageWriter image(fileId, ImageKind::Bank, slots.size(), saved.count(), currentIndex);
  for (int s = 0; s < kNumPresetSlots; ++s) {
    const PresetSlot& slot = slots[static_cast<std::size_t>(s)];
    image.nameRecord(s, slot);
    for (int p = 0; p < kNumPresetParameters; ++p) {
      const auto index = static_cast<std::size_t>(p);
      if (!saved[index]) continue;
      image.valueRecord(s, p,
                        repaired(slot.values[index], p, s, "save", slot.nameText(), diagnose));
    }
  }
  return image.take();
}

std::optional<BankUpdate> readBankRecords(const ImageHeader& header, Bytes records, bool reversed,
                                          std::span<const PresetSlot, kNumPresetSlots> present,
                                          const DiagnosticSink& diagnose) {
  if (header.recordCount < 0) return std::nullopt;
  BankUpdate bank;
  const bool known = header.currentIndex >= 0 && header.currentIndex < kNumPresetSlots;
  bank.currentIndex = known ? header.currentIndex : 0;
  RecordReader record(header.recordCount, records, reversed);
  while (record.next()) {
    if (record.slot() < 0 || record.slot() >= kNumPresetSlots) continue;
    const auto slot = static_cast<std::size_t>(record.slot());
    SlotUpdate& update = bank.slots[slot];
    if (record.isName()) {
      update.fromTemplate = true;
      update.named = true;
      update.changed.reset();
      record.copyName(update.slot);
    } else if (record.isValue()) {
      const std::string_view name = (update.named ? update.slot : present[slot]).nameText();
      const float value =
          repaired(record.value(), record.parameter(), record.slot(), "load", name, diagnose);
      if (!isParameter(record.parameter())) continue;
      update.setValue(static_cast<std::size_t>(record.parameter()), value);
    }
  }
  return bank;
}

std::optional<SlotUpdate> readPresetRecords(const ImageHeader& header, Bytes records,
                                            bool reversed) {
  if (header.recordCount < 0) return std::nullopt;
  SlotUpdate update;
  update.fromTemplate = true;
  RecordReader record(header.recordCount, records, reversed);
  while (record.next()) {
    if (record.isName()) {
      update.named = true;
      record.copyName(update.slot);
    } else if (record.isValue() && isParameter(record.parameter())) {
      if (!isNormalised(record.value())) return std::nullopt;
      update.setValue(static_cast<std::size_t>(record.parameter()), record.value());
    }
  }
  return update;
}

} // namespace qlx::presets

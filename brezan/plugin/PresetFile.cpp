// SPDX-License-Identifier: ISC
#include "brezan/plugin/PresetFile.h"

#include "brezan/Table.h"
#include "platform/Files.h"
#include "presets/format/LegacyPresetImage.h"
#include "presets/format/PresetImage.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <iostream>
#include <stdexcept>

namespace qlx::tools {

namespace {

using presets::Bytes;
using presets::RecordReader;
using presets::Scope;

// Further faults are counted as one line.
constexpr std::size_t kMostFaults = 40;

std::string decimal(float value) {
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), "%.9g", static_cast<double>(value));
  return text.data();
}

std::string count(long long number, const std::string& what) {
  return std::to_string(number) + ' ' + what + (number == 1 ? "" : "s");
}

/// Looks through the bytes of one file and fills in what it finds.
class Examination {
 public:
  Examination(PresetFile& file, Bytes bytes, std::uint32_t fileId,
              const std::vector<std::string>& parameterNames)
      : m_file(file), m_bytes(bytes), m_fileId(fileId), m_names(parameterNames) {}

  /// False for bytes that are not preset data of this plug-in.
  bool run() {
    if (const auto chunk = presets::openChunk(m_bytes, m_fileId)) {
      m_file.isState = true;
      std::visit([this](const auto& data) { examine(data); }, *chunk);
      return true;
    }
    if (const auto reversed = chunkOrder()) {
      m_file.isState = true;
      m_file.reversed = *reversed;
      m_file.layout = "state";
      unusable("the file ends at byte " + std::to_string(m_bytes.size()) +
               ", or its heads are not those of a state");
      return true;
    }
    const auto order = presets::matchFileId(m_bytes, m_fileId);
    if (!order) return false;
    m_file.reversed = *order;
    examineFile();
    return true;
  }

 private:
  /// The byte order of a state that is too damaged to be opened.
  std::optional<bool> chunkOrder() const {
    if (m_bytes.size() < presets::kChunkHeadBytes) return std::nullopt;
    return presets::matchFileId(m_bytes.subspan(4), m_fileId);
  }

  void examineFile() {
    if (m_bytes.size() <= presets::kImageKindAt) {
      m_file.layout = "preset data";
      unusable("the file ends behind its identifier");
      return;
    }
    for (const Scope scope : {Scope::Preset, Scope::Bank}) {
      m_file.scope = scope;
      const auto data = presets::openPresetData(m_bytes, m_fileId, scope);
      if (const auto* image = std::get_if<presets::RecordData>(&*data)) return examine(*image);
      if (const auto* legacy = std::get_if<presets::LegacyData>(&*data)) return examine(*legacy);
      if (m_bytes[presets::kImageKindAt] == static_cast<std::uint8_t>(imageKind(scope))) {
        m_file.layout = scope == Scope::Preset ? "preset" : "bank";
        unusable("the file ends at byte " + std::to_string(m_bytes.size()) + ", inside its header");
        return;
      }
    }
    m_file.layout = "preset data";
    unusable("its kind, " + std::to_string(m_bytes[presets::kImageKindAt]) + ", is unknown");
  }

  static presets::ImageKind imageKind(Scope scope) {
    return scope == Scope::Preset ? presets::ImageKind::Preset : presets::ImageKind::Bank;
  }

  void examine(const presets::RecordData& data) {
    m_file.layout = m_file.scope == Scope::Preset ? "preset" : "bank";
    m_file.reversed = data.reversed;
    examineRecords(data);
    std::array<presets::PresetSlot, presets::kNumPresetSlots> none;
    if (m_file.scope == Scope::Preset) {
      if (const auto update = presets::readPresetRecords(data.header, data.records, data.reversed))
        m_file.presets[0] = *update;
      else
        m_file.usable = false;
      return;
    }
    const auto bank = presets::readBankRecords(data.header, data.records, data.reversed, none,
                                               [](std::string_view) {});
    m_file.usable = bank.has_value();
    if (!bank) return;
    m_file.current = bank->currentIndex;
    for (std::size_t i = 0; i < bank->slots.size(); ++i)
      if (bank->slots[i].named || bank->slots[i].changed.any())
        m_file.presets[static_cast<int>(i)] = bank->slots[i];
  }

  void examine(const presets::LegacyData& data) {
    m_file.layout = data.recordCount == 1 ? "preset without records" : "bank without records";
    m_file.reversed = data.reversed;
    const std::size_t used =
        static_cast<std::size_t>(data.recordCount) *
        (presets::kPresetNameBytes + static_cast<std::size_t>(std::max(data.valueCount, 0)) * 4);
    if (data.valueCount < 1)
      return unusable("the file is too short for " + count(data.recordCount, "name") +
                      " with values");
    if (used < data.body.size())
      fault(count(static_cast<long long>(data.body.size() - used), "byte") +
            " at the end belong to no preset");
    examineLegacyValues(data.body, data.reversed, data.recordCount, data.valueCount,
                        used / static_cast<std::size_t>(data.recordCount));
    presets::ParameterSet all;
    all.set();
    const auto slots =
        presets::readLegacyBank(data.body, data.reversed, data.recordCount, data.valueCount, all);
    m_file.usable = slots.has_value();
    if (!slots) return;
    for (std::size_t i = 0; i < slots->size(); ++i)
      m_file.presets[static_cast<int>(i)] = (*slots)[i];
  }

  void examine(const presets::LegacyChunkData& data) {
    m_file.layout = "bank without records";
    m_file.reversed = data.reversed;
    presets::ParameterSet all;
    all.set();
    const auto bank = presets::readLegacyChunk(data.chunk, data.reversed, all);
    if (!bank) return unusable("its head does not fit its length");
    m_file.current = bank->currentIndex;
    for (std::size_t i = 0; i < bank->slots.size(); ++i)
      m_file.presets[static_cast<int>(i)] = bank->slots[i];
    if (bank->complete) return;
    const presets::SlotUpdate& last = bank->slots.back();
    unusable("preset " + std::to_string(bank->slots.size() - 1) + ": the value of " +
             parameter(static_cast<int>(last.changed.count())) +
             " is not within 0..1; the plug-in takes the presets before it and stops there");
  }

  void examineRecords(const presets::RecordData& data) {
    const bool single = m_file.scope == Scope::Preset;
    if (!m_file.isState && data.header.recordBytes != data.records.size())
      fault("the header announces " + count(data.header.recordBytes, "byte") + " of records, " +
            std::to_string(data.records.size()) + " are there");
    if (data.header.recordCount < 0)
      fault("the header announces " + std::to_string(data.header.recordCount) + " records");
    if (!single &&
        (data.header.currentIndex < 0 || data.header.currentIndex >= presets::kNumPresetSlots))
      fault("the current preset is to be " + std::to_string(data.header.currentIndex) +
            ": it becomes 0");
    RecordReader record(data.header, data.records, data.reversed);
    long long number = 0;
    for (; record.next(); ++number) examineRecord(record, place(number, data, record), single);
    if (record.end() != RecordReader::End::AllRead) reportEnd(record, number, data);
  }

  void examineRecord(const RecordReader& record, const std::string& where, bool single) {
    if (!record.isName() && !record.isValue())
      return fault(where + " is of unknown type " + std::to_string(record.type()) +
                   ": passed over");
    if (!single && !presets::isPresetSlot(record.slot()))
      return fault(where + " belongs to preset " + std::to_string(record.slot()) +
                   ", which there is not: passed over");
    if (!record.isValue()) return;
    const std::string whose = single ? "" : " of preset " + std::to_string(record.slot());
    if (!presets::isPresetParameter(record.parameter()))
      fault(where + ": parameter " + parameter(record.parameter()) + whose +
            " is unknown: passed over");
    else if (!presets::isNormalised(record.value()))
      fault(where + ": " + parameter(record.parameter()) + whose + " is " +
            decimal(record.value()) + ", not within 0..1" +
            (single                  ? ""
             : record.value() > 1.0F ? ": it becomes 1"
                                     : ": it becomes 0"));
  }

  void reportEnd(const RecordReader& record, long long number, const presets::RecordData& data) {
    using End = RecordReader::End;
    const std::string where = place(number, data, record);
    if (record.end() == End::TooShort)
      fault(where + " is shorter than its type needs: nothing behind it is read");
    else
      fault("the records end too early, at byte " +
            std::to_string(offsetOf(data.records.data() + data.records.size())) + ", in " + where +
            ": " + count(record.recordsLeft(), "announced record") + " missing");
  }

  std::string place(long long number, const presets::RecordData& data,
                    const RecordReader& record) const {
    return "record " + std::to_string(number + 1) + " at byte " +
           std::to_string(offsetOf(data.records.data() + record.offset()));
  }

  void examineLegacyValues(Bytes body, bool reversed, int records, int values, std::size_t stride) {
    for (int i = 0; i < records; ++i)
      for (int p = 0; p < std::min(values, presets::kNumPresetParameters); ++p) {
        const Bytes at = body.subspan(static_cast<std::size_t>(i) * stride +
                                      presets::kPresetNameBytes + static_cast<std::size_t>(p) * 4);
        const float value = presets::readFloat(at, reversed);
        if (presets::isNormalised(value)) continue;
        fault("preset " + std::to_string(i) + " at byte " + std::to_string(offsetOf(at.data())) +
              ": " + parameter(p) + " is " + decimal(value) + ", not within 0..1");
      }
  }

  std::size_t offsetOf(const std::uint8_t* place) const {
    return static_cast<std::size_t>(place - m_bytes.data());
  }

  std::string parameter(int index) const {
    if (index < 0 || index >= static_cast<int>(m_names.size())) return std::to_string(index);
    return std::to_string(index) + " (" + m_names[static_cast<std::size_t>(index)] + ")";
  }

  void fault(std::string line) {
    if (m_file.faults.size() == kMostFaults) line = "and more";
    if (m_file.faults.size() <= kMostFaults) m_file.faults.push_back(std::move(line));
  }

  void unusable(std::string line) {
    m_file.usable = false;
    m_file.faults.push_back(std::move(line));
  }

  PresetFile& m_file;
  Bytes m_bytes;
  std::uint32_t m_fileId;
  const std::vector<std::string>& m_names;
};

} // namespace

PresetFile readPresetFile(const std::string& path, std::uint32_t fileId,
                          const std::vector<std::string>& parameterNames) {
  const auto bytes = platform::readFile(path, presets::kMaxPresetFileBytes);
  if (!bytes) throw std::runtime_error("cannot read '" + path + "'");
  PresetFile file;
  file.bytes = bytes->size();
  if (!Examination(file, *bytes, fileId, parameterNames).run())
    throw std::runtime_error("'" + path + "' holds no presets of this plug-in");
  return file;
}

std::vector<char> stateChunk(const PresetFile& file, std::uint32_t fileId, int first, int current) {
  presets::ImageWriter image(fileId, presets::ImageKind::Bank, current, 0);
  for (const auto& [number, update] : file.presets) {
    const int slot = file.scope == Scope::Preset ? first : number;
    if (update.fromTemplate) image.nameRecord(slot, update.slot);
    for (int p = 0; p < presets::kNumPresetParameters; ++p)
      if (const auto i = static_cast<std::size_t>(p); update.changed[i])
        image.valueRecord(slot, p, update.slot.values[i]);
  }
  const auto head = presets::makeChunkHead(fileId);
  const std::vector<std::uint8_t> bytes = image.take();
  std::vector<char> chunk(head.size() + bytes.size());
  std::copy(bytes.begin(), bytes.end(), std::copy(head.begin(), head.end(), chunk.begin()));
  return chunk;
}

PresetFile loadPresetFile(PluginHost& host, const std::string& path, std::optional<int> index) {
  std::vector<std::string> names;
  names.reserve(static_cast<std::size_t>(host.parameterCount()));
  for (int i = 0; i < host.parameterCount(); ++i) names.push_back(host.parameter(i).name);
  if (names.size() != presets::kNumPresetParameters)
    throw std::runtime_error("'" + host.file().string() + "' keeps its presets in another way");
  const auto id = static_cast<std::uint32_t>(host.record().uniqueId);
  PresetFile file = readPresetFile(path, id, names);
  if (!file.usable)
    throw std::runtime_error("'" + path + "' cannot be loaded: " + file.faults.front() +
                             (file.faults.size() == 1 ? "" : "; 'brezan presets show' says more"));
  for (const std::string& fault : file.faults)
    std::cerr << "brezan: warning: '" << path << "': " << fault << '\n';
  const bool single = file.scope == Scope::Preset;
  const int first = single ? index.value_or(0) : 0;
  const int current = single ? first : index.value_or(file.isState ? file.current : 0);
  host.setState(stateChunk(file, id, first, current));
  return file;
}

} // namespace qlx::tools

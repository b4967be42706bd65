// SPDX-License-Identifier: ISC
#include "resources/PackedRecording.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace qlx::resources {

namespace {

class BitReader {
 public:
  explicit BitReader(std::span<const std::byte> bytes) noexcept : m_bytes(bytes) {}

  /// The next bits in the highest places, at least 57 of them; 0 too close to the end.
  std::uint64_t ahead() const noexcept {
    const std::size_t place = m_bit / 8;
    if (place > m_bytes.size() || m_bytes.size() - place < sizeof(std::uint64_t)) return 0;
    std::uint64_t word;
    std::memcpy(&word, m_bytes.data() + place, sizeof word);
    static_assert(std::endian::native == std::endian::little);
    return __builtin_bswap64(word) << (m_bit % 8);
  }
  void skip(unsigned bits) noexcept { m_bit += bits; }

  /// 1 to 32 bits.
  std::uint32_t take(unsigned bits) noexcept {
    const auto value = static_cast<std::uint32_t>(ahead() >> (64U - bits));
    skip(bits);
    return value;
  }

 private:
  std::span<const std::byte> m_bytes;
  std::size_t m_bit = 0;
};

Predictor takePredictor(BitReader& bits) noexcept {
  Predictor predictor;
  predictor.shift = bits.take(kShiftBits);
  for (std::int16_t& coefficient : predictor.coefficients)
    coefficient = static_cast<std::int16_t>(bits.take(kCoefficientBits));
  return predictor;
}

bool unpackGroup(BitReader& bits, const Predictor& predictor, SampleHistory& history,
                 std::span<float> samples) noexcept {
  const unsigned rice = bits.take(kRiceBits);
  if (rice > kLargestRice) return false;
  for (float& sample : samples) {
    const std::uint64_t ahead = bits.ahead();
    const auto quotient = static_cast<unsigned>(std::countl_zero(ahead));
    if (quotient > kLargestQuotient) return false;
    // A shift by 64 bits in one step is not defined.
    const std::uint64_t rest = (ahead << quotient << 1U) >> 1U >> (63U - rice);
    bits.skip(quotient + 1 + rice);
    const auto code = static_cast<std::int64_t>(std::uint64_t{quotient} << rice | rest);
    const std::int64_t residual = (code >> 1) ^ -(code & 1);
    const auto value = static_cast<std::int32_t>(predictor.predicted(history) + residual);
    std::copy_backward(history.begin(), history.end() - 1, history.end());
    history.front() = value;
    sample = static_cast<float>(value) * kSampleStep;
  }
  return true;
}

} // namespace

bool unpackRecording(std::span<const std::byte> packed, std::span<float> samples) noexcept {
  BitReader bits(packed);
  SampleHistory history{};
  for (std::size_t block = 0; block < samples.size(); block += kPackedBlock) {
    const Predictor predictor = takePredictor(bits);
    const auto inBlock = samples.subspan(block, std::min(kPackedBlock, samples.size() - block));
    for (std::size_t group = 0; group < inBlock.size(); group += kPackedGroup) {
      const std::size_t count = std::min(kPackedGroup, inBlock.size() - group);
      if (!unpackGroup(bits, predictor, history, inBlock.subspan(group, count))) return false;
    }
  }
  return true;
}

} // namespace qlx::resources

// SPDX-License-Identifier: ISC
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

/// The form in which resources/recordings packs a recording while building, without loss. Samples
/// are whole numbers of kSampleStep, each predicted from the kPredictorOrder before it (0 before
/// the first):
///   prediction[n] = (sum of coefficient[j] * sample[n - 1 - j]) >> shift
/// What is left, r, is stored as the Rice code of 2 r, or of -2 r - 1 where r is negative: the
/// quotient by 2^k as so many zeros and a one, then the rest in k bits.
///
/// Bits, the highest of a byte first: for every block of kPackedBlock samples (the last may be
/// shorter) the shift in kShiftBits, the coefficients in kCoefficientBits each (two's complement),
/// then for every kPackedGroup samples k in kRiceBits and their codes. kPackedPadding zero bytes
/// follow.
namespace qlx::resources {

/// Full scale is 1; the error of rounding to it is noise at -125 dB, 70 dB below the quietest
/// recording.
inline constexpr float kSampleStep = 0x1p-19F;
inline constexpr std::size_t kPredictorOrder = 8;
inline constexpr std::size_t kPackedBlock = 4096;
inline constexpr std::size_t kPackedGroup = 256;
inline constexpr unsigned kShiftBits = 4;
inline constexpr unsigned kCoefficientBits = 16;
inline constexpr unsigned kRiceBits = 5;
/// A code is at most 57 bits long, so that any eight bytes that begin with it hold it.
inline constexpr unsigned kLargestRice = 24;
inline constexpr unsigned kLargestQuotient = 32;
inline constexpr std::size_t kPackedPadding = 8;

/// The samples before the one to predict, the latest first, in steps.
using SampleHistory = std::array<std::int32_t, kPredictorOrder>;

struct Predictor {
  std::array<std::int16_t, kPredictorOrder> coefficients{};
  unsigned shift = 0;

  std::int64_t predicted(const SampleHistory& history) const noexcept {
    std::int64_t sum = 0;
    for (std::size_t j = 0; j < kPredictorOrder; ++j)
      sum += std::int64_t{coefficients[j]} * history[j];
    return sum >> shift;
  }
};

/// Fills all of `samples`. False where the bytes are not of this form or end too early; reads
/// nothing outside, whatever the bytes. Any thread.
bool unpackRecording(std::span<const std::byte> packed, std::span<float> samples) noexcept;

} // namespace qlx::resources

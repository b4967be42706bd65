// SPDX-License-Identifier: ISC
#include "resources/recordings/RecordingPacker.h"

#include "resources/PackedRecording.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

namespace qlx::recordings {

namespace {

using resources::kPredictorOrder;
using resources::Predictor;
using resources::SampleHistory;
using Samples = std::span<const std::int32_t>;

/// Index 0 is the sample itself.
using Lags = std::array<double, kPredictorOrder + 1>;

class BitWriter {
 public:
  /// The lowest `count` bits, at most 32.
  void put(std::uint32_t bits, unsigned count) {
    for (unsigned i = count; i-- > 0;) {
      if (m_bit % 8 == 0) m_bytes.push_back('\0');
      const auto byte = static_cast<unsigned char>(m_bytes.back());
      m_bytes.back() = static_cast<char>(byte | ((bits >> i) & 1U) << (7 - m_bit % 8));
      ++m_bit;
    }
  }

  std::string padded() && { return std::move(m_bytes) + std::string(resources::kPackedPadding, 0); }

 private:
  std::string m_bytes;
  std::size_t m_bit = 0;
};

/// Of a block faded in and out by a parabola, so that its ends do not count as steps.
Lags autocorrelationOf(Samples block) {
  std::vector<double> faded(block.size());
  for (std::size_t i = 0; i < block.size(); ++i) {
    const double place =
        2.0 * (static_cast<double>(i) + 0.5) / static_cast<double>(block.size()) - 1.0;
    faded[i] = block[i] * (1.0 - place * place);
  }
  Lags lags{};
  for (std::size_t lag = 0; lag < std::min(lags.size(), block.size()); ++lag)
    for (std::size_t i = lag; i < faded.size(); ++i) lags[lag] += faded[i] * faded[i - lag];
  return lags;
}

/// The coefficients with the smallest squared error for this autocorrelation, from index 1 on
/// (Levinson and Durbin's recursion).
Lags predictionFor(const Lags& lags) {
  Lags found{};
  double error = lags[0];
  for (std::size_t order = 1; order <= kPredictorOrder && error > 0.0; ++order) {
    double missing = lags[order];
    for (std::size_t j = 1; j < order; ++j) missing -= found[j] * lags[order - j];
    const double reflection = missing / error;
    Lags next = found;
    next[order] = reflection;
    for (std::size_t j = 1; j < order; ++j) next[j] -= reflection * found[order - j];
    found = next;
    error *= 1.0 - reflection * reflection;
  }
  return found;
}

/// With as many binary places as all coefficients have room for.
Predictor rounded(const Lags& prediction) {
  constexpr double kLargest = std::numeric_limits<std::int16_t>::max();
  double largest = 0.0;
  for (const double coefficient : prediction) largest = std::max(largest, std::abs(coefficient));
  Predictor predictor;
  predictor.shift = (1U << resources::kShiftBits) - 1U;
  while (predictor.shift > 0 && largest * (1U << predictor.shift) > kLargest) --predictor.shift;
  for (std::size_t j = 0; j < kPredictorOrder; ++j)
    predictor.coefficients[j] = static_cast<std::int16_t>(
        std::clamp(std::round(prediction[j + 1] * (1U << predictor.shift)), -kLargest, kLargest));
  return predictor;
}

/// What prediction leaves, as codes without sign.
std::vector<std::uint32_t> codesOf(Samples block, const Predictor& predictor,
                                   SampleHistory& history) {
  std::vector<std::uint32_t> codes;
  for (const std::int32_t sample : block) {
    const std::int64_t left = sample - predictor.predicted(history);
    codes.push_back(static_cast<std::uint32_t>(left >= 0 ? 2 * left : -2 * left - 1));
    std::copy_backward(history.begin(), history.end() - 1, history.end());
    history.front() = sample;
  }
  return codes;
}

/// The k that makes the codes shortest, of those that make none too long.
unsigned bestRice(std::span<const std::uint32_t> codes) {
  const std::uint32_t largest = *std::ranges::max_element(codes);
  unsigned best = resources::kLargestRice;
  auto fewest = std::numeric_limits<std::uint64_t>::max();
  for (unsigned rice = 0; rice <= resources::kLargestRice; ++rice) {
    if (largest >> rice > resources::kLargestQuotient) continue;
    std::uint64_t bits = 0;
    for (const std::uint32_t code : codes) bits += (code >> rice) + 1 + rice;
    if (bits < fewest) {
      fewest = bits;
      best = rice;
    }
  }
  return best;
}

void putGroup(BitWriter& bits, std::span<const std::uint32_t> codes) {
  const unsigned rice = bestRice(codes);
  bits.put(rice, resources::kRiceBits);
  for (const std::uint32_t code : codes) {
    bits.put(0, code >> rice);
    bits.put(1, 1);
    bits.put(code, rice);
  }
}

} // namespace

std::string packRecording(Samples samples) {
  BitWriter bits;
  SampleHistory history{};
  while (!samples.empty()) {
    const Samples block = samples.first(std::min(resources::kPackedBlock, samples.size()));
    samples = samples.subspan(block.size());
    const Predictor predictor = rounded(predictionFor(autocorrelationOf(block)));
    bits.put(predictor.shift, resources::kShiftBits);
    for (const std::int16_t coefficient : predictor.coefficients)
      bits.put(static_cast<std::uint16_t>(coefficient), resources::kCoefficientBits);
    const auto codes = codesOf(block, predictor, history);
    for (std::size_t i = 0; i < codes.size(); i += resources::kPackedGroup)
      putGroup(bits,
               std::span(codes).subspan(i, std::min(resources::kPackedGroup, codes.size() - i)));
  }
  return std::move(bits).padded();
}

} // namespace qlx::recordings

// SPDX-License-Identifier: ISC
#pragma once

#include <array>

namespace qlx::engine {

/// Longest block, in samples, that the stages work on at a time. The stages only feed forward, so
/// each runs over the whole sub-block before the next begins.
inline constexpr int kSubBlock = 64;

/// One value a sample of a sub-block.
using SubBlock = std::array<double, kSubBlock>;

} // namespace qlx::engine

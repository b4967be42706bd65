// SPDX-License-Identifier: ISC
#pragma once

#include <cstdint>

/// Noise that is the same on every machine: everything grows from kSeed.
namespace qlx::artwork {

inline constexpr std::uint32_t kSeed = 0x51a7e5;

/// A well-mixed number in [0, 1) for a lattice point of one of many independent fields.
double hashed(std::int32_t x, std::int32_t y, std::uint32_t field);

/// Gradient noise, about -1..1, one feature per unit length.
double noise(double x, double y, std::uint32_t field);

/// Sum of `octaves` noises, each of twice the frequency and half the weight; about -1..1.
double fractal(double x, double y, int octaves, std::uint32_t field);

} // namespace qlx::artwork

// SPDX-License-Identifier: ISC
#pragma once

#include <cstdint>

/// The materials' colours, sRGB.
namespace qlx::artwork::palette {

inline constexpr std::uint32_t kWalnut[4] = {0x20130b, 0x3a2414, 0x5b3a20, 0x7d5531};

inline constexpr std::uint32_t kSteel = 0x1c1b1a;
inline constexpr std::uint32_t kSteelLit = 0x3b3937;
inline constexpr std::uint32_t kSteelShade = 0x0a0909;

inline constexpr std::uint32_t kIvory = 0xece2c8;
inline constexpr std::uint32_t kIvoryDim = 0xb9ad92;
inline constexpr std::uint32_t kUnlit = 0x9a8f79; // a word whose lamp is off
inline constexpr std::uint32_t kPaper = 0xcbbf9f;
inline constexpr std::uint32_t kInk = 0x242420; // the name field's text colour

inline constexpr std::uint32_t kBrassDark = 0x6f5523;
inline constexpr std::uint32_t kBrass = 0xb98d3c;
inline constexpr std::uint32_t kBrassLit = 0xf0d48a;

inline constexpr std::uint32_t kBakeliteDark = 0x15110f;
inline constexpr std::uint32_t kBakelite = 0x2c2320;
inline constexpr std::uint32_t kBakeliteLit = 0x544640;

inline constexpr std::uint32_t kWell = 0x0d0f0e;

inline constexpr std::uint32_t kAmber = 0xffb347;
inline constexpr std::uint32_t kAmberCore = 0xfff1cf;
inline constexpr std::uint32_t kGarnet = 0xff6a3d;
inline constexpr std::uint32_t kGarnetCore = 0xffe0c8;

inline constexpr std::uint32_t kLampOff = 0x3a1c12;
inline constexpr std::uint32_t kLampOn = 0xff5a2a;

} // namespace qlx::artwork::palette

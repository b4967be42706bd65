// SPDX-License-Identifier: ISC
#pragma once

/// The names by which hosts know the bundle's parts.
#define QLX_LV2_URI "https://meridane.example/lv2/qlx-brezan"

namespace qlx::lv2 {

inline constexpr char kPluginUri[] = QLX_LV2_URI;
inline constexpr char kUiUri[] = QLX_LV2_URI "#ui";
/// Prefix of the factory presets; a number of two digits follows.
inline constexpr char kPresetUri[] = QLX_LV2_URI "#preset";
/// State: the whole bank as the effect's own chunk, an atom:Chunk.
inline constexpr char kChunkUri[] = QLX_LV2_URI "#chunk";
/// State of a factory preset: its number 0..16, an atom:Int.
inline constexpr char kFactoryPresetUri[] = QLX_LV2_URI "#factoryPreset";

} // namespace qlx::lv2

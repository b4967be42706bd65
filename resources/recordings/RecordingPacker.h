// SPDX-License-Identifier: ISC
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace qlx::recordings {

/// The bytes of resources/PackedRecording.h for these samples, in steps of kSampleStep, which are
/// all within +-2^20.
std::string packRecording(std::span<const std::int32_t> samples);

} // namespace qlx::recordings

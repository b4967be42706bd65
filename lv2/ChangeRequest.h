// SPDX-License-Identifier: ISC
#pragma once

#include <cstdint>

/// The public extension by which a plug-in asks its host to move one of the plug-in's own control
/// input ports. Called inside run() only.
namespace qlx::lv2 {

inline constexpr char kChangeRequestUri[] =
    "http://kx.studio/ns/lv2ext/control-input-port-change-request";

enum class ChangeStatus : int { kSuccess = 0, kUnknown = 1, kInvalidIndex = 2 };

/// The feature's data.
struct ChangeRequest {
  void* handle;
  ChangeStatus (*requestChange)(void* handle, std::uint32_t index, float value);
};

} // namespace qlx::lv2

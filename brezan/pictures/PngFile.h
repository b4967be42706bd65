// SPDX-License-Identifier: ISC
#pragma once

#include "gui/drawing/PixelBuffer.h"
#include "platform/WindowRobot.h"

#include <filesystem>

namespace qlx::tools {

/// Throws std::runtime_error unless the name ends in .png.
void checkPictureName(const std::filesystem::path& path);

/// Write a PNG file without transparency, as a whole or not at all. Throw std::runtime_error.
void savePng(const gui::PixelBuffer& pixels, const std::filesystem::path& path);
/// Each pixel as a square of `scale` pixels.
void savePng(const platform::WindowRobot::Picture& picture, int scale,
             const std::filesystem::path& path);

} // namespace qlx::tools

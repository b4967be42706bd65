// SPDX-License-Identifier: ISC
#pragma once

#include <cstddef>
#include <span>

/// Files that are kept in this library under numbers, on systems whose libraries have resources
/// (Windows): read-only, valid as long as the library is loaded, any thread. Empty when there is
/// none by this number.
namespace qlx::platform {

/// Of the type "PNG".
std::span<const std::byte> pngResource(int number);

/// A device-independent bitmap, which begins with its information header.
std::span<const std::byte> bitmapResource(int number);

} // namespace qlx::platform

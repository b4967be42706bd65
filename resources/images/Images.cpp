// SPDX-License-Identifier: ISC
#include "resources/images/Images.h"

#include <algorithm>
#include <cstdint>

namespace qlx::resources {
namespace {

/// Images of factor 2 stand in the directory by their number plus this.
constexpr std::int64_t kLargeNumbers = 100000;

/// One line of the directory in Images.S.
struct DirectoryEntry {
  std::uint32_t number;
  std::uint32_t distance; // from the directory's first byte
  std::uint32_t length;
};

} // namespace

extern "C" {
// Defined in Images.S.
extern const DirectoryEntry qlxImageDirectory[];
extern const DirectoryEntry qlxImageDirectoryEnd[];
}

std::span<const std::byte> findImage(int number, int factor) {
  if (factor != 1 && factor != 2) return {};
  const std::int64_t wanted = number + (factor - 1) * kLargeNumbers;
  const std::span directory(qlxImageDirectory, qlxImageDirectoryEnd);
  const auto found = std::ranges::find_if(directory, [wanted](const DirectoryEntry& entry) {
    return static_cast<std::int64_t>(entry.number) == wanted;
  });
  if (found == directory.end()) return {};
  const auto* base = reinterpret_cast<const std::byte*>(qlxImageDirectory);
  return {base + found->distance, found->length};
}

} // namespace qlx::resources

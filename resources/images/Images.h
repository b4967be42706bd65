#pragma once

#include <cstddef>
#include <span>

namespace qlx::resources {

/// The PNG file of an image of the editor by its resource number; empty when there is none. The
/// bytes live inside the library for ever. Any thread.
std::span<const std::byte> findImage(int number);

/// The TrueType file of the editor's font, Liberation Sans, which has the metrics of Arial.
std::span<const std::byte> editorFont();

} // namespace qlx::resources

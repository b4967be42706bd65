// SPDX-License-Identifier: ISC
#pragma once

#include "gui/drawing/PixelBuffer.h"

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <span>
#include <vector>

namespace qlx::gui {

/// A picture that several controls share; what it shows never changes. A strip is a bitmap of
/// frames of equal height, frame 0 at the top. Its size is that of the layout; it may be drawn from
/// files that are two or three times as large. Any thread.
class CBitmap {
 public:
  /// The bytes of the picture's file at so many times its size (1, 2 or 3), which stay where they
  /// are; none when there is no such file.
  using Files = std::function<std::span<const std::uint8_t>(int scale)>;

  explicit CBitmap(PixelBuffer pixels);

  /// Decodes a PNG file or a packed image held in memory, or a device-independent bitmap of 24 or
  /// 32 uncompressed bits with or without its file header. Null when the bytes are none of them.
  static std::shared_ptr<const CBitmap> decode(std::span<const std::uint8_t> bytes);

  /// A picture that is decoded when it is drawn, at the scale and as far as it is drawn then. Its
  /// files are those that decode() takes, or several of its PNG files or packed images of one size,
  /// which stand below each other in the picture: of a strip, only what is shown is decoded. Three
  /// times the size without a file is made of the double one, piece by piece; every other size of
  /// the plain one by repeating pixels. Null without a plain file.
  static std::shared_ptr<const CBitmap> load(Files files);

  int width() const { return m_width; }
  int height() const { return m_height; }

  /// Row `y` of the picture `scale` times as large, width() x scale pixels; y in 0..height() x
  /// scale - 1. Stays as long as the bitmap. What can't be decoded is transparent.
  const std::uint32_t* row(int scale, int y) const;

  /// All of the picture.
  PixelBuffer pixels(int scale = 1) const;

 private:
  /// The picture at one scale: pieces of equal height from the top.
  struct Pieces {
    int height = 0;
    int from = 0;                                     ///< the scale that the files were drawn at
    std::vector<std::span<const std::uint8_t>> files; ///< none where it was decoded at once
    std::vector<PixelBuffer> pixels;                  ///< empty ones aren't decoded yet
  };

  CBitmap(Files files, int width, int height);
  Pieces piecesOf(int scale, int from) const;
  Pieces enlarged(int scale) const;
  Pieces made(int scale) const;
  const std::uint32_t* decodedRow(int scale, int y) const;

  Files m_files;
  int m_width;
  int m_height;
  PixelBuffer m_plain; ///< of a picture without files
  mutable std::mutex m_decoding;
  mutable std::map<int, Pieces> m_pieces; ///< by scale; under m_decoding, as what they hold
};

using CBitmapRef = std::shared_ptr<const CBitmap>;

} // namespace qlx::gui

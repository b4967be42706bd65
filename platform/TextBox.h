// SPDX-License-Identifier: ISC
#pragma once

#include "platform/PixelRect.h"
#include "platform/PixelView.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace qlx::platform {

/// The system's own box for one line of text, over a field of a window. It has the keyboard from
/// the start, and all of its text is selected. Its window hears of changes (kTextBoxChanged), of
/// Enter, Tab and Escape (kKeyDown) and of the loss of the keyboard (kFocusLost); with the box's
/// end the window has the keyboard, if the box still had it. User-interface thread; destroyed
/// before its window.
class TextBox {
 public:
  virtual ~TextBox() = default;
  TextBox() = default;
  TextBox(const TextBox&) = delete;
  TextBox& operator=(const TextBox&) = delete;

  /// UTF-8; empty when the window has gone.
  virtual std::string text() const = 0;
  /// All of it is selected afterwards.
  virtual void setText(std::string_view utf8) = 0;
};

/// How a text box begins.
struct TextBoxLook {
  enum class Align : std::uint8_t { Left, Centre, Right };

  std::string_view text;    ///< UTF-8
  PixelRect field{};        ///< in the window; the box lies at the middle of its height
  PixelView background{};   ///< what the field shows behind the text, of its size; copied
  std::uint32_t colour = 0; ///< of the text, 0xRRGGBB
  int fontHeight = 0;       ///< of the letters' em, in pixels
  Align align = Align::Left;
  std::size_t limit = 0; ///< characters that can be typed
};

} // namespace qlx::platform

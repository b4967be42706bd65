// SPDX-License-Identifier: ISC
#pragma once

#include "sdk/VstTypes.h"

#include <cstdint>

namespace qlx::sdk {

/// Index of the vendor's own request (EffectOpcode::VendorSpecific) for a picture of the editor;
/// ptr is an EditorPicture, the answer 1 when it has been drawn.
inline constexpr std::int32_t kEditorPictureRequest = fourCharacters("EdPi");

struct EditorClick {
  std::int32_t x;
  std::int32_t y;
};

/// The editor as it would look if it were opened now, drawn without any display. The window must be
/// closed. Memory is the host's.
struct EditorPicture {
  std::int32_t byteSize; ///< of this
  std::int32_t width;    ///< one of the editor's own sizes
  std::int32_t height;
  std::int32_t clickCount;
  const EditorClick* clicks; ///< left clicks first, in the smallest size's pixels; they act on the
                             ///< effect
  std::uint32_t* pixels;     ///< width x height words 0xFFRRGGBB, rows from the top
};

/// Index of the vendor's own request for the editor's controls in words; ptr is an
/// EditorDescription, the answer the text's length, 0 when there is none.
inline constexpr std::int32_t kEditorDescriptionRequest = fourCharacters("EdDe");

/// The editor's controls as a tree: a line for each, name, value and kind, two blanks for each
/// level. Those of the open window, or of one that would be opened now. Memory is the host's.
struct EditorDescription {
  std::int32_t byteSize; ///< of this
  std::int32_t room; ///< bytes at `text`; as many of the text's (UTF-8, no end mark) are written
  char* text;        ///< may be null with no room
};

} // namespace qlx::sdk

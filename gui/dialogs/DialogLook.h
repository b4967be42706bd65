// SPDX-License-Identifier: ISC
#pragma once

#include "gui/CColor.h"
#include "gui/drawing/CTypeface.h"

/// What the boxes and lists that lie over the window have in common.
namespace qlx::gui {

inline constexpr CFontDesc kDialogTitleFont{13.0};
inline constexpr CFontDesc kDialogFont{12.0};
inline constexpr CCoord kDialogButtonHeight = 24.0;

inline constexpr CColor kDialogBack{38, 33, 29, 255};
inline constexpr CColor kDialogSheet{28, 24, 21, 255}; ///< behind lists and fields
inline constexpr CColor kDialogEdge{111, 85, 35, 255};
inline constexpr CColor kDialogTitle{240, 212, 138, 255};
inline constexpr CColor kDialogText{236, 226, 200, 255};
inline constexpr CColor kDialogQuietText{150, 140, 120, 255};
inline constexpr CColor kDialogButton{58, 50, 43, 255};
inline constexpr CColor kDialogHighlight{185, 141, 60, 255};
inline constexpr CColor kDialogHighlightText{28, 20, 12, 255};

} // namespace qlx::gui

// SPDX-License-Identifier: ISC
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace qlx::editor {

/// What is said about the size of the window: pixels of the screen for a pixel of the layout.
/// Numbers that are no size (0, negative, not finite) count as nothing.
struct ScaleWishes {
  std::optional<double> environment{}; ///< QLX_SCALE
  std::optional<double> host{};
  std::optional<double> stored{}; ///< the user's own choice
  std::optional<double> desktop{};
};

/// The scale, one of gui::kWindowScales, for a window that is about to open. The first wish counts,
/// in the order above; but many hosts say 1 for want of an own opinion, so their 1 comes after the
/// user's choice.
double chosenScale(const ScaleWishes& wishes);

/// A decimal number with a point, in any locale; nothing for other texts.
std::optional<double> scaleFromText(std::string_view text);
std::string textOfScale(double scale);

} // namespace qlx::editor

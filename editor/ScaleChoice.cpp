// SPDX-License-Identifier: ISC
#include "editor/ScaleChoice.h"

#include "gui/drawing/WindowScale.h"

#include <array>
#include <charconv>
#include <cmath>

namespace qlx::editor {

double chosenScale(const ScaleWishes& wishes) {
  const bool hostHasOpinion = wishes.host && *wishes.host != 1.0;
  const std::optional<double> ordered[]{wishes.environment,
                                        hostHasOpinion ? wishes.host : std::nullopt, wishes.stored,
                                        wishes.host, wishes.desktop};
  for (const std::optional<double>& wish : ordered)
    if (wish && std::isfinite(*wish) && *wish > 0.0) return gui::nearestWindowScale(*wish);
  return 1.0;
}

std::optional<double> scaleFromText(std::string_view text) {
  double scale = 0.0;
  const char* const end = text.data() + text.size();
  const auto read = std::from_chars(text.data(), end, scale);
  if (read.ec != std::errc() || read.ptr != end) return std::nullopt;
  return scale;
}

std::string textOfScale(double scale) {
  std::array<char, 32> text{};
  const auto written = std::to_chars(text.data(), text.data() + text.size(), scale);
  return {text.data(), written.ptr};
}

} // namespace qlx::editor

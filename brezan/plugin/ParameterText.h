// SPDX-License-Identifier: ISC
#pragma once

#include "brezan/plugin/PluginHost.h"

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qlx::tools {

/// A parameter and the normalised value to give it.
struct ParameterValue {
  int index;
  float value;
};

/// Turns what people type for parameters into indices and normalised values. A number, with or
/// without a unit, is what the effect's display shows ("-6", "-6dB", "1.2s" or "1200ms"); words are
/// those of the display ("Tube", "Front Side"); "norm:0.25" is the normalised value itself. Values
/// are found by trying them on a spare instance of the effect and reading its displays, so that the
/// rendering instance is not disturbed. Failures throw std::runtime_error that says what would have
/// been right.
class ParameterText {
 public:
  explicit ParameterText(const std::filesystem::path& pluginFile);

  /// By name, upper and lower case alike, or by number.
  int index(std::string_view name);
  /// The normalised value. A number between two that the display can show lies between their
  /// values.
  float value(int index, std::string_view text);
  /// "NAME=VALUE".
  ParameterValue assignment(std::string_view text);
  const std::string& name(int index) const { return m_names[static_cast<std::size_t>(index)]; }

 private:
  struct Shown {
    float first; ///< lowest value of the grid that shows this
    float last;
    std::string display; ///< folded
    std::string label;   ///< folded
  };
  /// All that the parameter shows, in the order of its values.
  const std::vector<Shown>& shown(int index);
  std::optional<float> word(int index, const std::string& wanted);
  std::optional<float> plainNumber(int index, double number, const std::string& text);
  std::optional<float> numberOfWord(int index, double number);
  /// The value that shows `amount`, which is in the unit `base`.
  std::optional<float> showing(int index, double amount, const std::string& base);
  std::optional<double> amountAt(int index, float value, const std::string& base);
  std::string hint(int index);
  [[noreturn]] void refuse(int index, std::string_view text, const std::string& instead);

  PluginHost m_scratch;
  std::vector<std::string> m_names;
  std::map<int, std::vector<Shown>> m_shown; ///< by parameter, filled when first asked for
};

} // namespace qlx::tools

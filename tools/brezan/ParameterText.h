#pragma once

#include "tools/brezan/PluginHost.h"

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

/// Turns what people type for parameters into indices and normalised values. Words ("Tube",
/// "FrontRear") and amounts with a unit ("-6dB", "1.2s") are found by trying values on a spare
/// instance of the effect and reading its displays, so that the rendering instance is not
/// disturbed. Failures throw std::runtime_error that says what would have been right.
class ParameterText {
 public:
  explicit ParameterText(const std::filesystem::path& pluginFile);

  /// By name, upper and lower case alike, or by number.
  int index(std::string_view name);
  /// A number in 0..1 is the normalised value itself; anything else is looked up.
  float value(int index, std::string_view text);
  /// "NAME=VALUE".
  ParameterValue assignment(std::string_view text);
  const std::string& name(int index) const { return m_names[static_cast<std::size_t>(index)]; }

 private:
  struct Shown {
    float value;
    std::string display; ///< folded
    std::string label;   ///< folded
  };
  const std::vector<Shown>& shown(int index);
  /// The value whose display is `wanted`, with or without its unit.
  std::optional<float> showing(int index, const std::string& wanted);
  /// The value whose display comes nearest to an amount within the range.
  std::optional<float> nearest(int index, double number, const std::string& unit);
  std::string hint(int index);

  PluginHost m_scratch;
  std::vector<std::string> m_names;
  std::map<int, std::vector<Shown>> m_shown; ///< by parameter, filled when first asked for
};

} // namespace qlx::tools

// SPDX-License-Identifier: ISC
#pragma once

#include "brezan/System.h"
#include "sdk/EditorMenu.h"
#include "sdk/EditorPicture.h"
#include "sdk/VstTypes.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace qlx::tools {

/// A MIDI message of up to three bytes.
using MidiBytes = std::array<std::uint8_t, 3>;

struct ParameterInfo {
  int index;
  std::string name; ///< empty for reserved parameters
  bool isSwitch;
  float step; ///< 0 when the effect names none
};

/// What the effect tells its host about the user's gestures.
struct HostEdit {
  enum class Kind { Begin, Automate, End };
  Kind kind;
  int index;
  float value; ///< of Automate
};

struct EditorSize {
  int width;
  int height;
};

/// One effect instance, spoken to through the binary interface only. Every call is made on the
/// caller's thread; blocks and MIDI may be given on another one than the rest. Constructor and
/// preset calls throw std::runtime_error.
class PluginHost {
 public:
  explicit PluginHost(const std::filesystem::path& file);
  ~PluginHost();
  PluginHost(const PluginHost&) = delete;
  PluginHost& operator=(const PluginHost&) = delete;

  const std::filesystem::path& file() const { return m_file; }
  const sdk::EffectRecord& record() const { return *m_effect; }
  sdk::EffectRecord& record() { return *m_effect; }
  std::string effectName();
  std::string vendor();
  std::string product();
  int vendorVersion();
  int vstVersion();
  bool canDo(const char* what);

  int parameterCount() const { return m_effect->numParams; }
  ParameterInfo parameter(int index);
  std::string display(int index); ///< of the present value
  std::string label(int index);
  float value(int index) const { return m_effect->getParameter(m_effect, index); }
  void setValue(int index, float value) { m_effect->setParameter(m_effect, index, value); }

  /// Names of the effect's own presets, as it gives them by number; at least its programs.
  std::vector<std::string> presetNames();
  int currentPreset();
  /// Makes preset `number` current, by way of the state chunk where programs are chunks.
  void selectPreset(int number);
  std::vector<char> state();
  void setState(std::vector<char> chunk);

  /// Nothing when the effect has no editor.
  std::optional<EditorSize> editorSize();
  /// The editor, drawn by the effect without a display at the given size, after left clicks at the
  /// given places of its smallest size. Opaque pixels 0xFFRRGGBB; nothing when the effect can't do
  /// that.
  std::optional<std::vector<std::uint32_t>> editorPicture(EditorSize size,
                                                          std::span<const sdk::EditorClick> clicks);
  /// The editor's controls as a tree of lines; empty when the effect can't tell.
  std::string editorDescription();
  /// Opens the editor in a window of the desktop.
  bool openEditor(std::uintptr_t parentWindow);
  void idleEditor() { call(sdk::EffectOpcode::EditIdle); }
  void closeEditor() { call(sdk::EffectOpcode::EditClose); }
  /// Is told what size the effect wants its editor's window to have, and answers whether it gets
  /// it.
  void setSizeListener(std::function<bool(EditorSize)> listener) {
    m_sizeListener = std::move(listener);
  }
  /// Has its say in the editor's menu; answers as sdk::EditorMenu says.
  void setMenuListener(std::function<bool(sdk::EditorMenu&)> listener) {
    m_menuListener = std::move(listener);
  }
  /// Is told of gestures on the thread that they come on.
  void setEditListener(std::function<void(const HostEdit&)> listener) {
    m_editListener = std::move(listener);
  }

  /// Tells rate, block size and channel layout and switches the effect on. Input 1 or 2 channels,
  /// output 1 or 2.
  void start(double rate, int maximumBlock, int inputs, int outputs);
  void stop();
  /// Hands over events that take effect before the next processed block.
  void sendMidi(std::span<const MidiBytes> messages);
  bool hasDouble() const { return (m_effect->flags & sdk::kCanDoubleReplacing) != 0; }
  void process(float** inputs, float** outputs, int frames) {
    m_effect->processReplacing(m_effect, inputs, outputs, frames);
  }
  void process(double** inputs, double** outputs, int frames) {
    m_effect->processDoubleReplacing(m_effect, inputs, outputs, frames);
  }

 private:
  static std::intptr_t answer(sdk::EffectRecord* effect, std::int32_t opcode, std::int32_t index,
                              std::intptr_t value, void* ptr, float opt);
  std::intptr_t call(sdk::EffectOpcode opcode, int index = 0, std::intptr_t value = 0,
                     void* ptr = nullptr, float opt = 0.0F);
  std::string text(sdk::EffectOpcode opcode, int index = 0, std::intptr_t value = 0);

  std::filesystem::path m_file;
  SharedObject m_library;
  sdk::EffectRecord* m_effect = nullptr;
  bool m_running = false;
  double m_rate = 44100.0;
  int m_block = 512;
  std::array<int, 2> m_channels{2, 2}; ///< inputs, outputs in use
  std::function<void(const HostEdit&)> m_editListener;
  std::function<bool(EditorSize)> m_sizeListener;
  std::function<bool(sdk::EditorMenu&)> m_menuListener;
};

} // namespace qlx::tools

// SPDX-License-Identifier: ISC
#pragma once

#include "sdk/AEffGUIEditor.h"
#include "sdk/VstTypes.h"

#include <atomic>
#include <cstdint>
#include <memory>

namespace qlx::sdk {

/// The object behind an effect record: turns the host's calls into virtual operations, and
/// operations of the effect into calls of the host.
///
/// No exception leaves through the record's functions (the call then answers 0), and null pointers,
/// indices out of range and odd values do no harm: an operation that needs a pointer is not called
/// without one. Indices are handed to the operations as they come.
///
/// Threads: the dispatcher's operations come on the host's user-interface thread, process* and
/// events on its audio thread, setParameter and getParameter on any. A host may call the effect
/// back from inside every call of the host.
class AudioEffect {
 public:
  /// `host` may be null: nobody hears then.
  AudioEffect(HostCallback host, std::int32_t numPrograms, std::int32_t numParameters) noexcept;
  virtual ~AudioEffect();
  AudioEffect(const AudioEffect&) = delete;
  AudioEffect& operator=(const AudioEffect&) = delete;

  /// What the entry point hands to the host; the object then lives until the host sends Close. From
  /// now on the host is told of things.
  EffectRecord* getRecord() noexcept {
    m_handedOver.store(true, std::memory_order_relaxed);
    return &m_record;
  }

  /// Answers one request of the host; unknown ones with 0. Close is not among them: it comes in
  /// through the record only.
  virtual std::intptr_t dispatch(std::int32_t opcode, std::int32_t index, std::intptr_t value,
                                 void* ptr, float opt);

  virtual void open() {}
  virtual void close() {}
  virtual void suspend() {}
  virtual void resume() {}

  /// `inputs` and `outputs` are not null and hold the declared numbers of buffers (of which a
  /// careless host may leave some null), `frames` is at least 1.
  virtual void processReplacing(float** inputs, float** outputs, std::int32_t frames) = 0;
  virtual void processDoubleReplacing(double** inputs, double** outputs, std::int32_t frames) = 0;

  virtual void setParameter(std::int32_t index, float value);
  virtual float getParameter(std::int32_t index);

  /// Applies the value and tells the host.
  virtual void setParameterAutomated(std::int32_t index, float value);

  /// Texts are written zero-terminated into the host's buffer.
  virtual void getParameterLabel(std::int32_t index, char* text);
  virtual void getParameterDisplay(std::int32_t index, char* text);
  virtual void getParameterName(std::int32_t index, char* text);

  virtual std::int32_t getProgram();
  virtual void setProgram(std::int32_t index); ///< 0 <= index < number of programs
  virtual void setProgramName(const char* name);
  virtual void getProgramName(char* text);

  /// Points *data at the state, which stays the effect's; answers its size in bytes, 0 for none.
  virtual std::int32_t getChunk(void** data, bool isPreset);
  virtual std::int32_t setChunk(const void* data, std::int32_t byteSize, bool isPreset);

  /// Stores the rate; zero, negative and not finite rates are ignored. Overriders call it.
  virtual void setSampleRate(float hz);
  virtual void setBlockSize(std::int32_t frames);
  float getSampleRate() const noexcept { return m_sampleRate.load(std::memory_order_relaxed); }
  std::int32_t getBlockSize() const noexcept { return m_blockSize.load(std::memory_order_relaxed); }

  AEffGUIEditor* getEditor() const noexcept { return m_editor.get(); }

 protected:
  /// Takes the editor and tells the host that there is one. While constructing, on no other
  /// occasion.
  void setEditor(std::unique_ptr<AEffGUIEditor> editor) noexcept;

  /// For a destructor whose object the editor still needs while it goes; else the base destroys the
  /// editor.
  void destroyEditor() noexcept { m_editor.reset(); }

  /// Calls the host; answers 0 without one. Until the record has been handed over the host is only
  /// asked for its version and every other request answered with 0: a host has no place yet for
  /// what concerns an effect under construction, and some crash.
  std::intptr_t callHost(HostOpcode opcode, std::int32_t index = 0, std::intptr_t value = 0,
                         void* ptr = nullptr, float opt = 0.0F);

  // For constructors.
  void setUniqueId(std::int32_t id) noexcept { m_record.uniqueId = id; }
  void setNumInputs(std::int32_t count) noexcept { m_record.numInputs = count; }
  void setNumOutputs(std::int32_t count) noexcept { m_record.numOutputs = count; }
  void setFlags(std::int32_t flags) noexcept { m_record.flags |= flags; }

  std::int32_t getUniqueId() const noexcept { return m_record.uniqueId; }

 private:
  std::intptr_t dispatchEditor(std::int32_t opcode, std::int32_t index, std::intptr_t value,
                               void* ptr, float opt);

  EffectRecord m_record{};
  HostCallback m_host;
  std::atomic<bool> m_handedOver{false};
  std::atomic<float> m_sampleRate{44100.0F};
  std::atomic<std::int32_t> m_blockSize{1024};
  std::unique_ptr<AEffGUIEditor> m_editor;
};

} // namespace qlx::sdk

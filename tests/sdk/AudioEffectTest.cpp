// SPDX-License-Identifier: ISC
#include "tests/sdk/ProbeEffect.h"

#include <array>
#include <cmath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>
#include <random>

namespace qlx::test {
using namespace sdk;
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// Calls as a host does: through the record alone.
class EffectRecordTest : public ::testing::Test {
 protected:
  EffectRecordTest() {
    RecordingHost::reset();
    effect.getRecord();
  }

  std::intptr_t send(EffectOpcode opcode, std::int32_t index = 0, std::intptr_t value = 0,
                     void* ptr = nullptr, float opt = 0.0F) {
    return record()->dispatcher(record(), static_cast<std::int32_t>(opcode), index, value, ptr,
                                opt);
  }
  EffectRecord* record() { return effect.getRecord(); }

  ProbeEffect effect;
};

TEST_F(EffectRecordTest, RecordDescribesTheEffect) {
  EXPECT_EQ(record()->magic, 0x56737450);
  EXPECT_EQ(record()->numPrograms, 1);
  EXPECT_EQ(record()->numParams, 3);
  EXPECT_EQ(record()->ioRatio, 1.0F);
  EXPECT_EQ(record()->flags & kHasEditor, 0);
  EXPECT_EQ(send(EffectOpcode::GetVstVersion), 2400);
  EXPECT_EQ(send(EffectOpcode::GetPlugCategory), 1);
  EXPECT_EQ(send(EffectOpcode::Identify), 0x4E764566);
}

TEST_F(EffectRecordTest, NothingIsToldBeforeTheRecordIsHandedOver) {
  RecordingHost::answer = [](EffectRecord*, std::int32_t) { return 1; };
  ProbeEffect fresh;
  fresh.beginEdit(1);
  fresh.setParameterAutomated(1, 0.5F);
  EXPECT_TRUE(fresh.isInputConnected(1));
  EXPECT_THAT(RecordingHost::calls, IsEmpty());
  fresh.getRecord();
  fresh.beginEdit(1);
  EXPECT_FALSE(fresh.isInputConnected(1));
  EXPECT_EQ(RecordingHost::calls.size(), 2U);
}

TEST_F(EffectRecordTest, CloseDestroysTheEffect) {
  for (const bool throwing : {false, true}) {
    bool destroyed = false;
    auto* own = new ProbeEffect(&destroyed);
    own->throwing = throwing;
    EffectRecord* const r = own->getRecord();
    EXPECT_EQ(r->dispatcher(r, 1, 0, 0, nullptr, 0.0F), 1);
    EXPECT_TRUE(destroyed);
  }
}

TEST_F(EffectRecordTest, RequestsReachTheirOperations) {
  send(EffectOpcode::Open);
  send(EffectOpcode::MainsChanged, 0, 1);
  send(EffectOpcode::MainsChanged, 0, 0);
  send(EffectOpcode::SetProgram, 0, 0);
  send(EffectOpcode::SetProgram, 0, 1);
  send(EffectOpcode::SetProgram, 0, -1);
  char name[] = "Swift";
  send(EffectOpcode::SetProgramName, 0, 0, name);
  EXPECT_THAT(effect.notes,
              ElementsAre("open", "resume", "suspend", "setProgram 0", "setProgramName Swift"));
}

TEST_F(EffectRecordTest, ChunkSizesOutsideThirtyTwoBitsAreLimited) {
  void* data = nullptr;
  EXPECT_EQ(send(EffectOpcode::GetChunk, 1, 0, &data), 12);
  EXPECT_EQ(data, effect.values);
  EXPECT_EQ(send(EffectOpcode::SetChunk, 0, std::intptr_t{1} << 40, data), -1);
  send(EffectOpcode::SetChunk, 0, -5, data);
  send(EffectOpcode::SetChunk, 0, 8, nullptr);
  EXPECT_THAT(effect.notes, ElementsAre("getChunk preset", "setChunk 2147483647", "setChunk 0",
                                        "setChunk null 8"));
}

TEST_F(EffectRecordTest, RateAndBlockSizeKeepTheirLastSensibleValue) {
  EXPECT_EQ(effect.getSampleRate(), 44100.0F);
  EXPECT_EQ(effect.getBlockSize(), 1024);
  send(EffectOpcode::SetSampleRate, 0, 0, nullptr, 96000.0F);
  for (const float odd : {0.0F, -1.0F, std::numeric_limits<float>::quiet_NaN(),
                          std::numeric_limits<float>::infinity()}) {
    send(EffectOpcode::SetSampleRate, 0, 0, nullptr, odd);
    EXPECT_EQ(effect.getSampleRate(), 96000.0F) << odd;
  }
  send(EffectOpcode::SetBlockSize, 0, 64);
  send(EffectOpcode::SetBlockSize, 0, 0);
  EXPECT_EQ(effect.getBlockSize(), 64);
}

TEST_F(EffectRecordTest, AutomatedChangesAreAppliedAndThenTold) {
  RecordingHost::answer = [&](EffectRecord* e, std::int32_t) {
    EXPECT_EQ(e->getParameter(e, 2), 0.25F);
    return 0;
  };
  effect.setParameterAutomated(2, 0.25F);
  effect.beginEdit(1);
  effect.endEdit(1);
  effect.updateDisplay();
  EXPECT_THAT(RecordingHost::calls, ElementsAre(HostCall{0, 2, 0.25F}, HostCall{43, 1, 0.0F},
                                                HostCall{44, 1, 0.0F}, HostCall{42, 0, 0.0F}));
}

TEST_F(EffectRecordTest, ResumeTellsOlderHostsAboutMidi) {
  send(EffectOpcode::MainsChanged, 0, 1);
  EXPECT_THAT(RecordingHost::calls, ElementsAre(HostCall{6, 0, 0.0F}));
}

TEST_F(EffectRecordTest, PinsCountAsConnectedUnlessTheHostSaysOtherwise) {
  EXPECT_TRUE(effect.isInputConnected(1));
  RecordingHost::answer = [](EffectRecord*, std::int32_t) { return 1; };
  EXPECT_FALSE(effect.isInputConnected(1));
  EXPECT_FALSE(effect.isOutputConnected(1));
  ProbeEffect alone(nullptr, nullptr);
  EXPECT_TRUE(alone.isOutputConnected(1));
}

TEST_F(EffectRecordTest, AHostMayCallBackFromInsideARequest) {
  RecordingHost::answer = [](EffectRecord* e, std::int32_t) {
    e->dispatcher(e, 10, 0, 0, nullptr, 48000.0F);
    e->dispatcher(e, 11, 0, 256, nullptr, 0.0F);
    return 0;
  };
  EXPECT_TRUE(effect.isInputConnected(0));
  EXPECT_EQ(effect.getSampleRate(), 48000.0F);
  EXPECT_EQ(effect.getBlockSize(), 256);
}

TEST_F(EffectRecordTest, NothingThrownInsideReachesTheHost) {
  effect.throwing = true;
  std::array<float, 4> samples{};
  float* buffers[] = {samples.data(), samples.data()};
  std::array<double, 4> doubles{};
  double* doubleBuffers[] = {doubles.data(), doubles.data()};
  EXPECT_NO_THROW({
    EXPECT_EQ(send(EffectOpcode::Open), 0);
    record()->setParameter(record(), 0, 0.5F);
    EXPECT_EQ(record()->getParameter(record(), 0), 0.0F);
    record()->processReplacing(record(), buffers, buffers, 4);
    record()->processDoubleReplacing(record(), doubleBuffers, doubleBuffers, 4);
    record()->process(record(), buffers, buffers, 4);
  });
}

TEST_F(EffectRecordTest, ProcessingWithoutBuffersOrFramesIsSkipped) {
  float* buffers[] = {nullptr, nullptr};
  record()->processReplacing(record(), nullptr, buffers, 16);
  record()->processReplacing(record(), buffers, nullptr, 16);
  record()->processReplacing(record(), buffers, buffers, 0);
  record()->processReplacing(record(), buffers, buffers, -3);
  record()->processReplacing(nullptr, buffers, buffers, 4);
  EXPECT_THAT(effect.notes, IsEmpty());
}

TEST_F(EffectRecordTest, TheOldFormAddsToTheOutputs) {
  constexpr std::int32_t kFrames = 700;
  std::vector<float> in(kFrames), left(kFrames, 1.0F), right(kFrames, -1.0F);
  for (std::size_t i = 0; i < in.size(); ++i) in[i] = static_cast<float>(i);
  float* inputs[] = {in.data(), in.data()};
  float* outputs[] = {left.data(), right.data()};
  record()->process(record(), inputs, outputs, kFrames);
  for (std::size_t i = 0; i < in.size(); ++i) {
    ASSERT_EQ(left[i], 1.0F + 2.0F * in[i]) << i;
    ASSERT_EQ(right[i], -1.0F + 2.0F * in[i]) << i;
  }
}

TEST_F(EffectRecordTest, ObsoleteAndUnknownRequestsAreAnsweredWithZero) {
  constexpr std::pair<std::int32_t, std::int32_t> kRanges[] = {
      {9, 9},   {16, 18}, {20, 21}, {28, 28}, {30, 32}, {36, 41},     {43, 43},
      {46, 46}, {52, 55}, {57, 57}, {62, 80}, {-1, -1}, {1000, 1000}, {1 << 30, 1 << 30}};
  for (const auto& [first, last] : kRanges)
    for (std::int32_t opcode = first; opcode <= last; ++opcode)
      EXPECT_EQ(record()->dispatcher(record(), opcode, 0, 0, nullptr, 0.0F), 0) << opcode;
}

TEST_F(EffectRecordTest, OddArgumentsDoNoHarm) {
  std::mt19937 random(7);
  const std::array<std::int32_t, 7> indices = {0, 1, 3, 119, -1, 1 << 30, -(1 << 30)};
  const std::array<std::intptr_t, 5> values = {0, 1, 7, -1, 4095};
  const std::array<float, 4> opts = {0.0F, -1e30F, std::numeric_limits<float>::infinity(),
                                     std::numeric_limits<float>::quiet_NaN()};
  std::array<char, 1024> buffer{};
  for (int i = 0; i < 20000; ++i) {
    const auto opcode = static_cast<std::int32_t>(random() % 90);
    if (opcode == 1 || opcode == 4) continue; // destroys; reads a text
    void* const ptr = random() % 2 == 0 ? nullptr : buffer.data();
    if (opcode == 24 && ptr != nullptr) continue; // reads as much as it is told
    if (opcode == 25 || opcode == 27 || opcode == 51) buffer.fill(0);
    record()->dispatcher(record(), opcode, indices[random() % indices.size()],
                         values[random() % values.size()], ptr, opts[random() % opts.size()]);
  }
  EXPECT_EQ(effect.getBlockSize() > 0, true);
  EXPECT_TRUE(std::isfinite(effect.getSampleRate()));
  EXPECT_EQ(effect.setSpeakerArrangement(nullptr, nullptr), false);
}

class ProbeEditor : public AEffGUIEditor {
 public:
  using AEffGUIEditor::AEffGUIEditor;
  bool getRect(EditRectangle** rectangle) override {
    *rectangle = &m_rectangle;
    return true;
  }
  bool open(void* parent) override { return parent != nullptr; }
  void idle() override { ++idles; }
  bool onKeyDown(const KeyCode& key) override {
    last = key;
    return true;
  }
  bool setKnobMode(std::int32_t mode) override { return mode == kKnobLinear; }
  bool picture(const EditorPicture& request) override { return request.width == 401; }
  std::string description() override { return "Knob: 5"; }

  int idles = 0;
  KeyCode last{};

 private:
  EditRectangle m_rectangle{0, 0, 570, 401};
};

TEST_F(EffectRecordTest, EditorRequestsNeedAnEditor) {
  EditRectangle* rectangle = nullptr;
  EXPECT_EQ(send(EffectOpcode::EditGetRectangle, 0, 0, &rectangle), 0);
  EXPECT_EQ(send(EffectOpcode::EditOpen, 0, 0, &rectangle), 0);

  auto own = std::make_unique<ProbeEditor>(&effect);
  ProbeEditor& editor = *own;
  effect.setEditor(std::move(own));
  EXPECT_EQ(record()->flags & kHasEditor, kHasEditor);
  EXPECT_EQ(send(EffectOpcode::EditGetRectangle, 0, 0, &rectangle), 1);
  EXPECT_EQ(rectangle->bottom, 570);
  EXPECT_EQ(send(EffectOpcode::EditGetRectangle), 0);
  EXPECT_EQ(send(EffectOpcode::EditOpen), 0);
  EXPECT_EQ(send(EffectOpcode::EditOpen, 0, 0, &rectangle), 1);
  send(EffectOpcode::EditIdle);
  EXPECT_EQ(editor.idles, 1);
  EXPECT_EQ(send(EffectOpcode::SetEditKnobMode, 0, 2), 1);
  // Hosts have vendor requests of their own; ours is known by its number and size.
  EditorPicture picture{sizeof(EditorPicture), 401, 570, 0, nullptr, nullptr};
  EXPECT_EQ(send(EffectOpcode::VendorSpecific, kEditorPictureRequest, 0, &picture), 1);
  EXPECT_EQ(send(EffectOpcode::VendorSpecific, kEditorPictureRequest), 0);
  EXPECT_EQ(send(EffectOpcode::VendorSpecific, fourCharacters("PreS"), 0, &picture), 0);
  picture.byteSize = 8;
  EXPECT_EQ(send(EffectOpcode::VendorSpecific, kEditorPictureRequest, 0, &picture), 0);
  std::array<char, 8> text{};
  EditorDescription words{sizeof(EditorDescription), 0, nullptr};
  const auto describe = [&] {
    return send(EffectOpcode::VendorSpecific, kEditorDescriptionRequest, 0, &words);
  };
  EXPECT_EQ(describe(), 7);
  words.text = text.data();
  for (const auto& [room, written] : {std::pair{-1, ""}, {4, "Knob"}, {8, "Knob: 5"}}) {
    words.room = room;
    EXPECT_EQ(describe(), 7);
    EXPECT_STREQ(text.data(), written);
  }
  words.byteSize = 8;
  EXPECT_EQ(describe(), 0);
}

TEST_F(EffectRecordTest, KeysAreTakenApartSafely) {
  auto own = std::make_unique<ProbeEditor>(&effect);
  ProbeEditor& editor = *own;
  effect.setEditor(std::move(own));
  struct Case {
    std::intptr_t virt;
    float modifiers;
    int expectedVirt;
    int expectedModifiers;
  };
  for (const Case& c :
       {Case{kKeyReturn, 9.0F, 4, 9}, Case{-1, -1.0F, 0, 0},
        Case{300, std::numeric_limits<float>::quiet_NaN(), 0, 0}, Case{255, 1e9F, 255, 0}}) {
    EXPECT_EQ(send(EffectOpcode::EditKeyDown, 'q', c.virt, nullptr, c.modifiers), 1);
    EXPECT_EQ(editor.last.character, 'q');
    EXPECT_EQ(editor.last.virt, c.expectedVirt);
    EXPECT_EQ(editor.last.modifiers, c.expectedModifiers);
  }
}

} // namespace
} // namespace qlx::test

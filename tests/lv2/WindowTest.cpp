// SPDX-License-Identifier: ISC
// The bundle's window and its audio side in one process, as hosts run them.
#include "lv2/Plugin.h"
#include "platform/NativeWindow.h"
#include "platform/WindowRobot.h"
#include "tests/lv2/LilvHost.h"
#include "tests/support/CountingAllocator.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/desktop/VirtualDisplay.h"

#include <dlfcn.h>
#include <gmock/gmock.h>
#include <lv2/instance-access/instance-access.h>
#include <lv2/options/options.h>
#include <lv2/ui/ui.h>

#include <chrono>
#include <cstdlib>
#include <thread>

namespace qlx::test {
namespace {

class WindowOfBundle : public testing::Test {
 protected:
  WindowOfBundle() { setenv("XDG_CONFIG_HOME", m_home.path().c_str(), 1); }
  void SetUp() override {
    ASSERT_NE(world.plugin, nullptr);
    library = dlopen(BUNDLE "/brezan.so", RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library, nullptr) << dlerror();
    const auto entry = reinterpret_cast<const LV2UI_Descriptor* (*)(std::uint32_t)>(
        dlsym(library, "lv2ui_descriptor"));
    descriptor = entry(0);
    ASSERT_STREQ(descriptor->URI, kUiUri);
    EXPECT_EQ(entry(1), nullptr);
    idle =
        static_cast<const LV2UI_Idle_Interface*>(descriptor->extension_data(LV2_UI__idleInterface));
  }
  void TearDown() override { dlclose(library); }

  LV2UI_Handle open(Instance& instance, std::uintptr_t parent, bool access = true) {
    const LV2_Feature parentFeature{LV2_UI__parent, reinterpret_cast<void*>(parent)};
    const LV2_Feature accessFeature{LV2_INSTANCE_ACCESS_URI,
                                    lilv_instance_get_handle(instance.lilv)};
    const LV2_Feature resizeFeature{LV2_UI__resize, &resize};
    const LV2_Feature touchFeature{LV2_UI__touch, &touch};
    const LV2_Feature mapFeature{LV2_URID__map, &world.map};
    const LV2_Options_Option options[] = {{LV2_OPTIONS_INSTANCE, 0,
                                           world.number(LV2_UI__scaleFactor), sizeof wantedScale,
                                           world.number(LV2_ATOM__Float), &wantedScale},
                                          {}};
    const LV2_Feature optionsFeature{LV2_OPTIONS__options,
                                     const_cast<LV2_Options_Option*>(options)};
    const LV2_Feature* features[] = {&parentFeature,  &resizeFeature,
                                     &touchFeature,   &mapFeature,
                                     &optionsFeature, access ? &accessFeature : nullptr,
                                     nullptr};
    const auto write = [](LV2UI_Controller self, std::uint32_t port, std::uint32_t bytes,
                          std::uint32_t protocol, const void* value) {
      ASSERT_EQ(bytes, sizeof(float));
      ASSERT_EQ(protocol, 0U);
      float number = 0.0F;
      std::memcpy(&number, value, sizeof number);
      static_cast<WindowOfBundle*>(self)->written.push_back({port, number});
    };
    return descriptor->instantiate(descriptor, kPluginUri, BUNDLE "/", write, this, &widget,
                                   features);
  }

  /// Idles until something has been written.
  void waitForWrites() {
    for (int i = 0; i < 300 && written.empty(); ++i) {
      EXPECT_EQ(idle->idle(ui), 0);
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
  }

  World world;
  void* library = nullptr;
  const LV2UI_Descriptor* descriptor = nullptr;
  const LV2UI_Idle_Interface* idle = nullptr;
  LV2UI_Handle ui = nullptr;
  LV2UI_Widget widget = nullptr;
  std::vector<Request> written;
  std::vector<Request> touched;
  float wantedScale = 1.0F; ///< by the host
  std::pair<int, int> size;
  LV2UI_Resize resize{this, [](LV2UI_Feature_Handle self, int w, int h) {
                        static_cast<WindowOfBundle*>(self)->size = {w, h};
                        return 0;
                      }};
  LV2UI_Touch touch{
      this, [](LV2UI_Feature_Handle self, std::uint32_t port, bool grabbed) {
        static_cast<WindowOfBundle*>(self)->touched.push_back({port, grabbed ? 1.0F : 0.0F});
      }};

 private:
  TemporaryFolder m_home;
};

TEST_F(WindowOfBundle, WritesWhatTheUserDoesAndIsNotTurnedBackByEchoes) {
  const qlx::test::VirtualDisplay display({"-screen", "0", "800x700x24"});
  ASSERT_TRUE(display.isRunning()) << "Xvfb is needed";
  const auto host = platform::nativeWindowSystem().openTopLevel({"host"}, 401, 570);
  host->show();
  host->pump();
  Instance instance(world);
  EXPECT_EQ(open(instance, host->handle(), false), nullptr);
  EXPECT_EQ(open(instance, 0), nullptr);
  ui = open(instance, host->handle());
  ASSERT_NE(ui, nullptr);
  const std::unique_ptr<void, void (*)(LV2UI_Handle)> closing(ui, descriptor->cleanup);
  EXPECT_NE(widget, nullptr);
  EXPECT_NE(reinterpret_cast<std::uintptr_t>(widget), host->handle());
  EXPECT_EQ(open(instance, host->handle()), nullptr) << "a second window";
  EXPECT_EQ(size, std::make_pair(401, 570));
  for (std::size_t i = 0; i < kNumControlPorts; ++i) {
    descriptor->port_event(ui, kFirstControl + static_cast<std::uint32_t>(i), sizeof(float), 0,
                           &instance.ports[i]);
  }
  for (int i = 0; i < 20; ++i) idle->idle(ui);
  EXPECT_TRUE(written.empty());

  const std::uint32_t stop = kFirstControl + static_cast<std::uint32_t>(controlOf(plugin::kStop));
  const auto robot = platform::openWindowRobot();
  ASSERT_TRUE(robot->click(host->handle(), 370, 365));
  waitForWrites();
  // Where it was, then where it is: the host's automation shows a step and no ramp.
  EXPECT_THAT(written, testing::ElementsAre(Request{stop, 0.0F}, Request{stop, 1.0F}));
  EXPECT_THAT(touched, testing::ElementsAre(Request{stop, 1.0F}, Request{stop, 0.0F}));
  instance.run(64);
  instance.port(plugin::kStop) = 1.0F;
  for (int i = 0; i < 3; ++i) instance.run(64);
  EXPECT_EQ(instance.value(plugin::kStop), 1.0F);
  EXPECT_TRUE(instance.requests.empty()) << "the window has told it already";

  // Twice more; the host hands the older news over last.
  for (const float expected : {0.0F, 1.0F}) {
    written.clear();
    ASSERT_TRUE(robot->click(host->handle(), 370, 365));
    waitForWrites();
    ASSERT_FALSE(written.empty());
    EXPECT_EQ(written.back(), (Request{stop, expected}));
  }
  instance.run(64);
  for (const float echo : {0.0F, 1.0F}) {
    instance.port(plugin::kStop) = echo;
    instance.run(64);
    EXPECT_EQ(instance.value(plugin::kStop), 1.0F);
  }

  // A preset, as the strip selects it: on this thread, all its ports and only those that differ.
  written.clear();
  touched.clear();
  ASSERT_EQ(
      instance.restore(world.number(kFactoryPresetUri), world.number(LV2_ATOM__Int), {2, 0, 0, 0}),
      LV2_STATE_SUCCESS);
  const std::uint32_t drive = kFirstControl + static_cast<std::uint32_t>(controlOf(plugin::kDrive));
  EXPECT_THAT(written,
              testing::Contains(Request{drive, plugin::portScale(plugin::kDrive)->toPort(0.4F)}));
  EXPECT_LT(written.size(), kNumControlPorts);
  EXPECT_TRUE(touched.empty());

  const std::uint32_t enabled = kFirstControl;
  written.clear();
  ASSERT_TRUE(robot->click(host->handle(), 369, 543));
  waitForWrites();
  EXPECT_EQ(written.back(), (Request{enabled, 0.0F}));
  EXPECT_THAT(touched, testing::ElementsAre(Request{enabled, 1.0F}, Request{enabled, 0.0F}));

  lilv_instance_free(std::exchange(instance.lilv, nullptr)); // before its window
  EXPECT_EQ(idle->idle(ui), 0);
}

TEST_F(WindowOfBundle, HasTheSizeThatTheHostWants) {
  const qlx::test::VirtualDisplay display({"-screen", "0", "1300x1800x24"});
  ASSERT_TRUE(display.isRunning()) << "Xvfb is needed";
  const auto host = platform::nativeWindowSystem().openTopLevel({"host"}, 1203, 1710);
  host->show();
  host->pump();
  Instance instance(world);
  wantedScale = 2.2F;
  ui = open(instance, host->handle());
  ASSERT_NE(ui, nullptr);
  const std::unique_ptr<void, void (*)(LV2UI_Handle)> closing(ui, descriptor->cleanup);
  EXPECT_EQ(size, std::make_pair(802, 1140));
  const auto* options =
      static_cast<const LV2_Options_Interface*>(descriptor->extension_data(LV2_OPTIONS__interface));
  const float wanted = 1.5F;
  LV2_Options_Option news[] = {{LV2_OPTIONS_INSTANCE, 0, world.number(LV2_UI__scaleFactor),
                                sizeof wanted, world.number(LV2_ATOM__Float), &wanted},
                               {}};
  EXPECT_EQ(options->set(ui, news), LV2_OPTIONS_SUCCESS);
  EXPECT_EQ(idle->idle(ui), 0);
  EXPECT_EQ(size, std::make_pair(601, 855));
  const auto robot = platform::openWindowRobot();
  const std::uint32_t stop = kFirstControl + static_cast<std::uint32_t>(controlOf(plugin::kStop));
  ASSERT_TRUE(robot->click(reinterpret_cast<std::uintptr_t>(widget), 555, 547));
  waitForWrites();
  EXPECT_THAT(written, testing::ElementsAre(Request{stop, 0.0F}, Request{stop, 1.0F}));
  news[0].type = 0;
  EXPECT_EQ(options->set(ui, news), LV2_OPTIONS_ERR_BAD_VALUE);
}

TEST_F(WindowOfBundle, RestoringWhileItPlaysLosesNothing) {
  Instance instance(world);
  const std::vector<char> chunk = instance.chunk();
  instance.run(64); // so that all names have their numbers
  const LV2_URID key = world.number(kChunkUri), type = world.number(LV2_ATOM__Chunk);
  std::atomic<bool> done{false};
  std::thread audio([&] {
    while (!done.load()) instance.run(64, {{5, kPedalDown}, {9, kPedalUp}});
  });
  for (int i = 0; i < 100; ++i) EXPECT_EQ(instance.restore(key, type, chunk), LV2_STATE_SUCCESS);
  done.store(true);
  audio.join();
  EXPECT_EQ(instance.value(plugin::kDrive), 0.5F);
  for (const float sample : instance.sound[1]) ASSERT_TRUE(std::isfinite(sample));
}

TEST_F(WindowOfBundle, RunAllocatesNothing) {
  const LV2_Feature map{LV2_URID__map, &world.map};
  ChangeRequest request{nullptr,
                        [](void*, std::uint32_t, float) { return ChangeStatus::kSuccess; }};
  const LV2_Feature requests{kChangeRequestUri, &request};
  const LV2_Feature* features[] = {&map, &requests, nullptr};
  Plugin plugin(48000.0, features);
  std::array<std::array<float, 512>, 4> audio{};
  for (std::uint32_t i = 0; i < 4; ++i) plugin.connectPort(i, audio[i].data());
  struct {
    LV2_Atom_Sequence head;
    LV2_Atom_Event event;
    std::array<std::uint8_t, 8> bytes;
  } events{{{sizeof(LV2_Atom_Sequence_Body) + sizeof(LV2_Atom_Event) + 8, 0}, {}},
           {{200}, {3, world.number(LV2_MIDI__MidiEvent)}},
           {0xB0, 64, 0}};
  plugin.connectPort(kEvents, &events);
  std::array<float, kNumControlPorts> ports{};
  for (std::uint32_t i = 0; i < kNumControlPorts; ++i)
    plugin.connectPort(kFirstControl + i, &ports[i]);
  plugin.activate();
  const qlx::test::AllocationCount allocations;
  for (int block = 0; block < 200; ++block) {
    events.bytes[2] = block % 2 == 0 ? 127 : 0;
    for (std::size_t i = 0; i < kNumControlPorts; ++i) {
      const plugin::PortScale& scale = scaleOf(kControlPorts[i]);
      ports[i] = scale.toPort(static_cast<float>((block * 7 + static_cast<int>(i)) % 71) / 70.0F);
    }
    plugin.run(512);
  }
  EXPECT_EQ(allocations.value(), 0);
}

} // namespace
} // namespace qlx::test

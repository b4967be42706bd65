// SPDX-License-Identifier: ISC
#include "platform/linux/x11/X11Window.h"

namespace qlx::platform {

namespace {

class X11WindowSystem final : public WindowSystem {
 public:
  constexpr X11WindowSystem() = default;
  // Nothing is to be done when the library is unloaded.
  constexpr ~X11WindowSystem() override;

  std::unique_ptr<NativeWindow> openChild(std::uintptr_t parent, int width,
                                          int height) const override {
    auto connection = X11Connection::open();
    if (parent == 0 || connection == nullptr) return nullptr;
    return X11Window::createChild(std::move(connection), static_cast<xcb_window_t>(parent), width,
                                  height);
  }

  std::unique_ptr<NativeWindow> openTopLevel(const TopLevelLook& look, int width,
                                             int height) const override {
    auto connection = X11Connection::open();
    if (connection == nullptr) return nullptr;
    return X11Window::createTopLevel(std::move(connection), look, width, height);
  }

  std::optional<double> scale() const override {
    const auto connection = X11Connection::open();
    return connection == nullptr ? std::nullopt : connection->scale();
  }
};

constexpr X11WindowSystem::~X11WindowSystem() = default;

} // namespace

const WindowSystem& nativeWindowSystem() {
  static constexpr X11WindowSystem kSystem;
  return kSystem;
}

} // namespace qlx::platform

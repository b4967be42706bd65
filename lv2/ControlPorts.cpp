// SPDX-License-Identifier: ISC
#include "lv2/ControlPorts.h"

#include "plugin/FactoryPresets.h"
#include "plugin/RotaryEffect.h"

#include <algorithm>
#include <cmath>

namespace qlx::lv2 {

static_assert(std::atomic<std::uint32_t>::is_always_lock_free);

namespace {
constexpr double kPatienceSeconds = 0.5;
} // namespace

ControlPorts::ControlPorts(plugin::RotaryEffect& effect, double rate, const ChangeRequest* request)
    : m_effect(effect), m_request(request),
      m_patience(static_cast<std::uint32_t>(kPatienceSeconds * rate)) {
  // A host that wants nothing special leaves its ports at their defaults: sounds of the user's own
  // that a new instance starts with are then told to it like every other change.
  const auto defaults = plugin::factoryPresets().front().values;
  for (std::size_t i = 0; i < kNumControlPorts; ++i) {
    const plugin::PortScale& scale = scaleOf(kControlPorts[i]);
    Control& control = m_controls[i];
    control.held = valueOf(i);
    control.expected = scale.toPort(control.held);
    control.seen = scale.toPort(defaults[static_cast<std::size_t>(kControlPorts[i].parameter)]);
    if (control.seen != control.expected) control.untold = Untold::kEarlier;
  }
}

float ControlPorts::valueOf(std::size_t control) const {
  return m_effect.getParameter(kControlPorts[control].parameter);
}

/// Nothing has moved on either side since the last look, which is so for most blocks.
bool ControlPorts::isAtRest() const {
  if (m_isBusy || m_told.load(std::memory_order_relaxed) != 0 ||
      m_restored.load(std::memory_order_relaxed)) {
    return false;
  }
  for (std::size_t i = 0; i < kNumControlPorts; ++i) {
    const Control& control = m_controls[i];
    if (*control.location != control.seen || valueOf(i) != control.held) return false;
  }
  return true;
}

void ControlPorts::wait(Control& control) const {
  control.patience = m_patience;
  control.movedMeanwhile = false;
  control.untold = Untold::kNothing;
}

void ControlPorts::notice(std::size_t i) {
  Control& control = m_controls[i];
  const float value = valueOf(i);
  if (value == control.held) return;
  control.held = value;
  control.expected = scaleOf(kControlPorts[i]).toPort(value);
  if (control.untold == Untold::kNothing) control.untold = Untold::kSinceThisBlock;
}

void ControlPorts::noticeAll() {
  // The window moves a parameter first: what it has told of is seen below.
  const std::uint32_t told = m_told.exchange(0, std::memory_order_acquire);
  for (std::size_t i = 0; i < kNumControlPorts; ++i) {
    notice(i);
    if ((told >> i & 1U) != 0) wait(m_controls[i]);
  }
}

void ControlPorts::movedHere(std::int32_t parameter) {
  const std::size_t i = controlOf(parameter);
  if (i >= kNumControlPorts) return;
  m_controls[i].movedHere = true;
  m_isBusy = true;
}

void ControlPorts::apply(std::size_t i) {
  Control& control = m_controls[i];
  const float value = scaleOf(kControlPorts[i]).toValue(control.seen, control.held);
  sdk::EffectRecord& record = *m_effect.getRecord(); // what is thrown inside ends there
  record.setParameter(&record, kControlPorts[i].parameter, value);
  control.held = valueOf(i);
  control.expected = control.seen;
  control.patience = 0;
  control.movedMeanwhile = false;
  control.untold = Untold::kNothing;
}

void ControlPorts::forgetNews() {
  for (Control& control : m_controls) {
    if (std::isnan(*control.location)) continue;
    control.seen = *control.location;
    control.patience = 0;
    control.movedMeanwhile = false;
    control.untold = Untold::kEarlier;
  }
}

void ControlPorts::takeFromHost(std::uint32_t frames) {
  if (isAtRest()) return;
  m_isBusy = true;
  // First all, then all: what one port does to another parameter must not hide that the host has
  // moved that one's port, too.
  const bool wasRestored = m_restored.exchange(false, std::memory_order_relaxed);
  noticeAll();
  if (wasRestored) forgetNews();
  for (std::size_t i = 0; i < kNumControlPorts; ++i) {
    Control& control = m_controls[i];
    if (std::isnan(*control.location)) continue;
    const bool moved = *control.location != control.seen;
    control.seen = *control.location;
    control.movedMeanwhile = control.movedMeanwhile || moved;
    if (control.seen == control.expected) {
      // It has arrived, unless it has been here all the time and echoes are still under way.
      if (moved) control.patience = 0;
      control.movedMeanwhile = false;
      control.untold = Untold::kNothing;
    }
    if (control.patience > 0) {
      control.patience -= std::min(frames, control.patience);
    } else if (control.movedMeanwhile) {
      apply(i);
    }
  }
}

void ControlPorts::tellHost() {
  // What else has moved a parameter meanwhile is seen before the next block.
  if (!m_isBusy) return;
  noticeAll();
  m_isBusy = false;
  for (std::size_t i = 0; i < kNumControlPorts; ++i) {
    tell(i);
    const Control& control = m_controls[i];
    m_isBusy = m_isBusy || control.untold != Untold::kNothing || control.patience > 0 ||
               control.movedMeanwhile;
  }
}

void ControlPorts::tell(std::size_t i) {
  Control& control = m_controls[i];
  if (control.movedHere) control.untold = Untold::kEarlier;
  control.movedHere = false;
  if (control.untold == Untold::kSinceThisBlock) {
    // The window, if it was the window's doing, tells the host by itself.
    control.untold = Untold::kEarlier;
  } else if (control.untold == Untold::kEarlier) {
    control.untold = Untold::kNothing;
    if (m_request == nullptr || control.seen == control.expected) return;
    const std::uint32_t port = kFirstControl + static_cast<std::uint32_t>(i);
    if (m_request->requestChange(m_request->handle, port, control.expected) ==
        ChangeStatus::kSuccess) {
      wait(control);
    }
  }
}

} // namespace qlx::lv2

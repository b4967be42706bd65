// SPDX-License-Identifier: ISC
#include "lv2/ControlPorts.h"

#include "plugin/FactoryPresets.h"
#include "sdk/VstTypes.h"

#include <algorithm>
#include <cmath>

namespace qlx::lv2 {

static_assert(std::atomic<std::uint32_t>::is_always_lock_free);

namespace {
constexpr double kPatienceSeconds = 0.5;
} // namespace

ControlPorts::ControlPorts(sdk::EffectRecord& record, double rate, const ChangeRequest* request)
    : m_record(record), m_request(request),
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
  return m_record.getParameter(&m_record, kControlPorts[control].parameter);
}

void ControlPorts::wait(Control& control) const {
  control.patience = m_patience;
  control.movedMeanwhile = false;
  control.untold = Untold::kNothing;
}

void ControlPorts::notice(std::size_t i) {
  Control& control = m_controls[i];
  const float value = valueOf(i);
  if (value != control.held) {
    control.held = value;
    control.expected = scaleOf(kControlPorts[i]).toPort(value);
    if (control.untold == Untold::kNothing) control.untold = Untold::kSinceThisBlock;
  }
  const std::uint32_t told = m_told[i].load(std::memory_order_relaxed);
  if (told == control.told) return;
  control.told = told;
  wait(control);
}

void ControlPorts::movedHere(std::int32_t parameter) {
  const std::size_t i = controlOf(parameter);
  if (i < kNumControlPorts) m_controls[i].movedHere = true;
}

void ControlPorts::apply(std::size_t i) {
  Control& control = m_controls[i];
  const float value = scaleOf(kControlPorts[i]).toValue(control.seen, control.held);
  m_record.setParameter(&m_record, kControlPorts[i].parameter, value);
  control.held = valueOf(i);
  control.expected = control.seen;
  control.patience = 0;
  control.movedMeanwhile = false;
  control.untold = Untold::kNothing;
}

void ControlPorts::forgetNews() {
  for (Control& control : m_controls) {
    if (control.location == nullptr || std::isnan(*control.location)) continue;
    control.seen = *control.location;
    control.patience = 0;
    control.movedMeanwhile = false;
    control.untold = Untold::kEarlier;
  }
}

void ControlPorts::takeFromHost(std::uint32_t frames) {
  // First all, then all: what one port does to another parameter must not hide that the host has
  // moved that one's port, too.
  const bool wasRestored = m_restored.exchange(false, std::memory_order_relaxed);
  for (std::size_t i = 0; i < kNumControlPorts; ++i) notice(i);
  if (wasRestored) forgetNews();
  for (std::size_t i = 0; i < kNumControlPorts; ++i) {
    Control& control = m_controls[i];
    if (control.location == nullptr || std::isnan(*control.location)) continue;
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
  for (std::size_t i = 0; i < kNumControlPorts; ++i) {
    notice(i);
    Control& control = m_controls[i];
    if (control.movedHere) control.untold = Untold::kEarlier;
    control.movedHere = false;
    if (control.untold == Untold::kSinceThisBlock) {
      // The window, if it was the window's doing, tells the host by itself.
      control.untold = Untold::kEarlier;
    } else if (control.untold == Untold::kEarlier) {
      control.untold = Untold::kNothing;
      if (m_request == nullptr || control.seen == control.expected) continue;
      const std::uint32_t port = kFirstControl + static_cast<std::uint32_t>(i);
      if (m_request->requestChange(m_request->handle, port, control.expected) ==
          ChangeStatus::kSuccess) {
        wait(control);
      }
    }
  }
}

} // namespace qlx::lv2

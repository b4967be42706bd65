// SPDX-License-Identifier: ISC
#pragma once

#include <cstdint>

namespace qlx::gui {

/// Bits of a CButtonState.
enum CButton : std::uint32_t {
  kLButton = 1U << 0,
  kMButton = 1U << 1,
  kRButton = 1U << 2,
  kShift = 1U << 3,
  kControl = 1U << 4,
  kAlt = 1U << 5,
  kSuper = 1U << 6,
  kDoubleClick = 1U << 7,
};

/// Pointer buttons and modifier keys at one moment. A press carries the button pressed, a release
/// the button released, a move the buttons held.
class CButtonState {
 public:
  constexpr CButtonState(std::uint32_t state = 0) : m_state(state) {}

  constexpr bool isLeftButton() const { return has(kLButton); }
  constexpr bool isMiddleButton() const { return has(kMButton); }
  constexpr bool isRightButton() const { return has(kRButton); }
  constexpr bool isShiftSet() const { return has(kShift); }
  constexpr bool isControlSet() const { return has(kControl); }
  constexpr bool isDoubleClick() const { return has(kDoubleClick); }
  /// Any pointer button at all.
  constexpr bool anyButton() const { return has(kLButton | kMButton | kRButton); }
  constexpr std::uint32_t bits() const { return m_state; }
  constexpr bool operator==(const CButtonState&) const = default;

 private:
  constexpr bool has(std::uint32_t mask) const { return (m_state & mask) != 0; }

  std::uint32_t m_state;
};

/// A view's answer to a mouse event.
enum class CMouseEventResult : std::uint8_t {
  kNotHandled,           ///< the view below may have it
  kHandled,              ///< on a press: the view gets the moves and the release too
  kHandledDontNeedMoves, ///< taken, but neither moves nor the release are wanted
};

} // namespace qlx::gui

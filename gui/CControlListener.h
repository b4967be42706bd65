// SPDX-License-Identifier: ISC
#pragma once

namespace qlx::gui {

class CControl;

/// Is told what the user does to controls. User-interface thread.
class CControlListener {
 public:
  virtual ~CControlListener() = default;
  virtual void valueChanged(CControl& control) = 0;
  /// A gesture starts or ends; always in pairs, also when the window closes in the middle.
  virtual void controlBeginEdit(CControl& /*control*/) {}
  virtual void controlEndEdit(CControl& /*control*/) {}
};

} // namespace qlx::gui
